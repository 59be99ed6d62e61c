#pragma once

#include <QuorPureScriptor/Export.h>
#include <QuorPureScriptor/lua_tinker_table.h>
#include <cstdint>
#include <limits>
#include <lua.hpp>
#include <string>
#include <type_traits>
#include <typeinfo>

/// Single values across the border to Lua.
///
/// `bool`: a boolean; read as Lua's truth of any value.
///
/// Integers of up to 32 bits, enumerations, `float`, `double`: a number; any other value is read as 0.
///
/// Integers of 64 bits: a userdata; a number is read too, any other value as 0.
///
/// `const char*`: a string, nil for null; any other value is read as null.
///
/// `std::string`: a string with its NULs; any other value is read as empty.
///
/// `table`: the value in the handle's slot, nil without one; read as a handle on the slot, whatever it holds.
///
/// A pointer to an object of a registered class: a userdata, nil for null; any other value is read as null.
///
/// Nothing is converted on reading: a string of digits is no number, and a number is no text. A number read
/// as an integer is truncated toward zero to 64 bits and cut to the type's width (70000 as a `short` is
/// 4464); not-a-number and what 64 bits cannot hold give the lowest 64-bit integer, which is 0 in every
/// narrower type. A number beyond the range of `float` becomes infinite.
namespace lua_tinker {

/// Pushes a 64-bit integer: a userdata that scripts print, compare and calculate with. Works before `init`,
/// too. [-0, +1, m]
QUORPURESCRIPTOR_API void push_int64(lua_State* L, long long value);

/// The 64-bit integer at an index: a 64-bit integer userdata, or a number cut as told above; 0 for everything
/// else, a foreign userdata included. Uses two free stack slots. [-0, +0, -]
QUORPURESCRIPTOR_API long long read_int64(lua_State* L, int index);

/// Whether the value at an index is a 64-bit integer userdata. Uses two free stack slots. [-0, +0, -]
QUORPURESCRIPTOR_API bool is_int64(lua_State* L, int index);

namespace detail {

/// Truncates toward zero; the lowest integer for not-a-number and for what does not fit.
constexpr long long to_int64(double value)
{
    return value >= -0x1p63 && value < 0x1p63 ? static_cast<long long>(value) : INT64_MIN;
}

constexpr float to_float(double value)
{
    using Limits = std::numeric_limits<float>;
    if (value > static_cast<double>(Limits::max())) return Limits::infinity();
    if (value < static_cast<double>(Limits::lowest())) return -Limits::infinity();
    return static_cast<float>(value);
}

/// Pushes an object of the class of that type, nil when it is null or the class is not registered. [-0, +1,
/// m]
QUORPURESCRIPTOR_API void push_object(lua_State* L, void* object, const std::type_info& type);

/// The object at an index as one of that type, null when it is none. Uses three free stack slots. [-0, +0, -]
QUORPURESCRIPTOR_API void* read_object(lua_State* L, int index, const std::type_info& type);

/// Pushes the value of a handle's slot; nil for a handle on nothing or of another state. [-0, +1, -]
QUORPURESCRIPTOR_API void push_table(lua_State* L, const table& value);

template<class T>
inline constexpr bool is_text = std::is_same_v<T, const char*> || std::is_same_v<T, std::string>;

template<class T>
inline constexpr bool is_object =
    std::conjunction_v<std::is_pointer<T>, std::is_class<std::remove_pointer_t<T>>>;

template<class T>
inline constexpr bool is_integer = std::is_integral_v<T> && !std::is_same_v<T, bool>;

/// Integers that a Lua number cannot hold, and that cross as 64-bit userdata.
template<class T>
inline constexpr bool is_wide_integer = is_integer<T>&& std::numeric_limits<T>::digits > 32;

template<class T>
inline constexpr bool is_known =
    std::is_arithmetic_v<T> || std::is_enum_v<T> || is_text<T> || is_object<T> || std::is_same_v<T, table>;

/// The class that a pointer names, without const.
template<class T>
using object_class = std::remove_cv_t<std::remove_pointer_t<T>>;

} // namespace detail

/// Pushes one value, as told above. `T` may be left to the compiler. [-0, +1, m]
template<class T>
void push(lua_State* L, const T& value)
{
    using V = std::decay_t<T>;
    if constexpr (std::is_same_v<V, bool>)
        lua_pushboolean(L, value ? 1 : 0);
    else if constexpr (std::is_enum_v<V>)
        push(L, static_cast<std::underlying_type_t<V>>(value));
    else if constexpr (detail::is_wide_integer<V>)
        push_int64(L, static_cast<long long>(value));
    else if constexpr (std::is_arithmetic_v<V>)
        lua_pushnumber(L, static_cast<lua_Number>(value));
    else if constexpr (std::is_same_v<V, const char*> || std::is_same_v<V, char*>)
        lua_pushstring(L, value);
    else if constexpr (std::is_same_v<V, std::string>)
        lua_pushlstring(L, value.data(), value.size());
    else if constexpr (std::is_same_v<V, table>)
        detail::push_table(L, value);
    else {
        static_assert(detail::is_object<V>, "this type has no form in Lua");
        using C = detail::object_class<V>;
        detail::push_object(L, const_cast<C*>(value), typeid(C));
    }
}

/// The value at an index, as told above; never raises. The text of a `const char*` lives as long as
/// the Lua string does. Reading a `std::string` may throw `std::bad_alloc`. [-0, +0, -]
template<class T>
T read(lua_State* L, int index)
{
    static_assert(detail::is_known<T>, "this type has no form in Lua");
    if constexpr (std::is_same_v<T, bool>)
        return lua_toboolean(L, index) != 0;
    else if constexpr (std::is_enum_v<T>)
        return static_cast<T>(read<std::underlying_type_t<T>>(L, index));
    else if constexpr (detail::is_wide_integer<T>)
        return static_cast<T>(read_int64(L, index));
    else if constexpr (std::is_arithmetic_v<T>) {
        const double number = lua_type(L, index) == LUA_TNUMBER ? lua_tonumber(L, index) : 0.0;
        if constexpr (std::is_integral_v<T>)
            return static_cast<T>(detail::to_int64(number));
        else if constexpr (std::is_same_v<T, float>)
            return detail::to_float(number);
        else
            return static_cast<T>(number);
    } else if constexpr (std::is_same_v<T, const char*>)
        return lua_type(L, index) == LUA_TSTRING ? lua_tostring(L, index) : nullptr;
    else if constexpr (std::is_same_v<T, std::string>) {
        std::size_t length = 0;
        const char* text = lua_type(L, index) == LUA_TSTRING ? lua_tolstring(L, index, &length) : nullptr;
        return text ? std::string(text, length) : std::string();
    } else if constexpr (std::is_same_v<T, table>)
        return table(L, index);
    else
        return static_cast<T>(detail::read_object(L, index, typeid(detail::object_class<T>)));
}

/// Reads the value on top of the stack and pops it. A text lives on only while something in the state still
/// holds it. There is no pop of a table: its slot would be gone. [-1, +0, -]
template<class T>
T pop(lua_State* L)
{
    static_assert(!std::is_same_v<T, table>, "a popped table has no slot to refer to");
    T value = read<T>(L, -1);
    lua_settop(L, -2);
    return value;
}

namespace detail {

/// What `get` answers with the entry on top of the stack: a table stays there. [-1, +0, -], for tables [-0,
/// +0, -]
template<class T>
T take(lua_State* L)
{
    if constexpr (std::is_same_v<T, table>)
        return table(L, -1);
    else
        return pop<T>(L);
}

/// What reading nil gives.
template<class T>
T absent()
{
    return T();
}

} // namespace detail

template<class T>
void table::set(int key, const T& value)
{
    if (!valid()) return;
    push(state(), value);
    lua_rawseti(state(), index(), key);
}

template<class T>
void table::set(const char* key, const T& value)
{
    if (!key || !valid()) return;
    push(state(), value);
    lua_setfield(state(), index(), key);
}

template<class T>
T table::get(int key) const
{
    return push_entry(key) ? detail::take<T>(state()) : detail::absent<T>();
}

template<class T>
T table::get(const char* key) const
{
    return push_entry(key) ? detail::take<T>(state()) : detail::absent<T>();
}

} // namespace lua_tinker
