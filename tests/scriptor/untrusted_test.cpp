#include "script_limits.h"

#include <QuorCommon/QuorSystem.h>

namespace {

using testing::HasSubstr;

/// A state that nobody trusts, in an installation of its own.
class UntrustedState : public testing::Test {
protected:
    UntrustedState() : untrusted(0, 0, true)
    {
        QuorSystem::setInstallationFolder(folder.path().c_str());
        scriptor.initLua();
        runs("package.path = [[" + folder.path("?.lua") + "]] folder = [[" + folder.path() + "]]");
    }
    ~UntrustedState() override { QuorSystem::setInstallationFolder(nullptr); }

    void runs(const std::string& chunk)
    {
        EXPECT_EQ(luaL_dostring(scriptor.getLua(false), chunk.c_str()), 0) << chunk;
    }
    std::string shown(const std::string& expression)
    {
        return luatext::shown(scriptor.getLua(false), expression);
    }

    ScriptFolder folder;
    Limited untrusted;
    QuorGlibScriptor scriptor;
};

TEST_F(UntrustedState, LoadsTextsAndPiecesOfTexts)
{
    const std::pair<const char*, const char*> rows[] = {
        {"type(loadstring(''))", "function"},
        {"loadstring('return 5')()", "5"},
        {"type(load(function() return '' end))", "function"},
        {"type(load(function() end))", "function"},
        {"(function() local n = 0 return load(function() n = n + 1 return ({'return ', 7})[n] end)() end)()",
         "7"},
        {"type(loadstring('('))", "nil"},
        {"select(2, load(function() error('no piece', 0) end))", "no piece"},
        {"select(2, load(function() return {} end))", "reader function must return a string"},
    };
    for (const auto& [expression, expected] : rows)
        EXPECT_EQ(shown(expression), expected) << expression;
}

TEST_F(UntrustedState, LoadsFilesOfTheInstallation)
{
    folder.write("empty.lua", "");
    folder.write("marked.lua", "\xEF\xBB\xBF#!/bin/lua\nreturn debug == nil and 5");
    folder.write("line.lua", "# nothing but this");
    EXPECT_EQ(shown("type(loadfile(folder .. '/empty.lua'))"), "function");
    EXPECT_EQ(shown("dofile(folder .. '/marked.lua')"), "5");
    EXPECT_EQ(shown("type(loadfile(folder .. '/line.lua'))"), "function");
    EXPECT_THAT(shown("select(2, loadfile(folder))"), HasSubstr("cannot open"));
    EXPECT_THAT(shown("select(2, loadfile(folder .. '/absent.lua'))"), HasSubstr("cannot open"));
}

TEST_F(UntrustedState, LoadsNothingWhereThereIsNoInstallation)
{
    folder.write("there.lua", "return 5");
    EXPECT_EQ(shown("dofile(folder .. '/there.lua')"), "5");
    QuorSystem::setInstallationFolder(folder.path("absent").c_str());
    EXPECT_THAT(shown("select(2, loadfile(folder .. '/there.lua'))"), HasSubstr("cannot open"));
}

TEST_F(UntrustedState, TellsWhyAModuleIsNotFound)
{
    folder.write("broken.lua", "return (");
    folder.write("whole.lua", "return {5}");
    EXPECT_EQ(shown("require('whole')[1]"), "5");
    EXPECT_THAT(shown("select(2, pcall(require, 'broken'))"),
                HasSubstr("error loading module 'broken' from file"));
    EXPECT_THAT(shown("select(2, pcall(require, 'absent'))"),
                HasSubstr("of the installation or the project"));
    runs("package.path = {}");
    EXPECT_THAT(shown("select(2, pcall(require, 'absent'))"), HasSubstr("'package.path' must be a string"));
    runs("package = nil");
    EXPECT_THAT(shown("select(2, pcall(require, 'absent'))"), HasSubstr("'package.path' must be a string"));
}

} // namespace
