// What a call shows for every letter of a result, and which results it does not give.

#include "CallRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

struct Result {
    const char* name;
    char letter;
    const char* expression;
    const char* line;
    const char* json;
};

void PrintTo(const Result& result, std::ostream* out)
{
    *out << result.letter << " " << result.expression;
}

const Result results[] = {
    {"integer_i", 'i', "-12", "-12", "-12"},
    {"integer_i_cut", 'i', "3.9", "3", "3"},
    {"integer_i_of_a_boolean", 'i', "true", "1", "1"},
    {"number_d", 'd', "0.1 + 0.2", "0.30000000000000004", "0.30000000000000004"},
    {"number_d_whole", 'd', "2^53", "9007199254740992", "9007199254740992"},
    {"number_d_of_a_text", 'd', "'2.5'", "2.5", "2.5"},
    {"number_d_none", 'd', "-(0/0)", "nan", R"("NaN")"},
    {"number_d_none_signed", 'd', "0/0", "nan", R"("NaN")"},
    {"number_d_infinite", 'd', "-1/0", "-inf", R"("-Infinity")"},
    {"boolean_n", 'n', "false", "false", "false"},
    {"wide_I", 'I', "int64('-9223372036854775808')", "-9223372036854775808", "-9223372036854775808"},
    {"wide_I_of_nil", 'I', "nil", "0", "0"},
    {"text_s", 's', R"('a"b\\c\nd')", R"("a\"b\\c\nd")", R"("a\"b\\c\nd")"},
    {"text_s_of_a_number", 's', "12", R"("12")", R"("12")"},
    {"text_s_of_nil", 's', "nil", "null", "null"},
    {"text_s_up_to_its_first_0", 's', R"('a\000b')", R"("a")", R"("a")"},
    {"text_r", 'r', R"('a\000b')", R"("a\x00b")", R"("a\u0000b")"},
    {"bytes_y", 'y', R"('a\000\255')", R"("6100FF")", R"("6100FF")"},
    {"bytes_y_none", 'y', "''", R"("")", R"("")"},
    {"pointer_u_of_a_number", 'u', "5", "null", "null"},
    {"id_o", 'o', "int64('9223372036854775807')", "9223372036854775807", "9223372036854775807"},
    {"id_o_of_nil", 'o', "nil", "0", "0"},
    {"point_p", 'p', "{1, -2.5, 3e10}", "(1, -2.5, 30000000000)", "[1,-2.5,30000000000]"},
    {"point_p_of_another_table", 'p', "{}", "(0, 0, 0)", "[0,0,0]"},
    {"vector_v", 'v', "{0, 0, 1}", "(0, 0, 1)", "[0,0,1]"},
    {"matrix_X", 'X', "{{1,2,3,4},{5,6,7,8},{9,10,11,12},{13,14,15,16.5}}",
     "[(1, 2, 3, 4), (5, 6, 7, 8), (9, 10, 11, 12), (13, 14, 15, 16.5)]",
     "[[1,2,3,4],[5,6,7,8],[9,10,11,12],[13,14,15,16.5]]"},
    {"points_P", 'P', "{{1,2,3},'bad',{4,5,6}}", "[(1, 2, 3), (4, 5, 6)]", "[[1,2,3],[4,5,6]]"},
    {"ids_O", 'O', "{int64('9007199254740993'), 5}", "[9007199254740993, 5]", "[9007199254740993,5]"},
    {"texts_S", 'S', "{'A', 'B'}", R"(["A", "B"])", R"(["A","B"])"},
    {"texts_S_none", 'S', "{}", "[]", "[]"},
    {"polyline_g", 'g', "{{1, {1,2,3}, 0.5, 10, 20}}", "[{1, 10, 20, 0.5, (1, 2, 3)}]",
     "[[1,10,20,0.5,[1,2,3]]]"},
    {"polylines_l", 'l', "{{{1, {1,2,3}}}, {}}", "[[{1, 0, 0, 0, (1, 2, 3)}], []]",
     "[[[1,0,0,0,[1,2,3]]],[]]"},
    {"parameters_m", 'm', "{P1 = 5}", R"(["P1"=5])", R"([{"key":"P1","note":"","value":5}])"},
    {"parameters_m_without_value", 'm', "{P1 = {}}", R"(["P1"=null])",
     R"([{"key":"P1","note":"","value":null}])"},
    {"notes_M", 'M', "{P1 = {'length', {1,2,3}}}", R"(["P1"=(1, 2, 3) ("length")])",
     R"([{"key":"P1","note":"length","value":[1,2,3]}])"},
    {"ordered_a", 'a', "{{'b', true, 'n'}, {'a', 'x'}}", R"(["b"=true ("n"), "a"="x"])",
     R"([{"key":"b","note":"n","value":true},{"key":"a","note":"","value":"x"}])"},
    {"lists_B", 'B', "{{{'b', 1}}, {}}", R"([["b"=1], []])", R"([[{"key":"b","note":"","value":1}],[]])"},
    {"maps_b", 'b', "{{b = 1}, {}}", R"([["b"=1], []])", R"([[{"key":"b","note":"","value":1}],[]])"},
    {"data_k", 'k', "{{'b', 1}}", R"(["b"=1])", R"([{"key":"b","value":1}])"},
    {"primitives_T", 'T', "{{16, {0,0,0}, {1,0,0}}, 'bad', {10, {0,0,5}, 2.5}}",
     "2 primitives\n"
     "  0 createQuorLine((0, 0, 0), (1, 0, 0)) color=257 thick=0 ltScale=1 lineType=null\n"
     "  1 createQuorGraphy3DSphere((0, 0, 5), 2.5, 12, false) color=257 material=null",
     R"([{"factory":"createQuorLine","args":[[0,0,0],[1,0,0]],"color":257,"thick":0,"ltScale":1,"lineType":null},
         {"factory":"createQuorGraphy3DSphere","args":[[0,0,5],2.5,12,false],"color":257,"material":null}])"},
    {"primitives_T_none", 'T', "{}", "0 primitives", "[]"},
    {"table_c", 'c', "{1, 'a', x = {true}}", R"({1, "a", x = {true}})", R"({"[1]":1,"[2]":"a","x":[true]})"},
    {"table_t", 't', "{1, 2}", "{1, 2}", "[1,2]"},
};

