#include "../neutral_locale.h"
#include "../system.h"
#include "lua_state.h"

#include <QuorPureScriptor/quorlua_helpers.h>

namespace {

using lua_tinker::on_error;
using lua_tinker::print_error;
using lua_tinker::print_error_text;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class Report : public LuaState {
protected:
    /// What standard error receives while `work` runs.
    template<class Work>
    std::string onStandardError(Work work)
    {
        testing::internal::CaptureStderr();
        work();
        return testing::internal::GetCapturedStderr();
    }

    /// Runs a chunk with `on_error` as handler; the error value stays on the stack.
    void fail(const std::string& chunk)
    {
        lua_pushcfunction(L, on_error);
        ASSERT_EQ(luaL_loadbuffer(L, chunk.data(), chunk.size(), "@part.lua"), 0) << lua_tostring(L, -1);
        ASSERT_NE(lua_pcall(L, 0, 0, 1), 0);
        lua_remove(L, 1);
        ASSERT_EQ(lua_gettop(L), 1);
    }
};

TEST_F(Report, GoesToAlertAsItStands)
{
    print_error(L, "%d of %s", 2, "100%s%n");
    print_error_text(L, "%s%n%d", 6);
    print_error_text(L, "a\0b", 3);
    print_error_text(L, "", 0);
    print_error(L, "%s", "");
    EXPECT_THAT(alerts, ElementsAre("2 of 100%s%n", "%s%n%d", std::string("a\0b", 3), "", ""));
}

TEST_F(Report, IsOfAnyLength)
{
    for (const std::size_t length : {1022u, 1023u, 1024u, 1025u, 1u << 20}) {
        alerts.clear();
        const std::string text(length, 'x');
        print_error(L, "%s", text.c_str());
        print_error_text(L, text.data(), text.size());
        ASSERT_EQ(alerts.size(), 2u);
        EXPECT_TRUE(alerts[0] == text) << length;
        EXPECT_TRUE(alerts[1] == text) << length;
    }
}

TEST_F(Report, GoesToTheOutletThatIsSetWithoutAlert)
{
    std::vector<std::string> taken;
    lua_tinker::set_error_outlet(
        [](const char* text, std::size_t length, void* user) {
            static_cast<std::vector<std::string>*>(user)->emplace_back(text, length);
        },
        &taken);
    print_error_text(L, "to the script", 13);
    run("_ALERT = nil");
    const std::string errors = onStandardError([&] {
        print_error(L, "a %s", "%s");
        print_error_text(nullptr, "a\0b", 3);
    });
    lua_tinker::set_error_outlet(nullptr, nullptr);
    EXPECT_EQ(errors, "");
    EXPECT_THAT(taken, ElementsAre("a %s", std::string("a\0b", 3)));
    EXPECT_EQ(onStandardError([&] { print_error(L, "%s", "again"); }), "again\n");
}

TEST_F(Report, ErrorsAreCountedWhateverBecomesOfTheirText)
{
    const unsigned long long before = lua_tinker::error_count();
    print_error(L, "%s", "a message is no error");
    run("pcall(error, 'caught')");
    lua_tinker::call<void>(L, "missing");
    EXPECT_EQ(lua_tinker::error_count(), before);
    run("function raise() _ALERT = nil error('once') end");
    onStandardError([&] { lua_tinker::call<void>(L, "raise"); });
    EXPECT_EQ(lua_tinker::error_count(), before + 1);
    run("_ALERT = function() error('in the report') end");
    onStandardError([&] { lua_tinker::dobuffer(L, "error({})", 9); });
    EXPECT_EQ(lua_tinker::error_count(), before + 2);
    onStandardError([&] { lua_tinker::dobuffer(L, "syntax error", 12); });
    EXPECT_GT(lua_tinker::error_count(), before + 2);
}

TEST_F(Report, GoesToStandardErrorWithoutAlert)
{
    for (const char* chunk :
         {"_ALERT = nil", "_ALERT = 'no function'", "_ALERT = setmetatable({}, {__call = print})",
          "_ALERT = nil; setmetatable(_G, {__index = function() error('strict') end})"}) {
        run(chunk);
        EXPECT_EQ(onStandardError([&] { print_error(L, "a %s", "%s"); }), "a %s\n") << chunk;
    }
    EXPECT_EQ(onStandardError([] { print_error(nullptr, "no %s", "state"); }), "no state\n");
    EXPECT_EQ(onStandardError([] { print_error_text(nullptr, "a\0b", 3); }), std::string("a\0b\n", 4));
    print_error(L, nullptr);
    print_error_text(L, nullptr, 3);
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Report, GoesToStandardErrorWhenAlertRaises)
{
    for (const char* chunk : {"function _ALERT() error('alert') end", "function _ALERT() error() end",
                              "function _ALERT() return _ALERT() + 1 end"}) {
        run(chunk);
        EXPECT_EQ(onStandardError([&] { print_error(L, "message"); }), "message\n") << chunk;
        EXPECT_EQ(lua_gettop(L), 0);
    }
}

TEST_F(Report, OfAnAlertThatReportsGoesToStandardError)
{
    lua_register(L, "report", [](lua_State* state) {
        print_error(state, "inner");
        return 0;
    });
    run("times = 0; function _ALERT() times = times + 1; report(); report() end");
    EXPECT_EQ(onStandardError([&] { print_error(L, "outer"); }), "inner\ninner\n");
    EXPECT_EQ(shown("times"), "1");
    EXPECT_EQ(onStandardError([&] { print_error(L, "outer"); }), "inner\ninner\n");
    EXPECT_EQ(shown("times"), "2") << "the state reports again afterwards";
}

TEST_F(Report, NeedsNoFreeSlot)
{
    fillFrame();
    const int top = lua_gettop(L);
    print_error(L, "full");
    EXPECT_EQ(lua_gettop(L), top);
    EXPECT_THAT(alerts, ElementsAre("full"));
    lua_settop(L, 0);
}

TEST_F(Report, OfAnErrorHasItsTextAndATraceback)
{
    fail("local function inner()\n  error('broken %s%n')\nend\nfunction outer()\n  inner()\n  return "
         "1\nend\nouter()");
    EXPECT_STREQ(lua_tostring(L, 1), "part.lua:2: broken %s%n");
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0], "part.lua:2: broken %s%n\n"
                         "stack traceback:\n"
                         "\t[C]: in function 'error'\n"
                         "\tpart.lua:2: in function 'inner'\n"
                         "\tpart.lua:5: in function 'outer'\n"
                         "\tpart.lua:8: in main chunk");
    lua_settop(L, 0);
}

