// The limits of scripts in the command: every script of tests/hostile, and what no limit of the library
// reaches.

#include "../hostile/cases.h"
#include "CommandRun.h"
#include "TestSystem.h"

#include <chrono>
#include <gmock/gmock.h>
#include <ostream>

using hostile::Ending;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace hostile {

void PrintTo(const Case& one, std::ostream* stream)
{
    *stream << one.name;
}

} // namespace hostile

namespace {

constexpr const char* lastWords = "where nothing but the command's end could end it";

class HostileScript : public testing::TestWithParam<hostile::Case> {};

TEST_P(HostileScript, EndsTheCommandByItsErrorOrItsLimit)
{
    const hostile::Case& one = GetParam();
    const bool isTimed =
        one.ending == Ending::Time || one.ending == Ending::Limited || one.ending == Ending::Watchdog;
    const std::string script = QUOR_SOURCE_DIR "/tests/hostile/" + std::string(one.name) + ".lua";
    const ScratchFolder folder;
    const std::string output = folder.write("result.json", "of an earlier run");
    const CommandRun run = runQuor({"draw", script, "--segment", "main", "-o", output, "--quiet",
                                    "--time-limit", isTimed ? "0.1" : "30", "--memory-limit", "8"});
    const std::string time = script + ": --time-limit 0.1: the script still ran after 0.1 seconds";
    const std::string memory = script + ": --memory-limit 8: the script asked for more than 8 MiB";
    switch (one.ending) {
    case Ending::Done:
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_THAT(run.errors, Not(HasSubstr("-limit")));
        break;
    case Ending::Error:
    case Ending::Refused:
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, AllOf(HasSubstr(std::string(one.report)), Not(HasSubstr("-limit 8")),
                                      Not(HasSubstr("-limit 30"))));
        break;
    case Ending::Survives:
        EXPECT_THAT(run.exitCode, testing::AnyOf(0, 1));
        EXPECT_THAT(run.errors, Not(HasSubstr(lastWords)));
        break;
    case Ending::Time:
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, AllOf(HasSubstr(time), Not(HasSubstr(lastWords))));
        break;
    case Ending::Memory:
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, HasSubstr(memory));
        break;
    case Ending::Limited:
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, testing::AnyOf(HasSubstr(time), HasSubstr(memory)));
        break;
    case Ending::Watchdog:
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_THAT(run.errors, HasSubstr(time + ", " + lastWords));
        break;
    }
    EXPECT_EQ(folder.names().empty(), run.exitCode != 0);
}

INSTANTIATE_TEST_SUITE_P(Command, HostileScript, testing::ValuesIn(hostile::cases),
                         [](const auto& one) { return std::string(one.param.name); });

struct Subcommand {
    const char* name;
    Arguments arguments; ///< behind the script
};

const Subcommand subcommands[] = {
    {"draw", {}},
    {"call", {"main", ">i"}},
    {"keypoints", {"--segment", "main"}},
    {"ask", {"--kind", "yesno"}},
};

CommandRun runLimited(const Subcommand& subcommand, const std::string& script, const Arguments& options)
{
    Arguments arguments = {subcommand.name, script};
    arguments.insert(arguments.end(), subcommand.arguments.begin(), subcommand.arguments.end());
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runQuor(arguments);
}

TEST(ScriptLimits, HoldInEverySubcommandThatRunsAComponent)
{
    const ScratchFolder folder;
    const std::string forever = folder.write("forever.lua", "function main() while true do end end");
    const std::string eats = folder.write("eats.lua", "function main() return string.rep('x', 2 ^ 28) end");
    for (const Subcommand& subcommand : subcommands) {
        const CommandRun late = runLimited(subcommand, forever, {"--time-limit", "0.1"});
        EXPECT_EQ(late.exitCode, 1) << subcommand.name;
        EXPECT_THAT(late.errors, HasSubstr(forever + ": --time-limit 0.1: ")) << subcommand.name;
        const CommandRun large = runLimited(subcommand, eats, {"--memory-limit", "16"});
        EXPECT_EQ(large.exitCode, 1) << subcommand.name;
        EXPECT_THAT(large.errors, HasSubstr(eats + ": --memory-limit 16: ")) << subcommand.name;
    }
}

TEST(ScriptLimits, HoldForConfigurationScripts)
{
    const ScratchFolder folder;
    const std::string script =
        folder.write("bin/quorModuleSystem.lua", "function getProjectSpec() while true do end end");
    folder.write("bin/mirtSystemConfig.lua", "while true do end");
    const Arguments options = {"--installation", folder.path(""), "--time-limit", "0.1"};
    for (const char* getter : {"getProjectSpec", "escape_dbkey"}) {
        Arguments arguments = {"config", "get", getter};
        if (std::string(getter) == "escape_dbkey") arguments.insert(arguments.end(), {"--key", "x"});
        if (std::string(getter) == "getProjectSpec")
            arguments.insert(arguments.end(), {"--module", "PIPE", "--name", "A"});
        arguments.insert(arguments.end(), options.begin(), options.end());
        const CommandRun run = runQuor(arguments);
        EXPECT_EQ(run.exitCode, 1) << getter;
        EXPECT_THAT(run.errors, HasSubstr(".lua: --time-limit 0.1: the script still ran")) << getter;
    }
}

