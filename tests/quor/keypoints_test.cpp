#include "CommandRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class Keypoints : public testing::Test {
protected:
    CommandRun ask(const std::string& script, const Arguments& arguments = {})
    {
        Arguments all = {"keypoints", scratch_.write("s.lua", script)};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runQuor(all, {"LC_ALL=C.UTF-8"});
    }
    /// The lines for a list of entries.
    std::string lines(const std::string& entries)
    {
        const CommandRun run =
            ask("function keypoint() return " + entries + " end", {"--format", "text", "--quiet"});
        EXPECT_EQ(run.exitCode, 0) << entries;
        EXPECT_EQ(run.errors, "") << entries;
        return run.output;
    }

    const ScratchFolder scratch_;
};

TEST_F(Keypoints, StandInJsonOneOnALine)
{
    const CommandRun run =
        ask("function keypoint() return {{1, 7, {1, -2.5, 1/3}}, {1, -3, {0, 0, 1e300}}} end");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "{\"script\":\"s.lua\",\"segment\":\"keypoint\",\"status\":0,\n\"keypoints\":[\n"
                          "{\"number\":7,\"point\":[1,-2.5,0.3333333333333333]},\n"
                          "{\"number\":-3,\"point\":[0,0,1e+300]}]}\n");
    EXPECT_EQ(run.errors, "s.lua keypoint: 2 key points\n");
}

TEST_F(Keypoints, StandInTextOneOnALine)
{
    EXPECT_EQ(lines("{{1, 7, {1, -2.5, 0}}, {1, -3, {0, 0, 5}}}"), "7 (1, -2.5, 0)\n-3 (0, 0, 5)\n");
}

TEST_F(Keypoints, KeepTheirOrderAndEqualNumbers)
{
    EXPECT_EQ(lines("{{1, 3, {1, 0, 0}}, {1, 1, {2, 0, 0}}, {1, 3, {1, 0, 0}}}"),
              "3 (1, 0, 0)\n1 (2, 0, 0)\n3 (1, 0, 0)\n");
}

TEST_F(Keypoints, NumbersHaveSixteenBits)
{
    EXPECT_EQ(lines("{{1, 70000, {0, 0, 0}}, {1, 2.9, {0, 0, 0}}}"), "4464 (0, 0, 0)\n2 (0, 0, 0)\n");
}

TEST_F(Keypoints, EntriesThatAreNoneAreLeftOut)
{
    for (const char* entry :
         {"5", "{2, 1, {0, 0, 0}}", "{1, 1}", "{1, 1, {0, 0}}", "{1, 'a', {0, 0, 0}}", "{}"})
        EXPECT_EQ(lines(std::string("{") + entry + ", {1, 9, {0, 0, 0}}}"), "9 (0, 0, 0)\n") << entry;
}

TEST_F(Keypoints, AnswerThatIsNoTableGivesNone)
{
    for (const char* answer : {"nil", "5", "'x'", "{}"}) {
        const CommandRun run = ask(std::string("function keypoint() return ") + answer + " end");
        EXPECT_EQ(run.exitCode, 0) << answer;
        EXPECT_THAT(run.output, EndsWith("\"keypoints\":[]}\n")) << answer;
        EXPECT_EQ(run.errors, "s.lua keypoint: 0 key points\n") << answer;
    }
}

TEST_F(Keypoints, AnySegmentMayBeAsked)
{
    const CommandRun run = ask("function joints() return {{1, 1, {param.P1, 0, 0}}} end param = {P1 = 1}",
                               {"--segment", "joints", "--set", "P1=4", "--format", "text"});
    EXPECT_EQ(run.output, "1 (4, 0, 0)\n");
    EXPECT_EQ(run.errors, "s.lua joints: 1 key point\n");
}

TEST_F(Keypoints, SegmentMayHaveAChineseName)
{
    const CommandRun run = ask("_G['\xB7\xA7'] = function() return {} end", {"--segment", "阀"});
    EXPECT_THAT(run.output, HasSubstr("\"segment\":\"阀\""));
    EXPECT_EQ(run.errors, "s.lua 阀: 0 key points\n");
}

TEST_F(Keypoints, GoIntoAFile)
{
    const std::string output = scratch_.path("out.json");
    const std::string script = "function keypoint() return {{1, 1, {0, 0, 0}}} end";
    const CommandRun run = ask(script, {"-o", output, "-q"});
    EXPECT_EQ(run.output + run.errors, "");
    EXPECT_EQ(readFile(output), ask(script).output);
}

TEST_F(Keypoints, FailingSegmentRemovesTheFileOfBefore)
{
    const struct {
        const char* script;
        const char* message;
    } cases[] = {
        {"function main() end", "segment keypoint: status 10: the script has no segment of that name\n"
                                "its functions are:\n  main\n"},
        {"function keypoint() error('no') end", "segment keypoint: status 4: the segment raised an error\n"
                                                "图形库调用出错：keypoint (error 2003)\n"},
        {"keypoint = 5", "segment keypoint: status 4: the segment raised an error\n"
                         "图形库调用出错：keypoint (error 2003)\n"},
        {"function keypoint( end", "status 4: it cannot be read, compiled or run to its end\n"},
    };
    for (const auto& [script, message] : cases) {
        const CommandRun run = ask(script, {"-o", scratch_.write("out.json", "of before")});
        EXPECT_EQ(run.exitCode, 1) << script;
        EXPECT_THAT(run.errors, EndsWith(message)) << script;
        EXPECT_EQ(scratch_.names(), std::vector<std::string>{"s.lua"}) << script;
    }
}

TEST_F(Keypoints, WrongUsageSaysWhatIsExpected)
{
    const struct {
        Arguments arguments;
        const char* message;
    } cases[] = {
        {{"--segment", ""}, "--segment: the name of a segment is expected; it is empty\n"},
        {{"--format", "xml"}, "--format xml: json or text is expected\n"},
        {{"-o", ""}, "-o: a file, or - for standard output, is expected\n"},
        {{"-o", scratch_.path("s.lua")}, "-o "},
        {{"extra"}, "The following argument was not expected: extra\n"},
        {{"--scene", scratch_.path("none.json")}, "--scene "},
    };
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = ask("function keypoint() return {} end", arguments);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_THAT(run.errors, StartsWith(std::string("quor: ") + message));
        EXPECT_EQ(run.output, "");
    }
    EXPECT_EQ(runQuor({"keypoints"}).exitCode, 2);
}

} // namespace
