#include "../OverwritingMemory.h"
#include "lua_state.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <stdexcept>

namespace {

using lua_tinker::call;
using lua_tinker::def;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string noted;

void noteText(const char* text)
{
    noted = std::string("text ") + text;
}

void noteAll(int number, bool flag, double fraction, std::string text, long long id)
{
    noted = std::to_string(number) + (flag ? " true " : " false ") + quorlua::numberText(fraction) + " " +
            text + " " + std::to_string(id);
}

int doubled(int number)
{
    return 2 * number;
}

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

const char* nothing()
{
    return nullptr;
}

long long big()
{
    return 1LL << 62;
}

int failing()
{
    throw std::runtime_error("broken %s host");
}

std::string failingText()
{
    throw std::runtime_error("no text");
}

class HostFunction : public LuaState {
protected:
    HostFunction() { noted.clear(); }
};

TEST_F(HostFunction, TakesArgumentsAndGivesItsResult)
{
    def(L, "noteAll", noteAll);
    def(L, "doubled", doubled);
    def(L, "repeated", repeated);
    def(L, "nothing", nothing);
    def(L, "big", big);
    run("noteAll(3, true, 0.5, 'x', int64('9000000000000000000'))");
    EXPECT_EQ(noted, "3 true 0.5 x 9000000000000000000");
    EXPECT_EQ(shown("doubled(21)"), "42");
    EXPECT_EQ(shown("repeated('a\\0b', 3) == 'a\\0ba\\0ba\\0b'"), "true");
    EXPECT_EQ(shown("nothing()"), "nil");
    EXPECT_EQ(shown("big()"), "4611686018427387904");
    EXPECT_EQ(
        shown("select('#', doubled(1)) .. select('#', nothing()) .. select('#', noteAll(1,true,1,'',1))"),
        "110");
}

TEST_F(HostFunction, ReadsMissingNumbersAsNothing)
{
    def(L, "doubled", doubled);
    EXPECT_EQ(shown("doubled()"), "0");
    EXPECT_EQ(shown("doubled('4')"), "0");
}

TEST_F(HostFunction, DoesNothingWithoutItsText)
{
    def(L, "noteText", noteText);
    for (const char* argument : {"", "nil", "{}", "true", "int64(1)"}) {
        run(std::string("assert(select('#', noteText(") + argument + ")) == 0)");
        EXPECT_EQ(noted, "") << argument;
    }
    run("noteText('12')");
    EXPECT_EQ(noted, "text 12");
}

TEST_F(HostFunction, TakesANumberForAText)
{
    def(L, "noteText", noteText);
    run("noteText(0.5)");
    EXPECT_EQ(noted, "text 0.5");
}

TEST_F(HostFunction, ReportsAnExceptionAndGivesNothing)
{
    def(L, "failing", failing);
    def(L, "failingText", failingText);
    EXPECT_EQ(shown("select('#', failing())"), "0");
    EXPECT_EQ(shown("select('#', failingText())"), "0");
    EXPECT_THAT(alerts,
                ElementsAre("a host function failed: broken %s host", "a host function failed: no text"));
}

TEST_F(HostFunction, IsStoredPastStrictGlobals)
{
    run("setmetatable(_G, {__newindex = function() error('strict') end})");
    def(L, "doubled", doubled);
    EXPECT_EQ(shown("doubled(2)"), "4");
    def(L, static_cast<const char*>(nullptr), doubled);
    def(static_cast<lua_State*>(nullptr), "doubled", doubled);
}

class ScriptFunction : public LuaState {};

TEST_F(ScriptFunction, IsCalledWithItsArguments)
{
    run("function join(...) local t = {...}; for i = 1, #t do t[i] = textOf(t[i]) end "
        "return table.concat(t, ' ') end; kept = {}");
    EXPECT_EQ((call<std::string>(L, "join", "a", 2, 2.5, true, 1LL << 60, std::string("z"))),
              "a 2 2.5 true 1152921504606846976 z");
    EXPECT_EQ(call<std::string>(L, "join"), "");
}

TEST_F(ScriptFunction, GivesEveryKindOfResult)
{
    run("text = 'kept'; function t() return text end; function b() return true end; function d() return 2.5 "
        "end "
        "function i() return 7.9 end; function id() return int64(9) end; function n() end; function v() hit "
        "= true end");
    EXPECT_STREQ(call<const char*>(L, "t"), "kept");
    EXPECT_TRUE(call<bool>(L, "b"));
    EXPECT_EQ(call<double>(L, "d"), 2.5);
    EXPECT_EQ(call<int>(L, "i"), 7);
    EXPECT_EQ(call<long long>(L, "id"), 9);
    EXPECT_EQ(call<const char*>(L, "n"), nullptr);
    EXPECT_FALSE(call<bool>(L, "n"));
    call<void>(L, "v");
    EXPECT_EQ(shown("hit"), "true");
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(ScriptFunction, GivesATextThatIsStillThereWhenTheCollectorRunsAsTheCallEnds)
{
    run("function made(n) return 'made ' .. n end");
    const OverwritingMemory overwriting(L);
    for (int i = 0; i < 20; ++i)
        EXPECT_STREQ(call<const char*>(L, "made", i), ("made " + std::to_string(i)).c_str());
    fillFrame();
    for (int i = 0; i < 20; ++i)
        EXPECT_STREQ(call<const char*>(L, "made", i), ("made " + std::to_string(i)).c_str());
    lua_settop(L, 0);
}

TEST_F(ScriptFunction, ReportsAGlobalThatIsNone)
{
    run("word = 'value'");
    EXPECT_EQ(call<const char*>(L, "absent"), nullptr);
    EXPECT_STREQ(call<const char*>(L, "word"), "value") << "the value found is taken as the result";
    call<void>(L, "%s%n");
    EXPECT_THAT(alerts, ElementsAre("attempt to call global `absent' (not a function)",
                                    "attempt to call global `word' (not a function)",
                                    "attempt to call global `%s%n' (not a function)"));
}

TEST_F(ScriptFunction, TakesARaisingGlobalForNone)
{
    run("setmetatable(_G, {__index = function(_, name) error('strict ' .. name) end})");
    EXPECT_EQ(call<int>(L, "absent"), 0);
    EXPECT_THAT(alerts, ElementsAre("attempt to call global `absent' (not a function)"));
}

TEST_F(ScriptFunction, ReportsItsErrorOnceAndGivesNothing)
{
    run("function fails() error('broken') end; function odd() error({}) end; function empty() error() end "
        "function deep() return 1 + deep() end");
    EXPECT_EQ(call<const char*>(L, "fails"), nullptr);
    EXPECT_EQ(call<int>(L, "odd"), 0);
    EXPECT_FALSE(call<bool>(L, "empty"));
    ASSERT_EQ(alerts.size(), 3u);
    EXPECT_THAT(alerts[0], HasSubstr("broken\nstack traceback:"));
    EXPECT_THAT(alerts[1], StartsWith("(error object is a table value)"));
    EXPECT_THAT(alerts[2], StartsWith("(error object is a nil value)"));
    EXPECT_EQ(call<int>(L, "deep"), 0);
    ASSERT_EQ(alerts.size(), 4u);
    EXPECT_LT(alerts[3].size(), 20000u);
}

TEST_F(ScriptFunction, IsCalledFromAFullFrame)
{
    run("function seven() return 7 end; function fails() error('broken') end");
    fillFrame();
    const int top = lua_gettop(L);
    EXPECT_EQ(call<int>(L, "seven"), 7);
    EXPECT_EQ(call<int>(L, "fails"), 0);
    EXPECT_EQ(lua_gettop(L), top);
    EXPECT_EQ(alerts.size(), 1u);
    lua_settop(L, 0);
}

TEST_F(ScriptFunction, IsCalledFromWithinScripts)
{
    run("function inner(n) return n + 1 end");
    lua_register(L, "through", [](lua_State* state) {
        lua_pushnumber(state, call<int>(state, "inner", 4));
        return 1;
    });
    EXPECT_EQ(shown("through()"), "5");
    EXPECT_EQ(shown("coroutine.wrap(function() return through() end)()"), "5");
}

TEST(ScriptFunctionWithoutState, GivesNothing)
{
    EXPECT_EQ(call<int>(nullptr, "x"), 0);
    lua_State* L = luaL_newstate();
    EXPECT_EQ(call<int>(L, nullptr), 0);
    lua_close(L);
}

} // namespace
