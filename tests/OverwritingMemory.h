#pragma once

#include <algorithm>
#include <cstring>
#include <lua.hpp>

/// The collector runs a whole cycle wherever it can, and what the state gives back is overwritten: so nobody
/// reads on there by luck. As it was at the end.
class OverwritingMemory {
public:
    explicit OverwritingMemory(lua_State* L) : L_(L), own_(lua_getallocf(L, &data_))
    {
        lua_setallocf(L, allocate, this);
        pause_ = lua_gc(L, LUA_GCSETPAUSE, 0);
        multiplier_ = lua_gc(L, LUA_GCSETSTEPMUL, 0);
        lua_gc(L, LUA_GCRESTART, 0);
    }
    ~OverwritingMemory()
    {
        lua_gc(L_, LUA_GCSETPAUSE, pause_);
        lua_gc(L_, LUA_GCSETSTEPMUL, multiplier_);
        lua_setallocf(L_, own_, data_);
    }
    OverwritingMemory(const OverwritingMemory&) = delete;
    OverwritingMemory& operator=(const OverwritingMemory&) = delete;

private:
    static void* allocate(void* given, void* block, std::size_t before, std::size_t after)
    {
        const auto* self = static_cast<OverwritingMemory*>(given);
        if (!block) return self->own_(self->data_, block, before, after);
        void* moved = nullptr;
        if (after > 0) {
            moved = self->own_(self->data_, nullptr, 0, after);
            if (!moved) return nullptr;
            std::memcpy(moved, block, std::min(before, after));
        }
        std::memset(block, '#', before);
        self->own_(self->data_, block, before, 0);
        return moved;
    }

    lua_State* L_;
    void* data_ = nullptr;
    lua_Alloc own_;
    int pause_;
    int multiplier_;
};
