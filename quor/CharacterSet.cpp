#include "CharacterSet.h"

#include "../platform/private/PerThread.h"
#include "Converter.h"

#include <cstdlib>
#include <fmt/format.h>
#include <strings.h>

namespace quor::charset {
namespace {

constexpr char32_t strayBase = 0xF700;
constexpr const char* gbkName = "GBK";

// A converter has a state of its own, so each thread has one; to open one takes longer than to convert a
// text.
struct FromGbk {
    Converter converter{"UTF-8", gbkName};
};
struct ToGbk {
    Converter converter{gbkName, "UTF-8"};
};

bool isAscii(char byte)
{
    return static_cast<unsigned char>(byte) < 0x80;
}

bool isAscii(std::string_view bytes)
{
    for (const char byte : bytes) {
        if (!isAscii(byte)) return false;
    }
    return true;
}

void appendStray(std::string& utf8, char byte)
{
    const char32_t code = strayBase + static_cast<unsigned char>(byte);
    utf8 += static_cast<char>(0xE0 | (code >> 12));
    utf8 += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    utf8 += static_cast<char>(0x80 | (code & 0x3F));
}

std::string toUtf8(const Converter& converter, std::string_view bytes, std::size_t& strays)
{
    if (isAscii(bytes)) return std::string(bytes);
    std::string utf8;
    utf8.reserve(bytes.size() * 2);
    for (;;) {
        converter.convert(bytes, utf8);
        if (bytes.empty()) return utf8;
        // Without a converter even ASCII is left over.
        if (isAscii(bytes.front())) {
            utf8 += bytes.front();
        } else {
            appendStray(utf8, bytes.front());
            ++strays;
        }
        bytes.remove_prefix(1);
    }
}

/// The first character of well-formed UTF-8, taken off; 0 when there is none.
char32_t takeCharacter(std::string_view& utf8)
{
    const auto byte = [&utf8](std::size_t i) { return static_cast<unsigned char>(utf8[i]); };
    const unsigned char lead = byte(0);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    if (length == 0 || length > utf8.size()) return 0;
    char32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
        code = code << 6 | (byte(i) & 0x3Fu);
    }
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    if (code < least[length] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return 0;
    utf8.remove_prefix(length);
    return code;
}

bool isStray(char32_t code)
{
    return code >= strayBase + 0x80 && code <= strayBase + 0xFF;
}

bool isNamedUtf8(const std::string& set)
{
    return strcasecmp(set.c_str(), "UTF-8") == 0 || strcasecmp(set.c_str(), "UTF8") == 0;
}

/// False, and `bytes` empty, when a character has no place. Bytes kept as code points become themselves.
bool convertAll(const Converter& converter, std::string_view utf8, std::string& bytes)
{
    bytes.clear();
    for (;;) {
        converter.convert(utf8, bytes);
        if (utf8.empty()) return true;
        const char32_t code = takeCharacter(utf8);
        if (!isStray(code)) break;
        bytes += static_cast<char>(code - strayBase);
    }
    bytes.clear();
    return false;
}

} // namespace

std::string utf8FromGbk(std::string_view gbk, std::size_t& strays)
{
    if (const auto* own = platform::perThread<FromGbk>()) return toUtf8(own->converter, gbk, strays);
    return toUtf8(Converter("UTF-8", gbkName), gbk, strays);
}

std::string utf8FromGbk(std::string_view gbk)
{
    std::size_t strays = 0;
    return utf8FromGbk(gbk, strays);
}

std::u32string charactersFromGbk(std::string_view gbk)
{
    const std::string utf8 = utf8FromGbk(gbk);
    std::u32string characters;
    for (std::string_view rest = utf8; !rest.empty();) {
        const char32_t code = takeCharacter(rest);
        characters += isStray(code) ? noCharacter : code;
    }
    return characters;
}

bool gbkFromUtf8(std::string_view utf8, std::string& gbk)
{
    if (const auto* own = platform::perThread<ToGbk>()) return convertAll(own->converter, utf8, gbk);
    return convertAll(Converter(gbkName, "UTF-8"), utf8, gbk);
}

std::string utf8From(const std::string& set, std::string_view bytes, std::size_t& strays)
{
    const Converter converter("UTF-8", set.c_str());
    return toUtf8(converter, bytes, strays);
}

bool fromUtf8(const std::string& set, std::string_view utf8, std::string& bytes)
{
    return convertAll(Converter(set.c_str(), "UTF-8"), utf8, bytes);
}

std::string utf8To(const std::string& set, std::string_view utf8)
{
    if (isAscii(utf8)) return std::string(utf8);
    const Converter converter(set.c_str(), "UTF-8");
    const bool keepsUtf8 = isNamedUtf8(set);
    std::string bytes;
    bytes.reserve(utf8.size());
    while (!utf8.empty()) {
        const std::string_view before = utf8;
        const char32_t code = takeCharacter(utf8);
        if (isStray(code)) {
            bytes += fmt::format("\\x{:02X}", static_cast<unsigned>(code - strayBase));
        } else if (code == 0 && !before.starts_with('\0')) {
            utf8.remove_prefix(1);
            bytes += '?';
        } else if (std::string_view character = before.substr(0, before.size() - utf8.size());
                   keepsUtf8 || code < 0x80) {
            bytes += character;
        } else {
            converter.convert(character, bytes);
            if (!character.empty()) bytes += fmt::format("\\u{{{:X}}}", static_cast<unsigned>(code));
        }
    }
    return bytes;
}

bool isUtf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        if (bytes.front() == '\0')
            bytes.remove_prefix(1);
        else if (takeCharacter(bytes) == 0)
            return false;
    }
    return true;
}

std::string knownName(const std::string& set)
{
    if (isNamedUtf8(set)) return "UTF-8";
    return !set.empty() && Converter("UTF-8", set.c_str()).isOpen() ? set : "";
}

std::string namedByEnvironment()
{
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (!value || !*value) continue;
        const std::string locale = value;
        const std::size_t dot = locale.find('.');
        if (dot == std::string::npos) return {};
        return knownName(locale.substr(dot + 1, locale.find('@', dot) - dot - 1));
    }
    return {};
}

} // namespace quor::charset
