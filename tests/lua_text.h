#pragma once

#include <QuorPureScriptor/quorlua_helpers.h>
#include <gtest/gtest.h>
#include <lua.hpp>
#include <string>

/// What tests show of Lua values. The interpreter's own texts of numbers (`tostring`, `..`, `table.concat`,
/// `lua_tostring`) may follow the locale; these are the same in every one.
namespace luatext {

/// Script function: as `tostring`, but a number has a point wherever it is. [-0, +1, e]
inline int textOf(lua_State* L)
{
    luaL_checkany(L, 1);
    lua_settop(L, 1);
    if (lua_type(L, 1) == LUA_TNUMBER) {
        char digits[32];
        const std::size_t length = quorlua::numberText(lua_tonumber(L, 1), digits);
        lua_pushlstring(L, digits, length);
    } else {
        lua_getglobal(L, "tostring");
        lua_insert(L, 1);
        lua_call(L, 1, 1);
    }
    return 1;
}

/// The text of a string or a number, which stays a number; of other values the type's name. [-0, +0, -]
inline std::string textAt(lua_State* L, int index)
{
    switch (lua_type(L, index)) {
    case LUA_TNUMBER:
        return quorlua::numberText(lua_tonumber(L, index));
    case LUA_TSTRING:
        return {lua_tostring(L, index), lua_objlen(L, index)};
    default:
        return luaL_typename(L, index);
    }
}

/// What an expression gives, by `textOf`; one that raises an error, or gives nothing, fails the test. [-0,
/// +0, m]
inline std::string shown(lua_State* L, const std::string& expression)
{
    const std::string chunk = "return (...)(" + expression + ")";
    int status = luaL_loadbuffer(L, chunk.data(), chunk.size(), "shown");
    if (status == 0) {
        lua_pushcfunction(L, textOf);
        status = lua_pcall(L, 1, 1, 0);
    }
    std::string text = textAt(L, -1);
    EXPECT_EQ(status, 0) << expression << ": " << text;
    lua_pop(L, 1);
    return text;
}

} // namespace luatext
