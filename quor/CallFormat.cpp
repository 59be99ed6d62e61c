#include "CallFormat.h"

#include "Failure.h"

#include <QuorScriptor/callletters.h>
#include <fmt/format.h>
#include <string_view>
#include <utility>

namespace quor {
namespace {

/// Far fewer than the interpreter takes, far more than a command line has.
constexpr std::size_t mostLetters = 200;

struct Letter {
    char letter;
    const char* meaning;
    const char* argument; ///< how it is written; null where no command line can give it
};

constexpr Letter letters[] = {
    {'i', "integer", "a whole number of 32 bits"},
    {'d', "number", "a decimal number, or Infinity, -Infinity, NaN"},
    {'n', "boolean", "true or false"},
    {'I', "64-bit integer", "a whole number of 64 bits"},
    {'s', "text", "as it stands"},
    {'r', "text", "as it stands"},
    {'y', "bytes", "two hexadecimal digits for each, as 48656C6C6F"},
    {'u', "pointer of the host", nullptr},
    {'o', "object id", "a whole number of 64 bits"},
    {'p', "point", "x,y,z"},
    {'v', "vector", "x,y,z"},
    {'X', "matrix", "16 numbers, row by row, parted by commas; or JSON [[1,0,0,0],..]"},
    {'P', "points", "JSON [[x,y,z],..]"},
    {'O', "object ids", "JSON [1,2,..]"},
    {'S', "texts", "JSON [\"A\",\"B\",..]"},
    {'g', "polyline", "JSON [[kind,start width,end width,bulge,[x,y,z]],..]"},
    {'l', "polylines", "JSON [polyline,..]"},
    {'m', "parameters", "NAME=VALUE;NAME=VALUE; or JSON {\"NAME\":value,..}"},
    {'M', "parameters with notes", "as m; or JSON [{\"key\":..,\"note\":..,\"value\":..},..]"},
    {'a', "parameters in order, with notes", "as M"},
    {'B', "lists of parameters in order, with notes", "JSON [list,..], each as M has it"},
    {'b', "lists of parameters", "JSON [list,..], each as m has it"},
    {'k', "data records", "as m"},
    {'T', "primitives", nullptr},
    {'c', "table", "JSON: an array or an object"},
    {'t', "table", "JSON: an array or an object"},
    {'x', "text style", "scene: the text style of --scene; none: nil"},
};

template<bool isArgument, std::size_t... i>
constexpr bool isLetterOf(char letter, std::index_sequence<i...>)
{
    using namespace quorlua;
    if constexpr (isArgument)
        return (
            (letter == callLetters[i] && !std::is_void_v<typename CallLetter<callLetters[i]>::Argument>) ||
            ...);
    else
        return ((letter == callLetters[i] && !std::is_void_v<typename CallLetter<callLetters[i]>::Result>) ||
                ...);
}

template<bool isArgument>
constexpr bool isLetter(char letter)
{
    return isLetterOf<isArgument>(letter, std::make_index_sequence<sizeof quorlua::callLetters - 1>());
}

constexpr const Letter* find(char letter)
{
    for (const Letter& one : letters) {
        if (one.letter == letter) return &one;
    }
    return nullptr;
}

constexpr bool hasEveryLetter()
{
    for (const char* letter = quorlua::callLetters; *letter != '\0'; ++letter) {
        if (!find(*letter)) return false;
    }
    return std::size(letters) == sizeof quorlua::callLetters - 1;
}
static_assert(hasEveryLetter(), "a row for every letter of the library, and no other");

template<bool isArgument>
std::string listOfLetters()
{
    std::string list;
    for (const Letter& one : letters) {
        if (!isLetter<isArgument>(one.letter) || (isArgument && !one.argument)) continue;
        if (!list.empty()) list += ' ';
        list += one.letter;
    }
    return list;
}

std::string shown(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return code > 0x20 && code < 0x7F ? std::string(1, byte) : fmt::format("the byte {:02X}", code);
}

} // namespace

CallFormat readCallFormat(const std::string& format)
{
    const std::size_t arrow = format.find('>');
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char letter = format[i];
        const bool isArgument = i < arrow;
        const std::size_t place = isArgument ? i + 1 : i; // the '>' between is no letter
        const auto fail = [&](const std::string& reason) {
            throw Failure(WrongUsage,
                          fmt::format("FORMAT {}: letter {}, {}, {}", format, place, shown(letter), reason));
        };
        if (i == arrow) continue;
        if (isArgument && !isLetter<true>(letter))
            fail("is no letter of an argument; these are " + listOfLetters<true>());
        if (!isArgument && !isLetter<false>(letter))
            fail("is no letter of a result; these are " + listOfLetters<false>());
        if (isArgument && !find(letter)->argument)
            fail(fmt::format("takes a {}, which no command line can give", find(letter)->meaning));
    }
    const std::size_t count = arrow == std::string::npos ? format.size() : format.size() - 1;
    if (count > mostLetters)
        throw Failure(WrongUsage, fmt::format("FORMAT: at most {} letters are expected; there are {}",
                                              mostLetters, count));
    if (arrow == std::string::npos) return {format, ""};
    return {format.substr(0, arrow), format.substr(arrow + 1)};
}

std::string helpOfLetters()
{
    std::string help =
        "Letters of FORMAT, arguments before '>' and results behind it, and how an ARG is written:\n";
    for (const Letter& one : letters) {
        const char* argument = one.argument ? one.argument : "a result only";
        help += fmt::format("  {}  {}: {}{}\n", one.letter, one.meaning, argument,
                            isLetter<false>(one.letter) ? "" : " (an argument only)");
    }
    return help;
}

} // namespace quor
