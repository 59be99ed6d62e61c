#pragma once

#include "Guard.h"

#include <QuorScriptor/luacall.h>
#include <array>
#include <cstdarg>
#include <cstring>
#include <vector>

/// The two sides of a format at run time: its letters looked up in the table of call letters, its items
/// gathered from a variable argument list, its arguments pushed, its results read.
namespace quorlua::call {

/// What one byte of a format is.
struct LetterKinds {
    CallItemKind argument = CallItemKind::None;
    CallItemKind result = CallItemKind::None;
};

constexpr std::array<LetterKinds, 256> makeLetterTable()
{
    std::array<LetterKinds, 256> table{};
    auto add = [&table]<std::size_t... i>(std::index_sequence<i...>)
    {
        ((table[static_cast<unsigned char>(callLetters[i])] =
              LetterKinds{callItemKind<typename CallLetter<callLetters[i]>::Argument>(),
                          std::is_void_v<typename CallLetter<callLetters[i]>::Result>
                              ? CallItemKind::None
                              : CallItemKind::Address}),
         ...);
    };
    add(std::make_index_sequence<sizeof(callLetters) - 1>{});
    return table;
}

inline constexpr std::array<LetterKinds, 256> letterTable = makeLetterTable();

inline LetterKinds kindsOf(char letter)
{
    return letterTable[static_cast<unsigned char>(letter)];
}

/// A format taken apart once.
struct Shape {
    int arguments = 0;     ///< argument letters before '>', the end or the first byte that is none
    bool valid = true;     ///< no byte before '>' was anything but an argument letter
    const char* rest = ""; ///< what follows the '>', or the byte that is no letter
    int results = 0;       ///< length of the rest: every byte of it is one result
};

inline Shape shapeOf(const char* format)
{
    Shape shape;
    const char* at = format;
    while (kindsOf(*at).argument != CallItemKind::None)
        ++at;
    shape.arguments = static_cast<int>(at - format);
    shape.valid = *at == '\0' || *at == '>';
    shape.rest = *at == '\0' ? at : at + 1;
    // As strlen, which for the few letters of a format costs more.
    while (shape.rest[shape.results] != '\0')
        ++shape.results;
    return shape;
}

/// Runs `work(items)` with room for so many items. Throws when memory runs out.
template<class Work>
auto withItems(int count, Work work)
{
    constexpr int fewItems = 24;
    if (count <= fewItems) {
        CallItem items[fewItems];
        return work(items);
    }
    std::vector<CallItem> items(static_cast<std::size_t>(count));
    return work(items.data());
}

/// Takes the items of the argument letters from a variable argument list.
inline void takeArguments(const Shape& shape, const char* format, va_list& list, CallItem* items)
{
    for (int i = 0; i < shape.arguments; ++i) {
        switch (kindsOf(format[i]).argument) {
        case CallItemKind::Int:
            items[i].integer = va_arg(list, int);
            break;
        case CallItemKind::Bool:
            // A truth value arrives promoted to int, and only its low byte says anything.
            items[i].truth = (va_arg(list, int) & 0xFF) != 0;
            break;
        case CallItemKind::Double:
            items[i].number = va_arg(list, double);
            break;
        case CallItemKind::Int64:
            items[i].integer64 = va_arg(list, long long);
            break;
        default:
            items[i].address = va_arg(list, void*);
        }
    }
}

/// Takes an output for every letter, up to the end or the first byte that is none.
inline void takeResults(const char* format, va_list& list, CallItem* items)
{
    for (; kindsOf(*format).result != CallItemKind::None; ++format)
        (items++)->address = va_arg(list, void*);
}

/// Pushes an argument where that takes no memory; false, with nothing pushed, elsewhere. Needs a free slot.
/// [-0, +(0|1), -]
inline bool pushKnownArgument(lua_State* L, char letter, const CallItem& item)
{
    switch (letter) {
    case 'i':
        lua_pushnumber(L, item.integer);
        return true;
    case 'd':
        lua_pushnumber(L, item.number);
        return true;
    case 'n':
        lua_pushboolean(L, item.truth);
        return true;
    case 's':
        return item.address && guard::pushKnownText(L, static_cast<const char*>(item.address));
    default:
        return false;
    }
}

/// Pushes what one argument letter describes. A table handle is never among them: its value stands in the
/// caller's frame. [-0, +1, m]
void pushArgument(lua_State* L, char letter, const CallItem& item);

/// Reads the `count` results up to the slot `top`, the last one, into the items' addresses. Where a result is
/// handed out as a table handle, `kept` becomes the slot it stands in. Throws only when memory runs out.
bool readResultsByFormat(lua_State* L, const char* format, int top, int count, const CallItem* items,
                         int& kept);

} // namespace quorlua::call
