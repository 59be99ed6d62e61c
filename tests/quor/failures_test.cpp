#include "CommandRun.h"
#include "TestSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sys::inSystemForm;
using sys::makeLink;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using testsystem::isWindows;

class Failures : public testing::Test {
protected:
    CommandRun draw(const Arguments& arguments)
    {
        Arguments all = {"draw"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runQuor(all, {"LC_ALL=C.UTF-8"});
    }

    /// Runs a script with an output file that is there from before, and expects it to fail.
    CommandRun failed(const std::string& text, const Arguments& arguments = {})
    {
        path_ = scratch_.write("s.lua", text);
        const std::string output = scratch_.write("out.json", "of before");
        Arguments all = {path_, "-o", output};
        all.insert(all.end(), arguments.begin(), arguments.end());
        CommandRun run = draw(all);
        EXPECT_EQ(run.exitCode, 1) << text;
        EXPECT_EQ(run.output, "") << text;
        for (const std::string& name : scratch_.names())
            EXPECT_THAT(name, testing::Not(StartsWith("out.json"))) << text;
        return run;
    }

    const ScratchFolder scratch_;
    std::string path_;
};

TEST_F(Failures, MissingScriptNamesThePlacesLookedAt)
{
    const CommandRun run = draw({"missing.lua", "--installation", scratch_.path(""), "--project",
                                 scratch_.path(""), "-o", scratch_.path("out.json")});
    EXPECT_EQ(run.exitCode, 1);
    const std::string folder = scratch_.path("");
    EXPECT_EQ(run.errors, "quor: missing.lua: status 1: there is no such file, or it cannot be examined\n"
                          "looked for:\n  missing.lua\n  " +
                              sys::inSystemForm(folder + "missing.lua\n  " + folder +
                                                "components/missing.lua\n  " + folder + "missing.lua\n"));
    EXPECT_TRUE(scratch_.names().empty());
}

TEST_F(Failures, FilesThatAreNotThereAreStatusOne)
{
    makeLink(scratch_.path("nowhere"), scratch_.path("dangling.lua")); // else it is absent, too
    scratch_.write("file.lua", "");
    for (const char* name : {"absent.lua", "dangling.lua", "file.lua/inside.lua"}) {
        const std::string path = scratch_.path(name);
        const CommandRun run = draw({path});
        EXPECT_EQ(run.exitCode, 1) << name;
        EXPECT_EQ(run.errors,
                  "quor: " + path + ": status 1: there is no such file, or it cannot be examined\n");
    }
}

TEST_F(Failures, FolderIsNoScript)
{
    const std::string path = scratch_.makeFolder("folder.lua");
    const CommandRun run = draw({path});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, StartsWith("cannot open " + path + ": Is a directory\n"));
    EXPECT_THAT(run.errors,
                EndsWith("quor: " + path + ": status 4: it cannot be read, compiled or run to its end\n"));
}

