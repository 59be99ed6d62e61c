#include "../system.h"
#include "lua_state.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

using lua_tinker::dobuffer;
using lua_tinker::dofile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class Load : public LuaState {
protected:
    Load() : folder(sys::makeFolder("quor-load")) {}
    ~Load() override { std::filesystem::remove_all(folder); }

    std::string path(const char* name) const { return sys::join(folder, name); }

    std::string file(const char* name, const std::string& bytes) const
    {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    std::string compiled(const char* chunk)
    {
        std::string bytes;
        EXPECT_EQ(luaL_loadstring(L, chunk), 0);
        lua_dump(
            L,
            [](lua_State*, const void* part, std::size_t size, void* all) {
                static_cast<std::string*>(all)->append(static_cast<const char*>(part), size);
                return 0;
            },
            &bytes);
        lua_pop(L, 1);
        return bytes;
    }

    /// The one report of a file that does not run.
    std::string reportOf(const std::string& name)
    {
        alerts.clear();
        EXPECT_NE(dofile(L, name.c_str()), 0) << name;
        EXPECT_EQ(lua_gettop(L), 0);
        EXPECT_EQ(alerts.size(), 1u) << name;
        return alerts.empty() ? std::string() : alerts[0];
    }

    std::filesystem::path folder;
};

TEST_F(Load, RunsAFile)
{
    EXPECT_EQ(dofile(L, file("a.lua", "ran = 1; return 1, 2, 3").c_str()), 0);
    EXPECT_EQ(shown("ran"), "1");
    EXPECT_EQ(dofile(L, file("empty.lua", "").c_str()), 0);
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Load, PassesOverMarkAndFirstLine)
{
    const char* const cases[] = {
        "\xEF\xBB\xBFlines = debug.getinfo(1, 'l').currentline",
        "#!/usr/bin/lua\n\nlines = debug.getinfo(1, 'l').currentline",
        "\xEF\xBB\xBF#!x\r\n\nlines = debug.getinfo(1, 'l').currentline",
        "# no line end",
        "#\n",
    };
    const char* const lines[] = {"1", "3", "3", "nil", "nil"};
    for (int i = 0; i < 5; ++i) {
        run("lines = nil");
        EXPECT_EQ(dofile(L, file("b.lua", cases[i]).c_str()), 0) << cases[i];
        EXPECT_EQ(shown("lines"), lines[i]) << cases[i];
    }
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Load, RunsPrecompiledCode)
{
    const std::string code = compiled("ran = (ran or 0) + 1");
    EXPECT_EQ(dobuffer(L, code.data(), code.size()), 0);
    EXPECT_EQ(dofile(L, file("c.luac", code).c_str()), 0);
    EXPECT_EQ(dofile(L, file("d.luac", "#!lua\n" + code).c_str()), 0);
    EXPECT_EQ(dofile(L, file("e.luac", "\xEF\xBB\xBF" + code).c_str()), 0);
    EXPECT_EQ(shown("ran"), "4");
    EXPECT_THAT(reportOf(file("cut.luac", code.substr(0, code.size() / 2))), HasSubstr("cut.luac"));
}

TEST_F(Load, ReportsPrecompiledCodeWhereItIsRefused)
{
    const std::string code = compiled("ran = 1");
    const std::string name = file("compiled.lua", code);
    lua_tinker::refuse_precompiled(nullptr);
    EXPECT_EQ(dofile(L, name.c_str()), 0);
    lua_tinker::refuse_precompiled(L);
    run("ran = nil");
    EXPECT_THAT(reportOf(name), HasSubstr(name + ": a precompiled chunk is refused"));
    alerts.clear();
    EXPECT_NE(dobuffer(L, code.data(), code.size(), "name"), 0);
    EXPECT_THAT(alerts, ElementsAre(StartsWith("name: a precompiled chunk is refused")));
    EXPECT_EQ(shown("ran"), "nil");
    EXPECT_EQ(dobuffer(L, "ran = 2", 7), 0);
    EXPECT_EQ(shown("ran"), "2");
}

TEST_F(Load, ReportsWhatIsNoFile)
{
    // The system's reasons are in the user's language.
    const std::string missing = std::strerror(ENOENT);
    const std::string directory = std::strerror(EISDIR);
    EXPECT_THAT(reportOf(path("missing.lua")),
                StartsWith("cannot open " + path("missing.lua") + ": " + missing));
    EXPECT_THAT(reportOf(folder.string()), StartsWith("cannot open " + folder.string() + ": " + directory));
    EXPECT_THAT(reportOf(""), StartsWith("cannot open : " + missing));
    for (const std::string& device : sys::devices())
        EXPECT_THAT(reportOf(device), StartsWith("cannot open " + device + ": not a regular file"));
    const sys::Obstacle obstacle(path("obstacle"));
    EXPECT_THAT(reportOf(path("obstacle")), StartsWith("cannot open " + path("obstacle") + ": "));
    sys::makeLink(path("nowhere"), path("link")); // where none is made, nothing is there
    EXPECT_THAT(reportOf(path("link")), StartsWith("cannot open " + path("link") + ": " + missing));
    EXPECT_NE(dofile(L, nullptr), 0);
    EXPECT_NE(dofile(nullptr, "x"), 0);
}

TEST_F(Load, ReportsASyntaxErrorWithItsLine)
{
    const std::string name = file("bad.lua", "#!lua\nlocal x =\n= 2");
    EXPECT_THAT(reportOf(name), HasSubstr(":3: "));
    EXPECT_THAT(alerts[0], HasSubstr("bad.lua"));
}

TEST_F(Load, ReportsAnErrorOfTheScriptOnce)
{
    const std::string name = file("raises.lua", "before = 1\nerror('broken %s')");
    const std::string report = reportOf(name);
    EXPECT_THAT(report, HasSubstr("raises.lua:2: broken %s\nstack traceback:"));
    EXPECT_EQ(shown("before"), "1") << "what ran before the error stays";
    EXPECT_THAT(reportOf(file("table.lua", "error({})")), StartsWith("(error object is a table value)"));
    EXPECT_THAT(reportOf(file("nil.lua", "error()")), StartsWith("(error object is a nil value)"));
    EXPECT_THAT(reportOf(file("deep.lua", "local function f() return 1 + f() end f()")),
                HasSubstr("stack overflow"));
    EXPECT_THAT(reportOf(file("\xC4\xA3\xBF\xE9.lua", "error('x')")), HasSubstr("\xC4\xA3\xBF\xE9.lua:1: x"))
        << "names are bytes";
}

TEST_F(Load, RunsABuffer)
{
    EXPECT_EQ(dobuffer(L, "ran = 1 garbage", 7), 0) << "no more than the given length";
    EXPECT_EQ(shown("ran"), "1");
    EXPECT_EQ(dobuffer(L, "", 0), 0);
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_NE(dobuffer(L, "error('x')", 10, "@name"), 0);
    EXPECT_NE(dobuffer(L, "error('x')", 10), 0);
    EXPECT_NE(dobuffer(L, "error('x')", 10, nullptr), 0);
    EXPECT_NE(dobuffer(L, "= 1", 3), 0);
    EXPECT_NE(dobuffer(L, nullptr, 3), 0);
    EXPECT_NE(dobuffer(nullptr, "x = 1", 5), 0);
    EXPECT_THAT(alerts,
                ElementsAre(StartsWith("name:1: x"), StartsWith("[string \"buffer\"]:1: x"),
                            StartsWith("[string \"buffer\"]:1: x"), StartsWith("[string \"buffer\"]:1: "),
                            StartsWith("cannot run the script")));
}

TEST_F(Load, WorksFromAFullFrame)
{
    const std::string good = file("a.lua", "ran = 1");
    const std::string bad = file("b.lua", "error('x')");
    fillFrame();
    const int top = lua_gettop(L);
    EXPECT_EQ(dofile(L, good.c_str()), 0);
    EXPECT_NE(dofile(L, bad.c_str()), 0);
    EXPECT_NE(dofile(L, path("missing").c_str()), 0);
    EXPECT_EQ(dobuffer(L, "ran = ran + 1", 13), 0);
    EXPECT_EQ(lua_gettop(L), top);
    EXPECT_THAT(alerts, ElementsAre(HasSubstr("b.lua:1: x"), StartsWith("cannot open")));
    lua_settop(L, 0);
    EXPECT_EQ(shown("ran"), "2");
}

TEST_F(Load, WorksFromWithinScripts)
{
    lua_register(L, "include", [](lua_State* state) {
        lua_pushboolean(state, dobuffer(state, lua_tostring(state, 1), lua_objlen(state, 1)) == 0);
        return 1;
    });
    EXPECT_EQ(shown("include('inner = 5')"), "true");
    EXPECT_EQ(shown("include('error(5)')"), "false");
    EXPECT_EQ(shown("inner"), "5");
    run("depth = 0; function again() depth = depth + 1; if depth < 500 then include('again()') end end");
    testing::internal::CaptureStderr();
    EXPECT_EQ(shown("include('again()')"), "true")
        << "the innermost run fails where the C stack ends, no other";
    EXPECT_EQ(shown("depth > 20"), "true");
    testing::internal::GetCapturedStderr();
}

} // namespace
