#pragma once

#include "Limits.h"

#include <cstddef>
#include <cstring>
#include <utility>

/// What reading one answer may cost. A table of a script's can stand in another a million times, and a text
/// in a million tables: a few megabytes of the script's then are terabytes for the host, and hours. So
/// whoever reads lists in lists, or copies texts, counts what it makes; what lies beyond is no longer read.
namespace quorlua {

/// Of entries that a script has made one by one, so many take one to three gigabytes of its memory; to look
/// at them takes a few seconds.
inline constexpr std::size_t mostEntriesRead = std::size_t(1) << 26;
/// What the host gets, texts included. A script that has made all of it piece by piece holds as much itself,
/// or more.
inline constexpr std::size_t mostBytesRead = std::size_t(1) << 30;

/// The bounds in force: the constants above, but for tests.
struct BoundsOfReading {
    std::size_t entries = mostEntriesRead;
    std::size_t bytes = mostBytesRead;
};
extern constinit BoundsOfReading boundsOfReading;

/// What is left of the bounds for one answer. Once something was beyond them nothing more can be taken, so
/// that what is left of the answer is passed over quickly. Where the state has a time limit, so it is when
/// that is over.
class Budget {
public:
    explicit Budget(lua_State* L) : L_(L), entries_(boundsOfReading.entries), bytes_(boundsOfReading.bytes) {}

    /// Takes an entry of a list, and the bytes that it becomes; false when that is beyond the bounds.
    bool takeEntry(std::size_t bytes = 0)
    {
        if (entries_ == 0 || !takeBytes(bytes)) return false;
        return (--entries_ % entriesBetweenLooks) != 0 || isInTime();
    }
    /// Takes bytes that are copied; false when they are beyond the bounds.
    bool takeBytes(std::size_t bytes)
    {
        if (bytes > bytes_) return spend();
        const std::size_t before = std::exchange(bytes_, bytes_ - bytes);
        return before / bytesBetweenLooks == bytes_ / bytesBetweenLooks || isInTime();
    }
    /// The same of a text; null is none. No more of it is looked at than what is left.
    bool takeText(const char* text) { return takeBytes(text ? strnlen(text, bytes_ + 1) : 0); }
    /// False when the time is over; then nothing more can be taken.
    bool isInTime() { return !limits::isTimeOver(L_) || spend(); }
    bool isSpent() const { return entries_ == 0; }

    /// Between two looks at the clock: some hundred microseconds.
    static constexpr std::size_t entriesBetweenLooks = 4096;
    static constexpr std::size_t bytesBetweenLooks = std::size_t(1) << 20;

private:
    bool spend()
    {
        entries_ = 0;
        bytes_ = 0;
        return false;
    }

    lua_State* L_;
    std::size_t entries_;
    std::size_t bytes_;
};

} // namespace quorlua
