// What a script that nobody trusts is refused, each by its name, and what is left to it.

#include "CommandRun.h"
#include "TestSystem.h"

#include <filesystem>
#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

/// What `expression`, in Lua, gives in an untrusted script: its text, or its error's.
std::string valueOf(const std::string& expression, const Arguments& options = {})
{
    const ScratchFolder folder;
    const std::string script =
        folder.write("s.lua", "function f()\nlocal ok, value = pcall(function() return " + expression +
                                  " end)\nreturn (ok and '' or 'error: ') .. tostring(value)\nend");
    Arguments arguments = {"call", script, "f", ">r", "--untrusted", "--quiet"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const CommandRun run = runQuor(arguments);
    EXPECT_EQ(run.exitCode, 0) << expression << "\n" << run.errors;
    const std::string head = "r \"";
    EXPECT_EQ(run.output.substr(0, head.size()), head) << expression;
    return run.output.substr(head.size(), run.output.rfind('"') - head.size());
}

/// The same, behind some statements.
std::string valueAfter(const std::string& statements, const std::string& expression)
{
    return valueOf("(function() " + statements + " return " + expression + " end)()");
}

class Refused : public testing::TestWithParam<const char*> {};

TEST_P(Refused, IsNotThere)
{
    EXPECT_EQ(valueOf(GetParam()), "nil");
}

INSTANTIATE_TEST_SUITE_P(
    Untrusted, Refused,
    testing::Values("io", "debug", "package.loaded.io", "package.loaded.debug", "package.loadlib",
                    "package.loaders[3]", "package.loaders[4]", "package.loaded._G.io", "getfenv(0).io",
                    "getfenv(require).loadlib", "getfenv(print).io", "os.execute", "os.remove", "os.rename",
                    "os.tmpname", "os.getenv", "os.setlocale", "newproxy", "ffi", "jit",
                    "package.preload.ffi", "package.preload.io", "package.preload.debug",
                    "coroutine.wrap(function() return io end)()", "getmetatable('').__index.debug",
                    "setfenv(function() return io end, getfenv(0))()", "glib.io", "package.cpath",
                    "(function() glib.setpath() return package.cpath end)()", "package.loaded.ffi",
                    "next(package.preload)"));

struct Attempt {
    const char* name;
    const char* expression;
    const char* answer;
};

class Attempts : public testing::TestWithParam<Attempt> {};

TEST_P(Attempts, AreRefused)
{
    EXPECT_THAT(valueOf(GetParam().expression), HasSubstr(GetParam().answer)) << GetParam().expression;
}

INSTANTIATE_TEST_SUITE_P(
    Untrusted, Attempts,
    testing::Values(
        Attempt{"Exit", "os.exit(0)", "error: "},
        Attempt{"RequireOfInput", "require('io')", "module 'io' not found"},
        Attempt{"RequireOfDebug", "require('debug')", "module 'debug' not found"},
        Attempt{"RequireOfForeignFunctions", "require('ffi')", "module 'ffi' not found"},
        Attempt{"RequireOfForeignFunctionsBehindALiteral",
                "(function() loadstring('return 1LL, 2i') return require('ffi') end)()",
                "module 'ffi' not found"},
        Attempt{"RequireOfForeignFunctionsBehindABuffer",
                "(function() pcall(function() require('string.buffer').new():reserve(64) end) return "
                "require('ffi') end)()",
                "module 'ffi' not found"},
        Attempt{"RequireOfBuffers", "require('string.buffer')", "module 'string.buffer' not found"},
        Attempt{"RequireOfTheCompilersOptions", "require('jit.opt')", "module 'jit.opt' not found"},
        Attempt{"RequireOfTheCompilersInside", "require('jit.util')", "module 'jit.util' not found"},
        Attempt{"RequireOfTheCompilersProfile", "require('jit.profile')", "module 'jit.profile' not found"},
        Attempt{"LoadstringOfCode", "select(2, loadstring(string.dump(function() end)))", "precompiled"},
        Attempt{"LoadOfCode",
                "(function() local n = 0 return select(2, load(function() n = n + 1 if n == 1 then return "
                "string.dump(function() end) end end)) end)()",
                "precompiled"},
        Attempt{"LoadOfCodeInBytes",
                "(function() local s, n = string.dump(function() end), 0 return select(2, load(function() n "
                "= n + 1 "
                "return s:sub(n, n) end)) end)()",
                "precompiled"},
        Attempt{"LoadstringOfCodeBehindAMark",
                "type((loadstring('\\239\\187\\191' .. string.dump(function() end))))", "nil"},
        Attempt{"LoadstringOfCodeBehindALine", "type((loadstring('#!\\n' .. string.dump(function() end))))",
                "nil"},
        Attempt{"LoadfileOfTheSystem", "select(2, loadfile('/etc/passwd'))", "no file of the installation"},
        Attempt{"LoadfileOfStandardInput", "loadfile()", "bad argument #1"},
        Attempt{"DofileOfTheSystem", "dofile('/etc/passwd')", "no file of the installation"},
        Attempt{"DofileOfStandardInput", "dofile()", "bad argument #1"},
        Attempt{"DofileOfAFolder", "dofile('/')", "no file of the installation"},
        Attempt{"MetatableOfIntegers", "getmetatable(int64(1))", "false"},
        Attempt{"EnvironmentOfNativeFunctions", "setfenv(next, {})", "error: "}),
    [](const auto& one) { return std::string(one.param.name); });

TEST(Untrusted, FindsModulesOfTheInstallationAlone)
{
    const ScratchFolder folder;
    folder.write("installation/bin/inside.lua", "return 'inside'");
    folder.write("outside.lua", "return 'outside'");
    const Arguments options = {"--installation", folder.path("installation")};
    EXPECT_EQ(valueOf("require('inside')", options), "inside");
    const std::string outside = folder.path("?.lua");
    EXPECT_THAT(
        valueOf("(function() package.path = '" + outside + "' return require('outside') end)()", options),
        HasSubstr("module 'outside' not found"));
    EXPECT_THAT(valueOf("require('../../outside')", options), HasSubstr("not found"));
    EXPECT_EQ(valueOf("dofile('" + folder.path("installation/bin/inside.lua") + "')", options), "inside");
    EXPECT_THAT(valueOf("dofile('" + folder.path("installation/bin/../../outside.lua") + "')", options),
                HasSubstr("no file of the installation"));
}

TEST(Untrusted, FindsModulesOfAnInstallationNamedInChinese)
{
    const ScratchFolder folder;
    folder.write("阀门/bin/inside.lua", "return 'inside'");
    EXPECT_EQ(valueOf("require('inside')", {"--installation", folder.path("阀门")}), "inside");
}

TEST(Untrusted, FollowsNoLinkOutOfTheInstallation)
{
    const ScratchFolder folder;
    folder.write("outside.lua", "return 'outside'");
    folder.makeFolder("installation/bin");
    if (!sys::makeLink(folder.path("outside.lua"), folder.path("installation/bin/link.lua")))
        GTEST_SKIP() << "the system makes no links";
    EXPECT_THAT(valueOf("require('link')", {"--installation", folder.path("installation")}),
                HasSubstr("not found"));
}

TEST(Untrusted, ReadsNoFileThatIsLargerThanItsMemory)
{
    const ScratchFolder folder;
    const std::string large = folder.write("installation/bin/large.lua", "return 1");
    std::filesystem::resize_file(large, std::uintmax_t{1} << 30);
    const Arguments options = {
        "--installation", folder.path("installation"), "--memory-limit", "8", "--time-limit", "2"};
    EXPECT_THAT(valueOf("loadfile('" + large + "')", options), HasSubstr("not enough memory"));
    EXPECT_THAT(valueOf("require('large')", options), HasSubstr("not enough memory"));
}

TEST(Untrusted, ReadsFilesBehindAMarkAndALineThatIsSkipped)
{
    const ScratchFolder folder;
    folder.write("installation/bin/marked.lua", "\xEF\xBB\xBF#!/usr/bin/lua\nreturn 'marked'");
    folder.write("installation/bin/line.lua", "#");
    folder.write("installation/bin/empty.lua", "");
    const Arguments options = {"--installation", folder.path("installation")};
    EXPECT_EQ(valueOf("require('marked')", options), "marked");
    EXPECT_EQ(valueOf("require('line')", options), "true");
    EXPECT_EQ(valueOf("require('empty')", options), "true");
}

TEST(Untrusted, TakesNoPrecompiledScript)
{
    const ScratchFolder folder;
    const std::string maker =
        folder.write("maker.lua", "function f() return string.dump(loadstring('function "
                                  "main() return {} end')) end");
    const CommandRun made = runQuor({"call", maker, "f", ">y", "--quiet"});
    ASSERT_EQ(made.exitCode, 0);
    std::string bytes;
    for (std::size_t i = made.output.find('"') + 1; made.output[i] != '"'; i += 2)
        bytes += static_cast<char>(std::stoi(made.output.substr(i, 2), nullptr, 16));
    const std::string script = folder.write("precompiled.lua", bytes);
    EXPECT_EQ(runQuor({"draw", script}).exitCode, 0);
    const CommandRun run = runQuor({"draw", script, "--untrusted"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr("a precompiled chunk is refused"));
    for (const char* before : {"", "\xEF\xBB\xBF", "#!\n", "\xEF\xBB\xBF#!\n"}) {
        EXPECT_EQ(runQuor({"draw", folder.write("behind.lua", before + bytes), "--untrusted"}).exitCode, 1)
            << before;
        folder.write("installation/bin/code.lua", before + bytes);
        EXPECT_THAT(valueOf("require('code')", {"--installation", folder.path("installation")}),
                    HasSubstr("error loading module 'code'"))
            << before;
    }
}

TEST(Untrusted, TakesNoPointerButTheHostsOwn)
{
    const ScratchFolder folder;
    const std::string scene = folder.write("scene.json", R"({"object": {"id": 5, "pointer": true}})");
    const std::string script = folder.write("s.lua", "function f()\n"
                                                     "local pointer = glib.getCurrentObjectPointer()\n"
                                                     "_glib_pass_txtstyle_pointer = pointer\n"
                                                     "local style = glib.getCurrentTxtstyle()\n"
                                                     "_glib_pass_functor_pointer = pointer\n"
                                                     "return type(pointer) .. ' ' .. type(style) .. ' ' ..\n"
                                                     "type((glib.getCurrentObjectId()))\nend");
    const CommandRun run = runQuor({"call", script, "f", ">r", "--untrusted", "--quiet", "--scene", scene});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "r \"userdata nil nil\"\n");
}

TEST(Untrusted, LeavesWhatComponentsNeed)
{
    EXPECT_EQ(
        valueOf("type(os.time()) .. type(os.date()) .. type(os.clock()) .. type(math.sin) .. type(unpack)"),
        "numberstringnumberfunctionfunction");
    EXPECT_EQ(valueOf("loadstring('return 1 + 1')()"), "2");
    EXPECT_EQ(valueAfter("local n = 0", "load(function() n = n + 1 return ({'return ', '7'})[n] end)()"),
              "7");
    EXPECT_EQ(
        valueAfter("local n = 0", "load(function() n = n + 1 return ({'return ', 7, ' + ', 1})[n] end)()"),
        "8");
    EXPECT_EQ(valueOf("tostring(int64(5) + 1)"), "6");
    EXPECT_EQ(valueAfter("package.preload.own = function() return 'own' end", "require('own')"), "own");
}

TEST(Untrusted, DrawsTheSamplesAsBefore)
{
    for (const char* component :
         {"gate_valve.lua", "elbow_90.lua", "reducer.lua", "tee.lua", "support.lua"}) {
        const CommandRun trusted = runQuor({"draw", component});
        const CommandRun untrusted = runQuor({"draw", component, "--untrusted"});
        EXPECT_EQ(untrusted.exitCode, 0) << component << untrusted.errors;
        EXPECT_EQ(untrusted.output, trusted.output) << component;
    }
}

TEST(Untrusted, AnswersTheSamplesConfigurationAsBefore)
{
    const CommandRun trusted = runQuor({"config", "table", "--json"});
    const CommandRun untrusted = runQuor({"config", "table", "--json", "--untrusted"});
    EXPECT_EQ(untrusted.exitCode, trusted.exitCode) << untrusted.errors;
    EXPECT_EQ(untrusted.output, trusted.output);
}

} // namespace
