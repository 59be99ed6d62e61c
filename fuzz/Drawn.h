#pragma once

#include <QuorPrimary/QuorPrimary.h>
#include <sstream>
#include <string>
#include <vector>

namespace fuzz {

/// Primitives that are deleted at the end.
struct Drawn : std::vector<QuorPrimary*> {
    Drawn() = default;
    Drawn(const Drawn&) = delete;
    Drawn& operator=(const Drawn&) = delete;
    ~Drawn() { free(); }
    void free()
    {
        for (const QuorPrimary* primitive : *this)
            delete primitive;
        clear();
    }
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
