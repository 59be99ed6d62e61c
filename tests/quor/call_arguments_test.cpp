// What a function receives for every letter of an argument, and what is refused.

#include "CallRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;

struct Argument {
    const char* name;
    char letter;
    const char* text;
    const char* seen;
};

void PrintTo(const Argument& argument, std::ostream* out)
{
    *out << argument.letter << " " << argument.text;
}

const Argument arguments[] = {
    {"integer_i", 'i', "12", "12"},
    {"integer_i_least", 'i', "-2147483648", "-2147483648"},
    {"integer_i_with_plus", 'i', "+7", "7"},
    {"number_d", 'd', "-1.5e-3", "-0.0015"},
    {"number_d_exact", 'd', "0.1", "0.10000000000000001"},
    {"number_d_infinite", 'd', "-Infinity", "-inf"},
    {"boolean_n_true", 'n', "true", "boolean true"},
    {"boolean_n_false", 'n', "false", "boolean false"},
    {"wide_I_least", 'I', "-9223372036854775808", "userdata -9223372036854775808"},
    {"wide_I_most", 'I', "9223372036854775807", "userdata 9223372036854775807"},
    {"text_s", 's', "DN50 {a} [b] --c", "'DN50 {a} [b] --c'"},
    {"text_s_empty", 's', "", "''"},
    {"text_s_in_brackets", 's', "[1,2]", "'[1,2]'"},
    {"text_s_empty_braces", 's', "{}", "'{}'"},
    {"text_r", 'r', "-x=y", "'-x=y'"},
    {"bytes_y", 'y', "48656c6C6F", "'Hello'"},
    {"bytes_y_none", 'y', "", "''"},
    {"id_o", 'o', "-9223372036854775808", "userdata -9223372036854775808"},
    {"point_p", 'p', "1,-2.5,3e2", "{1=1 2=-2.5 3=300}"},
    {"point_p_with_blanks", 'p', " 1 , 2 ,3", "{1=1 2=2 3=3}"},
    {"point_p_json", 'p', "[1,2,\"Infinity\"]", "{1=1 2=2 3=inf}"},
    {"vector_v", 'v', "-1,0,0", "{1=-1 2=0 3=0}"},
    {"vector_v_json", 'v', "[0,0,1]", "{1=0 2=0 3=1}"},
    {"matrix_X", 'X', "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,-16.5",
     "{1={1=1 2=2 3=3 4=4} 2={1=5 2=6 3=7 4=8} 3={1=9 2=10 3=11 4=12} 4={1=13 2=14 3=15 4=-16.5}}"},
    {"matrix_X_json", 'X', "[[1,2,3,4],[5,6,7,8],[9,10,11,12],[13,14,15,16]]",
     "{1={1=1 2=2 3=3 4=4} 2={1=5 2=6 3=7 4=8} 3={1=9 2=10 3=11 4=12} 4={1=13 2=14 3=15 4=16}}"},
    {"points_P", 'P', "[[1,2,3],[4,5,6]]", "{1={1=1 2=2 3=3} 2={1=4 2=5 3=6}}"},
    {"points_P_none", 'P', "[]", "{}"},
    {"ids_O", 'O', "[9223372036854775807,\"-9223372036854775808\"]",
     "{1=userdata 9223372036854775807 2=userdata -9223372036854775808}"},
    {"texts_S", 'S', R"(["A","","b\"c"])", "{1='A' 2='' 3='b\"c'}"},
    {"polyline_g", 'g', "[[2,10,20,30,[1,2,3]]]", "{1={1=2 2={1=1 2=2 3=3} 3=30 4=10 5=20}}"},
    {"polylines_l", 'l', "[[[2,10,20,30,[1,2,3]]],[]]", "{1={1={1=2 2={1=1 2=2 3=3} 3=30 4=10 5=20}} 2={}}"},
    {"parameters_m", 'm', "P1=5;flag=true;place=1,2,3;name=DN50",
     "{P1=5 flag=boolean true name='DN50' place={1=1 2=2 3=3}}"},
    {"parameters_m_none", 'm', "", "{}"},
    {"parameters_m_one_of_a_name", 'm', "P1=5;P1=6", "{P1=6}"},
    {"parameters_m_object", 'm', R"({"P1":5,"flag":false,"name":"a;b","place":[1,2,3]})",
     "{P1=5 flag=boolean false name='a;b' place={1=1 2=2 3=3}}"},
    {"parameters_m_records", 'm', R"([{"key":"P1","value":5,"note":""}])", "{P1=5}"},
    {"notes_M", 'M', R"([{"key":"P1","note":"length","value":5}])", "{P1={1='length' 2=5}}"},
    {"notes_M_without", 'M', "P1=5", "{P1={1='' 2=5}}"},
    {"ordered_a", 'a', R"([{"key":"b","note":"n","value":5},{"key":"a","value":"x"}])",
     "{1={1='b' 2=5 3='n'} 2={1='a' 2='x' 3=''}}"},
    {"lists_B", 'B', R"([[{"key":"b","note":"n","value":5}],{"a":true}])",
     "{1={1={1='b' 2=5 3='n'}} 2={1={1='a' 2=boolean true 3=''}}}"},
    {"maps_b", 'b', R"([{"a":1,"b":"x"},[{"key":"c","value":[1,2,3]}],{}])",
     "{1={a=1 b='x'} 2={c={1=1 2=2 3=3}} 3={}}"},
    {"data_k", 'k', R"({"a":1,"b":"x"})", "{1={1='a' 2=1} 2={1='b' 2='x'}}"},
    {"data_k_short", 'k', "a=1", "{1={1='a' 2=1}}"},
    {"table_c", 'c', R"({"a":[1,true,"x"],"b":{"c":-0.5}})", "{a={1=1 2=boolean true 3='x'} b={c=-0.5}}"},
    {"table_c_array", 'c', "[[],{}]", "{1={} 2={}}"},
    {"table_t", 't', R"([{"a":1}])", "{1={a=1}}"},
    {"style_x_none", 'x', "none", "nil nil"},
};

