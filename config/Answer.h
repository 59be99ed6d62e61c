#pragma once

#include "ConfigState.h"
#include "Messages.h"

#include <QuorCommon/QuorAuth.h>
#include <QuorScriptor/getters.h>

/// What all getters share: the question to the script, the test of its answer, the message when there is
/// none.
namespace quorconfig {

/// Whether an answer is a text and not empty.
inline bool isUsable(const char* answer)
{
    return answer && *answer;
}

/// Notes where the result of the calling thread's getter comes from, and gives it back.
const char* from(AnswerOrigin origin, const char* result);
bool from(AnswerOrigin origin, bool result);

inline lua_State* projectState()
{
    return getConfigLua(nullptr, nullptr, nullptr, nullptr);
}

/// Asks the calling thread's project script.
template<class Result, class... Arguments>
Result askProject(const char* function, Arguments... arguments)
{
    return callConfigFunc<Result>(projectState(), function, arguments...);
}

/// Shows a message in the host's translation, unless null is permitted. Whether it was shown, and the getter
/// goes on to its fallback.
template<class... Arguments>
bool complain(const char* message, const Arguments&... arguments)
{
    if (isNullPermitted()) return false;
    kxcom::errorMsg(quorGetText_callbk(message), arguments...);
    return true;
}

} // namespace quorconfig
