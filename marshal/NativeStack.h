#pragma once

#include <algorithm>
#include <cstddef>
#include <lua.hpp>

/// The processor's stack of the calling thread, in bytes: posix/NativeStack.cpp and windows/NativeStack.cpp.
namespace quorlua {

struct NativeStack {
    std::size_t size;
    std::size_t left;
};

/// What the running function has left. A thread's first question is to come before its scripts run: they can
/// use up what a system takes to answer. Where the system does not tell, it is as if the stack ended 256 KB
/// below the function that asked first. On a stack that a host has made itself both are the largest number.
NativeStack nativeStack();

/// What has to be left when a native function starts that calls the script again: more than the deepest
/// recursion that the interpreter itself allows takes, for nested functions in its parser: 165 KB, of LuaJIT
/// 200 KB.
#if defined(LUAJIT_VERSION)
constexpr std::size_t stackReserve = std::size_t{256} * 1024;
#else
constexpr std::size_t stackReserve = std::size_t{200} * 1024;
#endif

/// How much of a stack of that size is kept in reserve: on a smaller one the first few calls must do all the
/// same.
constexpr std::size_t reserveOf(std::size_t size)
{
    return std::min(stackReserve, size / 4 * 3);
}

/// Whether the stack leaves so many bytes, and the reserve. Whatever may call a script asks it first: the
/// interpreter counts native calls for each state alone, if it does at all.
bool leavesRoom(std::size_t needed);

} // namespace quorlua
