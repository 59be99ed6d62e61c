#pragma once

#include <QuorPrimary/QuorPrimary.h>
#include <vector>

/// Primitives that are deleted when the test is done with them.
struct Primitives : std::vector<QuorPrimary*> {
    Primitives() = default;
    Primitives(const Primitives&) = delete;
    Primitives& operator=(const Primitives&) = delete;
    ~Primitives() { free(); }
    void free()
    {
        for (const QuorPrimary* primitive : *this)
            delete primitive;
        clear();
    }
};
