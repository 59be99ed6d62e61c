// Questions to segments, and the exchange: what is handed over, what the answers look like, what fails.

#include "CommandRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class Ask : public testing::Test {
protected:
    CommandRun ask(const std::string& script, const Arguments& arguments)
    {
        Arguments all = {"ask", scratch_.write("s.lua", script)};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runQuor(all, {"LC_ALL=C.UTF-8"});
    }
    std::string answer(const std::string& script, const Arguments& arguments)
    {
        Arguments all = {"--quiet"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const CommandRun run = ask(script, all);
        EXPECT_EQ(run.exitCode, 0) << script;
        EXPECT_EQ(run.errors, "") << script;
        return run.output;
    }
    /// What a segment that tests `condition`, in Lua, on its arguments `a` and `b` (and their number `n`)
    /// says.
    std::string whether(const std::string& condition, Arguments arguments)
    {
        arguments.insert(arguments.begin(), {"--kind", "yesno"});
        return answer("function main(...) local n, a, b = select('#', ...), ... return " + condition + " end",
                      arguments);
    }
    /// What the exchange prints, with a function that returns `results`.
    std::string exchange(const std::string& results, Arguments arguments = {})
    {
        arguments.insert(arguments.begin(), {"--kind", "ui"});
        return answer("function quorgetparam_ui(p, ...) assert(select('#', ...) == 0) return " + results +
                          " end",
                      arguments);
    }
    CommandRun failed(const std::string& script, const Arguments& arguments)
    {
        Arguments all = {"-o", scratch_.write("out.txt", "of before")};
        all.insert(all.end(), arguments.begin(), arguments.end());
        CommandRun run = ask(script, all);
        EXPECT_EQ(run.exitCode, 1) << script;
        EXPECT_EQ(run.output, "") << script;
        EXPECT_EQ(scratch_.names(), std::vector<std::string>{"s.lua"}) << script;
        return run;
    }

    const ScratchFolder scratch_;
};

TEST_F(Ask, YesAndNo)
{
    const std::string script = "function isGate() return true end function isGlobe() return false end";
    EXPECT_EQ(answer(script, {"--kind", "yesno", "--segment", "isGate"}), "yes\n");
    EXPECT_EQ(answer(script, {"--kind", "yesno", "--segment", "isGlobe"}), "no\n");
    EXPECT_EQ(answer(script, {"--kind", "yesno", "--segment", "isGlobe", "--format", "json"}),
              "{\"script\":\"s.lua\",\"segment\":\"isGlobe\",\"status\":0,\"answer\":false}\n");
    EXPECT_EQ(ask(script, {"--kind", "yesno", "--segment", "isGate"}).errors, "s.lua isGate: answered\n");
}

TEST_F(Ask, Integers)
{
    const struct {
        const char* number;
        const char* answer;
    } cases[] = {{"5", "5\n"}, {"-2.9", "-2\n"}, {"2147483647", "2147483647\n"}, {"0", "0\n"}};
    for (const auto& [number, expected] : cases)
        EXPECT_EQ(answer(std::string("function main() return ") + number + " end", {"--kind", "integer"}),
                  expected);
    EXPECT_EQ(answer("function main() return 7 end", {"--kind", "integer", "--format", "json"}),
              "{\"script\":\"s.lua\",\"segment\":\"main\",\"status\":0,\"answer\":7}\n");
}

TEST_F(Ask, Directions)
{
    const std::string script = "function dir() return { needxdir = { true, 'a \"b\"' } } end "
                               "function none() return { needxdir = { false, '' } } end";
    EXPECT_EQ(answer(script, {"--kind", "direction", "--segment", "dir"}), "yes\ntext \"a \\\"b\\\"\"\n");
    EXPECT_EQ(answer(script, {"--kind", "direction", "--segment", "none"}), "no\ntext \"\"\n");
    EXPECT_EQ(
        answer(script, {"--kind", "direction", "--segment", "dir", "--format", "json"}),
        "{\"script\":\"s.lua\",\"segment\":\"dir\",\"status\":0,\"answer\":true,\"text\":\"a \\\"b\\\"\"}\n");
}

