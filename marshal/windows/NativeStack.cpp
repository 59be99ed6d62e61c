#include "../NativeStack.h"

#include <cstdint>
#include <limits>
#include <windows.h>

namespace quorlua {

NativeStack nativeStack()
{
    constexpr std::size_t unknown = std::numeric_limits<std::size_t>::max();
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    ULONG_PTR low = 0;
    ULONG_PTR high = 0;
    GetCurrentThreadStackLimits(&low, &high);
    if (here < low || here >= high) return {unknown, unknown};
    return {high - low, here - low};
}

bool leavesRoom(std::size_t needed)
{
    const NativeStack stack = nativeStack();
    return stack.left >= reserveOf(stack.size) + needed;
}

} // namespace quorlua
