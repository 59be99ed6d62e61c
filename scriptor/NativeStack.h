#pragma once

#include <cstddef>

/// The processor's stack of the calling thread, in bytes: posix/NativeStack.cpp and windows/NativeStack.cpp.
namespace quorlua {

struct NativeStack {
    std::size_t size;
    std::size_t left;
};

/// What the running function has left. Where the system does not tell, or a host runs on a stack that it has
/// made itself, both are the largest number.
NativeStack nativeStack();

} // namespace quorlua
