#pragma once

#include <cstdlib>
#include <cstring>

namespace quorlua {

/// A NUL-terminated text as a block for `free`; null when memory ran out.
inline char* duplicateText(const char* text)
{
    const std::size_t size = std::strlen(text) + 1;
    auto* copy = static_cast<char*>(std::malloc(size));
    if (copy) std::memcpy(copy, text, size);
    return copy;
}

} // namespace quorlua
