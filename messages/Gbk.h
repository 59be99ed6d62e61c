#pragma once

#include <array>
#include <cstddef>

/// Texts that are written as Chinese in the source and reach the host as bytes of its code page, GBK,
/// whatever the compiler's own character set is. The conversion runs at compile time; a character that the
/// table does not hold stops the build.
namespace quorlua::messages {

struct GbkCharacter {
    char32_t character;
    unsigned short code;
};

// clang-format off
/// The characters that the messages use, by their code.
inline constexpr GbkCharacter gbkCharacters[] = {
    {U'，', 0xA3AC}, {U'：', 0xA3BA}, {U'本', 0xB1BE}, {U'布', 0xB2BC}, {U'参', 0xB2CE}, {U'出', 0xB3F6},
    {U'错', 0xB4ED}, {U'的', 0xB5C4}, {U'第', 0xB5DA}, {U'点', 0xB5E3}, {U'调', 0xB5F7}, {U'定', 0xB6A8},
    {U'尔', 0xB6FB}, {U'发', 0xB7A2}, {U'返', 0xB7B5}, {U'方', 0xB7BD}, {U'该', 0xB8C3}, {U'割', 0xB8EE},
    {U'个', 0xB8F6}, {U'果', 0xB9FB}, {U'号', 0xBAC5}, {U'回', 0xBBD8}, {U'计', 0xBCC6}, {U'脚', 0xBDC5},
    {U'结', 0xBDE1}, {U'开', 0xBFAA}, {U'库', 0xBFE2}, {U'类', 0xC0E0}, {U'联', 0xC1AA}, {U'面', 0xC3E6},
    {U'目', 0xC4BF}, {U'配', 0xC5E4}, {U'平', 0xC6BD}, {U'前', 0xC7B0}, {U'切', 0xC7D0}, {U'请', 0xC7EB},
    {U'商', 0xC9CC}, {U'数', 0xCAFD}, {U'算', 0xCBE3}, {U'体', 0xCCE5}, {U'统', 0xCDB3}, {U'图', 0xCDBC},
    {U'椭', 0xCDD6}, {U'为', 0xCEAA}, {U'未', 0xCEB4}, {U'系', 0xCFB5}, {U'向', 0xCFF2}, {U'型', 0xD0CD},
    {U'形', 0xD0CE}, {U'行', 0xD0D0}, {U'序', 0xD0F2}, {U'义', 0xD2E5}, {U'应', 0xD3A6}, {U'用', 0xD3C3},
    {U'元', 0xD4AA}, {U'圆', 0xD4B2}, {U'运', 0xD4CB}, {U'执', 0xD6B4}, {U'置', 0xD6C3}, {U'主', 0xD6F7},
};
// clang-format on

/// The bytes of a message, ended by a NUL; what the text does not need is NUL, too.
template<std::size_t length>
struct GbkText {
    std::array<char, 2 * length> bytes{};

    consteval GbkText(const char32_t (&text)[length])
    {
        std::size_t at = 0;
        for (std::size_t i = 0; i + 1 < length; ++i) {
            if (text[i] < 0x80) {
                bytes[at++] = static_cast<char>(text[i]);
                continue;
            }
            const unsigned short code = codeOf(text[i]);
            bytes[at++] = static_cast<char>(code >> 8);
            bytes[at++] = static_cast<char>(code & 0xFF);
        }
    }

    constexpr const char* text() const { return bytes.data(); }

private:
    static constexpr unsigned short codeOf(char32_t character)
    {
        for (const GbkCharacter& known : gbkCharacters)
            if (known.character == character) return known.code;
        throw "a character of this message is missing in gbkCharacters";
    }
};

} // namespace quorlua::messages
