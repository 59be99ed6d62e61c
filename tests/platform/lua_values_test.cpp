#include "lua_state.h"

#include <QuorPureScriptor/BackupLuaStackTop.h>
#include <climits>
#include <cmath>
#include <limits>

namespace {

using lua_tinker::pop;
using lua_tinker::push;
using lua_tinker::read;
using lua_tinker::table;

class LuaValues : public LuaState {
protected:
    template<class T>
    T thereAndBack(const T& value)
    {
        push<T>(L, value);
        EXPECT_EQ(lua_gettop(L), 1);
        return pop<T>(L);
    }
};

enum class Colour : short { Red = 3 };

TEST_F(LuaValues, ComeBackAsTheyWent)
{
    EXPECT_TRUE(thereAndBack(true));
    EXPECT_FALSE(thereAndBack(false));
    EXPECT_EQ(thereAndBack<short>(-32768), -32768);
    EXPECT_EQ(thereAndBack<unsigned short>(65535), 65535);
    EXPECT_EQ(thereAndBack<signed char>(-128), -128);
    EXPECT_EQ(thereAndBack(INT_MIN), INT_MIN);
    EXPECT_EQ(thereAndBack(UINT_MAX), UINT_MAX);
    EXPECT_EQ(thereAndBack(1.5f), 1.5f);
    EXPECT_EQ(thereAndBack(0.1), 0.1);
    EXPECT_EQ(thereAndBack(LLONG_MIN), LLONG_MIN);
    EXPECT_EQ(thereAndBack(LLONG_MAX), LLONG_MAX);
    EXPECT_EQ(thereAndBack(ULLONG_MAX), ULLONG_MAX);
    EXPECT_EQ(thereAndBack(Colour::Red), Colour::Red);
    EXPECT_EQ(thereAndBack(std::string("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(thereAndBack(std::string()), "");
}

TEST_F(LuaValues, HaveTheTypesOfTheirTable)
{
    push(L, true);
    push(L, 7);
    push(L, 7.5f);
    push(L, "text");
    push(L, std::string("text"));
    push(L, static_cast<const char*>(nullptr));
    push(L, 7LL);
    push(L, 7ULL);
    push(L, table());
    const int expected[] = {LUA_TBOOLEAN, LUA_TNUMBER,   LUA_TNUMBER,   LUA_TSTRING, LUA_TSTRING,
                            LUA_TNIL,     LUA_TUSERDATA, LUA_TUSERDATA, LUA_TNIL};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(lua_type(L, i + 1), expected[i]) << "value " << i;
    lua_settop(L, 0);
}

TEST_F(LuaValues, ReadAsNothingWhenOfAnotherType)
{
    run("return nil, true, 12, '12', {}, print, newproxy(), io.stdout, coroutine.create(function() end), "
        "int64(12)",
        10);
    lua_pushlightuserdata(L, this);
    const int top = lua_gettop(L);
    for (int index = 1; index <= top + 1; ++index) {
        const int type = lua_type(L, index);
        const bool isInt64 = index == 10;
        EXPECT_EQ(read<int>(L, index), type == LUA_TNUMBER ? 12 : 0) << "value " << index;
        EXPECT_EQ(read<short>(L, index), type == LUA_TNUMBER ? 12 : 0) << "value " << index;
        EXPECT_EQ(read<double>(L, index), type == LUA_TNUMBER ? 12.0 : 0.0) << "value " << index;
        EXPECT_EQ(read<float>(L, index), type == LUA_TNUMBER ? 12.0f : 0.0f) << "value " << index;
        EXPECT_EQ(read<long long>(L, index), type == LUA_TNUMBER || isInt64 ? 12 : 0) << "value " << index;
        EXPECT_EQ(lua_tinker::is_int64(L, index), isInt64) << "value " << index;
        EXPECT_EQ(read<bool>(L, index), type != LUA_TNIL && type != LUA_TNONE) << "value " << index;
        EXPECT_EQ(read<std::string>(L, index), type == LUA_TSTRING ? "12" : "") << "value " << index;
        const char* text = read<const char*>(L, index);
        if (type == LUA_TSTRING)
            EXPECT_STREQ(text, "12");
        else
            EXPECT_EQ(text, nullptr) << "value " << index;
        EXPECT_EQ(read<table>(L, index).valid(), type == LUA_TTABLE) << "value " << index;
        EXPECT_EQ(lua_gettop(L), top);
    }
    EXPECT_EQ(lua_type(L, 3), LUA_TNUMBER) << "a number read as a text stays a number";
    lua_settop(L, 0);
}

TEST_F(LuaValues, ReadRelativeIndices)
{
    run("return 1, int64(2), 'x'", 3);
    EXPECT_EQ(read<int>(L, -3), 1);
    EXPECT_EQ(read<long long>(L, -2), 2);
    EXPECT_EQ(read<std::string>(L, -1), "x");
    lua_settop(L, 0);
}

TEST_F(LuaValues, CutNumbersThatDoNotFitAnInteger)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    struct {
        double number;
        short asShort;
        int asInt;
        unsigned asUnsigned;
        long long asLong;
    } const cases[] = {
        {3.9, 3, 3, 3, 3},
        {-3.9, -3, -3, 0xFFFFFFFDu, -3},
        {70000, 4464, 70000, 70000, 70000},
        {-1, -1, -1, 0xFFFFFFFFu, -1},
        {4294967297.0, 1, 1, 1, 4294967297LL},
        {0x1p62, 0, 0, 0, 1LL << 62},
        {0x1p63, 0, 0, 0, LLONG_MIN},
        {-0x1p63, 0, 0, 0, LLONG_MIN},
        {1e300, 0, 0, 0, LLONG_MIN},
        {-1e300, 0, 0, 0, LLONG_MIN},
        {infinity, 0, 0, 0, LLONG_MIN},
        {-infinity, 0, 0, 0, LLONG_MIN},
        {std::nan(""), 0, 0, 0, LLONG_MIN},
    };
    for (const auto& test : cases) {
        lua_pushnumber(L, test.number);
        EXPECT_EQ(read<short>(L, 1), test.asShort) << test.number;
        EXPECT_EQ(read<int>(L, 1), test.asInt) << test.number;
        EXPECT_EQ(read<unsigned>(L, 1), test.asUnsigned) << test.number;
        EXPECT_EQ(read<long long>(L, 1), test.asLong) << test.number;
        lua_pop(L, 1);
    }
}

TEST_F(LuaValues, BecomeInfiniteBeyondFloat)
{
    lua_pushnumber(L, 1e300);
    lua_pushnumber(L, -1e300);
    lua_pushnumber(L, std::nan(""));
    EXPECT_EQ(read<float>(L, 1), std::numeric_limits<float>::infinity());
    EXPECT_EQ(read<float>(L, 2), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(read<float>(L, 3)));
    lua_settop(L, 0);
}

TEST_F(LuaValues, TrustNoForeignUserdataOfTheRightSize)
{
    lua_newuserdata(L, sizeof(long long));
    EXPECT_EQ(read<long long>(L, 1), 0);
    lua_newtable(L);
    lua_setmetatable(L, 1);
    EXPECT_EQ(read<long long>(L, 1), 0);
    EXPECT_FALSE(lua_tinker::is_int64(L, 1));
    lua_newuserdata(L, 0);
    run("return getmetatable(int64(1)), debug.getmetatable(int64(1))", 2);
    EXPECT_EQ(lua_type(L, 3), LUA_TBOOLEAN) << "scripts do not reach the metatable";
    lua_setmetatable(L, 2);
    EXPECT_EQ(read<long long>(L, 2), 0) << "an empty block under the right metatable";
    lua_settop(L, 0);
}

TEST(LuaValuesBeforeInit, Push64BitIntegers)
{
    lua_State* L = luaL_newstate();
    lua_pushnumber(L, 1);
    EXPECT_FALSE(lua_tinker::is_int64(L, 1));
    lua_newuserdata(L, sizeof(long long));
    EXPECT_EQ(read<long long>(L, 2), 0);
    push(L, 42LL);
    EXPECT_EQ(read<long long>(L, 3), 42);
    EXPECT_EQ(lua_gettop(L), 3);
    lua_close(L);
}

class LuaTable : public LuaState {};

TEST_F(LuaTable, HandleRefersToNothingAtFirst)
{
    table none;
    EXPECT_EQ(none.state(), nullptr);
    EXPECT_EQ(none.index(), 0);
    EXPECT_EQ(none.handle(), nullptr);
    EXPECT_FALSE(none.valid());
    none.set(1, 2);
    none.set("x", 2);
    EXPECT_EQ(none.get<int>(1), 0);
    EXPECT_EQ(none.get<std::string>("x"), "");
    EXPECT_EQ(lua_tinker::state_of(none.handle()), nullptr);
    EXPECT_EQ(lua_tinker::index_of(none.handle()), 0);
}

TEST_F(LuaTable, HandlePushesANewTable)
{
    lua_pushnil(L);
    table made(L);
    EXPECT_EQ(lua_gettop(L), 2);
    EXPECT_EQ(made.index(), 2);
    EXPECT_EQ(made.state(), L);
    EXPECT_TRUE(made.valid());
    lua_settop(L, 1);
    EXPECT_FALSE(made.valid());
    lua_settop(L, 0);
}

TEST_F(LuaTable, HandleMakesARelativeIndexAbsolute)
{
    run("return {}, 1", 2);
    const table slot(L, -2);
    lua_pushnil(L);
    EXPECT_EQ(slot.index(), 1);
    EXPECT_TRUE(slot.valid());
    EXPECT_FALSE(table(L, 2).valid());
    EXPECT_FALSE(table(L, 9).valid());
    EXPECT_TRUE(table(L, LUA_GLOBALSINDEX).valid());
    lua_settop(L, 0);
}

TEST_F(LuaTable, HandleFindsOrMakesAGlobal)
{
    run("there = {7}; other = 5");
    EXPECT_EQ(table(L, "there").get<int>(1), 7);
    table(L, "other").set("x", 1);
    table(L, "missing").set("x", 2);
    EXPECT_EQ(lua_gettop(L), 3);
    lua_settop(L, 0);
    EXPECT_EQ(shown("other.x .. missing.x"), "12");
}

TEST_F(LuaTable, HandlesShareWhatTheyReferTo)
{
    lua_newtable(L);
    lua_newtable(L);
    table first(L, 1);
    table second(first);
    table third;
    third = second;
    EXPECT_EQ(first.handle(), third.handle());
    third = *&third;
    second = table();
    second = std::move(third);
    EXPECT_EQ(second.handle(), first.handle());
    lua_tinker::table_obj* object = first.handle();
    EXPECT_EQ(lua_tinker::state_of(object), L);
    EXPECT_EQ(lua_tinker::index_of(object), 1);
    first = table();
    const table again = table::from(object);
    EXPECT_EQ(again.handle(), object);
    second.assign(L, -1);
    EXPECT_EQ(second.index(), 2);
    EXPECT_EQ(again.index(), 1) << "assigning points one handle elsewhere, not those that shared its slot";
    lua_settop(L, 0);
}

TEST_F(LuaTable, HandleSetsAndGetsEntries)
{
    table slot(L);
    slot.set(1, 1.5);
    slot.set("name", "text");
    slot.set("id", 1LL << 60);
    slot.set("inner", table(L));
    lua_settop(L, 1);
    EXPECT_EQ(slot.get<double>(1), 1.5);
    EXPECT_STREQ(slot.get<const char*>("name"), "text");
    EXPECT_EQ(slot.get<long long>("id"), 1LL << 60);
    EXPECT_EQ(slot.get<int>("absent"), 0);
    EXPECT_EQ(lua_gettop(L), 1);
    const table inner = slot.get<table>("inner");
    EXPECT_TRUE(inner.valid());
    EXPECT_EQ(inner.index(), 2);
    EXPECT_EQ(lua_gettop(L), 2);
    lua_settop(L, 0);
}

TEST_F(LuaTable, OfAnotherStateIsPushedAsNil)
{
    lua_State* other = luaL_newstate();
    const table foreign(other);
    push(L, foreign);
    EXPECT_TRUE(lua_isnil(L, 1));
    const table own(L);
    push(L, own);
    EXPECT_TRUE(lua_rawequal(L, 2, 3));
    lua_settop(L, 0);
    lua_close(other);
}

TEST_F(LuaTable, IntegerKeysGoPastMetamethods)
{
    run("return setmetatable({}, {__index = function() error('read') end, __newindex = function() "
        "error('write') end})",
        1);
    table slot(L, 1);
    EXPECT_EQ(slot.get<int>(1), 0);
    slot.set(1, 3);
    EXPECT_EQ(slot.get<int>(1), 3);
    lua_settop(L, 0);
}

class StackTop : public LuaState {};

TEST_F(StackTop, ComesBackFromAboveAndBelow)
{
    lua_pushnumber(L, 1);
    lua_pushnumber(L, 2);
    {
        const BackupLuaStackTop guard(L);
        lua_pushnumber(L, 3);
        lua_pushnumber(L, 4);
    }
    EXPECT_EQ(lua_gettop(L), 2);
    {
        const BackupLuaStackTop guard(L);
        lua_settop(L, 1);
    }
    EXPECT_EQ(lua_gettop(L), 2);
    lua_settop(L, 0);
}

TEST_F(StackTop, KeepsWhatItIsToldTo)
{
    const struct {
        int index;
        int height;
    } cases[] = {{-1, 4}, {-2, 3}, {3, 3}, {1, 2}, {-4, 2}, {0, 2}, {LUA_GLOBALSINDEX, 2}};
    for (const auto& test : cases) {
        lua_settop(L, 2);
        {
            BackupLuaStackTop guard(L);
            lua_pushnumber(L, 3);
            lua_pushnumber(L, 4);
            guard.reset(test.index);
        }
        EXPECT_EQ(lua_gettop(L), test.height) << test.index;
    }
    lua_settop(L, 0);
}

TEST(StackTopOfNoState, DoesNothing)
{
    BackupLuaStackTop guard(nullptr);
    guard.reset(1);
}

class Int64 : public LuaState {};

TEST_F(Int64, CalculatesAndComparesInScripts)
{
    const struct {
        const char* expression;
        const char* result;
    } cases[] = {
        {"int64(5)", "5"},
        {"int64(-5)", "-5"},
        {"int64('9223372036854775807')", "9223372036854775807"},
        {"int64('-9223372036854775808')", "-9223372036854775808"},
        {"int64(int64(7))", "7"},
        {"int64('9223372036854775808')", "nil"},
        {"int64('')", "nil"},
        {"int64('12x')", "nil"},
        {"int64('1.5')", "nil"},
        {"int64(1.5)", "nil"},
        {"int64(2^63)", "nil"},
        {"int64(-2^63)", "-9223372036854775808"},
        {"int64(0/0)", "nil"},
        {"int64(1/0)", "nil"},
        {"int64(nil)", "nil"},
        {"int64()", "nil"},
        {"int64({})", "nil"},
        {"int64(2) + int64(3)", "5"},
        {"int64(2) + 3", "5"},
        {"3 - int64(2)", "1"},
        {"int64(2^53) + int64(1)", "9007199254740993"},
        {"int64('9223372036854775807') + 1", "-9223372036854775808"},
        {"int64('-9223372036854775808') - 1", "9223372036854775807"},
        {"int64('9223372036854775807') * 2", "-2"},
        {"int64(7) / 2", "3"},
        {"int64(-7) / 2", "-3"},
        {"int64('-9223372036854775808') / -1", "-9223372036854775808"},
        {"int64('-9223372036854775808') % -1", "0"},
        {"int64(-7) % 3", "-1"},
        {"int64(7) % -3", "1"},
        {"int64(7) / 0", "nil"},
        {"int64(7) % 0", "nil"},
        {"int64(7) + 0.5", "nil"},
        {"int64(7) + 1e300", "nil"},
        {"int64(7) + '1'", "nil"},
        {"int64(7) + newproxy()", "nil"},
        {"-int64(7)", "-7"},
        {"-int64('-9223372036854775808')", "-9223372036854775808"},
        {"int64(7) == int64(7)", "true"},
        {"int64(7) == int64(8)", "false"},
        {"int64(7) == 7", "false"},
        {"int64(7) < int64(8)", "true"},
        {"int64(8) <= int64(8)", "true"},
        {"int64('9223372036854775807') > int64('9223372036854775806')", "true"},
        {"int64(7) .. ''", "7"},
        {"'id ' .. int64(7) .. '/' .. int64(8)", "id 7/8"},
        {"1.5 .. int64(7)", "1.57"},
        {"pcall(function() return int64(7) .. {} end)", "true"},
        {"getmetatable(int64(1))", "false"},
        {"pcall(setmetatable, int64(1), {})", "false"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(shown(test.expression), test.result) << test.expression;
}

TEST_F(Int64, ConcatenatesToNilWithWhatHasNoText)
{
    EXPECT_EQ(shown("int64(7) .. {}"), "nil");
    EXPECT_EQ(shown("newproxy() .. int64(7)"), "nil");
}

} // namespace