class CallArgument : public testing::TestWithParam<Argument> {};

TEST_P(CallArgument, ReachesTheFunction)
{
    const CallRun run;
    EXPECT_EQ(run.seen(std::string(1, GetParam().letter), {GetParam().text}), GetParam().seen);
}

INSTANTIATE_TEST_SUITE_P(Letters, CallArgument, testing::ValuesIn(arguments),
                         [](const auto& argument) { return argument.param.name; });

TEST(CallArguments, EveryLetterThatCanBeGivenIsInTheTableAbove)
{
    std::string letters;
    for (const Argument& argument : arguments) {
        if (letters.find(argument.letter) == std::string::npos) letters += argument.letter;
    }
    EXPECT_THAT(letters, testing::UnorderedElementsAreArray(std::string("idnIsryopvXPOSglmMaBbkctx")));
}

TEST(CallArguments, StandInTheOrderOfTheirLetters)
{
    const CallRun run;
    EXPECT_EQ(run.seen("sidc", {"a", "1", "2.5", "[3]"}), "'a'|1|2.5|{1=3}");
    EXPECT_EQ(run.seen("ccc", {"[1]", "[2]", "[3]"}), "{1=1}|{1=2}|{1=3}");
    EXPECT_EQ(run.seen("", {}), "");
}

TEST(CallArguments, BytesMayBeAny)
{
    const CallRun run;
    const CommandRun called =
        run.call("function f(bytes) return #bytes, bytes:byte(1, -1) end", {"y>iiii", "-q", "00FF5C"});
    EXPECT_EQ(called.output, "i 3\ni 0\ni 255\ni 92\n");
}

TEST(CallArguments, NumberThatIsNoneIsNone)
{
    const CallRun run;
    EXPECT_EQ(run.call("function f(d) return d ~= d end", {"d>n", "-q", "NaN"}).output, "n true\n");
}

TEST(CallArguments, StyleIsThatOfTheScene)
{
    const CallRun run;
    const std::string script = "function f(style) return type(style), style:height() end";
    EXPECT_EQ(run.call(script, {"x>sd", "scene", "-q", "--scene", "isometric.json"}).output,
              "s \"userdata\"\nd 3.5\n");
    const CommandRun none = run.call(script, {"x>sd", "scene"});
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_EQ(none.errors, "quor: ARG 1 (x) scene: a --scene with text styles is expected; there is none\n");
}

TEST(CallArguments, NegativeNumbersNeedNoMark)
{
    const CallRun run;
    const std::string script = "function f(...) return ... end";
    EXPECT_EQ(run.call(script, {"idIop>idIop", "-1", "-2.5", "-3", "-4", "-5,6,7", "-q"}).output,
              "i -1\nd -2.5\nI -3\no -4\np (-5, 6, 7)\n");
}

TEST(CallArguments, StandAsTheyAreBehindTheMark)
{
    const CallRun run;
    const std::string script = "function f(...) return ... end";
    const Arguments texts = {"-q", "--format", "--", "++", "draw", "-"};
    Arguments all = {"ssssss>ssssss", "-q", "--"};
    all.insert(all.end(), texts.begin(), texts.end());
    EXPECT_EQ(run.call(script, all).output,
              "s \"-q\"\ns \"--format\"\ns \"--\"\ns \"++\"\ns \"draw\"\ns \"-\"\n");
}

TEST(CallArguments, MayBeWordsOfTheCommand)
{
    const CallRun run;
    const std::string script = "function f(...) return ... end";
    EXPECT_EQ(run.call(script, {"sss>sss", "draw", "call", "-", "-q"}).output,
              "s \"draw\"\ns \"call\"\ns \"-\"\n");
}

