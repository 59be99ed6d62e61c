#pragma once

#include "Guard.h"
#include "Limits.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <type_traits>

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

/// A question for which the call itself is all that needs protection: its function and its texts are at hand.
namespace known {

bool push(lua_State* L, const char* text);
bool push(lua_State* L, int number);
void remember(lua_State* L, const char* text);
inline void remember(lua_State*, int) {}

/// Pushes the message handler, the function and the arguments; false, with nothing pushed, where one of them
/// is not at hand. [-0, +(0|2 + arguments), -]
template<class... Arguments>
bool prepare(lua_State* L, const char* function, Arguments... arguments)
{
    constexpr int mostArguments = 8;
    if (!L || !quorlua::guard::reserve(L, 2 + mostArguments)) return false;
    const int top = lua_gettop(L);
    if (quorlua::guard::pushHandlerAndKnownFunction(L, function) && (push(L, arguments) && ...)) return true;
    lua_settop(L, top);
    return false;
}

/// Calls what was prepared. Whether it ended well; its one result, or the error, which has been reported, is
/// then on top, above the message handler. [-(1 + arguments), +1, -]
bool call(lua_State* L, int arguments);

} // namespace known

/// Calls a configuration script's function, with texts and integers, for a text, a bool or nothing. A
/// function that is missing or fails is reported by the binding layer and gives null or false, and so does a
/// null state. A text is the state's own: the next call may collect it. [-0, +0, -]
template<class Result, class... Arguments>
Result callConfigFunc(lua_State* L, const char* function, Arguments... arguments)
{
    const Question question;
    bool ended = false;
    {
        const quorlua::limits::Operation operation(L);
        if (question.isTooDeep(L, function)) return Result();
        bool isKnown = known::prepare(L, function, arguments...);
        if (!isKnown && L) {
            quorlua::guard::run(L, [=](lua_State* frame) {
                known::remember(frame, function);
                (known::remember(frame, arguments), ...);
                return 0;
            });
            isKnown = known::prepare(L, function, arguments...);
        }
        if (!isKnown) return lua_tinker::call<Result>(L, function, arguments...);
        ended = known::call(L, sizeof...(arguments));
    }
    // The collector may run as the operation ends, so the answer stays in its slot till then.
    if constexpr (std::is_void_v<Result>) {
        lua_pop(L, 2);
    } else {
        const Result result = ended ? lua_tinker::read<Result>(L, -1) : Result();
        lua_pop(L, 2);
        return result;
    }
}

/// Whether a configuration script has a function of that name. [-0, +0, -]
inline bool isDefined(lua_State* L, const char* function)
{
    const quorlua::limits::Operation operation(L);
    return quorlua::is_global_function(L, function);
}

} // namespace quorconfig
