// What the check must tell apart: each use of Lua below is guarded or not for another reason.

#include "Guard.h"

#define VISIBLE __attribute__((visibility("default")))

namespace {

void writeInGuardedCode(lua_State* L)
{
    lua_createtable(L, 0, 0);
}

void writeForAnyone(lua_State* L)
{
    lua_pushlstring(L, "", 0);
}

int startedByLuaAlone(lua_State* L)
{
    lua_newuserdata(L, 1);
    return 0;
}

int handedToAScript(lua_State* L)
{
    lua_rawset(L, 1);
    return 0;
}

int inATable(lua_State* L)
{
    lua_rawseti(L, 1, 1);
    return 0;
}

const luaL_Reg table[] = {{"inATable", inATable}, {nullptr, nullptr}};

} // namespace

VISIBLE void definedToRaise(lua_State* L)
{
    lua_error(L);
}

VISIBLE void guarded(lua_State* L)
{
    quorlua::guard::run(L, [](lua_State* frame) {
        writeInGuardedCode(frame);
        definedToRaise(frame);
        return 0;
    });
    lua_cpcall(L, startedByLuaAlone, nullptr);
}

VISIBLE void unguarded(lua_State* L)
{
    writeForAnyone(L);
    writeForAnyone(L);
    definedToRaise(L);
    lua_pushnil(L);
}

VISIBLE const luaL_Reg* handOver(lua_State* L)
{
    lua_pushcclosure(L, handedToAScript, 0);
    return table;
}