TEST_F(Failures, PipeIsNoScriptAndBlocksNothing)
{
    const testsystem::Pipe pipe(scratch_, "pipe.lua");
    const CommandRun run = draw({pipe.path()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors,
                HasSubstr(isWindows ? "quor: " + pipe.path() +
                                          ": status 1: there is no such file, or it cannot be examined\n"
                                    : "cannot open " + pipe.path() + ": not a regular file\n"));
}

TEST_F(Failures, SyntaxErrorNamesFileAndLine)
{
    const CommandRun run = failed("param = {}\nfunction main( return end\n");
    EXPECT_THAT(run.errors, StartsWith(path_ + ":2: "));
    EXPECT_THAT(run.errors,
                EndsWith("quor: " + path_ + ": status 4: it cannot be read, compiled or run to its end\n"));
}

TEST_F(Failures, ErrorWhileLoadingNamesFileAndLine)
{
    const CommandRun run = failed("param = {}\n\nerror('no catalogue')\n");
    EXPECT_THAT(run.errors, StartsWith(path_ + ":3: no catalogue\n"));
    EXPECT_THAT(run.errors, HasSubstr("status 4"));
}

TEST_F(Failures, ExitIsAnErrorThatNamesIt)
{
    const std::string called = failed("function main()\n  os.exit(0)\nend\n").errors;
    EXPECT_THAT(called, StartsWith(path_ + ":2: os.exit: a script cannot end the program that runs it\n"));
    EXPECT_THAT(called, HasSubstr("segment main: status 4: the segment raised an error"));
    const std::string loaded = failed("\nos.exit()\n").errors;
    EXPECT_THAT(loaded, StartsWith(path_ + ":2: os.exit: "));
}

TEST_F(Failures, ResultBehindALinkIsRemovedAndTheLinkStays)
{
    const std::string path = scratch_.write("s.lua", "function main() error('no') end");
    const std::string link = scratch_.path("link.json");
    if (!makeLink("old.json", link)) GTEST_SKIP() << "no links can be made here";
    for (const char* what : {"a result", "a dangling link"}) {
        if (what == std::string("a result")) scratch_.write("old.json", "of before");
        EXPECT_EQ(draw({path, "-o", link}).exitCode, 1) << what;
        EXPECT_EQ(scratch_.names(), (std::vector<std::string>{"link.json", "s.lua"})) << what;
    }
}

TEST_F(Failures, ScriptThatDoesNotLoadIsNeverTheOutput)
{
    const std::string text = "function main( return end";
    const std::string path = scratch_.write("bad.lua", text);
    std::filesystem::create_hard_link(path, scratch_.path("hard.lua"));
    std::vector<std::string> names = {"bad.lua", "hard.lua"};
    if (makeLink(path, scratch_.path("soft.lua"))) names.emplace_back("soft.lua");
    for (const std::string& name : names) {
        const std::string output = scratch_.path(name);
        const CommandRun run = draw({path, "-o", output});
        EXPECT_EQ(run.exitCode, 2) << name;
        EXPECT_EQ(run.errors, "quor: -o " + output + ": a file other than the script is expected\n");
        EXPECT_EQ(readFile(path), text) << name;
        EXPECT_EQ(scratch_.names(), names);
    }
}

TEST_F(Failures, LinksInACircleAreWrongUsage)
{
    const std::string path = scratch_.write("s.lua", "function main() return {} end");
    if (!makeLink("b.json", scratch_.path("a.json"))) GTEST_SKIP() << "no links can be made here";
    ASSERT_TRUE(makeLink("a.json", scratch_.path("b.json")));
    const CommandRun run = draw({path, "-o", scratch_.path("a.json")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, HasSubstr(isWindows ? "cannot be written: "
                                                : "cannot be written: Too many levels of symbolic links"));
    EXPECT_EQ(scratch_.names(), (std::vector<std::string>{"a.json", "b.json", "s.lua"}));
}

TEST_F(Failures, SegmentThatRaisesNamesFileLineAndSegment)
{
    const CommandRun run = failed("param = {}\nfunction body()\n  local x = nil + 1\nend\n");
    EXPECT_THAT(run.errors, StartsWith(path_ + ":3: attempt to perform arithmetic on a nil value\n"));
    EXPECT_THAT(run.errors, EndsWith("quor: " + path_ +
                                     ":2: segment body: status 4: the segment raised an error\n"
                                     "图形库调用出错：body (error 2003)\n"));
}

TEST_F(Failures, ErrorsThatAreNoTextsAreDescribed)
{
    const struct {
        const char* error;
        const char* text;
    } cases[] = {
        {"error({})", "(error object is a table value)\n"},
        {"error()", "(error object is a nil value)\n"},
        {"error(nil)", "(error object is a nil value)\n"},
        {"error(true)", "(error object is a boolean value)\n"},
        {"error(setmetatable({}, {__tostring = error}))", "(error object is a table value)\n"},
        {"error(12, 0)", "12\n"},
    };
    for (const auto& [error, text] : cases) {
        const CommandRun run = failed(std::string("function main()\n  ") + error + "\nend\n");
        EXPECT_THAT(run.errors, AllOf(StartsWith(text), HasSubstr(path_ + ":2: "),
                                      HasSubstr("segment main: status 4: the segment raised an error")))
            << error;
    }
}

TEST_F(Failures, PercentSignsOfAScriptAreShownAsTheyStand)
{
    EXPECT_THAT(failed("function main() error('100%s %n', 0) end").errors, StartsWith("100%s %n\n"));
}

TEST_F(Failures, SegmentsThatReturnNoTable)
{
    for (const char* answer :
         {"", "return", "return nil", "return 5", "return 'x'", "return true", "return main"}) {
        const CommandRun run = failed(std::string("function main() ") + answer + " end");
        EXPECT_EQ(run.errors,
                  "quor: " + path_ +
                      ":1: segment main: status 4: the segment did not return a table of primitives\n"
                      "图形库脚本未返回结果 (error 2007)\n")
            << answer;
    }
}

TEST_F(Failures, GlobalThatIsNoFunctionCannotBeCalled)
{
    for (const char* value : {"5", "{}", "'x'", "true"}) {
        const CommandRun run = failed(std::string("main = ") + value);
        EXPECT_THAT(run.errors, HasSubstr("segment main: status 4: the segment raised an error")) << value;
    }
}

TEST_F(Failures, MissingSegmentListsThoseThatAreThere)
{
    const CommandRun run = failed("function symbol() end function main() end", {"--segment", "keypoint"});
    EXPECT_EQ(run.errors, "quor: " + path_ +
                              ": segment keypoint: status 10: the script has no segment of that name\n"
                              "its functions are:\n  main\n  symbol\n");
}

TEST_F(Failures, SeveralFunctionsAndNoMainAreWrongUsage)
{
    const std::string path = scratch_.write("two.lua", "function b() end function a() end");
    const std::string output = scratch_.write("out.json", "of before");
    const CommandRun run = draw({path, "-o", output});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors,
              "quor: " + path +
                  ": --segment is expected, since the script has no \"main\"; its functions are:\n"
                  "  a\n  b\n");
    EXPECT_EQ(readFile(output), "of before");
}

TEST_F(Failures, ScriptWithoutFunctionsIsWrongUsage)
{
    for (const char* text : {"", "param = {}", "local function main() end", "copied = print"}) {
        const std::string path = scratch_.write("none.lua", text);
        const CommandRun run = draw({path});
        EXPECT_EQ(run.exitCode, 2) << text;
        EXPECT_EQ(run.errors,
                  "quor: " + path +
                      ": --segment is expected, since the script has no \"main\"; it defines no global "
                      "function\n");
    }
}

TEST_F(Failures, RaisingMetatableOnTheGlobalsIsNoCrash)
{
    const std::string strict = "setmetatable(_G, {__index = function(_, name) error('no ' .. name) end})\n";
    const std::string path = scratch_.write("strict.lua", strict + "function main() return {} end");
    EXPECT_EQ(draw({path}).exitCode, 0);
    const std::string only = scratch_.write("only.lua", strict + "function only() return {} end");
    EXPECT_EQ(draw({only}).errors, "only.lua only: 0 primitives\n");
    EXPECT_THAT(failed(strict + "function main() end", {"--segment", "other"}).errors,
                HasSubstr("status 10"));
}

TEST_F(Failures, RaisingCollectorIsNoCrash)
{
    const std::string garbage =
        "local p = newproxy(true) getmetatable(p).__gc = function() error('gc') end p = nil\n";
    const std::string path = scratch_.write("gc.lua", garbage + "function main() return {} end");
    const CommandRun run = draw({path});
    EXPECT_TRUE(run.exitCode == 0 || run.exitCode == 1) << run.exitCode;
    EXPECT_THAT(run.errors, testing::Not(HasSubstr("PANIC")));
}

TEST_F(Failures, CyclicGroupsEnd)
{
    const std::string path =
        scratch_.write("cycle.lua", "local g = {40} g[2] = {g} function main() return {g} end");
    EXPECT_EQ(draw({path}).errors, "cycle.lua main: 0 primitives\n");
}

TEST_F(Failures, OutputThatCannotBeWrittenIsWrongUsage)
{
    const std::string path = scratch_.write("s.lua", "function main() return {} end");
    struct Case {
        std::string output;
        std::string message;
    };
    std::vector<Case> cases = {
        {scratch_.path("no/folder.json"),
         "-o " + scratch_.path("no/folder.json") + ": cannot be written: No such file or directory"},
        {scratch_.path(""), "-o " + scratch_.path("") + ": cannot be written: Is a directory"},
        {path + "/x", "-o " + path + "/x: cannot be written: " +
                          (isWindows ? "No such file or directory" : "Not a directory")},
        {"", "-o: a file, or - for standard output, is expected"},
        {path, "-o " + path + ": a file other than the script is expected"},
    };
    if (!isWindows)
        cases.push_back({"/dev/full", "-o /dev/full: cannot be written: No space left on device"});
    for (const auto& [output, message] : cases) {
        const CommandRun run = draw({path, "-o", output});
        EXPECT_EQ(run.exitCode, 2) << output;
        EXPECT_EQ(run.errors, "quor: " + message + "\n");
        EXPECT_EQ(scratch_.names(), std::vector<std::string>{"s.lua"});
    }
}

TEST_F(Failures, FullStandardOutputIsWrongUsage)
{
    const std::string path = scratch_.write("s.lua", "function main() return {} end");
    if (isWindows) GTEST_SKIP() << "no device is always full";
    const CommandRun run = draw({path, "-o", "/dev/stdout"});
    EXPECT_EQ(run.exitCode, 0);
    const CommandRun full =
        runProgram({"/bin/sh", "-c", "exec \"$0\" draw -q \"$1\" > /dev/full", quorCommand(), path});
    EXPECT_EQ(full.exitCode, 2);
    EXPECT_EQ(full.errors, "quor: standard output: cannot be written: No space left on device\n");
}

TEST_F(Failures, ProtectedFileIsKept)
{
    const std::string path = scratch_.write("s.lua", "function main() return {} end");
    const std::string output = scratch_.write("out.json", "protected");
    if (!testsystem::protect(output)) GTEST_SKIP() << "root may write everything";
    const CommandRun run = draw({path, "-o", output});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors, "quor: -o " + output + ": cannot be written: Permission denied\n");
    EXPECT_EQ(readFile(output), "protected");
}

