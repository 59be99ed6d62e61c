#include "PathText.h"

#include <algorithm>
#include <cstddef>

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#endif

namespace pathtext {
namespace {

unsigned char byteAt(std::string_view text, std::size_t index)
{
    return static_cast<unsigned char>(text[index]);
}

#if defined(_WIN32)

bool isDoubleByte(std::string_view text, std::size_t index)
{
    return index + 1 < text.size() && IsDBCSLeadByte(byteAt(text, index)) != 0;
}

bool hasDoubleBytes(std::string_view)
{
    return true;
}

#else

bool isDoubleByte(std::string_view text, std::size_t index)
{
    if (index + 1 >= text.size()) return false;
    const unsigned char lead = byteAt(text, index);
    const unsigned char trail = byteAt(text, index + 1);
    return lead >= 0x81 && lead <= 0xFE && trail >= 0x40 && trail <= 0xFE && trail != 0x7F;
}

/// The length of the UTF-8 sequence at `index`; 0 when there is none: overlong forms, surrogates and numbers
/// beyond Unicode are not UTF-8.
std::size_t utf8Length(std::string_view text, std::size_t index)
{
    const unsigned char lead = byteAt(text, index);
    if (lead < 0x80) return 1;
    std::size_t length = 0;
    unsigned char secondLow = 0x80;
    unsigned char secondHigh = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) secondLow = 0xA0;
        if (lead == 0xED) secondHigh = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) secondLow = 0x90;
        if (lead == 0xF4) secondHigh = 0x8F;
    }
    if (length == 0 || length > text.size() - index) return 0;
    if (byteAt(text, index + 1) < secondLow || byteAt(text, index + 1) > secondHigh) return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if ((byteAt(text, index + i) & 0xC0) != 0x80) return 0;
    }
    return length;
}

/// False for well-formed UTF-8, plain ASCII included.
bool hasDoubleBytes(std::string_view text)
{
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = utf8Length(text, i);
        if (length == 0) return true;
        i += length;
    }
    return false;
}

#endif

} // namespace

std::string fromName(std::string_view name)
{
    std::string result(name);
    if (!hasDoubleBytes(name)) {
        std::replace(result.begin(), result.end(), '\\', '/');
        return result;
    }
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (isDoubleByte(result, i)) {
            ++i;
        } else if (result[i] == '\\') {
            result[i] = '/';
        }
    }
    return result;
}

void append(std::string& path, std::string_view name)
{
    const std::string converted = fromName(name);
    const std::size_t first = converted.find_first_not_of('/');
    if (first == std::string::npos) return;
    while (!path.empty() && path.back() == '/')
        path.pop_back();
    path += '/';
    path.append(converted, first);
}

void toSystemForm([[maybe_unused]] std::string& path)
{
#if defined(_WIN32)
    std::replace(path.begin(), path.end(), '/', '\\');
#endif
}

} // namespace pathtext
