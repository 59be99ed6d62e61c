#pragma once

#include "Limits.h"

#include <lua.hpp>

namespace quorlua {

/// What a scriptor's base top holds while there is no state, where its last one was untrusted.
inline constexpr int untrustedBefore = -1;

/// Closes a scriptor's state, which must be there, and leaves it without one.
inline void closeForGood(lua_State*& L, int& baseTop)
{
    baseTop = limits::isUntrusted(L) ? untrustedBefore : 0;
    limits::closeState(L);
    L = nullptr;
}

/// Whether a function runs in the state, which may be null: it must not be closed then.
inline bool isRunning(lua_State* L)
{
    lua_Debug frame;
    return L && lua_getstack(L, 0, &frame) != 0;
}

} // namespace quorlua
