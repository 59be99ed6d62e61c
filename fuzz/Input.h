#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

/// What every fuzzing target is made of: the bytes of one case, taken from the front, and the check that ends
/// the run.
namespace fuzz {

/// Ends the process when what must hold does not.
inline void require(bool holds, const char* what)
{
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// The bytes of a case. At the end every further byte is 0.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : at_(data), end_(data + size) {}

    bool ended() const { return at_ == end_; }
    unsigned char byte() { return ended() ? std::uint8_t{0} : *at_++; }
    /// 0 up to, not including, a bound of at most 256.
    int below(int bound) { return byte() % bound; }
    bool flag() { return (byte() & 1) != 0; }
    /// The bytes up to a space or the end, at most as many as said; the space is taken as well.
    std::string word(std::size_t longest)
    {
        std::string text;
        while (!ended() && text.size() < longest) {
            const char next = static_cast<char>(byte());
            if (next == ' ') break;
            text.push_back(next);
        }
        return text;
    }
    std::string rest()
    {
        std::string text(reinterpret_cast<const char*>(at_), static_cast<std::size_t>(end_ - at_));
        at_ = end_;
        return text;
    }
    /// Eight bytes as they stand in memory.
    double rawNumber()
    {
        unsigned char bytes[sizeof(double)];
        for (unsigned char& one : bytes)
            one = byte();
        double value = 0;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }

private:
    const std::uint8_t* at_;
    const std::uint8_t* end_;
};

} // namespace fuzz

/// What every target defines: its name, and the run of one case. libFuzzer's main calls that, and so does
/// tests/fuzz/replay.cpp.
namespace fuzz {
extern const char target[];
}
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
