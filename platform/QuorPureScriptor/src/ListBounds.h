#pragma once

#include <cstddef>

namespace quorlua::detail {

/// The most that one list reader reads: tables of a script's may stand in another a million times, and a text
/// in a million tables, and be terabytes once each has its copy. What a script has made one by one is far
/// less: so many entries take gigabytes of its memory.
struct ListBounds {
    std::size_t entries = std::size_t(1) << 26;
    /// Of records and their texts.
    std::size_t bytes = std::size_t(1) << 30;
};

/// Those in force; only a test changes them.
extern constinit ListBounds listBounds;

} // namespace quorlua::detail