TEST(CallArguments, OfAnotherFormAreWrongUsage)
{
    const struct {
        const char* letters;
        const char* text;
        const char* message;
    } cases[] = {
        {"i", "1.5", "ARG 1 (i) 1.5: a whole number of 32 bits is expected, and this is none"},
        {"i", "2147483648", "ARG 1 (i) 2147483648: a whole number of 32 bits is expected, and this is none"},
        {"i", "", "ARG 1 (i) : a whole number of 32 bits is expected, and this is none"},
        {"i", "+-1", "ARG 1 (i) +-1: a whole number of 32 bits is expected, and this is none"},
        {"i", "0x10", "ARG 1 (i) 0x10: a whole number of 32 bits is expected, and this is none"},
        {"d", "1,5", "ARG 1 (d) 1,5: a number is expected, and this is none"},
        {"d", "abc", "ARG 1 (d) abc: a number is expected, and this is none"},
        {"d", "inf", "ARG 1 (d) inf: a number is expected, and this is none"},
        {"d", "-1e999", "ARG 1 (d) -1e999: a number of usual size is expected, and this is none"},
        {"d", "1e999", "ARG 1 (d) 1e999: a number of usual size is expected, and this is none"},
        {"n", "1", "ARG 1 (n) 1: true or false is expected, and this is none"},
        {"n", "True", "ARG 1 (n) True: true or false is expected, and this is none"},
        {"I", "9223372036854775808",
         "ARG 1 (I) 9223372036854775808: a whole number of 64 bits is expected, and this is none"},
        {"o", "x", "ARG 1 (o) x: an id, a whole number of 64 bits, is expected, and this is none"},
        {"y", "4",
         "ARG 1 (y) 4: a text of hexadecimal digits, two for each byte, is expected, and this is none"},
        {"y", "4G",
         "ARG 1 (y) 4G: a text of hexadecimal digits, two for each byte, is expected, and this is none"},
        {"y", "-1",
         "ARG 1 (y) -1: a text of hexadecimal digits, two for each byte, is expected, and this is none"},
        {"p", "1,2", "ARG 1 (p) 1,2: a point x,y,z is expected, and this is none"},
        {"p", "1,2,3,4", "ARG 1 (p) 1,2,3,4: a point x,y,z is expected, and this is none"},
        {"p", "[1,2]", "ARG 1 (p): a point, three numbers, is expected; an array of 2 is there"},
        {"v", "1,2,x", "ARG 1 (v) 1,2,x: a point x,y,z is expected, and this is none"},
        {"v", "[1,2,true]", "ARG 1 (v): [2]: a number is expected; true is there"},
        {"X", "1,2,3",
         "ARG 1 (X) 1,2,3: a matrix, 16 numbers parted by commas, is expected, and this is none"},
        {"X", "[[1]]", "ARG 1 (X): a matrix, four rows of four numbers, is expected; an array of 1 is there"},
        {"X", "[[1],[2],[3],[4]]",
         "ARG 1 (X): [0]: a row, four numbers, is expected; an array of 1 is there"},
        {"P", "[[1,2,3],5]", "ARG 1 (P): [1]: a point, three numbers, is expected; 5 is there"},
        {"P", "{}", "ARG 1 (P): an array of points is expected; an object is there"},
        {"O", "[1.5]",
         "ARG 1 (O): [0]: an id, a whole number of 64 bits or its digits as a text, is expected; 1.5 is "
         "there"},
        {"O", "[\"1x\"]",
         "ARG 1 (O): [0]: an id, a whole number of 64 bits or its digits as a text, is "
         "expected; the text \"1x\" is there"},
        {"S", "[1]", "ARG 1 (S): [0]: a text is expected; 1 is there"},
        {"S", "A", "ARG 1 (S): line 1, column 1: "},
        {"g", "[[0,[1,2,3]]]",
         "ARG 1 (g): [0]: a vertex [kind,start width,end width,bulge,[x,y,z]] is "
         "expected; an array of 2 is there"},
        {"g", "[[0.5,0,0,0,[1,2,3]]]",
         "ARG 1 (g): [0][0]: a kind, a whole number of 32 bits, is expected; 0.5 is there"},
        {"l", "[5]", "ARG 1 (l): [0]: a polyline, an array of vertices, is expected; 5 is there"},
        {"m", "P1", "ARG 1 (m) P1: NAME=VALUE is expected, and this is not of that form"},
        {"m", "P1=1;", "" /* a semicolon may end the list */},
        {"m", "P1=1;;P2=2", "ARG 1 (m) : NAME=VALUE is expected, and this is not of that form"},
        {"m", "P1=1e999", "ARG 1 (m) P1=1e999: a number of usual size is expected, and this is not one"},
        {"m", "{\"a\":null}",
         "ARG 1 (m): a: a number, a text, true, false or a point is expected; null is there"},
        {"m", "{\"a\":1,\"a\":2}", "ARG 1 (m): a: the key stands here twice"},
        {"m", "[{\"key\":\"a\"}]",
         "ARG 1 (m): [0].value: a number, a text, true, false or a point is expected; it is missing"},
        {"m", "[{\"key\":\"a\",\"value\":1,\"unit\":\"mm\"}]",
         "ARG 1 (m): [0].unit: the key is unknown; known here are key, note, value"},
        {"m", "[{\"key\":\"a\",\"note\":\"n\",\"value\":1}]",
         "ARG 1 (m): [0].note: an empty note, since this letter passes none, is expected; the text \"n\" is "
         "there"},
        {"k", "[{\"key\":\"a\",\"note\":\"n\",\"value\":1}]",
         "ARG 1 (k): [0].note: an empty note, since this letter passes none, is expected; the text \"n\" is "
         "there"},
        {"B", "[1]",
         "ARG 1 (B): [0]: a list of parameters, an object or an array of records, is expected; 1 is there"},
        {"b", "{}", "ARG 1 (b): an array of lists of parameters is expected; an object is there"},
        {"c", "5", "ARG 1 (c): a table, an array or an object, is expected; 5 is there"},
        {"c", "[null]",
         "ARG 1 (c): [0]: a text, a number, true, false, an array or an object is expected; null is there"},
        {"t", "{", "ARG 1 (t): line 1, column 2: "},
        {"x", "STANDARD", "ARG 1 (x) STANDARD: scene or none is expected, and this is none"},
        {"sp", "1", "ARG: 2 are expected, one for each letter before '>'; 1 is there"},
        {"", "1", "ARG: 0 are expected, one for each letter before '>'; 1 is there"},
    };
    const CallRun run;
    for (const auto& [letters, text, message] : cases) {
        const CommandRun called =
            run.call("function f() end print('loaded')", {std::string(letters) + ">", "-q", "--", text});
        const bool isWrong = *message != '\0';
        EXPECT_EQ(called.exitCode, isWrong ? 2 : 0) << letters << " " << text;
        EXPECT_THAT(called.errors, isWrong ? testing::StartsWith(std::string("quor: ") + message)
                                           : testing::StartsWith("loaded\n"))
            << "nothing runs before the arguments are right";
        EXPECT_EQ(called.output, "");
    }
}

