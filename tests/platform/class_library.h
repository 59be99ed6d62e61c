#pragma once

#include <QuorExport.h>
#include <lua.hpp>

#if defined(class_library_EXPORTS)
#define CLASS_LIBRARY_API QUOR_EXPORT
#else
#define CLASS_LIBRARY_API QUOR_IMPORT
#endif

/// A class that two shared objects with hidden visibility use, each with its own copy of the class's type
/// information.
struct Shared {
    int get() const { return number; }
    int number = 77;
};

CLASS_LIBRARY_API void registerShared(lua_State* L);
CLASS_LIBRARY_API void pushShared(lua_State* L);