class CallResult : public testing::TestWithParam<Result> {};

TEST_P(CallResult, IsShownAsALineAndInJson)
{
    const CallRun run;
    // One that is always given, so that results that are all nil are no failure.
    const std::string letters = std::string(1, GetParam().letter) + "n";
    const std::string expressions = std::string(GetParam().expression) + ", true";
    EXPECT_EQ(run.lines(letters, expressions),
              std::string(1, GetParam().letter) + " " + GetParam().line + "\nn true\n");
    EXPECT_EQ(run.values(letters, expressions), Json::array({Json::parse(GetParam().json), true}));
}

INSTANTIATE_TEST_SUITE_P(Letters, CallResult, testing::ValuesIn(results),
                         [](const auto& result) { return result.param.name; });

TEST(CallResults, EveryLetterIsInTheTableAbove)
{
    std::string letters;
    for (const Result& result : results) {
        if (letters.find(result.letter) == std::string::npos) letters += result.letter;
    }
    EXPECT_THAT(letters, testing::UnorderedElementsAreArray(std::string("idnIsryuopvXPOSglmMaBbkTct")));
}

struct Value {
    const char* expression;
    const char* letters; ///< those that take it, besides 'u', which takes all
};

const Value values[] = {
    {"nil", "sIo"},
    {"true", "in"},
    {"5", "idsry"},
    {"'2.5'", "dsry"},
    {"'-0x10'", "dsry"},
    {"'5x'", "sry"},
    {"''", "sry"},
    {"{}", "pvXPOSglmMaBbkTct"},
    {"print", ""},
    {"coroutine.create(function() end)", ""},
    {"int64(5)", "Io"},
    {"io.stderr", "Io"},
    {"_glib_pass_functor_pointer", "Io"},
};

