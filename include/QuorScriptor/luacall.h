#pragma once

#include <QuorScriptor/Export.h>
#include <QuorScriptor/callletters.h>
#include <cstdarg>
#include <cstddef>
#include <lua.hpp>

/// Calls of global Lua functions, described by a format (see callletters.h):
///
///     int status = 0;
///     quorlua::callLuaFunc(L, "getStatus", "ss>i", "PIPE", "DN50", &status);   // unchecked, as printf
///     quorlua::callLua<"ss>i">(L, "getStatus", "PIPE", "DN50", &status);       // checked by the compiler
///
/// Arguments: a `lua_tinker::table` that refers to another state's table pushes nothing but counts, so that
/// the arguments after it move down by one. A byte that is no argument letter ends the pushing and makes the
/// count 0.
///
/// Results: one that is of another type than its letter accepts is passed over, its output untouched. 's' and
/// 'y' hand out blocks that the caller frees with `free`; 't' a `lua_tinker::table` that the caller deletes.
/// 'c' and 't' keep the result's slot, and those below it, on the stack until the caller clears them. When
/// all results are nil, or a byte is no result letter, the call is false. Of a list of lists, of records or
/// of texts what was made before 67,108,864 entries in all, or 1 GiB, is read.
///
/// In a variable argument list a `lua_tinker::table` is passed as its handle (`table.handle()`).
namespace quorlua {

/// Calls the global function; false when it is missing (silently), raises an error (reported by the message
/// handler), or its results cannot be read. Raises "too many arguments" when the caller's frame cannot hold
/// the arguments.
/// [-0, +(0|kept), v]
QUORSCRIPTOR_API bool callLuaFunc(lua_State* L, const char* function, const char* format, ...);

/// The same with a started list, which it advances.
QUORSCRIPTOR_API bool callLuaFunc_gen(lua_State* L, const char* function, const char* format, va_list& items);

/// First half of a call in two steps: pushes the function and its arguments and returns how many arguments.
/// -1, with the value that is no function left on the stack, when there is none. [-0, +(1 + arguments), v]
QUORSCRIPTOR_API int prepareCallParam(lua_State* L, const char* function, const char* format, ...);

/// Pushes arguments alone; -1 when memory ran out. [-0, +arguments, v]
QUORSCRIPTOR_API int prepareCallParam_vl(lua_State* L, const char* format, va_list& items);

/// Second half: calls what the first half pushed. The format has result letters only; a null one takes no
/// results and is a failure. On an error the message is printed with the function's name. The results, or the
/// error message, stay on the stack. Fewer values on it than the count says: false, and nothing is called.
/// [-(1 + arguments), +(results | 1), -]
QUORSCRIPTOR_API bool callLuaFunc1(lua_State* L, const char* function, int arguments,
                                   const char* resultFormat, ...);

/// One item of a call: the member that the letter's kind names (`callItemKind`).
union CallItem {
    int integer;
    bool truth;
    double number;
    long long integer64;
    const void* address;
};

/// The same call with its items in an array, one for every letter; for callers that choose the format at run
/// time. [-0, +(0|kept), v]
QUORSCRIPTOR_API bool callLuaItems(lua_State* L, const char* function, const char* format,
                                   const CallItem* items);

/// A format that the compiler reads.
template<std::size_t size>
struct CallFormat {
    char text[size];

