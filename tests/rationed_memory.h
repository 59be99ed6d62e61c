#pragma once

#include "system.h"

#include <cstdlib>
#include <new>

/// Rations the blocks that `operator new` takes on a thread. It replaces the operators of the whole program,
/// so one source of a program includes it.
namespace rationed {

/// Blocks taken so far, and how many more may be taken; below zero there is no limit.
inline thread_local long taken = 0;
inline thread_local long allowed = -1;
/// How many requests were refused.
inline thread_local long refused = 0;
/// Whether the first refusal is the only one.
inline thread_local bool refusesOnce = false;
/// How many blocks were given back.
inline thread_local long returned = 0;

inline void* take(std::size_t size)
{
    if (allowed == 0) {
        ++refused;
        if (refusesOnce) allowed = -1;
        return nullptr;
    }
    if (allowed > 0) --allowed;
    ++taken;
    return std::malloc(size ? size : 1);
}

#if defined(_WIN32)
// A library there has operators of its own, which all take their blocks from the system's run-time library.
// So does the exception that tells of a failure: where a request of a library fails, the next ones do not.
inline void* takeInLibrary(std::size_t size)
{
    void* block = take(size);
    if (!block) allowed = -1;
    return block;
}

inline const bool librariesAreRationed =
    sys::replaceImports("malloc", reinterpret_cast<void (*)()>(takeInLibrary));
#endif

} // namespace rationed

// Not inlined: where the compiler sees one half of a pair only, it takes it for a mistake.
[[gnu::noinline]] void* operator new(std::size_t size)
{
    if (void* block = rationed::take(size)) return block;
    throw std::bad_alloc();
}

// The C++ library's own calls the one above; a sanitizer's does not.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return rationed::take(size);
}

[[gnu::noinline]] void operator delete(void* block) noexcept
{
    rationed::returned += block != nullptr;
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept
{
    rationed::returned += block != nullptr;
    std::free(block);
}