TEST_F(Ask, SegmentsAreHandedParameters)
{
    EXPECT_EQ(whether("n == 1 and type(a) == 'table' and next(a) == nil", {}), "yes\n");
    EXPECT_EQ(
        whether("n == 1 and a.P1 == 2.5 and a.flag == true and a.place[3] == -3 and a.name == 'DN50'",
                {"--pass", "P1=2.5", "--pass", "flag=true", "--pass", "place=1,2,-3", "--pass", "name=DN50"}),
        "yes\n");
    EXPECT_EQ(whether("a.P1 == 2", {"--pass", "P1=1", "--pass", "P1=2"}), "yes\n");
}

TEST_F(Ask, SegmentsAreHandedAMatrixBehindParameters)
{
    const std::string numbers = "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16";
    EXPECT_EQ(whether("n == 2 and next(a) == nil and #b == 4 and b[2][3] == 7 and b[4][4] == 16",
                      {"--matrix", numbers}),
              "yes\n");
    EXPECT_EQ(whether("n == 2 and a.P1 == 1 and b[1][4] == -4",
                      {"--pass", "P1=1", "--matrix", "[[1,0,0,-4],[0,1,0,0],[0,0,1,0],[0,0,0,1]]"}),
              "yes\n");
}

TEST_F(Ask, SegmentsAreHandedTheScenesTextStyle)
{
    const Arguments scene = {"--textstyle", "--scene", "isometric.json"};
    EXPECT_EQ(whether("n == 1 and a:height() == 3.5", scene), "yes\n");
    EXPECT_EQ(whether("n == 2 and a.P1 == 1 and b:height() == 3.5",
                      {"--pass", "P1=1", "--textstyle", "--scene", "isometric.json"}),
              "yes\n");
    EXPECT_EQ(whether("n == 2 and a[1] == 5 and b:height() == 3.5",
                      {"--table", "[5]", "--textstyle", "--scene", "isometric.json"}),
              "yes\n");
}

TEST_F(Ask, SegmentsAreHandedATable)
{
    EXPECT_EQ(whether("n == 1 and #a == 2 and a[2].b[1] == 'x'", {"--table", R"([1,{"b":["x"]}])"}), "yes\n");
    EXPECT_EQ(whether("n == 1 and next(a) == nil", {"--table", "{}"}), "yes\n");
}

TEST_F(Ask, ParametersOfTheScriptAreWrittenAsEver)
{
    EXPECT_EQ(answer("param = {P1 = 1} glb = {} function main(p) return param.P1 == 4 and p.P1 == 2 end",
                     {"--kind", "yesno", "--set", "P1=2", "--factor", "2", "--pass", "P1=2"}),
              "yes\n");
}

TEST_F(Ask, ExchangeShowsBothPointsAndTheParameters)
{
    EXPECT_EQ(exchange("0, {p[1] + 1, p[2], p[3]}, {4, 5, 6}, {P1 = 5}", {"--first", "1,2,3"}),
              "return 0, Accepted\nfirst (2, 2, 3)\nsecond (4, 5, 6)\nparameters [\"P1\"=5]\n");
    EXPECT_EQ(exchange("0, p, p, {}", {"--first", "-1,-2,-3", "--format", "json"}),
              "{\"script\":\"s.lua\",\"segment\":\"quorgetparam_ui\",\"return\":0,\"name\":\"Accepted\","
              "\"first\":[-1,-2,-3],\"second\":[-1,-2,-3],\"parameters\":[]}\n");
    EXPECT_EQ(exchange("0, p, {1, 2, 3}, {n = '\xB7\xA7'}", {"--first", "[1,2,3]"}),
              "return 0, Accepted\nfirst (1, 2, 3)\nsecond (1, 2, 3)\nparameters [\"n\"=\"阀\"]\n");
}

TEST_F(Ask, ExchangeStartsAtTheOriginWithoutParameters)
{
    EXPECT_EQ(exchange("p[1] + p[2] + p[3]"),
              "return 0, Accepted\nfirst (0, 0, 0)\nsecond (0, 0, 0)\nparameters []\n");
}

TEST_F(Ask, ExchangeKeepsWhatTheScriptDoesNotReturn)
{
    EXPECT_EQ(
        exchange("0, 'no point', 5, true",
                 {"--first", "1,2,3", "--second", "4,5,6", "--pass", "P1=7", "--pass", "name=x"}),
        "return 0, Accepted\nfirst (1, 2, 3)\nsecond (4, 5, 6)\nparameters [\"P1\"=7, \"name\"=\"x\"]\n");
}