    consteval CallFormat(const char (&literal)[size])
    {
        for (std::size_t i = 0; i < size; ++i)
            text[i] = literal[i];
    }
    constexpr std::size_t length() const { return size - 1; }
    /// The place of '>', or the length when there is none.
    constexpr std::size_t arrow() const
    {
        std::size_t at = 0;
        while (at < length() && text[at] != '>')
            ++at;
        return at;
    }
    constexpr std::size_t arguments() const { return arrow(); }
    constexpr std::size_t results() const { return arrow() == length() ? 0 : length() - arrow() - 1; }
    constexpr char argument(std::size_t i) const { return text[i]; }
    constexpr char result(std::size_t i) const { return text[arrow() + 1 + i]; }
};

/// Whether a C++ argument fits an argument letter: scalars by value, objects by value or by address.
template<char letter, class T>
constexpr bool fitsArgument()
{
    using Wanted = typename CallLetter<letter>::Argument;
    using Given = std::remove_cvref_t<T>;
    if constexpr (std::is_void_v<Wanted>)
        return false;
    else if constexpr (std::is_same_v<Wanted, const char*>)
        return std::is_same_v<std::decay_t<Given>, const char*> ||
               std::is_same_v<std::decay_t<Given>, char*> || std::is_null_pointer_v<Given>;
    else if constexpr (std::is_pointer_v<Wanted>)
        return std::is_null_pointer_v<Given> ||
               (std::is_pointer_v<Given> && std::is_convertible_v<Given, Wanted>);
    else if constexpr (std::is_same_v<Wanted, long long>)
        return std::is_integral_v<Given> && std::is_signed_v<Given> && sizeof(Given) == sizeof(Wanted);
    else if constexpr (callItemKind<Wanted>() != CallItemKind::Address)
        return std::is_same_v<Given, Wanted>;
    else
        return std::is_same_v<Given, Wanted> ||
               (std::is_pointer_v<Given> &&
                std::is_same_v<std::remove_cv_t<std::remove_pointer_t<Given>>, Wanted>);
}

/// Whether a C++ output fits a result letter: the address of an object of the letter's type.
template<char letter, class T>
constexpr bool fitsResult()
{
    using Wanted = typename CallLetter<letter>::Result;
    if constexpr (std::is_void_v<Wanted>)
        return false;
    else
        return std::is_same_v<std::remove_cvref_t<T>, Wanted*>;
}

/// The compiler names these in its message: the letter, its place in the format counted from 1, and what was
/// given.
template<char letter, std::size_t place, class Given>
struct ArgumentOfLetter {
    static_assert(!std::is_void_v<typename CallLetter<letter>::Argument>, "this byte is no argument letter");
    static_assert(fitsArgument<letter, Given>(), "the argument does not fit its letter");
};
template<char letter, std::size_t place, class Given>
struct ResultOfLetter {
    static_assert(!std::is_void_v<typename CallLetter<letter>::Result>, "this byte is no result letter");
    static_assert(fitsResult<letter, Given>(), "the output does not fit its letter");
};

/// The item of a checked argument.
template<char letter, class T>
CallItem argumentItem(const T& value)
{
    using Wanted = typename CallLetter<letter>::Argument;
    CallItem item{};
    if constexpr (callItemKind<Wanted>() == CallItemKind::Int)
        item.integer = value;
    else if constexpr (callItemKind<Wanted>() == CallItemKind::Bool)
        item.truth = value;
    else if constexpr (callItemKind<Wanted>() == CallItemKind::Double)
        item.number = value;
    else if constexpr (callItemKind<Wanted>() == CallItemKind::Int64)
        item.integer64 = value;
    else if constexpr (std::is_same_v<Wanted, lua_tinker::table> && std::is_pointer_v<T>)
        item.address = value->handle();
    else if constexpr (std::is_same_v<Wanted, lua_tinker::table>)
        item.address = value.handle();
    else if constexpr (std::is_pointer_v<Wanted>)
        item.address = static_cast<Wanted>(value);
    else if constexpr (std::is_pointer_v<T>)
        item.address = value;
    else
        item.address = &value;
    return item;
}

/// `callLuaFunc`, its letters compared with the C++ types by the compiler: a mismatch does not compile, and
/// the message names the letter. Arguments first, then the addresses of the outputs.
template<CallFormat format, class... Items>
bool callLua(lua_State* L, const char* function, const Items&... items)
{
    static_assert(sizeof...(Items) == format.arguments() + format.results(),
                  "the format has another number of letters than the call has arguments and outputs");
    return [&]<std::size_t... i>(std::index_sequence<i...>)
    {
        constexpr std::size_t arguments = format.arguments();
        [[maybe_unused]] auto item = []<std::size_t at>(const auto& value) {
            using Given = std::remove_cvref_t<decltype(value)>;
            if constexpr (at < arguments) {
                constexpr char letter = format.argument(at);
                static_assert(sizeof(ArgumentOfLetter<letter, at + 1, Given>) != 0);
                return argumentItem<letter>(value);
            } else {
                constexpr char letter = format.result(at - arguments);
                static_assert(sizeof(ResultOfLetter<letter, at + 2, Given>) != 0);
                CallItem output{};
                output.address = value;
                return output;
            }
        };
        const CallItem list[sizeof...(Items) + 1] = {item.template operator()<i>(items)..., CallItem{}};
        return callLuaItems(L, function, format.text, list);
    }
    (std::make_index_sequence<sizeof...(Items)>{});
}

} // namespace quorlua
