#include "../system.h"
#include "lua_state.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <climits>
#include <cmath>

namespace {

using namespace quorlua;

constexpr double untouched = -77.0;

class Helpers : public LuaState {
protected:
    /// One value of each kind at the integer keys and names of a table at index 1.
    void pushKinds()
    {
        run("local function kinds() return true, 12.75, '12', {1, 2, 3}, {1, 2}, {1, 2, '3'}, print, "
            "newproxy(), "
            "int64(12), {} end\n"
            "local t = {kinds()}; for i = 1, #t do t['k' .. i] = t[i] end; t[-1] = 5; return t",
            1);
    }
    static constexpr int kinds = 11; // One more than there are: the last is nil.
};

TEST_F(Helpers, ReadNumbersOfNumbersOnly)
{
    pushKinds();
    for (int key = 1; key <= kinds; ++key) {
        const bool expected = key == 2;
        const double value = expected ? 12.75 : untouched;
        double number = untouched;
        EXPECT_EQ(getADouble(L, 1, key, number), expected) << key;
        EXPECT_EQ(number, value) << key;
        number = untouched;
        EXPECT_EQ(getADouble(L, -1, ("k" + std::to_string(key)).c_str(), number), expected) << key;
        EXPECT_EQ(number, value) << key;
        number = untouched;
        lua_rawgeti(L, 1, key);
        EXPECT_EQ(getADouble(L, -1, number), expected ? 0 : 1) << key;
        EXPECT_EQ(number, value) << key;
        lua_pop(L, 1);
        int integer = 7;
        EXPECT_EQ(getAInt(L, 1, key, integer), expected) << key;
        EXPECT_EQ(getAInt(L, 1, ("k" + std::to_string(key)).c_str(), integer), expected) << key;
        lua_rawgeti(L, 1, key);
        EXPECT_EQ(getAInt(L, 2, integer), expected ? 0 : 1) << key;
        lua_pop(L, 1);
        EXPECT_EQ(integer, expected ? 12 : 7) << key;
        EXPECT_EQ(lua_gettop(L), 1);
    }
    lua_settop(L, 0);
}

TEST_F(Helpers, ReadTextsOfStringsOnly)
{
    pushKinds();
    for (int key = 1; key <= kinds; ++key) {
        const bool expected = key == 3;
        const char* text = "untouched";
        EXPECT_EQ(getAString(L, 1, key, text), expected) << key;
        EXPECT_STREQ(text, expected ? "12" : "untouched") << key;
        EXPECT_EQ(getAString(L, -1, ("k" + std::to_string(key)).c_str(), text), expected) << key;
        lua_rawgeti(L, 1, key);
        EXPECT_EQ(getAString(L, -1, text), expected ? 0 : 1) << key;
        lua_pop(L, 1);
        EXPECT_STREQ(text, expected ? "12" : "untouched") << key;
        lua_rawgeti(L, 1, 2);
        EXPECT_EQ(lua_type(L, -1), LUA_TNUMBER) << "asking for a text converts nothing in the table";
        lua_pop(L, 1);
        EXPECT_EQ(lua_gettop(L), 1);
    }
    lua_settop(L, 0);
}

TEST_F(Helpers, ReadFlagsOfBooleansOnly)
{
    pushKinds();
    for (int key = 1; key <= kinds; ++key) {
        const bool expected = key == 1;
        bool flag = false;
        EXPECT_EQ(getABoolean(L, 1, key, flag), expected) << key;
        EXPECT_EQ(flag, expected) << key;
        flag = false;
        EXPECT_EQ(getABoolean(L, -1, ("k" + std::to_string(key)).c_str(), flag), expected) << key;
        EXPECT_EQ(flag, expected) << key;
        flag = false;
        lua_rawgeti(L, 1, key);
        EXPECT_EQ(getABoolean(L, -1, flag), expected ? 0 : 1) << key;
        lua_pop(L, 1);
        EXPECT_EQ(flag, expected) << key;
        EXPECT_EQ(lua_gettop(L), 1);
    }
    lua_settop(L, 0);
}

TEST_F(Helpers, ReadPointsOfThreeNumbersOnly)
{
    pushKinds();
    for (int key = 1; key <= kinds; ++key) {
        const bool expected = key == 4;
        for (int form = 0; form < 3; ++form) {
            double x = untouched;
            double y = untouched;
            double z = untouched;
            bool read = false;
            if (form == 0) read = getAPoint(L, -1, key, x, y, z);
            if (form == 1) read = getAPoint(L, -1, ("k" + std::to_string(key)).c_str(), x, y, z);
            if (form == 2) {
                lua_rawgeti(L, 1, key);
                read = getAPoint(L, -1, x, y, z) == 0;
                lua_pop(L, 1);
            }
            EXPECT_EQ(read, expected) << key << " form " << form;
            EXPECT_EQ(x, expected ? 1 : untouched) << key;
            EXPECT_EQ(y, expected ? 2 : untouched) << key;
            EXPECT_EQ(z, expected ? 3 : untouched) << key;
            EXPECT_EQ(lua_gettop(L), 1);
        }
    }
    lua_settop(L, 0);
}

TEST_F(Helpers, CutNumbersToInts)
{
    const struct {
        double number;
        int value;
    } cases[] = {
        {3.9, 3},   {-3.9, -3},  {2147483648.0, INT_MIN}, {4294967297.0, 1}, {-4294967297.0, -1}, {0x1p63, 0},
        {1e300, 0}, {-1e300, 0}, {HUGE_VAL, 0},           {std::nan(""), 0}};
    for (const auto& test : cases) {
        lua_pushnumber(L, test.number);
        int value = 7;
        EXPECT_EQ(getAInt(L, 1, value), 0) << test.number;
        EXPECT_EQ(value, test.value) << test.number;
        lua_pop(L, 1);
    }
}

TEST_F(Helpers, FailWithoutTable)
{
    double number = untouched;
    int integer = 7;
    bool flag = true;
    const char* text = nullptr;
    lua_pushstring(L, "no table");
    for (const int index : {1, -1, 2, 9, -2, -9, 0}) {
        EXPECT_FALSE(getADouble(L, index, 1, number)) << index;
        EXPECT_FALSE(getADouble(L, index, "x", number)) << index;
        EXPECT_EQ(getADouble(L, index, number), 1) << index;
        EXPECT_FALSE(getAInt(L, index, 1, integer)) << index;
        EXPECT_FALSE(getAString(L, index, 1, text)) << index;
        EXPECT_FALSE(getABoolean(L, index, 1, flag)) << index;
        EXPECT_FALSE(getAPoint(L, index, 1, number, number, number)) << index;
        setAPoint(L, index, 1, 2, 3);
        setAPoint(L, index, 1, 1, 2, 3);
        setAPoint(L, index, "x", 1, 2, 3);
        setGlbParamValue(L, index, "x", 1.0);
        setFieldInt64(L, index, "x", 1);
        clearLuaTable(L, index);
        EXPECT_EQ(lua_gettop(L), 1);
    }
    EXPECT_FALSE(getADouble(nullptr, 1, 1, number));
    EXPECT_FALSE(getADouble(nullptr, 1, "x", number));
    EXPECT_EQ(getADouble(nullptr, 1, number), 1);
    lua_newtable(L);
    EXPECT_FALSE(getADouble(L, -1, static_cast<const char*>(nullptr), number));
    setFieldDouble(L, -1, nullptr, 1);
    setAPoint(nullptr, 1, 1, 2, 3);
    EXPECT_EQ(number, untouched);
    lua_settop(L, 0);
}

TEST_F(Helpers, ReadEntriesPastMetamethodsAndFieldsThroughThem)
{
    run("return setmetatable({}, {__index = function(_, key) return key == 'x' and 5 or error('asked') end})",
        1);
    double number = untouched;
    EXPECT_FALSE(getADouble(L, 1, 1, number));
    EXPECT_TRUE(getADouble(L, 1, "x", number));
    EXPECT_EQ(number, 5);
    lua_settop(L, 0);
}

TEST_F(Helpers, WritePointsInThreePlaces)
{
    run("t = {}; p = {'old'}; return t, p", 2);
    setAPoint(L, -1, 1, 2, 3);
    setAPoint(L, -2, 7, 4, 5, 6);
    setAPoint(L, -2, "name", 7, 8, 9);
    EXPECT_EQ(lua_gettop(L), 2);
    lua_settop(L, 0);
    EXPECT_EQ(shown("table.concat(p, ' ')"), "1 2 3");
    EXPECT_EQ(shown("table.concat(t[7], ' ')"), "4 5 6");
    EXPECT_EQ(shown("table.concat(t.name, ' ')"), "7 8 9");
}

TEST_F(Helpers, WriteFieldsOfEachType)
{
    run("t = {gone = 1}; return t", 1);
    setGlbParamValue(L, -1, "number", 2.5);
    setGlbParamValue(L, -1, "int", 7);
    setGlbParamValue(L, -1, "text", "abc");
    setGlbParamValue(L, -1, "gone", static_cast<const char*>(nullptr));
    setGlbParamValue(L, -1, "flag", true);
    setGlbParamValue(L, -1, "point", QuorPoint{1, 2, 3});
    setFieldDouble(L, -1, "factor", 0.1);
    setFieldInt64(L, -1, "id", LLONG_MIN);
    EXPECT_EQ(lua_gettop(L), 1);
    lua_settop(L, 0);
    EXPECT_EQ(
        shown("t.number == 2.5 and t.int == 7 and t.text == 'abc' and t.gone == nil and t.flag == true"),
        "true");
    EXPECT_EQ(shown("table.concat(t.point, ' ')"), "1 2 3");
    EXPECT_EQ(shown("t.factor == 0.1"), "true");
    EXPECT_EQ(shown("t.id"), "-9223372036854775808");
}

TEST_F(Helpers, ClearATableOfEverything)
{
    run("t = setmetatable({1, 2, 3, nil, 5, x = 1, [2.5] = {}, [true] = 1, [print] = 2}, "
        "{__newindex = function() error('asked') end}); for i = 1, 1000 do rawset(t, 'k' .. i, i) end; "
        "return t",
        1);
    clearLuaTable(L, -1);
    EXPECT_EQ(lua_gettop(L), 1);
    lua_settop(L, 0);
    EXPECT_EQ(shown("next(t)"), "nil");
    EXPECT_EQ(shown("getmetatable(t) ~= nil"), "true");
}

TEST_F(Helpers, AppendSearchPaths)
{
    run("package.path = 'a'; package.cpath = 'b'");
    addPath(L, "/bin\\?.lua");
    addPath(L, "/bin\\utils\\?.lua");
    addCPath(L, "/plat\\?.dll");
    addCPath(L, "/plat/?.so");
#if defined(_WIN32)
    EXPECT_EQ(shown("package.path"), "a;/bin\\?.lua;/bin\\utils\\?.lua");
    EXPECT_EQ(shown("package.cpath"), "b;/plat\\?.dll;/plat/?.so");
#else
    EXPECT_EQ(shown("package.path"), "a;/bin/?.lua;/bin/utils/?.lua");
    EXPECT_EQ(shown("package.cpath"), "b;/plat/?.so;/plat/?.so");
#endif
    run("package.path = nil; package.cpath = 5");
    addPath(L, "x.dll");
    addCPath(L, "y.dll\\?.dllx");
    addPath(L, "");
    addPath(L, nullptr);
    addPath(nullptr, "z");
    EXPECT_EQ(shown("package.path"), "x.dll");
    EXPECT_EQ(shown("package.cpath"), sys::pathOf("y.dll/?.dllx"));
}

TEST_F(Helpers, AppendSearchPathsOfAnyLength)
{
    const std::string folder(5000, 'p');
    run("package.path = string.rep('a', 3000); package.cpath = 'b'");
    addPath(L, "bin\\?.lua");
    addPath(L, (folder + "\\?.lua").c_str());
    addCPath(L, (folder + ".dll").c_str());
    EXPECT_EQ(lua_gettop(L), 0);
    run("package.path = package.path:gsub('^a+', function(path) return #path end)");
    EXPECT_EQ(shown("package.path"),
              "3000;" + sys::pathOf("bin/?.lua") + ";" + sys::pathOf(folder + "/?.lua"));
#if defined(_WIN32)
    EXPECT_EQ(shown("package.cpath"), "b;" + folder + ".dll");
#else
    EXPECT_EQ(shown("package.cpath"), "b;" + folder + ".so");
#endif
}

TEST_F(Helpers, KeepSecondBytesOfCharactersInSearchPaths)
{
    run("package.path = ''");
    addPath(L, "\x81\x5C\\\xC4\xA3\\?.lua");     // two GBK characters, the first ends in a backslash
    addPath(L, "\xE4\xB8\xAD\\\xC3\xA9\\?.lua"); // the same shape in UTF-8
    EXPECT_EQ(shown("package.path"),
              sys::pathOf(";\x81\x5C/\xC4\xA3/?.lua") + sys::pathOf(";\xE4\xB8\xAD/\xC3\xA9/?.lua"));
}

TEST_F(Helpers, TolerateAMissingPackageTable)
{
    for (const char* chunk :
         {"package = nil", "package = 5", "package = nil; setmetatable(_G, {__index = error})"}) {
        run(chunk);
        addPath(L, "x");
        addCPath(L, "x");
        EXPECT_EQ(lua_gettop(L), 0);
    }
}

TEST_F(Helpers, FindGlobalFunctions)
{
    run("function f() end; t = setmetatable({}, {__call = f}); n = 5");
    EXPECT_TRUE(is_global_function(L, "f"));
    EXPECT_TRUE(is_global_function(L, "print"));
    for (const char* name : {"t", "n", "absent", ""})
        EXPECT_FALSE(is_global_function(L, name)) << name;
    EXPECT_FALSE(is_global_function(L, nullptr));
    EXPECT_FALSE(is_global_function(nullptr, "f"));
    run("setmetatable(_G, {__index = function(_, name) if name == 'made' then return f end error('strict') "
        "end})");
    EXPECT_TRUE(is_global_function(L, "made"));
    EXPECT_FALSE(is_global_function(L, "absent"));
    fillFrame();
    const int top = lua_gettop(L);
    EXPECT_TRUE(is_global_function(L, "f"));
    EXPECT_FALSE(is_global_function(L, "absent"));
    EXPECT_EQ(lua_gettop(L), top);
    lua_settop(L, 0);
}

} // namespace