TEST_F(Failures, WrongUsageSaysWhatIsExpected)
{
    const std::string path = scratch_.write("s.lua", "function main() return {} end");
    const struct {
        Arguments arguments;
        const char* message;
    } cases[] = {
        {{}, "quor: a subcommand is expected\n"},
        {{"draw"}, "quor: SCRIPT is required\n"},
        {{"paint", path}, "quor: The following arguments were not expected: "},
        {{"draw", path, "extra"}, "quor: The following argument was not expected: extra\n"},
        {{"draw", path, "--bogus"}, "quor: The following argument was not expected: --bogus\n"},
        {{"draw", path, "--segment"}, "quor: --segment"},
        {{"draw", path, "--format", "xml"}, "quor: --format xml: json or text is expected\n"},
        {{"draw", path, "--format", ""}, "quor: --format : json or text is expected\n"},
        {{"draw", path, "--segment", ""},
         "quor: --segment: the name of a segment is expected; it is empty\n"},
        {{"draw", ""}, "quor: SCRIPT: the path of a script is expected; it is empty\n"},
        {{"draw", path, "--installation", "/nowhere"},
         "quor: --installation /nowhere: a folder is expected; there is none\n"},
        {{"draw", path, "--installation", ""},
         "quor: --installation: the path of a folder is expected; it is empty\n"},
        {{"draw", path, "--project", ""}, "quor: --project: the path of a folder is expected; it is empty\n"},
        {{"draw", path, "--project", path.c_str()}, "quor: --project "},
    };
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = runQuor(arguments);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_THAT(run.errors, StartsWith(message));
        EXPECT_EQ(run.output, "");
    }
}

TEST_F(Failures, FolderThatTheEnvironmentNamesMustBeOne)
{
    const std::string path = scratch_.write("s.lua", "function main() return {} end");
    for (const char* variable : {"QUOR_INSTALLATION", "QUOR_PROJECT"}) {
        const CommandRun run = runQuor({"draw", path}, {std::string(variable) + "=/nowhere"});
        EXPECT_EQ(run.exitCode, 2) << variable;
        EXPECT_EQ(run.errors,
                  "quor: " + std::string(variable) + "=/nowhere: a folder is expected; there is none\n");
    }
    const CommandRun none = runQuor({"draw", path}, {"QUOR_PROJECT="});
    EXPECT_EQ(none.exitCode, 0) << none.errors;
}

} // namespace