TEST(CallArguments, SecondIsNamedAsTheSecond)
{
    const CallRun run;
    EXPECT_EQ(run.call("function f() end", {"sd", "a", "b"}).errors,
              "quor: ARG 2 (d) b: a number is expected, and this is none\n");
}

TEST(CallArguments, DeepTablesAreRefused)
{
    const CallRun run;
    const std::string deep = std::string(32, '[') + std::string(32, ']');
    EXPECT_EQ(run.call("function f() end", {"c", deep, "-q"}).exitCode, 0);
    const CommandRun deeper = run.call("function f() end", {"c", "[" + deep + "]", "-q"});
    EXPECT_EQ(deeper.exitCode, 2);
    EXPECT_THAT(deeper.errors, HasSubstr("it is nested deeper than 32 levels"));
}

TEST(CallArguments, FormatNamesTheLetterThatCannotBe)
{
    const struct {
        const char* format;
        const char* message;
    } cases[] = {
        {"sq>i", "FORMAT sq>i: letter 2, q, is no letter of an argument; these are i d n I s r y o p v X P O "
                 "S g l m M "
                 "a B b k c t x\n"},
        {"T>i", "FORMAT T>i: letter 1, T, is no letter of an argument; "},
        {"s i", "FORMAT s i: letter 2, the byte 20, is no letter of an argument; "},
        {"\u9600>i", "FORMAT \u9600>i: letter 1, the byte E9, is no letter of an argument; "},
        {">ix", "FORMAT >ix: letter 2, x, is no letter of a result; these are i d n I s r y u o p v X P O S "
                "g l m M a "
                "B b k T c t\n"},
        {">i>", "FORMAT >i>: letter 2, >, is no letter of a result; "},
        {"u>i", "FORMAT u>i: letter 1, u, takes a pointer of the host, which no command line can give\n"},
    };
    const CallRun run;
    for (const auto& [format, message] : cases) {
        const CommandRun called = run.call("function f() end", {format, "a"});
        EXPECT_EQ(called.exitCode, 2) << format;
        EXPECT_THAT(called.errors, testing::StartsWith(std::string("quor: ") + message));
    }
    EXPECT_EQ(run.call("function f() end", {">" + std::string(201, 'i')}).errors,
              "quor: FORMAT: at most 200 letters are expected; there are 201\n");
}

} // namespace
