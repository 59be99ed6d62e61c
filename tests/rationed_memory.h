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

inline void* take(std::size_t size)
{
    if (allowed == 0) return nullptr;
    if (allowed > 0) --allowed;
    ++taken;
    return std::malloc(size ? size : 1);
}

#if defined(_WIN32)
inline thread_local int requestsSinceFailure = 0;

// A library there has operators of its own, which all take their blocks from the system's run-time library.
// So does the exception that tells of a failure, and so does, for the first one on a thread, the place where
// it is noted, which the compiler's library cannot do without.
inline void* takeInLibrary(std::size_t size)
{
    constexpr std::size_t exception[] = {128, 160};
    constexpr std::size_t place = 24;
    const bool tells = (requestsSinceFailure == 1 && size >= exception[0] && size <= exception[1]) ||
                       (requestsSinceFailure == 2 && size == place);
    if (requestsSinceFailure != 0) ++requestsSinceFailure;
    if (tells) return std::malloc(size);
    void* block = take(size);
    requestsSinceFailure = block ? 0 : 1;
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

[[gnu::noinline]] void operator delete(void* block) noexcept
{
    std::free(block);
}

[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
