#include "../NativeStack.h"

#include <cstdint>
#include <limits>
#include <pthread.h>

namespace quorlua {
namespace {

/// From the lowest address to the one behind the highest; found once per thread. The reserve ends at `floor`.
struct Bounds {
    std::uintptr_t low;
    std::uintptr_t floor;
    std::uintptr_t high;
};

// Every call of a script asks: what is known when a library is linked is reached in one instruction.
#if defined(__ELF__)
[[gnu::tls_model("initial-exec")]]
#endif
constinit thread_local Bounds bounds{0, 0, 0};
/// Where the stack is taken to end as long as the system does not tell.
constinit thread_local std::uintptr_t assumedLow = 0;

constexpr std::size_t assumedSize = std::size_t{256} * 1024;

/// Of the main thread the C library reads a file: without a free descriptor, or without "/proc", it fails.
bool findBounds()
{
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return false;
    void* low = nullptr;
    std::size_t size = 0;
    const bool found = pthread_attr_getstack(&attributes, &low, &size) == 0;
    pthread_attr_destroy(&attributes);
    const auto lowest = reinterpret_cast<std::uintptr_t>(low);
    if (found) bounds = {lowest, lowest + reserveOf(size), lowest + size};
    return found;
}

NativeStack assumedStack(std::uintptr_t here)
{
    if (assumedLow == 0) assumedLow = here - assumedSize;
    return {assumedSize, here > assumedLow ? here - assumedLow : 0};
}

/// The answer where the thread's bounds are not known yet, or where the reserve has begun. Apart: what a
/// function saves for it would be paid for by all.
[[gnu::noinline]] bool leavesRoomElsewhere(std::size_t needed)
{
    const NativeStack stack = nativeStack();
    return stack.left >= reserveOf(stack.size) + needed;
}

} // namespace

NativeStack nativeStack()
{
    constexpr std::size_t unknown = std::numeric_limits<std::size_t>::max();
    // Not the address of a variable: sanitizers keep these elsewhere.
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (bounds.high == 0 && !findBounds()) return assumedStack(here);
    if (here < bounds.low || here >= bounds.high) return {unknown, unknown};
    return {bounds.high - bounds.low, here - bounds.low};
}

bool leavesRoom(std::size_t needed)
{
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    if (here < bounds.high && here >= bounds.floor) [[likely]]
        return here - bounds.floor >= needed;
    return leavesRoomElsewhere(needed);
}

} // namespace quorlua
