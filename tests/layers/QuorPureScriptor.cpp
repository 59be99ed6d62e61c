#include <QuorPureScriptor/lua_tinker.h>

int main()
{
    lua_State* L = luaL_newstate();
    lua_tinker::init(L);
    const char script[] = "answer = 6 * 7";
    const bool ran = lua_tinker::dobuffer(L, script, sizeof script - 1) == 0;
    lua_getglobal(L, "answer");
    const bool right = ran && lua_tonumber(L, -1) == 42;
    lua_close(L);
    return right ? 0 : 1;
}
