#include "GuestFunctions.h"

#include "Terminal.h"

#include <QuorScriptor/LuaModules.h>
#include <lua.hpp>

namespace quor {
namespace {

/// As Lua's own, but the line is for people. [-0, +0, e]
int print(lua_State* L)
{
    const int count = lua_gettop(L);
    luaL_checkstack(L, 2 * count + LUA_MINSTACK, "too many values");
    for (int i = 1; i <= count; ++i) {
        if (i > 1) lua_pushliteral(L, "\t");
        lua_getglobal(L, "tostring");
        lua_pushvalue(L, i);
        lua_call(L, 1, 1);
        if (!lua_isstring(L, -1)) return luaL_error(L, "'tostring' must return a string to 'print'");
    }
    lua_concat(L, lua_gettop(L) - count);
    std::size_t length = 0;
    const char* line = lua_tolstring(L, -1, &length);
    terminal::showMessage(std::string_view(line, length));
    return 0;
}

/// [-0, +0, v]
int refuseExit(lua_State* L)
{
    return luaL_error(L, "os.exit: a script cannot end the program that runs it");
}

constexpr luaL_Reg globals[] = {{"print", print}, {nullptr, nullptr}};
constexpr luaL_Reg ofSystem[] = {{"exit", refuseExit}, {nullptr, nullptr}};

} // namespace

void registerGuestFunctions()
{
    quorlua::addRegLuaModule("_G", globals);
    quorlua::addRegLuaModule("os", ofSystem);
}

} // namespace quor
