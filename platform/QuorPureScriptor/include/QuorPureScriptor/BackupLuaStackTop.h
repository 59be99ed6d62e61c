#pragma once

#include <lua.hpp>

/// Remembers the height of a Lua stack and brings it back when the scope ends. A null state is tolerated:
/// nothing is done then.
///
/// It must not live in a frame that a Lua error can cross. On the engines whose errors unwind, the destructor
/// would cut the stack while the error value lies on top of it; on the others it would never run.
class BackupLuaStackTop {
public:
    /// Takes the current height. [-0, +0, -]
    explicit BackupLuaStackTop(lua_State* L) : state_(L), top_(L ? lua_gettop(L) : 0) {}

    /// Cuts the stack to the remembered height, or fills it up with nils. [-?, +?, -]
    ~BackupLuaStackTop()
    {
        if (state_) lua_settop(state_, top_);
    }

    BackupLuaStackTop(const BackupLuaStackTop&) = delete;
    BackupLuaStackTop& operator=(const BackupLuaStackTop&) = delete;

    /// Keeps everything up to the stack slot `index` (counted from the bottom, or, below 0, from the top):
    /// the remembered height becomes that slot when it lies higher. Pseudo-indices change nothing. [-0, +0,
    /// -]
    void reset(int index)
    {
        if (!state_ || index <= LUA_REGISTRYINDEX) return;
        const int slot = index < 0 ? lua_gettop(state_) + index + 1 : index;
        if (slot > top_) top_ = slot;
    }

private:
    lua_State* state_;
    int top_;
};
