#include "lua_state.h"

#include <QuorPureScriptor/quorlua_helpers.h>

namespace {

constexpr int manyRequests = 2000;

class Style {
public:
    double height() const { return 2.5; }
};

std::string longText()
{
    return std::string(5000, 'x');
}

/// Allows 0, 1, 2, ... requests for memory until an action that may not raise succeeds.
class ShortOfMemory : public testing::Test {
protected:
    void SetUp() override
    {
        if (!rationed.L) GTEST_SKIP() << "this engine takes no allocator";
        L = rationed.L;
        luaL_openlibs(L);
    }

    template<class Action>
    void untilSuccess(Action action)
    {
        const int top = lua_gettop(L);
        for (int granted = 0; granted < manyRequests; ++granted) {
            testing::internal::CaptureStderr();
            rationed.left = granted;
            const bool done = action();
            rationed.left = -1;
            testing::internal::GetCapturedStderr();
            ASSERT_EQ(lua_gettop(L), top) << granted;
            if (done) {
                EXPECT_GT(granted, 0) << "the action asked for no memory at all";
                return;
            }
            lua_gc(L, LUA_GCCOLLECT, 0);
        }
        FAIL() << "never succeeded";
    }

    /// Runs a chunk while memory is granted.
    void run(const char* chunk) { ASSERT_EQ(luaL_dostring(L, chunk), 0) << lua_tostring(L, -1); }

    RationedState rationed;
    lua_State* L = nullptr;
};

TEST_F(ShortOfMemory, RunsABufferOrFails)
{
    const std::string chunk = "ran = {}; for i = 1, 20 do ran[i] = 'text ' .. i end";
    untilSuccess([&] { return lua_tinker::dobuffer(L, chunk.data(), chunk.size()) == 0; });
}

TEST_F(ShortOfMemory, ReportsAnErrorOrFallsBack)
{
    run("heard = 0; function _ALERT(text) heard = heard + #text end; message = string.rep('x', 3000)");
    const std::string chunk = "error(message, 0)";
    untilSuccess([&] {
        EXPECT_NE(lua_tinker::dobuffer(L, chunk.data(), chunk.size()), 0);
        lua_pushliteral(L, "heard");
        lua_rawget(L, LUA_GLOBALSINDEX);
        const bool heard = lua_tonumber(L, -1) > 3000;
        lua_pop(L, 1);
        return heard;
    });
}

TEST_F(ShortOfMemory, RunsAFileOrFails)
{
    untilSuccess([&] {
        EXPECT_NE(lua_tinker::dofile(L, "/nonexistent/file.lua"), 0);
        return rationed.left > 0;
    });
}

TEST_F(ShortOfMemory, CallsAFunctionOrFails)
{
    run("function join(a, b) return a .. b end");
    untilSuccess(
        [&] { return lua_tinker::call<std::string>(L, "join", std::string(900, 'a'), "b").size() == 901; });
}

TEST_F(ShortOfMemory, AnswersWhetherAGlobalIsAFunction)
{
    untilSuccess([&] { return quorlua::is_global_function(L, "print"); });
}

TEST_F(ShortOfMemory, ReadsListsOrFails)
{
    ASSERT_EQ(luaL_dostring(L, "return {x = 1, y = 'text', [3] = {1, 2, 3}}"), 0);
    lua_settop(L, 15);
    untilSuccess([&] {
        std::vector<KVParams> records;
        return quorlua::getParams(L, 1, records, false) && records.size() == 3;
    });
    lua_settop(L, 0);
}

TEST_F(ShortOfMemory, SetsUpOrRaises)
{
    static Style style;
    untilSuccess([&] {
        const bool done = lua_cpcall(
                              L,
                              [](lua_State* state) {
                                  lua_tinker::init(state);
                                  lua_tinker::class_add<Style>(state, "Style");
                                  lua_tinker::class_def<Style>(state, "height", &Style::height);
                                  lua_tinker::def(state, "longText", longText);
                                  lua_tinker::push_object(state, &style);
                                  lua_setglobal(state, "style");
                                  lua_tinker::push(state, 5LL);
                                  return 0;
                              },
                              nullptr) == 0;
        if (!done) lua_pop(L, 1);
        return done;
    });
    run("assert(style:height() == 2.5 and tostring(int64(3)) == '3')");
}

TEST_F(ShortOfMemory, MakesTheFirst64BitIntegerOrRaises)
{
    lua_tinker::init(L);
    untilSuccess([&] {
        const bool done = lua_cpcall(
                              L,
                              [](lua_State* state) {
                                  lua_tinker::push(state, 5LL);
                                  lua_setglobal(state, "first");
                                  return 0;
                              },
                              nullptr) == 0;
        if (!done) lua_pop(L, 1);
        return done;
    });
    run("assert(first == int64(5) and tostring(first + 1) == '6')");
}

TEST_F(ShortOfMemory, AppendsSearchPathsOrRaises)
{
    run("package.path = string.rep('a', 3000)");
    untilSuccess([&] {
        const bool done = lua_cpcall(
                              L,
                              [](lua_State* state) {
                                  quorlua::addPath(state, "x");
                                  return 0;
                              },
                              nullptr) == 0;
        if (!done) lua_pop(L, 1);
        rationed.left = -1;
        run(done ? "assert(#package.path == 3002)" : "assert(#package.path == 3000)");
        return done;
    });
}

TEST_F(ShortOfMemory, LeaksNoHostText)
{
    lua_tinker::def(L, "longText", longText);
    run("function fetch() kept = longText(); return #kept end");
    untilSuccess([&] { return lua_tinker::call<int>(L, "fetch") == 5000; });
}

TEST_F(ShortOfMemory, PrintsWithAnyUserdataThatRaisesWhenCollected)
{
    run("local p = newproxy(true); getmetatable(p).__gc = function() error('collected') end; p = nil");
    lua_gc(L, LUA_GCSTOP, 0);
    run("function _ALERT(text) heard = text end");
    lua_gc(L, LUA_GCRESTART, 0);
    for (int i = 0; i < 1000; ++i) {
        testing::internal::CaptureStderr();
        lua_tinker::print_error(L, "message %d", i);
        testing::internal::GetCapturedStderr();
        ASSERT_EQ(lua_gettop(L), 0);
    }
}

} // namespace
