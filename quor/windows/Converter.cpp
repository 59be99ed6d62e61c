#include "../Converter.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <windows.h>

namespace quor::charset {
namespace {

/// A character set as the system knows it.
struct CodePage {
    unsigned int number = 0;
    /// Without the characters for private use, which the set of that name has not.
    bool isNarrowed = false;
};

constexpr unsigned int gb18030 = 54936;

struct NamedPage {
    std::string_view name;
    CodePage page;
};

constexpr NamedPage namedPages[] = {
    {"UTF8", {CP_UTF8}},    {"GBK", {936, true}}, {"GB2312", {936, true}}, {"EUCCN", {936, true}},
    {"GB18030", {gb18030}}, {"BIG5", {950}},      {"SJIS", {932}},         {"SHIFTJIS", {932}},
    {"EUCJP", {20932}},     {"EUCKR", {949}},     {"UHC", {949}},          {"KOI8R", {20866}},
    {"KOI8U", {21866}},     {"ASCII", {20127}},   {"USASCII", {20127}},    {"ANSIX3.41968", {20127}},
    {"LATIN1", {28591}},
};

/// Families of names that end in a number.
constexpr struct {
    std::string_view name;
    unsigned int base;
} numberedPages[] = {{"ISO8859", 28590}, {"CP", 0}, {"WINDOWS", 0}, {"IBM", 0}};

/// In capitals, without what names are parted by.
std::string plainName(std::string_view name)
{
    std::string plain;
    for (const char c : name) {
        if (c == '-' || c == '_') continue;
        plain += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return plain;
}

std::optional<CodePage> pageCalled(std::string_view name)
{
    const std::string plain = plainName(name);
    for (const NamedPage& known : namedPages) {
        if (plain == known.name) return known.page;
    }
    for (const auto& [family, base] : numberedPages) {
        if (!plain.starts_with(family)) continue;
        unsigned int number = 0;
        const char* end = plain.data() + plain.size();
        const auto [rest, error] = std::from_chars(plain.data() + family.size(), end, number);
        if (error == std::errc() && rest == end && number != 0) return CodePage{base + number};
    }
    return std::nullopt;
}

/// Whether the system has the page, and ASCII in it stands for itself.
bool isUsable(const CodePage& page)
{
    wchar_t letter = 0;
    return IsValidCodePage(page.number) != 0 &&
           MultiByteToWideChar(page.number, 0, "A", 1, &letter, 1) == 1 && letter == L'A';
}

/// The system takes UTF-8 and GB18030 with other flags than the rest, and tells otherwise what has no place.
bool isUnicode(const CodePage& page)
{
    return page.number == CP_UTF8 || page.number == gb18030;
}

/// How many bytes the first character has, by its first bytes alone.
std::size_t lengthOfFirst(const CodePage& page, std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    if (byte(0) < 0x80) return 1;
    if (page.number == CP_UTF8) return byte(0) < 0xE0 ? 2 : byte(0) < 0xF0 ? 3 : 4;
    if (page.number == gb18030) return text.size() > 1 && byte(1) >= '0' && byte(1) <= '9' ? 4 : 2;
    return IsDBCSLeadByteEx(page.number, byte(0)) != 0 ? 2 : 1;
}

/// One character, as UTF-16.
struct Character {
    std::array<wchar_t, 4> units{};
    int count = 0;
};

bool isPrivate(const Character& character)
{
    return character.units[0] >= 0xE000 && character.units[0] <= 0xF8FF;
}

struct Bytes {
    std::array<char, 8> bytes{};
    int count = 0;
};

/// The character's bytes; none where the set has no place for it.
Bytes encoded(const CodePage& page, const Character& character)
{
    Bytes result;
    BOOL isReplaced = FALSE;
    const bool tells = !isUnicode(page);
    result.count =
        WideCharToMultiByte(page.number, tells ? WC_NO_BEST_FIT_CHARS : WC_ERR_INVALID_CHARS,
                            character.units.data(), character.count, result.bytes.data(),
                            static_cast<int>(result.bytes.size()), nullptr, tells ? &isReplaced : nullptr);
    if (isReplaced || (page.isNarrowed && isPrivate(character))) result.count = 0;
    return result;
}

/// The character that bytes are; none where they are no character of the set.
Character decoded(const CodePage& page, std::string_view bytes)
{
    Character result;
    result.count =
        MultiByteToWideChar(page.number, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()),
                            result.units.data(), static_cast<int>(result.units.size()));
    if (result.count == 0) return result;
    // Some pages give bytes without a meaning a character all the same.
    if (result.units[0] == 0xFFFD && page.number != CP_UTF8 && page.number != gb18030) result.count = 0;
    if (page.isNarrowed) {
        const Bytes again = encoded(page, result);
        if (std::string_view(again.bytes.data(), static_cast<std::size_t>(again.count)) != bytes)
            result.count = 0;
    }
    return result;
}

} // namespace

struct Converter::Sets {
    CodePage to;
    CodePage from;
};

Converter::Converter(const char* to, const char* from)
{
    const auto target = pageCalled(to);
    const auto source = pageCalled(from);
    if (target && source && isUsable(*target) && isUsable(*source))
        sets_ = std::make_unique<const Sets>(Sets{*target, *source});
}

Converter::~Converter() = default;

void Converter::convert(std::string_view& from, std::string& to) const
{
    if (!isOpen()) return;
    while (!from.empty()) {
        const std::size_t length = lengthOfFirst(sets_->from, from);
        if (length > from.size()) return;
        if (length == 1 && static_cast<std::uint8_t>(from[0]) < 0x80) {
            to += from[0];
        } else {
            const Character character = decoded(sets_->from, from.substr(0, length));
            const Bytes bytes = character.count == 0 ? Bytes() : encoded(sets_->to, character);
            if (bytes.count == 0) return;
            to.append(bytes.bytes.data(), static_cast<std::size_t>(bytes.count));
        }
        from.remove_prefix(length);
    }
}

} // namespace quor::charset
