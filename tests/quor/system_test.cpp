// File names, arguments and files as the system has them: each test holds on every system, in the system's
// way.

#include "CommandRun.h"
#include "TestSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testsystem::isWindows;

const Arguments utf8Terminal = {"LC_ALL=C.UTF-8"};

constexpr const char* onePoint = "function main() return {{26, {1, 2, 3}, 4}} end";

/// No code page of Windows has it.
constexpr const char* grin = "\U0001F600";

/// Its second byte in GBK is that of a backslash.
constexpr const char* withBackslash = "誠";

class System : public testing::Test {
protected:
    static CommandRun run(const Arguments& arguments) { return runQuor(arguments, utf8Terminal); }

    const ScratchFolder scratch_;
};

TEST_F(System, FileNameThatTheCodePageLacksIsRefusedByName)
{
    const std::string script = scratch_.write("s.lua", onePoint);
    const std::string strange = scratch_.path(grin);
    const struct {
        Arguments arguments;
        std::string place;
    } cases[] = {
        {{"draw", strange}, "SCRIPT " + strange},
        {{"draw", script, "--scene", strange}, "--scene " + strange},
        {{"draw", script, "-o", strange + "/x"}, "-o " + strange + "/x"},
        {{"draw", script, "--installation", strange}, "--installation " + strange},
        {{"draw", script, "--project", strange}, "--project " + strange},
        {{"config", "table", "--config", strange}, "--config " + strange},
    };
    for (const auto& [arguments, place] : cases) {
        const CommandRun run = this->run(arguments);
        EXPECT_NE(run.exitCode, 0) << place;
        const std::string refusal = "quor: " + place +
                                    ": a name that the system's code page, CP936, can write is expected; a "
                                    "character in it has no place there\n";
        if (isWindows) {
            EXPECT_EQ(run.exitCode, 2) << place;
            EXPECT_EQ(run.errors, refusal);
        } else {
            EXPECT_THAT(run.errors, Not(HasSubstr("code page"))) << place;
            EXPECT_THAT(run.errors, HasSubstr(grin)) << place;
        }
    }
    if (isWindows) return;
    scratch_.write(std::string(grin) + ".lua", onePoint);
    EXPECT_EQ(run({"draw", strange + ".lua", "-o", strange + ".json"}).exitCode, 0);
    EXPECT_THAT(readFile(strange + ".json"), HasSubstr(grin));
}

TEST_F(System, FolderOfTheEnvironmentThatTheCodePageLacksIsRefusedByName)
{
    const std::string script = scratch_.write("s.lua", onePoint);
    for (const std::string variable : {"QUOR_INSTALLATION", "QUOR_PROJECT"}) {
        const std::string setting = variable + "=" + scratch_.path(grin);
        const CommandRun run = runQuor({"draw", script}, {"LC_ALL=C.UTF-8", setting});
        EXPECT_EQ(run.exitCode, 2) << variable;
        EXPECT_THAT(run.errors, StartsWith("quor: " + setting + ": " +
                                           (isWindows ? "a name that the system's code page, CP936, can write"
                                                      : "a folder is expected; there is none")));
    }
}

TEST_F(System, FilesInChineseFoldersAreReadAndWritten)
{
    for (const char* word : {"阀门", withBackslash}) {
        const std::string folder = std::string(word) + "/" + word + "/";
        const std::string script = scratch_.write(
            folder + word + ".lua", "function main() return {{26, glib.getIsoPoint(1), 4}} end");
        const std::string scene = scratch_.write(folder + word + ".json", R"({"points": {"1": [1, 2, 3]}})");
        const std::string output = scratch_.path(folder + "out.json");
        const CommandRun run = this->run({"draw", script, "--scene", scene, "-o", output});
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.errors, std::string(word) + ".lua main: 1 primitive\n");
        const Json drawing = Json::parse(readFile(output));
        EXPECT_EQ(drawing["script"], std::string(word) + ".lua");
        EXPECT_EQ(drawing["primitives"][0]["args"], Json::parse("[[1, 2, 3], 4]"));
    }
}

TEST_F(System, InstallationAndProjectMayHaveChineseNames)
{
    for (const char* word : {"阀门", withBackslash}) {
        const std::string installation = scratch_.makeFolder(std::string(word) + "/installation");
        const std::string project = scratch_.makeFolder(std::string(word) + "/project");
        scratch_.write(std::string(word) + "/installation/bin/" + word + ".lua", "point = {1, 2, 3}");
        scratch_.write(std::string(word) + "/project/components/s.lua",
                       std::string("require('") + (word == withBackslash ? "\xD5\\\\" : "\xB7\xA7\xC3\xC5") +
                           "') function main() return {{26, point, 4}} end");
        const CommandRun run =
            this->run({"draw", "s.lua", "-q", "--installation", installation, "--project", project});
        // Elsewhere modules are named by the bytes of their files, which are not GBK here.
        if (isWindows)
            EXPECT_EQ(run.exitCode, 0) << run.errors;
        else
            EXPECT_THAT(run.errors, HasSubstr("s.lua:1: module '"));
    }
}

TEST_F(System, PathsInMessagesOfChineseFoldersStayWhole)
{
    const std::string script = scratch_.write(std::string(withBackslash) + "/" + withBackslash + ".lua",
                                              "function main()\n error('no')\nend");
    const CommandRun run = this->run({"draw", script});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr(std::string("/") + withBackslash + ".lua:2: no\n"));
    EXPECT_THAT(run.errors, HasSubstr("\nquor: " + script + ":1: segment main"));
}

