#pragma once

#include <QuorScriptor/luacall.h>
#include <array>
#include <cstdarg>
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
    int handles = 0;       ///< those of them that are table handles
    bool valid = true;     ///< no byte before '>' was anything but an argument letter
    const char* rest = ""; ///< what follows the '>', or the byte that is no letter
    int results = 0;       ///< length of the rest: every byte of it is one result
};

Shape shapeOf(const char* format);

/// The items of a variable argument list, in an array.
class Items {
public:
    /// Takes the items of the argument letters.
    void takeArguments(const Shape& shape, const char* format, va_list& list);
    /// Takes an output for every letter, up to the end or the first byte that is none.
    void takeResults(const char* format, va_list& list);
    const CallItem* data() const { return more_.empty() ? few_ : more_.data(); }

private:
    void add(CallItem item);

    static constexpr int fewItems = 24;
    CallItem few_[fewItems];
    int count_ = 0;
    std::vector<CallItem> more_;
};

/// Pushes what one argument letter describes. A table handle is never among them: its value stands in the
/// caller's frame. [-0, +1, m]
void pushArgument(lua_State* L, char letter, const CallItem& item);

/// Reads the results on top of the caller's stack into the items' addresses. `kept`, unless null, becomes the
/// highest slot that a result handed out as a table handle stands in. Throws only when memory runs out.
bool readResultsByFormat(lua_State* L, const char* format, const CallItem* items, int* kept);

} // namespace quorlua::call
