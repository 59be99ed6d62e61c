// The serializer when memory runs out: every failure is a result, and the process goes on.

#include "../rationed_memory.h"
#include "../rationed_states.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorScriptor/LuaSerialize.h>
#include <cstdio>
#include <functional>
#include <gmock/gmock.h>
#include <lua.hpp>
#include <string>

namespace {

using quorlua::LuaSerialize;
using rationed::requestsOfLibraries;
using rationed::statesLeft;

class SerializerOutOfMemory : public testing::Test {
protected:
    SerializerOutOfMemory() { QuorSystem::setInstallationFolder(QUOR_SOURCE_DIR "/sample/installation"); }
    ~SerializerOutOfMemory() override
    {
        statesLeft = -1;
        QuorSystem::setInstallationFolder(nullptr);
    }

    void SetUp() override
    {
        lua_State* probe = lua_newstate(rationed::allocateForStates, nullptr);
        if (!probe) GTEST_SKIP() << "this engine takes no allocator";
        lua_close(probe);
    }

    /// Grants 0, 1, 2, ... requests until the operation succeeds. It is to leave one value in any case.
    static void untilSuccess(const std::function<bool()>& operation)
    {
        constexpr int many = 5000;
        lua_State* L = LuaSerialize::getLua();
        ASSERT_NE(L, nullptr);
        const int top = lua_gettop(L);
        for (int granted = 0; granted < many; ++granted) {
            lua_gc(L, LUA_GCCOLLECT, 0);
            // Nothing is collected while memory is short, so that every request counts.
            lua_gc(L, LUA_GCSTOP, 0);
            testing::internal::CaptureStderr();
            statesLeft = granted;
            const bool done = operation();
            statesLeft = -1;
            testing::internal::GetCapturedStderr();
            lua_gc(L, LUA_GCRESTART, 0);
            ASSERT_EQ(lua_gettop(L), top + 1) << "with " << granted << " requests granted";
            if (done) {
                EXPECT_GT(granted, 10);
                return;
            }
            EXPECT_TRUE(lua_isnil(L, -1)) << "with " << granted << " requests granted";
            lua_settop(L, top);
        }
        FAIL() << "never succeeded";
    }

    /// Leaves a table on the serializer's stack.
    static void makeTable()
    {
        lua_State* L = LuaSerialize::getLua();
        ASSERT_NE(L, nullptr);
        LuaSerialize::clear();
        ASSERT_EQ(luaL_dostring(L, "local s = {1, 2.5} return {s, s, name = 'a\\nb', [int64(7)] = 1 / 3}"),
                  0);
    }

    /// Takes the functions out of the registry that stand there under numbers. [-0, +0, -]
    static void takeFunctionsAway(lua_State* L)
    {
        for (lua_pushnil(L); lua_next(L, LUA_REGISTRYINDEX) != 0; lua_pop(L, 1)) {
            if (lua_type(L, -2) != LUA_TNUMBER || !lua_isfunction(L, -1)) continue;
            lua_pushnil(L);
            lua_rawseti(L, LUA_REGISTRYINDEX, static_cast<int>(lua_tointeger(L, -3)));
        }
    }

    static constexpr const char* text =
        "quor-table 1 {&1{1,2.5},*1,\"name\"=\"a\\0Ab\",#7=6004799503160661p-54}";
};

/// In a process of its own, where there is no state yet.
class SerializerOutOfMemoryDeathTest : public SerializerOutOfMemory {
protected:
    SerializerOutOfMemoryDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    ~SerializerOutOfMemoryDeathTest() override { GTEST_FLAG_SET(death_test_style, "fast"); }

    /// Grants as many requests as the libraries take and 0, 1, 2, ... more until there is a state; then tells
    /// how many more these were.
    [[noreturn]] static void makeState()
    {
        const int libraries = requestsOfLibraries();
        int more = 0;
        lua_State* L = nullptr;
        for (; !L && more < 5000; ++more) {
            testing::internal::CaptureStderr();
            statesLeft = libraries + more;
            L = LuaSerialize::getLua();
            statesLeft = -1;
            testing::internal::GetCapturedStderr();
        }
        const bool isMade =
            more > 100 && L && lua_gettop(L) == 1 && LuaSerialize::unSerial(text) && lua_istable(L, 2);
        if (!isMade) std::fprintf(stderr, "%d requests more\n", more);
        std::exit(isMade ? 0 : 1);
    }

    /// The same with the blocks of the library.
    [[noreturn]] static void makeStateInLibrary()
    {
        long blocks = 0;
        lua_State* L = nullptr;
        for (; !L && blocks < 5000; ++blocks) {
            testing::internal::CaptureStderr();
            rationed::allowed = blocks;
            L = LuaSerialize::getLua();
            rationed::allowed = -1;
            testing::internal::GetCapturedStderr();
        }
        const bool isMade = blocks > 2 && L && LuaSerialize::unSerial(text) && lua_istable(L, 2);
        if (!isMade) std::fprintf(stderr, "%ld blocks\n", blocks);
        std::exit(isMade ? 0 : 1);
    }
};

TEST_F(SerializerOutOfMemoryDeathTest, HasNoStateUntilThereIsEnough)
{
    EXPECT_EXIT(makeState(), testing::ExitedWithCode(0), testing::StrEq(""));
}

TEST_F(SerializerOutOfMemoryDeathTest, HasNoStateUntilTheLibraryHasEnough)
{
    EXPECT_EXIT(makeStateInLibrary(), testing::ExitedWithCode(0), testing::StrEq(""));
}

// The scripts of a host may reach the registry.
TEST_F(SerializerOutOfMemory, GivesNothingWhereAScriptTookAwayWhatIsKeptForErrors)
{
    makeTable();
    const char* written = nullptr;
    untilSuccess([&written] {
        takeFunctionsAway(LuaSerialize::getLua());
        return (written = LuaSerialize::serial(2)) != nullptr;
    });
    EXPECT_STREQ(written, text);
    LuaSerialize::clear();
}

TEST_F(SerializerOutOfMemory, WritesOrGivesNothing)
{
    makeTable();
    const char* written = nullptr;
    untilSuccess([&written] { return (written = LuaSerialize::serial(2)) != nullptr; });
    EXPECT_STREQ(written, text);
    LuaSerialize::clear();
}

TEST_F(SerializerOutOfMemory, TurnsANumberIntoTextOrGivesNothing)
{
    makeTable();
    lua_State* L = LuaSerialize::getLua();
    ASSERT_EQ(luaL_dostring(L,
                            "kept = serializeTable local n = 1234567"
                            " function serializeTable() n = n + 1 local t = {} for i = 1, 20 do t[i] = {} end"
                            " return n end"),
              0);
    untilSuccess([] { return LuaSerialize::serial(2) != nullptr; });
    EXPECT_EQ(lua_type(L, -1), LUA_TSTRING);
    ASSERT_EQ(luaL_dostring(L, "serializeTable = kept"), 0);
    LuaSerialize::clear();
}

TEST_F(SerializerOutOfMemory, ReadsOrLeavesNil)
{
    makeTable();
    lua_State* L = LuaSerialize::getLua();
    LuaSerialize::clear();
    untilSuccess([L] { return LuaSerialize::unSerial(text) && !lua_isnil(L, -1); });
    EXPECT_STREQ(LuaSerialize::serial(2), text);
    LuaSerialize::clear();
}

} // namespace
