#pragma once

#include <QuorPureScriptor/lua_tinker.h>

/// The configuration scripts' states, as the getters see them.
namespace quorconfig {

/// The calling thread's project script, made ready as `initConfig` tells; null when this call's load failed.
lua_State* getConfigLua(const char* configFile, const char* initArg, const char* userVersion,
                        const char* designDbModule);

/// The calling thread's system script, made ready as `initSysConfig` tells; null when this call's load
/// failed.
lua_State* getSysConfigLua();

bool isNullPermitted();

/// Calls a configuration script's function, with texts and integers, for a text, a bool or nothing. A
/// function that is missing or fails is reported by the binding layer and gives null or false, and so does a
/// null state. A text is the state's own: the next operation may collect it. [-0, +0, -]
template<class Result, class... Arguments>
Result callConfigFunc(lua_State* L, const char* function, Arguments... arguments)
{
    return lua_tinker::call<Result>(L, function, arguments...);
}

} // namespace quorconfig
