#pragma once

#include <QuorScriptor/luacall.h>
#include <type_traits>

/// A value as it travels in a variable argument list: numbers and pointers as they are, a table as its
/// handle, every other object by its address.
template<class T>
auto inVariableList(const T& value)
{
    if constexpr (std::is_same_v<T, lua_tinker::table>)
        return value.handle();
    else if constexpr (std::is_arithmetic_v<T> || std::is_pointer_v<T>)
        return value;
    else
        return &value;
}