TEST_F(System, EveryWayOfWritingAPathLeadsToTheScript)
{
    const std::string script = scratch_.write("folder/s.lua", onePoint);
    const std::string raising = scratch_.write("folder/r.lua", "error('no')");
    const CommandRun plain = run({"draw", script});
    ASSERT_EQ(plain.exitCode, 0) << plain.errors;
    const std::vector<std::string> scripts = testsystem::waysTo(script);
    EXPECT_GT(scripts.size(), 1u);
    for (const std::string& way : scripts) {
        const CommandRun run = this->run({"draw", way});
        EXPECT_EQ(run.exitCode, 0) << way;
        EXPECT_EQ(run.output, plain.output) << way;
        EXPECT_EQ(run.errors, "s.lua main: 1 primitive\n") << way;
    }
    for (const std::string& way : testsystem::waysTo(raising)) {
        const CommandRun run = this->run({"draw", way});
        EXPECT_EQ(run.exitCode, 1) << way;
        EXPECT_THAT(run.errors, HasSubstr("r.lua:1: no\n")) << way;
        EXPECT_THAT(run.errors,
                    EndsWith("quor: " + way + ": status 4: it cannot be read, compiled or run to its end\n"));
    }
}

TEST_F(System, OutputThatAnotherProgramHoldsOpenIsNeverHalfWritten)
{
    const std::string script = scratch_.write("s.lua", onePoint);
    const std::string output = scratch_.write("out.json", "of before");
    {
        const sys::FileLock holder(output);
        const CommandRun run = this->run({"draw", script, "-o", output});
        EXPECT_EQ(run.exitCode, isWindows ? 2 : 0);
        EXPECT_EQ(run.errors,
                  isWindows ? "quor: -o " + output + ": cannot be written: another program holds it open\n"
                            : "s.lua main: 1 primitive\n");
        EXPECT_EQ(holder.read(), "of before");
    }
    EXPECT_EQ(readFile(output), isWindows ? "of before" : run({"draw", script}).output);
    EXPECT_EQ(scratch_.names(), (std::vector<std::string>{"out.json", "s.lua"}));
}

TEST_F(System, OutputOfAnEarlierRunThatCannotBeRemovedIsTold)
{
    const std::string script = scratch_.write("s.lua", "error('no')");
    const std::string output = scratch_.write("out.json", "of before");
    const sys::FileLock holder(output);
    const CommandRun run = this->run({"draw", script, "-o", output});
    EXPECT_EQ(run.exitCode, 1);
    const std::string told = "-o " + output + ": the file of an earlier run cannot be removed\n";
    if (isWindows)
        EXPECT_THAT(run.errors, HasSubstr(told));
    else
        EXPECT_EQ(scratch_.names(), std::vector<std::string>{"s.lua"});
}

TEST_F(System, NothingHasCarriageReturns)
{
    const std::string script =
        scratch_.write("s.lua", "print('a') io.write('b\\n') io.stdout:write('c\\n') io.stderr:write('d\\n') "
                                "function main() print('e\\nf') return {{26, {1, 2, 3}, 4}} end");
    const std::string raising = scratch_.write("r.lua", "\nerror('a\\nb')");
    const std::string output = scratch_.path("out.json");
    const Arguments runs[] = {
        {"draw", script},
        {"draw", script, "--format", "text"},
        {"draw", script, "-o", output},
        {"draw", raising},
        {"call", script, "main", ">T"},
        {"keypoints", script},
        {"config", "table"},
        {"config", "table", "--json"},
        {"--help"},
        {"draw", "--help"},
        {"draw", "--bogus"},
    };
    for (const Arguments& arguments : runs) {
        const CommandRun run = this->run(arguments);
        EXPECT_THAT(run.output + run.errors, HasSubstr("\n")) << testing::PrintToString(arguments);
        EXPECT_THAT(run.output, Not(HasSubstr("\r"))) << testing::PrintToString(arguments);
        EXPECT_THAT(run.errors, Not(HasSubstr("\r"))) << testing::PrintToString(arguments);
    }
    EXPECT_EQ(readFile(output), run({"draw", script}).output);
}

TEST_F(System, ArgumentsArriveAsTheyAreGiven)
{
    const std::string script = scratch_.write("s.lua", "function f(...) return ... end");
    for (const std::string text :
         {"",  " ",     "a b",    "\"",    "a\"b",    "\\", "a\\", "a\\\\", "\\\"",  "a\\\\\"b c\\\\",
          "*", "?.lua", "%PATH%", "$HOME", "^&|<>()", "'",  "/",   "/q",    "阀 门", "誠"}) {
        const CommandRun run = this->run({"call", script, "f", "s>s", "-q", "--format", "json", "--", text});
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_EQ(Json::parse(run.output)["results"][0]["value"], text);
    }
}

TEST_F(System, LinesInAFileHaveTheSystemsCharacterSetWhereNoVariableTells)
{
    const std::string script =
        scratch_.write("s.lua", "function main() return {{19, 0, {0,0,0}, '\xD5\xA2\xB7\xA7', 0}} end");
    const std::string output = scratch_.path("out.txt");
    const struct {
        Arguments terminal;
        std::string valve;
    } cases[] = {
        {{"LC_ALL", "LC_CTYPE", "LANG"}, isWindows ? "\xD5\xA2\xB7\xA7" : "闸阀"},
        {{"LC_ALL=xx_YY.GBK"}, "\xD5\xA2\xB7\xA7"},
        {{"LC_ALL=xx_YY.UTF-8"}, "闸阀"},
    };
    for (const auto& [terminal, valve] : cases) {
        const CommandRun run = runQuor({"draw", script, "--format", "text", "-o", output}, terminal);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_THAT(readFile(output), HasSubstr("\"" + valve + "\""));
    }
}

} // namespace
