// A native module, as scripts of an installation load them.

#include <QuorExport.h>
#include <lua.hpp>

extern "C" QUOR_EXPORT int luaopen_native_module(lua_State* L)
{
    lua_pushliteral(L, "native");
    return 1;
}