TEST_F(Report, OfAnErrorLeavesTheValueAsItIs)
{
    const struct {
        const char* value;
        const char* text;
        int type;
    } cases[] = {
        {"'text'", "text\n", LUA_TSTRING},
        {"12.5", "12.5\n", LUA_TNUMBER},
        {"nil", "(error object is a nil value)\n", LUA_TNIL},
        {"true", "(error object is a boolean value)\n", LUA_TBOOLEAN},
        {"{}", "(error object is a table value)\n", LUA_TTABLE},
        {"print", "(error object is a function value)\n", LUA_TFUNCTION},
        {"newproxy()", "(error object is a userdata value)\n", LUA_TUSERDATA},
        {"setmetatable({}, {__tostring = function() error('asked') end})",
         "(error object is a table value)\n", LUA_TTABLE},
    };
    for (const auto& test : cases) {
        alerts.clear();
        fail(std::string("error(") + test.value + ", 0)");
        EXPECT_EQ(lua_type(L, 1), test.type) << test.value;
        ASSERT_EQ(alerts.size(), 1u) << test.value;
        EXPECT_THAT(alerts[0], StartsWith(test.text)) << test.value;
        lua_settop(L, 0);
    }
}

TEST_F(Report, OfAnErrorIsWholeHoweverLong)
{
    fail("error(string.rep('x', 2^20) .. 'end', 0)");
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_THAT(alerts[0].substr(1 << 20), StartsWith("end\nstack traceback:"));
    lua_settop(L, 0);
}

