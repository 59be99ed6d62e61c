// The serializer itself, whatever its script: what it calls, what it leaves on its stack, what it reports.

#include "serializer_fixture.h"

#include <limits>

namespace {

using quorlua::LuaSerialize;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* noWriter = "attempt to call global `serializeTable' (not a function)";
constexpr const char* noReader = "attempt to call global `unSerializeTable' (not a function)";

TEST_F(Serializer, HasOneState)
{
    EXPECT_EQ(LuaSerialize::getLua(), L);
    LuaSerialize::init();
    EXPECT_EQ(LuaSerialize::getLua(), L);
}

TEST_F(Serializer, LeavesTheTextOnTopOfItsStack)
{
    const int index = push("{5}");
    const char* text = LuaSerialize::serial(index);
    ASSERT_EQ(lua_gettop(L), index + 1);
    EXPECT_TRUE(lua_istable(L, index));
    EXPECT_EQ(lua_tostring(L, -1), text);
    EXPECT_EQ(text, headed("{5}"));
}

TEST_F(Serializer, WritesTheValueAtTheIndex)
{
    run("function serializeTable(...) return select('#', ...) .. tostring(...) end");
    push("'first'");
    push("'second'");
    push("'third'");
    EXPECT_STREQ(LuaSerialize::serial(2), "1first");
    EXPECT_STREQ(LuaSerialize::serial(3), "1second");
    EXPECT_STREQ(LuaSerialize::serial(4), "1third");
    EXPECT_STREQ(LuaSerialize::serial(-5), "1second") << "counted from the top, as the caller sees it";
}

TEST_F(Serializer, TakesAnIndexThatHoldsNothingForNil)
{
    run("function serializeTable(...) return select('#', ...) .. type(...) end");
    const int top = lua_gettop(L);
    for (const int index : {top + 1, top + 2, top + 3, 1000, 0, -top - 1, -1000, lua_upvalueindex(1),
                            std::numeric_limits<int>::max()}) {
        EXPECT_STREQ(LuaSerialize::serial(index), "1nil") << index;
        EXPECT_EQ(lua_gettop(L), top + 1) << index;
        lua_settop(L, top);
    }
}

TEST_F(Serializer, KeepsItsTextsUntilTheStackIsCleared)
{
    std::vector<const char*> texts;
    for (int i = 0; i < 50; ++i) {
        texts.push_back(LuaSerialize::serial(push("{" + std::to_string(i) + "}")));
        lua_remove(L, -2);
    }
    lua_gc(L, LUA_GCCOLLECT, 0);
    EXPECT_EQ(lua_gettop(L), 51);
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(texts[i], headed("{" + std::to_string(i) + "}"));
    LuaSerialize::clear();
    EXPECT_EQ(lua_gettop(L), 1);
}

TEST_F(Serializer, IsClearedDownToItsBottomValue)
{
    lua_pushvalue(L, 1);
    lua_setglobal(L, "bottom");
    push("{1}");
    LuaSerialize::unSerial("anything");
    LuaSerialize::clear();
    EXPECT_EQ(lua_gettop(L), 1);
    lua_getglobal(L, "bottom");
    EXPECT_TRUE(lua_rawequal(L, 1, 2));
    LuaSerialize::clear();
    LuaSerialize::clear();
    EXPECT_EQ(lua_gettop(L), 1);
}

TEST_F(Serializer, GivesTheTextOfWhatTheScriptAnswers)
{
    const struct {
        const char* answer;
        const char* text;
        const char* type;
    } cases[] = {
        {"'text'", "text", "string"},
        {"''", "", "string"},
        {"'first', 'second'", "first", "string"},
        {"'cut\\0off'", "cut", "string"},
        {"12", "12", "string"},
        {"-1e15", "-1e+15", "string"},
        {"nil", nullptr, "nil"},
        {"", nullptr, "nil"},
        {"true", nullptr, "boolean"},
        {"{'text'}", nullptr, "table"},
        {"setmetatable({}, {__tostring = function() return 'text' end})", nullptr, "table"},
        {"print", nullptr, "function"},
        {"int64(5)", nullptr, "userdata"},
    };
    for (const auto& [answer, text, type] : cases) {
        run(std::string("function serializeTable() return ") + answer + " end");
        const int top = lua_gettop(L);
        EXPECT_STREQ(LuaSerialize::serial(1), text) << answer;
        ASSERT_EQ(lua_gettop(L), top + 1) << answer;
        EXPECT_STREQ(luaL_typename(L, -1), type) << answer;
    }
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Serializer, GivesNoTextWhenTheScriptFails)
{
    for (const char* value : {"'broken'", "{}", "nil", "12"}) {
        alerts.clear();
        run(std::string("function serializeTable() error(") + value + ", 0) end");
        const int top = lua_gettop(L);
        EXPECT_EQ(LuaSerialize::serial(1), nullptr) << value;
        ASSERT_EQ(lua_gettop(L), top + 1) << value;
        EXPECT_TRUE(lua_isnil(L, -1)) << value;
        EXPECT_EQ(alerts.size(), 1u) << value;
    }
    run("function serializeTable() error('broken', 0) end");
    alerts.clear();
    EXPECT_EQ(LuaSerialize::serial(1), nullptr);
    EXPECT_THAT(alerts, ElementsAre("broken"));
}

TEST_F(Serializer, GivesWhatStandsInPlaceOfTheWritingFunction)
{
    const struct {
        const char* value;
        const char* text;
        const char* type;
    } cases[] = {
        {"nil", nullptr, "nil"},
        {"false", nullptr, "boolean"},
        {"12", "12", "string"},
        {"'text'", "text", "string"},
        {"{}", nullptr, "table"},
        {"setmetatable({}, {__call = function() return 'called' end})", nullptr, "table"},
        {"coroutine.create(function() end)", nullptr, "thread"},
    };
    for (const auto& [value, text, type] : cases) {
        alerts.clear();
        run(std::string("serializeTable = ") + value);
        const int top = lua_gettop(L);
        EXPECT_STREQ(LuaSerialize::serial(1), text) << value;
        ASSERT_EQ(lua_gettop(L), top + 1) << value;
        EXPECT_STREQ(luaL_typename(L, -1), type) << value;
        EXPECT_THAT(alerts, ElementsAre(noWriter)) << value;
    }
}

TEST_F(Serializer, LeavesTheValueOfATextOnTopOfItsStack)
{
    run("function unSerializeTable(...) return {select('#', ...), ...}, 'dropped' end");
    EXPECT_TRUE(LuaSerialize::unSerial("the text"));
    ASSERT_EQ(lua_gettop(L), 2);
    lua_setglobal(L, "made");
    EXPECT_EQ(shown("made[1] .. made[2]"), "1the text");
}

TEST_F(Serializer, LeavesAnyValueOfATextAsItIs)
{
    const struct {
        const char* answer;
        const char* type;
    } cases[] = {{"{}", "table"}, {"12", "number"}, {"'12'", "string"},    {"false", "boolean"},
                 {"nil", "nil"},  {"", "nil"},      {"print", "function"}, {"int64(5)", "userdata"}};
    for (const auto& [answer, type] : cases) {
        run(std::string("function unSerializeTable() return ") + answer + " end");
        const int top = lua_gettop(L);
        EXPECT_TRUE(LuaSerialize::unSerial("text")) << answer;
        ASSERT_EQ(lua_gettop(L), top + 1) << answer;
        EXPECT_STREQ(luaL_typename(L, -1), type) << answer;
    }
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Serializer, ReadsNoTextThatIsMissingOrEmpty)
{
    run("function unSerializeTable() called = true return {} end");
    EXPECT_FALSE(LuaSerialize::unSerial(nullptr));
    EXPECT_FALSE(LuaSerialize::unSerial(""));
    EXPECT_EQ(lua_gettop(L), 1);
    EXPECT_EQ(shown("called"), "nil");
}

TEST_F(Serializer, LeavesNilWhenTheScriptCannotReadAText)
{
    EXPECT_TRUE(LuaSerialize::unSerial("no such text"));
    ASSERT_EQ(lua_gettop(L), 2);
    EXPECT_TRUE(lua_isnil(L, 2));
    EXPECT_THAT(alerts, ElementsAre("unSerializeTable: this is no text of serializeTable"));
}

TEST_F(Serializer, LeavesWhatStandsInPlaceOfTheReadingFunction)
{
    const struct {
        const char* value;
        const char* type;
    } cases[] = {{"nil", "nil"}, {"12", "number"}, {"'text'", "string"}, {"{}", "table"}};
    for (const auto& [value, type] : cases) {
        alerts.clear();
        run(std::string("unSerializeTable = ") + value);
        const int top = lua_gettop(L);
        EXPECT_TRUE(LuaSerialize::unSerial("text")) << value;
        ASSERT_EQ(lua_gettop(L), top + 1) << value;
        EXPECT_STREQ(luaL_typename(L, -1), type) << value;
        EXPECT_THAT(alerts, ElementsAre(noReader)) << value;
    }
}

TEST_F(Serializer, FindsNoFunctionWhereGlobalsRaise)
{
    run("rawset(_G, 'serializeTable', nil) rawset(_G, 'unSerializeTable', nil)"
        " setmetatable(_G, {__index = function() error('strict') end,"
        " __newindex = function() error('strict') end})");
    EXPECT_EQ(LuaSerialize::serial(1), nullptr);
    EXPECT_TRUE(LuaSerialize::unSerial("text"));
    ASSERT_EQ(lua_gettop(L), 3);
    EXPECT_TRUE(lua_isnil(L, 2));
    EXPECT_TRUE(lua_isnil(L, 3));
    EXPECT_THAT(alerts, ElementsAre(noWriter, noReader));
}

TEST_F(Serializer, FindsFunctionsThroughMetamethods)
{
    run("rawset(_G, 'serializeTable', nil) rawset(_G, 'unSerializeTable', nil)"
        " setmetatable(_G, {__index = function(_, name) return function() return name end end})");
    EXPECT_STREQ(LuaSerialize::serial(1), "serializeTable");
    EXPECT_TRUE(LuaSerialize::unSerial("text"));
    EXPECT_STREQ(lua_tostring(L, -1), "unSerializeTable");
}

TEST_F(Serializer, IsOfNoUseWhenItsStackIsFull)
{
    const int index = push("{1}");
    while (lua_checkstack(L, 1))
        lua_pushnil(L);
    const int top = lua_gettop(L);
    EXPECT_EQ(LuaSerialize::serial(index), nullptr);
    EXPECT_FALSE(LuaSerialize::unSerial("quor-table 1 {}"));
    EXPECT_EQ(lua_gettop(L), top);
    LuaSerialize::clear();
    EXPECT_EQ(written("{1}"), headed("{1}"));
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Serializer, FillsItsStackAndIsThenOfNoUse)
{
    int results = 0;
    while (results < 10000 && LuaSerialize::unSerial("quor-table 1 {}"))
        ++results;
    EXPECT_GT(results, 7000);
    EXPECT_LT(results, 10000);
    EXPECT_EQ(lua_gettop(L), 1 + results);
    EXPECT_EQ(LuaSerialize::serial(2), nullptr);
    EXPECT_EQ(lua_gettop(L), 1 + results);
}

int writeAgain(lua_State* state)
{
    lua_settop(state, 1);
    lua_pushstring(state, LuaSerialize::serial(1));
    return 1;
}

TEST_F(Serializer, MayBeUsedByWhatItsScriptCalls)
{
    lua_register(L, "writeAgain", writeAgain);
    run("local write = serializeTable function serializeTable(value)"
        " if type(value) == 'table' and value.inner then return writeAgain(value.inner) end"
        " return write(value) end");
    EXPECT_EQ(written("{inner = {inner = {7}}}"), headed("{7}"));
}

} // namespace
