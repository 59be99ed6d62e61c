#include "class_library.h"

#include <QuorPureScriptor/lua_tinker.h>

void registerShared(lua_State* L)
{
    lua_tinker::class_add<Shared>(L, "Shared");
    lua_tinker::class_def<Shared>(L, "get", &Shared::get);
}

void pushShared(lua_State* L)
{
    static Shared object;
    lua_tinker::push_object(L, &object);
}
