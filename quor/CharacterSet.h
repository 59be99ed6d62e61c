#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Texts of scripts are bytes in GBK; the command works in UTF-8 and speaks the terminal's character set. A
/// byte that belongs to no character is kept as one of the code points U+F780 to U+F7FF, which GBK gives no
/// meaning: U+F700 and the byte's number. So nothing is lost, and the result is always UTF-8.
namespace quor::charset {

/// Adds the number of bytes that belong to no character to `strays`.
std::string utf8FromGbk(std::string_view gbk, std::size_t& strays);
std::string utf8FromGbk(std::string_view gbk);

/// What `charactersFromGbk` gives for a byte that belongs to no character; it lies behind all of Unicode.
inline constexpr char32_t noCharacter = 0x110000;
/// The characters of a text by their code points.
std::u32string charactersFromGbk(std::string_view gbk);

/// False, and `gbk` empty, when a character has no place in GBK. Bytes kept as above become themselves.
bool gbkFromUtf8(std::string_view utf8, std::string& gbk);

/// From and to a character set by the name that the system's locale gives it.
std::string utf8From(const std::string& set, std::string_view bytes, std::size_t& strays);
/// False, and `bytes` empty, when a character has no place in the set. Bytes kept as above become themselves.
bool fromUtf8(const std::string& set, std::string_view utf8, std::string& bytes);
/// What the set cannot show is written in ASCII: a character as `\u{9600}`, a byte kept as above as `\xE9`.
std::string utf8To(const std::string& set, std::string_view utf8);

bool isUtf8(std::string_view bytes);

/// The name under which a character set is known here, "UTF-8" however that is spelled; empty when it is not.
std::string knownName(const std::string& set);

/// The known character set in the name of the locale that LC_ALL, LC_CTYPE or LANG asks for, such as GBK in
/// "zh_CN.GBK@pinyin"; empty when there is none.
std::string namedByEnvironment();

} // namespace quor::charset
