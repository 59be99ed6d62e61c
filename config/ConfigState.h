#pragma once

#include "Limits.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>

/// The configuration scripts' states, as the getters see them.
namespace quorconfig {

/// The calling thread's project script, made ready as `initConfig` tells; null when this call's load failed.
lua_State* getConfigLua(const char* configFile, const char* initArg, const char* userVersion,
                        const char* designDbModule);

/// The calling thread's system script, made ready as `initSysConfig` tells; null when this call's load
/// failed.
lua_State* getSysConfigLua();

bool isNullPermitted();

/// One question on its way to a script, for as long as it lives. A script may ask in its turn, through native
/// functions of the host's; where that has no end, not every engine notices before the processor's stack is
/// used up.
class Question {
public:
    Question();
    ~Question();
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    /// Whether too many questions of this thread are on their way; that is reported as an error. [-0, +0, -]
    bool isTooDeep(lua_State* L, const char* function) const;
};

/// Calls a configuration script's function, with texts and integers, for a text, a bool or nothing. A
/// function that is missing or fails is reported by the binding layer and gives null or false, and so does a
/// null state. A text is the state's own: the next call may collect it. [-0, +0, -]
template<class Result, class... Arguments>
Result callConfigFunc(lua_State* L, const char* function, Arguments... arguments)
{
    const Question question;
    if (question.isTooDeep(L, function)) return Result();
    const quorlua::limits::Operation operation(L);
    return lua_tinker::call<Result>(L, function, arguments...);
}

/// Whether a configuration script has a function of that name. [-0, +0, -]
inline bool isDefined(lua_State* L, const char* function)
{
    const quorlua::limits::Operation operation(L);
    return quorlua::is_global_function(L, function);
}

} // namespace quorconfig