TEST(CallResults, OfAnotherTypeAreNotGiven)
{
    const CallRun run;
    const std::string all = "idnIsryuopvXPOSglmMaBbkTct";
    for (const auto& [expression, letters] : values) {
        std::string list = "true";
        for (std::size_t i = 0; i < all.size(); ++i)
            list += std::string(", ") + expression;
        const CommandRun called =
            run.call("function f() return " + list + " end",
                     {">n" + all, "-q", "--format", "json", "--scene", "isometric.json"});
        ASSERT_EQ(called.exitCode, 0) << called.errors;
        const Json shownResults = Json::parse(called.output).at("results");
        ASSERT_EQ(shownResults.size(), all.size() + 1);
        std::string shown;
        for (std::size_t i = 0; i < all.size(); ++i) {
            const Json& result = shownResults[i + 1];
            EXPECT_EQ(result.at("letter"), std::string(1, all[i]));
            if (result.contains("value"))
                shown += all[i];
            else
                EXPECT_EQ(result.at("given"), false);
        }
        EXPECT_THAT(shown, testing::UnorderedElementsAreArray(letters + std::string("u"))) << expression;
    }
}

TEST(CallResults, NotGivenIsNoValueOfAnyLetter)
{
    const CallRun run;
    EXPECT_EQ(run.lines("insdp", "'x', 0, 'not given', 'x', 5"),
              "i not given\nn not given\ns \"not given\"\nd not given\np not given\n");
    const CommandRun called = run.call("function f() return 5 end", {">ip", "--format", "json"});
    EXPECT_EQ(called.output, "{\"script\":\"s.lua\",\"function\":\"f\",\"format\":\">ip\",\n\"results\":[\n"
                             "{\"letter\":\"i\",\"value\":5},\n{\"letter\":\"p\",\"given\":false}]}\n");
    EXPECT_EQ(called.errors, "s.lua f: 2 results, 1 not given\n");
}

TEST(CallResults, AreTakenFromTheFirstOn)
{
    const CallRun run;
    EXPECT_EQ(run.lines("i", "1, 2, 3"), "i 1\n");
    EXPECT_EQ(run.lines("iis", "1"), "i 1\ni not given\ns null\n");
}

TEST(CallResults, PointersAreTheirAddresses)
{
    const CallRun run;
    const std::string lines = run.lines("uu", "io.stderr, io.stderr");
    EXPECT_TRUE(std::regex_match(lines, std::regex("u 0x([0-9a-f]+)\nu 0x\\1\n"))) << lines;
    const Json pointers = run.values("uuu", "io.stderr, io.stderr, io.stdin");
    EXPECT_EQ(pointers[0], pointers[1]);
    EXPECT_NE(pointers[0], pointers[2]);
}

TEST(CallResults, TablesShowTheirKeysInOrder)
{
    const CallRun run;
    const std::string table = "{10, 20, nil, 40, b = 1, a = 2, ['b c'] = 3, [-1] = 4, [1.5] = 5, [true] = 6, "
                              "[false] = 7, ['[1]'] = 8}";
    EXPECT_EQ(
        run.lines("c", "(function() local t = {} t[1] = 10 t[2] = 20 t[4] = 40 t.b = 1 t.a = 2 t['b c'] = 3 "
                       "t[-1] = 4 t[1.5] = 5 t[true] = 6 t[false] = 7 t['[1]'] = 8 return t end)()"),
        "c {10, 20, [-1] = 4, [1.5] = 5, [4] = 40, [\"[1]\"] = 8, a = 2, b = 1, [\"b c\"] = 3, [false] = 7, "
        "[true] = 6}\n");
    const CommandRun called =
        run.call("function f() return " + table + " end", {">c", "-q", "--format", "json"});
    EXPECT_THAT(called.output,
                HasSubstr(R"({"[1]":10,"[2]":20,"[-1]":4,"[1.5]":5,"[4]":40,"[\"[1]\"]":8,"a":2,)"
                          R"("b":1,"b c":3,"[false]":7,"[true]":6})"));
}

TEST(CallResults, TablesHoldWhatJsonHasNoFormFor)
{
    const CallRun run;
    const std::string table = "{f = print, n = int64('9007199254740993'), u = io.stderr, x = 0/0, "
                              "[print] = 1, [int64(5)] = 2, [{}] = 3}";
    const std::string line = run.lines("c", table);
    EXPECT_THAT(line, testing::StartsWith(
                          "c {f = <function>, n = int64(\"9007199254740993\"), u = <userdata>, x = "));
    for (const char* entry : {"[<function>] = 1", "[int64(\"5\")] = 2", "[<table>] = 3"})
        EXPECT_THAT(line, HasSubstr(entry));
    const Json json = run.values("c", table)[0];
    EXPECT_EQ(json,
              Json::parse(R"({"f":{"[]":"function"},"n":9007199254740993,"u":{"[]":"userdata"},"x":"NaN",
                                    "[<function>]":1,"[int64(\"5\")]":2,"[<table>]":3})"));
}