TEST_F(Ask, ExchangeThatIsNotAcceptedKeepsTheFirstPoint)
{
    for (const char* status : {"1", "3", "-1", "100"}) {
        EXPECT_EQ(
            exchange(std::string(status) + ", {10, 20, 30}, {40, 50, 60}, {P1 = 5}", {"--first", "1,2,3"}),
            std::string("return ") + status +
                ", the script's own\nfirst (1, 2, 3)\nsecond (40, 50, 60)\nparameters [\"P1\"=5]\n");
    }
    EXPECT_THAT(exchange("7", {"--format", "json"}), HasSubstr("\"return\":7,\"name\":null,"));
}

TEST_F(Ask, ExchangeThatFailsSaysWhy)
{
    const struct {
        const char* script;
        const char* message;
    } cases[] = {
        {"function quorgetparam_ui() error('no', 0) end",
         ":1: function quorgetparam_ui: return 5, CallFailed: the function raised an error\n"},
        {"function quorgetparam_ui() end",
         ":1: function quorgetparam_ui: return 5, CallFailed: the function returned nothing, or only nil\n"},
        {"function quorgetparam_ui() return nil, {1, 2, 3} end",
         ":1: function quorgetparam_ui: return 5, CallFailed: a number is expected as its first result; a "
         "nil value is "
         "there\n"},
        {"function quorgetparam_ui() return {} end",
         ":1: function quorgetparam_ui: return 5, CallFailed: a number is expected as its first result; a "
         "table value is "
         "there\n"},
        {"function quorgetparam_ui() return 5 end", ":1: function quorgetparam_ui: return 5, CallFailed: the "
                                                    "script itself returned this status, which the host "
                                                    "takes for that\n"},
        {"function quorgetparam_ui() return 2 end", ":1: function quorgetparam_ui: return 2, StateMissing: "
                                                    "the script itself returned this status, which the host "
                                                    "takes for that\n"},
        {"function main() end", ": function quorgetparam_ui: the script has no global function of that name\n"
                                "its functions are:\n  main\n"},
        {"quorgetparam_ui = {}",
         ": function quorgetparam_ui: the script has no global function of that name\n"
         "it defines no global function\n"},
    };
    for (const auto& [script, message] : cases)
        EXPECT_THAT(failed(script, {"--kind", "ui"}).errors,
                    EndsWith("quor: " + scratch_.path("s.lua") + message))
            << script;
}

TEST_F(Ask, AnswersOfAnotherTypeAreFailures)
{
    const struct {
        const char* kind;
        const char* answer;
        const char* message;
    } cases[] = {
        {"yesno", "5", "true or false is expected; the segment returned a number value"},
        {"yesno", "nil", "true or false is expected; the segment returned a nil value"},
        {"yesno", "", "true or false is expected; the segment returned a nil value"},
        {"integer", "true", "a number is expected; the segment returned a boolean value"},
        {"integer", "'5'", "a number is expected; the segment returned a string value"},
        {"integer", "{}", "a number is expected; the segment returned a table value"},
        {"direction", "5",
         "{ needxdir = { true or false, text } } is expected; the segment returned something else"},
        {"direction", "{ needxdir = true }",
         "{ needxdir = { true or false, text } } is expected; the segment returned something else"},
        {"direction", "{ needxdir = { true } }",
         "{ needxdir = { true or false, text } } is expected; the segment returned something else"},
        {"direction", "{ needxdir = { 1, 'x' } }",
         "{ needxdir = { true or false, text } } is expected; the segment returned something else"},
    };
    for (const auto& [kind, answer, message] : cases) {
        EXPECT_EQ(failed(std::string("function main() return ") + answer + " end", {"--kind", kind}).errors,
                  "quor: " + scratch_.path("s.lua") + ":1: segment main: status 4: " + message + "\n")
            << kind << " " << answer;
    }
}

TEST_F(Ask, SegmentsThatFailSayWhy)
{
    for (const char* kind : {"yesno", "integer", "direction"}) {
        const CommandRun raised = failed("function main() error('no', 0) end", {"--kind", kind});
        EXPECT_THAT(raised.errors, StartsWith("no\n")) << kind;
        EXPECT_THAT(raised.errors, EndsWith(":1: segment main: status 4: the segment raised an error\n"
                                            "图形库调用出错：main (error 2003)\n"))
            << kind;
        EXPECT_THAT(failed("function main() end", {"--kind", kind, "--segment", "x"}).errors,
                    EndsWith("segment x: status 10: the script has no segment of that name\n"
                             "its functions are:\n  main\n"))
            << kind;
    }
    EXPECT_THAT(failed("main = 5", {"--kind", "yesno"}).errors, HasSubstr("status 10"));
}

