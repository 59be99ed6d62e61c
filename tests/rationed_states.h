#pragma once

#include "system.h"

#include <cstdlib>
#include <lua.hpp>
#if defined(LUAJIT_VERSION)
#include <dlfcn.h>
#endif

/// Included by one source of a test program: every Lua state, those that the library makes included, is
/// granted only as much memory as is said here. On an engine that takes no allocator there are no states.
namespace rationed {

/// Requests for more memory that every state is still granted; without end when negative.
inline int statesLeft = -1;
/// Whether the first refusal is the only one; how many there were.
inline bool statesRefuseOnce = false;
inline long statesRefused = 0;
/// The blocks that all states hold.
inline long blocksOfStates = 0;

inline void* allocateForStates(void*, void* block, std::size_t oldSize, std::size_t newSize)
{
    if (newSize == 0) {
        blocksOfStates -= block != nullptr;
        std::free(block);
        return nullptr;
    }
    if (newSize > oldSize && statesLeft == 0) {
        ++statesRefused;
        if (statesRefuseOnce) statesLeft = -1;
        return nullptr;
    }
    if (newSize > oldSize && statesLeft > 0) --statesLeft;
    blocksOfStates += block == nullptr;
    return std::realloc(block, newSize);
}

} // namespace rationed

// Stands in for the engine's own.
#if defined(_WIN32)
namespace rationed {

inline lua_State* newState()
{
    return lua_newstate(allocateForStates, nullptr);
}

inline const bool isInPlace = sys::replaceImports("luaL_newstate", reinterpret_cast<void (*)()>(newState));

} // namespace rationed
#else
__attribute__((visibility("default"))) lua_State* luaL_newstate() // NOLINT(misc-definitions-in-headers)
{
    return lua_newstate(rationed::allocateForStates, nullptr);
}
#if defined(LUAJIT_VERSION)
// That engine's compiler, and what it compiled, may crash where memory is refused.
__attribute__((visibility("default"))) void luaL_openlibs(lua_State* L) // NOLINT(misc-definitions-in-headers)
{
    reinterpret_cast<void (*)(lua_State*)>(dlsym(RTLD_NEXT, "luaL_openlibs"))(L);
    luaJIT_setmode(L, 0, LUAJIT_MODE_ENGINE | LUAJIT_MODE_OFF);
}
#endif
#endif

namespace rationed {

/// How many requests a state with the standard libraries takes. Walks of new states go on from there: where
/// memory runs out while it opens its io library, the interpreter closes the process's standard output.
inline int requestsOfLibraries()
{
    constexpr int plenty = 1000000;
    statesLeft = plenty;
    lua_State* L = lua_newstate(allocateForStates, nullptr);
    luaL_openlibs(L);
    const int used = plenty - statesLeft;
    statesLeft = -1;
    lua_close(L);
    return used;
}

} // namespace rationed
