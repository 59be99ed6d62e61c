#pragma once

namespace geolib {

/// A node of a singly linked list of number pairs; `next` is null in the last one. The list belongs to its
/// maker.
struct paramt {
    paramt* next = nullptr;
    double first = 0.0;
    double second = 0.0;
};

} // namespace geolib