TEST(ScriptLimits, HoldWhereTheCommandLooksForAFunction)
{
    const ScratchFolder folder;
    const std::string strict = folder.write(
        "strict.lua", "setmetatable(_G, {__index = function() while true do end end}) function other() end");
    // The first time it is there.
    const std::string once = folder.write(
        "once.lua",
        "local n = 0 setmetatable(_G, {__index = function(_, name) if name ~= 'f' then return nil end\n"
        "n = n + 1 while n > 1 do end return function() end end})");
    const std::string eats =
        folder.write("eats.lua", "setmetatable(_G, {__index = function(_, name)\n"
                                 "local t = {} while name == 'main' do t[#t + 1] = {} end end})\n"
                                 "function other() return {} end");
    const Arguments calls[] = {
        {"draw", strict}, {"keypoints", strict}, {"call", strict, "f", ""}, {"call", once, "f", ""}};
    for (Arguments arguments : calls) {
        const std::string time = arguments[1] + ": --time-limit 0.1: ";
        arguments.insert(arguments.end(), {"--time-limit", "0.1"});
        const CommandRun run = runQuor(arguments);
        EXPECT_EQ(run.exitCode, 1) << arguments[0];
        EXPECT_THAT(run.errors, AllOf(HasSubstr(time), Not(HasSubstr(lastWords)))) << arguments[0];
    }
    const CommandRun large = runQuor({"draw", eats, "--memory-limit", "8"});
    EXPECT_EQ(large.exitCode, 1);
    EXPECT_THAT(large.errors, HasSubstr(eats + ": --memory-limit 8: "));
}

TEST(ScriptLimits, TellTheLineThatRan)
{
    const ScratchFolder folder;
    const std::string script = folder.write("forever.lua", "function main()\n    while true do end\nend");
    EXPECT_THAT(runQuor({"draw", script, "--time-limit", "0.1"}).errors,
                HasSubstr("forever.lua:2: time limit: the script was stopped after 0.1 seconds"));
}

TEST(ScriptLimits, AreNoneWhenTheyAreZero)
{
    const ScratchFolder folder;
    const std::string script = folder.write(
        "s.lua", "function main() debug.sethook() assert(#string.rep('x', 2 ^ 20)) return {} end");
    EXPECT_EQ(runQuor({"draw", script, "--time-limit", "0", "--memory-limit", "0"}).exitCode, 0);
    EXPECT_EQ(runQuor({"draw", script, "--time-limit", "5", "--memory-limit", "0"}).exitCode, 1);
}

TEST(ScriptLimits, MustBeNumbers)
{
    const ScratchFolder folder;
    const std::string script = folder.write("s.lua", "function main() return {} end");
    for (const char* option : {"--time-limit", "--memory-limit"})
        for (const char* text : {"x", "-1", "1e300", "nan", "1,5", "0x10", "5s"}) {
            const CommandRun run = runQuor({"draw", script, std::string(option) + "=" + text});
            EXPECT_EQ(run.exitCode, 2) << option << " " << text;
            EXPECT_THAT(run.errors, HasSubstr(std::string(option) + " " + text + ": a number from 0 to "));
        }
}

TEST(BrokenPipe, IsAnErrorForTheScriptThatWrites)
{
    if (testsystem::isWindows) GTEST_SKIP() << "it has no signal for it";
    const ScratchFolder folder;
    const std::string script =
        folder.write("s.lua", "function f()\nlocal pipe, written = io.popen('exit 0', 'w'), true\n"
                              "for i = 1, 1000 do written = pipe:write(('x'):rep(10000)) and pipe:flush()\n"
                              "if not written then return 'error' end end\nend");
    const CommandRun run = runQuor({"call", script, "f", ">r", "--quiet"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "r \"error\"\n");
}

TEST(Watchdog, EndsAReadThatWaits)
{
    if (testsystem::isWindows) GTEST_SKIP() << "there is no pipe in its folders";
    const ScratchFolder folder;
    const sys::Obstacle pipe(folder.path("pipe"));
    const std::string script =
        folder.write("s.lua", "function main() return io.open('" + folder.path("pipe") + "'):read() end");
    const CommandRun run = runQuor({"draw", script, "--time-limit", "0.1"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr(lastWords));
}

TEST(Watchdog, EndsTheCommandSoonAfterItsTime)
{
    const ScratchFolder folder;
    const std::string script = folder.write("s.lua", "function main() table.insert({}, -2 ^ 31, 1) end");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(runQuor({"draw", script, "--time-limit", "0.1"}).exitCode, 1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(Watchdog, CountsTheTimeOfAllCallsTogether)
{
    const ScratchFolder folder;
    folder.write("bin/quorModuleSystem.lua",
                 "setmetatable(_G, {__index = function() return function()\n"
                 "local start = os.clock() while os.clock() - start < 0.15 do end return 'x' end end})");
    folder.write("bin/mirtSystemConfig.lua", "");
    const CommandRun run = runQuor(
        {"config", "table", "--module", "PIPE", "--installation", folder.path(""), "--time-limit", "0.4"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("--time-limit 0.4"));
}

} // namespace
