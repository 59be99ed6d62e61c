#pragma once

#include "../lua_text.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <cstdlib>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

/// A Lua state with the standard libraries and the binding layer, whose "_ALERT" notes what it is given and
/// whose "textOf" gives texts of values. Ends in a failed test when the stack is not as high as it was at the
/// start.
class LuaState : public testing::Test {
protected:
    LuaState() : L(luaL_newstate())
    {
        luaL_openlibs(L);
        lua_tinker::init(L);
        lua_pushlightuserdata(L, &alerts);
        lua_pushcclosure(L, note, 1);
        lua_setglobal(L, "_ALERT");
        lua_register(L, "textOf", luatext::textOf);
    }
    ~LuaState() override { lua_close(L); }

    void TearDown() override { EXPECT_EQ(lua_gettop(L), 0) << "values left on the stack"; }

    /// Runs a chunk; its results stay on the stack. Any error fails the test.
    void run(const std::string& chunk, int results = 0)
    {
        ASSERT_EQ(luaL_loadstring(L, chunk.c_str()), 0) << lua_tostring(L, -1);
        ASSERT_EQ(lua_pcall(L, 0, results, 0), 0) << lua_tostring(L, -1);
    }

    /// The text of what an expression gives, by `textOf`.
    std::string shown(const std::string& expression) { return luatext::shown(L, expression); }

    /// Fills the frame up to the last slot that Lua grants.
    void fillFrame()
    {
        while (lua_checkstack(L, 1))
            lua_pushnil(L);
    }

    lua_State* L;
    std::vector<std::string> alerts;

private:
    static int note(lua_State* state)
    {
        std::size_t length = 0;
        const char* text = lua_tolstring(state, 1, &length);
        auto* list = static_cast<std::vector<std::string>*>(lua_touserdata(state, lua_upvalueindex(1)));
        list->emplace_back(text ? text : "", length);
        return 0;
    }
};

/// A state whose allocator refuses from a given request on. Null where the engine takes no allocator.
struct RationedState {
    RationedState() : L(lua_newstate(allocate, this)) {}
    ~RationedState()
    {
        left = -1;
        if (L) lua_close(L);
    }
    RationedState(const RationedState&) = delete;
    RationedState& operator=(const RationedState&) = delete;

    static void* allocate(void* self, void* block, std::size_t oldSize, std::size_t newSize)
    {
        auto* state = static_cast<RationedState*>(self);
        if (newSize == 0) {
            std::free(block);
            return nullptr;
        }
        if (newSize > oldSize && state->left == 0) return nullptr;
        if (newSize > oldSize && state->left > 0) --state->left;
        return std::realloc(block, newSize);
    }

    /// Requests for more memory that are still granted; without end when negative.
    int left = -1;
    lua_State* L;
};
