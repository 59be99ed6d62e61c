#pragma once

#include <lua.hpp>

namespace lua_tinker::detail {

/// Runs `body(L, data)` in a Lua frame of its own, in a protected call whose message handler is `on_error`. A
/// failure that the handler was not asked about (no memory, no C stack) is reported too. The status of
/// lua_pcall. Needs no free stack slot. The body sees none of the caller's slots, finds a slot of no use to
/// it at 1, and holds only trivially destructible locals. [-0, +0, -]
int runReported(lua_State* L, void (*body)(lua_State* L, void* data), void* data);

/// Counts an error for `error_count`.
void countError();

/// Makes what `runReported` keeps in a state's registry. [-0, +0, m]
void installProtection(lua_State* L);

/// Registers the script function `int64`. [-0, +0, m]
void installInt64(lua_State* L);

/// Makes room for `slots` more values in the current frame; false when memory or the frame's limit does not
/// allow it. [-0, +0, -]
bool reserve(lua_State* L, int slots);

/// An index counted from the bottom. Pseudo-indices stay; one below the stack's bottom becomes the slot above
/// its top, which holds nothing. [-0, +0, -]
inline int absolute(lua_State* L, int index)
{
    if (index > 0 || index <= LUA_REGISTRYINDEX) return index;
    const int top = lua_gettop(L);
    return top + index + 1 > 0 ? top + index + 1 : top + 1;
}

/// The index of a table, absolute; 0 when there is no state or the index holds no table. [-0, +0, -]
inline int tableAt(lua_State* L, int index)
{
    if (!L) return 0;
    const int slot = absolute(L, index);
    return lua_type(L, slot) == LUA_TTABLE ? slot : 0;
}

/// What the layer keeps in a state's registry, by integer keys that `luaL_ref` never gives out. An address
/// would do as well, but LuaJIT may take memory, and so raise, when it first sees one; a look at an integer
/// key never raises.
enum class Kept : int {
    ErrorText = -0x51504C00,
    Trampoline,
    Handler,
    Int64Metatable,
    /// {type name = metatable, metatable = record}: by its second half a metatable is known as one of this
    /// layer's.
    Classes,
    /// {class name = metatable}
    ClassNames,
    /// True where chunks must be source text.
    TextOnly,
    /// The text that a call gave last.
    Answer,
};

/// Stores the value on top of the stack. [-1, +0, m]
inline void keep(lua_State* L, Kept key)
{
    lua_rawseti(L, LUA_REGISTRYINDEX, static_cast<int>(key));
}

/// Pushes what is kept, nil when there is nothing. [-0, +1, -]
inline void pushKept(lua_State* L, Kept key)
{
    lua_rawgeti(L, LUA_REGISTRYINDEX, static_cast<int>(key));
}

} // namespace lua_tinker::detail
