#include "Terminal.h"

#include "CharacterSet.h"
#include "Failure.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <optional>
#include <vector>

namespace quor::terminal {
namespace {

const system::CharacterSets& sets()
{
    static const system::CharacterSets read = system::readCharacterSets();
    return read;
}

std::string utf8FromName(std::string_view name)
{
    std::size_t strays = 0;
    return charset::utf8From(sets().fileNames, name, strays);
}

thread_local MessageScope* scope = nullptr;

/// Those that no thread's scope has.
std::vector<std::string>& commonPaths()
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
        const bool isPath =
            path.find_first_of(system::separators) != std::string_view::npos || path.ends_with(".lua");
        return isPath ? path : std::string_view();
    }
    return {};
}

std::vector<std::string_view> expectedPaths()
{
    std::vector<std::string_view> paths(commonPaths().begin(), commonPaths().end());
    if (scope) paths.insert(paths.end(), scope->paths().begin(), scope->paths().end());
    return paths;
}

constexpr std::string_view cut = "...";
constexpr std::size_t longestRest = 3;

/// The UTF-8 of the end of an expected path, which Lua may have cut off in the middle of a character.
std::optional<std::string> utf8FromEndOfExpected(std::string_view end)
{
    for (const std::string_view path : expectedPaths()) {
        if (!path.ends_with(end)) continue;
        const std::string whole = utf8FromName(path);
        for (std::size_t rest = 0; rest <= longestRest && rest <= end.size(); ++rest) {
            const std::string_view tail = end.substr(rest);
            std::string utf8 = utf8FromName(tail);
            if (utf8FromName(path.substr(0, path.size() - tail.size())) + utf8 == whole) return utf8;
        }
    }
    return std::nullopt;
}

/// The UTF-8 of a path, which Lua may have cut at its beginning, in the middle of a character; none when the
/// bytes cannot be a path of this system.
std::optional<std::string> utf8FromPath(std::string_view path)
{
    if (path.starts_with(cut)) {
        if (const auto end = utf8FromEndOfExpected(path.substr(cut.size()))) return std::string(cut) + *end;
    }
    if (!namesAreUtf8() || charset::isUtf8(path)) return utf8FromName(path);
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
    const std::vector<std::string_view> paths = expectedPaths();
    while (!words.empty()) {
        std::size_t first = words.size();
        std::size_t length = 0;
        for (const std::string_view path : paths) {
            const std::size_t at = words.find(path);
            if (at < first || (at == first && path.size() > length)) first = at, length = path.size();
        }
        utf8 += charset::utf8FromGbk(words.substr(0, first));
        utf8 += utf8FromName(words.substr(first, length));
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

/// The end of standard error.
struct LastLine {
    std::mutex mutex;
    std::string status;

    std::string eraser() const
    {
        return status.empty() ? std::string() : "\r" + std::string(status.size(), ' ') + "\r";
    }
};

LastLine& lastLine()
{
    static LastLine line;
    return line;
}

void writeBytes(std::string_view line)
{
    std::fwrite(line.data(), 1, line.size(), stderr);
    if (!line.ends_with('\n')) std::fputc('\n', stderr);
}

/// At once, so that neither another thread's line nor another program's comes between.
void writeLine(std::string_view line)
{
    LastLine& last = lastLine();
    const std::lock_guard lock(last.mutex);
    std::string bytes = last.eraser();
    bytes += line;
    if (!line.ends_with('\n')) bytes += '\n';
    bytes += last.status;
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

} // namespace

void start()
{
    system::makeStreamsBinary();
    sets();
}

const std::string& characterSet()
{
    return sets().own;
}

bool namesAreUtf8()
{
    return sets().fileNames == "UTF-8";
}

std::string utf8From(std::string_view bytes)
{
    std::size_t strays = 0;
    return charset::utf8From(characterSet(), bytes, strays);
}

std::string utf8From(std::string_view bytes, const std::string& place)
{
    std::size_t strays = 0;
    std::string utf8 = charset::utf8From(characterSet(), bytes, strays);
    if (strays != 0)
        throw Failure(WrongUsage,
                      fmt::format("{}: text in {} is expected; {} of it {} none", place, characterSet(),
                                  strays == 1 ? "1 byte" : fmt::format("{} bytes", strays),
                                  strays == 1 ? "is" : "are"));
    return utf8;
}

std::string gbkFrom(std::string_view bytes, const std::string& place)
{
    return gbkFromUtf8(utf8From(bytes, place), place);
}

std::string gbkFromUtf8(std::string_view utf8, const std::string& place)
{
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

std::string systemName(const std::string& name, const std::string& place)
{
    if (sets().fileNames == sets().own) return name;
    std::string bytes;
    if (!charset::fromUtf8(sets().fileNames, utf8From(name), bytes))
        throw Failure(WrongUsage, fmt::format("{}: a name that the system's code page, {}, can write is "
                                              "expected; a character in it has no place there",
                                              place, sets().fileNames));
    return bytes;
}

std::string fromSystemName(std::string_view name)
{
    return sets().fileNames == sets().own ? std::string(name) : fromUtf8(utf8FromName(name));
}

void expectPath(const std::string& path)
{
    if (!path.empty()) (scope ? scope->paths() : commonPaths()).push_back(path);
}

MessageScope::MessageScope(std::string name) : name_(std::move(name))
{
    scope = this;
}

MessageScope::~MessageScope()
{
    scope = nullptr;
}

void showStatus(std::string_view line)
{
    LastLine& last = lastLine();
    const std::lock_guard lock(last.mutex);
    if (line == last.status) return;
    std::string bytes = last.eraser();
    bytes += line;
    last.status = line;
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
    std::fflush(stderr);
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

std::string printed(std::string_view utf8, system::Stream stream)
{
    switch (stream) {
    case system::Stream::Output:
        return charset::utf8To(sets().output, utf8);
    case system::Stream::Errors:
        return charset::utf8To(sets().errors, utf8);
    case system::Stream::File:
        break;
    }
    return charset::utf8To(sets().file, utf8);
}

namespace {

std::string printedError(std::string_view line)
{
    if (sets().errors == sets().own) return std::string(line);
    return printed(utf8From(line), system::Stream::Errors);
}

} // namespace

void writeError(std::string_view line)
{
    writeLine(printedError(scope ? fmt::format("{}: {}", scope->name(), line) : std::string(line)));
}

void showMessage(std::string_view message)
{
    while (message.starts_with('\n'))
        message.remove_prefix(1);
    try {
        writeError(fromMessage(message));
    } catch (const std::exception&) {
        writeBytes(message);
    }
}

void showMessage(const char* text, void*)
{
    showMessage(std::string_view(text));
}

} // namespace quor::terminal
