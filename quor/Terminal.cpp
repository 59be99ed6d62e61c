#include "Terminal.h"

#include "CharacterSet.h"
#include "Failure.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <langinfo.h>
#include <optional>
#include <vector>

namespace quor::terminal {
namespace {

/// The character set in the name of the locale that is asked for, such as GBK in "zh_CN.GBK@pinyin".
std::string namedCharacterSet()
{
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (!value || !*value) continue;
        const std::string locale = value;
        const std::size_t dot = locale.find('.');
        if (dot == std::string::npos) return {};
        return charset::knownName(locale.substr(dot + 1, locale.find('@', dot) - dot - 1));
    }
    return {};
}

/// Asks while nothing else runs, and goes back to the locale "C" at once.
std::string readCharacterSet()
{
    const bool known = std::setlocale(LC_CTYPE, "") != nullptr;
    // A system that has not generated the locale still shows its characters.
    const std::string set = known ? nl_langinfo(CODESET) : namedCharacterSet();
    std::setlocale(LC_CTYPE, "C");
    // A bare locale says nothing about the terminal.
    return set.empty() || set == "ANSI_X3.4-1968" ? "UTF-8" : set;
}

std::vector<std::string>& expectedPaths()
{
    static std::vector<std::string> paths;
    return paths;
}

bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

/// The path in "PATH:12: words" or in "<PATH:12>" at the beginning of a text; empty when there is none.
std::string_view pathBeforeLine(std::string_view text)
{
    const char after = text.starts_with('<') ? '>' : ':';
    if (after == '>') text.remove_prefix(1);
    for (std::size_t colon = text.find(':'); colon != std::string_view::npos;
         colon = text.find(':', colon + 1)) {
        std::size_t end = colon + 1;
        while (end < text.size() && isDigit(text[end]))
            ++end;
        if (end == colon + 1 || end >= text.size() || text[end] != after) continue;
        const std::string_view path = text.substr(0, colon);
        const bool isPath = path.find('/') != std::string_view::npos || path.ends_with(".lua");
        return isPath ? path : std::string_view();
    }
    return {};
}

/// The UTF-8 of a path, which Lua may have cut at its beginning, in the middle of a character; none when the
/// bytes cannot be a path of this system.
std::optional<std::string> utf8FromPath(std::string_view path)
{
    constexpr std::string_view cut = "...";
    constexpr std::size_t longestRest = 3;
    if (characterSet() != "UTF-8" || charset::isUtf8(path)) return utf8From(path);
    if (!path.starts_with(cut)) return std::nullopt;
    for (std::size_t rest = 1; rest <= longestRest && cut.size() + rest <= path.size(); ++rest) {
        const std::string_view whole = path.substr(cut.size() + rest);
        if (charset::isUtf8(whole)) return std::string(cut).append(whole);
    }
    return std::nullopt;
}

std::string utf8FromWords(std::string_view words)
{
    std::string utf8;
    while (!words.empty()) {
        std::size_t first = words.size();
        std::size_t length = 0;
        for (const std::string& path : expectedPaths()) {
            const std::size_t at = words.find(path);
            if (at < first || (at == first && path.size() > length)) first = at, length = path.size();
        }
        utf8 += charset::utf8FromGbk(words.substr(0, first));
        utf8 += utf8From(words.substr(first, length));
        words.remove_prefix(first + length);
    }
    return utf8;
}

/// A path can stand at the beginning of a line, after blanks, and in angle brackets.
std::string utf8FromLine(std::string_view line)
{
    std::string utf8;
    std::size_t place = std::min(line.find_first_not_of(" \t"), line.size());
    while (place < line.size()) {
        const std::string_view found = pathBeforeLine(line.substr(place));
        const auto path = utf8FromPath(found);
        if (!found.empty() && path) {
            const auto before = static_cast<std::size_t>(found.data() - line.data());
            utf8 += utf8FromWords(line.substr(0, before)) + *path;
            line.remove_prefix(before + found.size());
            place = 0;
        }
        place = std::min(line.find('<', place + 1), line.size());
    }
    return utf8 + utf8FromWords(line);
}

} // namespace

const std::string& characterSet()
{
    static const std::string set = readCharacterSet();
    return set;
}

std::string utf8From(std::string_view bytes)
{
    std::size_t strays = 0;
    return charset::utf8From(characterSet(), bytes, strays);
}

std::string gbkFrom(std::string_view bytes, const std::string& place)
{
    std::size_t strays = 0;
    const std::string utf8 = charset::utf8From(characterSet(), bytes, strays);
    if (strays != 0)
        throw Failure(WrongUsage, fmt::format("{}: text in {} is expected; {} bytes of it are none", place,
                                              characterSet(), strays));
    std::string gbk;
    if (!charset::gbkFromUtf8(utf8, gbk))
        throw Failure(WrongUsage, place + ": text that GBK can write is expected; a character in it has no "
                                          "place there");
    return gbk;
}

std::string fromUtf8(std::string_view utf8)
{
    return charset::utf8To(characterSet(), utf8);
}

std::string fromGbk(std::string_view gbk)
{
    return fromUtf8(charset::utf8FromGbk(gbk));
}

void expectPath(const std::string& path)
{
    if (!path.empty()) expectedPaths().push_back(path);
}

std::string fromMessage(std::string_view message)
{
    return fromUtf8(utf8FromMessage(message));
}

std::string utf8FromMessage(std::string_view message)
{
    std::string utf8;
    for (;;) {
        const std::size_t end = message.find('\n');
        utf8 += utf8FromLine(message.substr(0, end));
        if (end == std::string_view::npos) return utf8;
        utf8 += '\n';
        message.remove_prefix(end + 1);
    }
}

void writeError(std::string_view line)
{
    std::fwrite(line.data(), 1, line.size(), stderr);
    if (!line.ends_with('\n')) std::fputc('\n', stderr);
}

void showMessage(std::string_view message)
{
    while (message.starts_with('\n'))
        message.remove_prefix(1);
    try {
        writeError(fromMessage(message));
    } catch (const std::exception&) {
        writeError(message);
    }
}

void showMessage(const char* text, void*)
{
    showMessage(std::string_view(text));
}

} // namespace quor::terminal