TEST(CallResults, KeysWithoutANameAreNumbered)
{
    const CallRun run;
    EXPECT_EQ(run.values("c", "{[print] = 1, [type] = 1}")[0],
              Json::parse(R"({"[<function>]":1,"[<function>]#2":1})"));
}

TEST(CallResults, TablesThatComeAgainAreShownOnce)
{
    const CallRun run;
    const std::string table = "(function() local t = {a = {b = {}}} t.self = t t.a.up = t t.again = t.a.b "
                              "t[1] = t.a return t end)()";
    EXPECT_EQ(run.lines("c", table),
              "c {{b = {}, up = <see top>}, a = <see [1]>, again = <see [1].b>, self = <see top>}\n");
    EXPECT_EQ(run.values("t", table)[0],
              Json::parse(R"({"[1]":{"b":{},"up":{"[]":"seen","at":""}},"a":{"[]":"seen","at":"[1]"},
                              "again":{"[]":"seen","at":"[1].b"},"self":{"[]":"seen","at":""}})"));
}

TEST(CallResults, DeepTablesEnd)
{
    const CallRun run;
    const std::string nest = "(function(n) local t = {} for i = 1, n do t = {t} end return t end)";
    EXPECT_EQ(run.lines("c", nest + "(19)"), "c " + std::string(20, '{') + std::string(20, '}') + "\n");
    EXPECT_EQ(run.lines("c", nest + "(100000)"),
              "c " + std::string(20, '{') + "<deeper>" + std::string(20, '}') + "\n");
    EXPECT_THAT(run.values("c", nest + "(20)")[0].dump(), HasSubstr(R"([{"[]":"deeper"}])"));
}

TEST(CallResults, LargeTablesTellWhatIsLeftOut)
{
    const CallRun run;
    const std::string list = "(function(n) local t = {} for i = 1, n do t[i] = i end return t end)";
    EXPECT_EQ(run.values("c", list + "(1000)")[0].size(), 1000u);
    const Json longer = run.values("c", list + "(100000)")[0];
    ASSERT_EQ(longer.size(), 1001u);
    EXPECT_EQ(longer[999], 1000);
    EXPECT_EQ(longer[1000], Json::parse(R"({"[]":"more","count":99000})"));
    EXPECT_THAT(run.lines("c", list + "(1005)"), testing::EndsWith(", 999, 1000, <5 more>}\n"));
    const std::string map = "(function(n) local t = {} for i = 1, n do t[string.format('k%05d', i)] = i end "
                            "return t end)";
    const Json wider = run.values("c", map + "(3000)")[0];
    EXPECT_EQ(wider.size(), 1001u);
    EXPECT_EQ(wider.at("k01000"), 1000);
    EXPECT_EQ(wider.at("[]"), 2000);
}

TEST(CallResults, TablesThatDoubleEnd)
{
    const CallRun run;
    const std::string doubled = "(function() local t = {} for i = 1, 15 do t = {t, t} end return t end)()";
    EXPECT_EQ(run.lines("c", doubled).substr(0, 17), "c " + std::string(15, '{'));
    EXPECT_LT(run.lines("c", doubled).size(), 1000u);
}

TEST(CallResults, MetamethodsAreNotAsked)
{
    const CallRun run;
    EXPECT_EQ(run.lines("c",
                        "setmetatable({1}, {__index = error, __tostring = error, __len = error, __pairs = "
                        "error})"),
              "c {1}\n");
}

TEST(CallResults, ManyTablesAtOnce)
{
    const CallRun run;
    EXPECT_EQ(run.lines("ctct", "{1}, {2}, {3}, {4}"), "c {1}\nt {2}\nc {3}\nt {4}\n");
    std::string expressions = "{0}";
    for (int i = 1; i < 150; ++i)
        expressions += ", {" + std::to_string(i) + "}";
    EXPECT_THAT(run.lines(std::string(150, 't'), expressions), testing::EndsWith("t {148}\nt {149}\n"));
}

} // namespace