TEST_F(Ask, SegmentIsMainElseTheOnlyFunction)
{
    EXPECT_EQ(answer("function only() return true end", {"--kind", "yesno"}), "yes\n");
    const CommandRun run = ask("function a() end function b() end", {"--kind", "yesno"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr("--segment is expected"));
}

TEST_F(Ask, OptionsThatAKindDoesNotTakeAreWrongUsage)
{
    const struct {
        Arguments arguments;
        const char* message;
    } cases[] = {
        {{"--kind", "ui", "--segment", "main"}, "--segment: --kind ui takes none\n"},
        {{"--kind", "ui", "--table", "[]"}, "--table: --kind ui takes none\n"},
        {{"--kind", "ui", "--matrix", "1"}, "--matrix: --kind ui takes none\n"},
        {{"--kind", "ui", "--textstyle"}, "--textstyle: --kind ui takes none\n"},
        {{"--kind", "yesno", "--first", "1,2,3"}, "--first: --kind yesno takes none\n"},
        {{"--kind", "integer", "--second", "1,2,3"}, "--second: --kind integer takes none\n"},
        {{"--kind", "direction", "--pass", "a=1"}, "--pass: --kind direction takes none\n"},
        {{"--kind", "direction", "--table", "[]"}, "--table: --kind direction takes none\n"},
        {{"--kind", "yesno", "--table", "[]", "--pass", "a=1"}, "--table: no segment takes it with --pass\n"},
        {{"--kind", "yesno", "--table", "[]", "--matrix", "1"},
         "--table: no segment takes it with --matrix\n"},
        {{"--kind", "yesno", "--matrix", "1", "--textstyle"},
         "--matrix: no segment takes it with --textstyle\n"},
    };
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = ask("print('loaded')", arguments);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_EQ(run.errors, std::string("quor: ") + message);
    }
}

TEST_F(Ask, WrongUsageSaysWhatIsExpected)
{
    const struct {
        Arguments arguments;
        const char* message;
    } cases[] = {
        {{}, "--kind is required\n"},
        {{"--kind", "colour"}, "--kind colour: yesno, integer, direction or ui is expected\n"},
        {{"--kind", ""}, "--kind : yesno, integer, direction or ui is expected\n"},
        {{"--kind", "yesno", "--segment", ""}, "--segment: the name of a segment is expected; it is empty\n"},
        {{"--kind", "yesno", "--pass", "a"},
         "--pass a: NAME=VALUE is expected, and this is not of that form\n"},
        {{"--kind", "yesno", "--pass", "a=1e999"},
         "--pass a=1e999: a number of usual size is expected, and this is not one\n"},
        {{"--kind", "yesno", "--matrix", "1,2"},
         "--matrix 1,2: a matrix, 16 numbers parted by commas, is expected, and this is none\n"},
        {{"--kind", "yesno", "--table", "5"},
         "--table: a table, an array or an object, is expected; 5 is there\n"},
        {{"--kind", "yesno", "--table", "{"}, "--table: line 1, column 2: "},
        {{"--kind", "yesno", "--textstyle"},
         "--textstyle: a --scene with text styles is expected; there is none\n"},
        {{"--kind", "ui", "--first", "1,2"}, "--first 1,2: a point x,y,z is expected, and this is none\n"},
        {{"--kind", "ui", "--second", "x"}, "--second x: a point x,y,z is expected, and this is none\n"},
        {{"--kind", "ui", "--format", "xml"}, "--format xml: json or text is expected\n"},
        {{"--kind", "ui", "-o", scratch_.path("s.lua")}, "-o "},
    };
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = ask("print('loaded')", arguments);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_THAT(run.errors, StartsWith(std::string("quor: ") + message));
        EXPECT_EQ(run.output, "");
    }
}

TEST_F(Ask, BytesThatAreNoGbkAreTold)
{
    const CommandRun run =
        ask("function quorgetparam_ui() return 0, nil, nil, {name = '\\255'} end", {"--kind", "ui"});
    EXPECT_THAT(run.output, EndsWith("parameters [\"name\"=\"\\xFF\"]\n"));
    EXPECT_EQ(run.errors, scratch_.path("s.lua") +
                              ": 1 byte in its texts is no GBK and stands as \\x80 to \\xFF\n"
                              "s.lua quorgetparam_ui: answered\n");
}

} // namespace
