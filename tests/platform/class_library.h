#pragma once

#include <lua.hpp>

/// A class that two shared objects with hidden visibility use, each with its own copy of the class's type
/// information.
struct Shared {
    int get() const { return number; }
    int number = 77;
};

__attribute__((visibility("default"))) void registerShared(lua_State* L);
__attribute__((visibility("default"))) void pushShared(lua_State* L);