TEST_F(Report, OfAnErrorHasABoundedTraceback)
{
    fail("local function down(n) if n == 0 then error('deep', 0) end; down(n - 1); return n end\ndown(5000)");
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_LT(alerts[0].size(), 5000u);
    EXPECT_THAT(alerts[0], HasSubstr("\n\t...\n"));
    EXPECT_THAT(alerts[0], testing::EndsWith("part.lua:2: in main chunk"));
    lua_settop(L, 0);
}

TEST_F(Report, OfAnErrorCutsLongNames)
{
    fail("local t = {}; t[('n'):rep(5000)] = 1; _G[('n'):rep(5000)] = function() error('x', 0) end\n"
         "loadstring(('n'):rep(5000) .. '() return 1')()\nreturn 1");
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_LT(alerts[0].size(), 1000u);
    EXPECT_THAT(alerts[0], HasSubstr("'" + std::string(60, 'n') + "'"));
    lua_settop(L, 0);
}

TEST_F(Report, OfAnErrorNeverRaises)
{
    run("function _ALERT() error('alert') end");
    const std::string printed = onStandardError([&] { fail("error('broken', 0)"); });
    EXPECT_THAT(printed, StartsWith("broken\nstack traceback:"));
    EXPECT_STREQ(lua_tostring(L, 1), "broken");
    lua_settop(L, 0);
    EXPECT_EQ(onStandardError([] { EXPECT_EQ(on_error(nullptr), 0); }), "");
}

TEST_F(Report, OfAnErrorCanBeAskedForDirectly)
{
    lua_pushcfunction(L, on_error);
    lua_call(L, 0, 1);
    EXPECT_TRUE(lua_isnil(L, 1));
    EXPECT_THAT(alerts, ElementsAre("(error object is a nil value)"));
    lua_settop(L, 0);
}

TEST_F(Report, IgnoresTheLocale)
{
    print_error(L, "%.2f of %g, %e", 1234567.125, -0.5, 1e-3);
    const std::string printed = onStandardError([] { print_error(nullptr, "%g and %d", 0.5, 1234567); });
    fail("error(-1234.5e-300, 0)");
    lua_settop(L, 0);
    EXPECT_THAT(alerts, ElementsAre("1234567.12 of -0.5, 1.000000e-03",
                                    StartsWith("-1.2345e-297\nstack traceback:")));
    EXPECT_EQ(printed, "0.5 and 1234567\n");
}

TEST_F(Report, LeavesTheHostsLocaleAsItIs)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const void* current = sys::threadLocale();
    print_error(L, "%g", 0.5);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
    EXPECT_EQ(sys::threadLocale(), current);
}

TEST_F(Report, ShowsNumbersAsTheInterpreterDoes)
{
    const struct {
        double number;
        const char* text;
    } cases[] = {{0, "0"},
                 {-0.0, "-0"},
                 {1, "1"},
                 {-1, "-1"},
                 {0.1, "0.1"},
                 {0.0001, "0.0001"},
                 {1e-5, "1e-05"},
                 {-1234.5e-300, "-1.2345e-297"},
                 {3.1415926535898, "3.1415926535898"},
                 {1.0 / 3, "0.33333333333333"},
                 {100000, "100000"},
                 {123456789012346, "1.2345678901235e+14"},
                 {1e15, "1e+15"},
                 {1e100, "1e+100"}};
    for (const auto& [number, text] : cases) {
        char buffer[32];
        EXPECT_EQ(quorlua::numberText(number), text);
        EXPECT_EQ(std::string(buffer, quorlua::numberText(number, buffer)), text);
        const NeutralLocale neutral;
        lua_pushnumber(L, number);
        EXPECT_STREQ(lua_tostring(L, -1), text) << "the interpreter's own";
        lua_pop(L, 1);
    }
}

} // namespace
