#pragma once

#include <cstddef>
#include <lua.hpp>

/// Bounds on what a script may take while a target runs it. At the end of its instructions it meets an error
/// at each further one, and no memory: neither protected calls nor handlers of its own hold it up then.
namespace fuzz {

/// One state is limited at a time.
class Limited {
public:
    Limited(lua_State* L, long instructions, std::size_t bytes) : L_(L)
    {
        ticksLeft = instructions / hookEvery;
        used = static_cast<std::size_t>(lua_gc(L, LUA_GCCOUNT, 0)) * 1024;
        most = used + bytes;
        allocateBefore = lua_getallocf(L, &userBefore);
        lua_setallocf(L, allocate, nullptr);
        lua_sethook(L, tick, LUA_MASKCOUNT, hookEvery);
    }
    ~Limited()
    {
        if (L_) release();
    }
    Limited(const Limited&) = delete;
    Limited& operator=(const Limited&) = delete;

    /// Ends the bounds before the object's life does.
    void release()
    {
        lua_sethook(L_, nullptr, 0, 0);
        lua_setallocf(L_, allocateBefore, userBefore);
        L_ = nullptr;
    }
    /// To be told when the state was closed meanwhile.
    void forget() { L_ = nullptr; }

private:
    static constexpr int hookEvery = 500;

    static void tick(lua_State* L, lua_Debug*)
    {
        if (--ticksLeft > 0) return;
        most = 0;
        lua_sethook(L, tick, LUA_MASKCOUNT, 1);
        lua_pushnil(L);
        lua_error(L);
    }
    static void* allocate(void*, void* block, std::size_t oldSize, std::size_t newSize)
    {
        if (newSize > oldSize && used + (newSize - oldSize) > most) return nullptr;
        void* moved = allocateBefore(userBefore, block, oldSize, newSize);
        if (moved || newSize == 0) used += newSize - oldSize;
        return moved;
    }

    static inline long ticksLeft = 0;
    static inline std::size_t used = 0;
    static inline std::size_t most = 0;
    static inline lua_Alloc allocateBefore = nullptr;
    static inline void* userBefore = nullptr;
    lua_State* L_;
};

} // namespace fuzz
