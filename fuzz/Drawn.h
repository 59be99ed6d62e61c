#pragma once

#include "../tests/Primitives.h"

#include <sstream>
#include <string>

namespace fuzz {

/// Primitives that can be compared.
struct Drawn : Primitives {
    std::string text() const
    {
        std::ostringstream out;
        for (const QuorPrimary* primitive : *this)
            out << *primitive << '\n';
        return out.str();
    }
};

/// Swallows what the library says.
inline void silence(const char*, std::size_t, void*) {}

} // namespace fuzz
