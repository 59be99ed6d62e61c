#include "letters.h"
#include "marshal_state.h"

#include <QuorScriptor/geometry.h>
#include <functional>

namespace {

using namespace quorlua;

/// What a frame of the Lua stack can hold at most.
constexpr int mostSlots = LUAI_MAXCSTACK;

/// Runs host code in a protected call, in a frame in which only some slots are left.
class FullFrame : public MarshalState {
protected:
    FullFrame() { run("calls = 0 function count(...) calls = calls + 1 return 5 end"); }

    /// The message of the error that was raised; empty when there was none.
    std::string runWithFree(int slots, std::function<void(lua_State*)> host)
    {
        Work work{slots, std::move(host)};
        const SameHeight same(L);
        if (lua_cpcall(L, fillAndRun, &work) == 0) return {};
        std::string message = lua_tostring(L, -1) ? lua_tostring(L, -1) : "(no text)";
        lua_pop(L, 1);
        return message;
    }

    const std::string tooMany = "stack overflow (too many arguments)";

private:
    struct Work {
        int free;
        std::function<void(lua_State*)> host;
    };

    static int fillAndRun(lua_State* state)
    {
        Work& work = *static_cast<Work*>(lua_touserdata(state, 1));
        while (lua_gettop(state) < mostSlots - work.free && lua_checkstack(state, 1))
            lua_pushboolean(state, 0);
        const int top = lua_gettop(state);
        EXPECT_EQ(top, mostSlots - work.free);
        work.host(state);
        EXPECT_EQ(lua_gettop(state), top);
        return 0;
    }
};

TEST_F(FullFrame, RaisesTooManyArguments)
{
    for (const int free : {0, 1, 2, 3, 4, 5}) {
        EXPECT_EQ(
            runWithFree(free, [](lua_State* state) { callLuaFunc(state, "count", "iiii", 1, 2, 3, 4); }),
            tooMany)
            << free;
        EXPECT_EQ(runWithFree(free, [](lua_State* state) { callLua<"iiii">(state, "count", 1, 2, 3, 4); }),
                  tooMany)
            << free;
        EXPECT_EQ(
            runWithFree(free,
                        [](lua_State* state) { prepareCallParam(state, "count", "iiiii", 1, 2, 3, 4, 5); }),
            tooMany)
            << free;
        EXPECT_EQ(runWithFree(free,
                              [](lua_State* state) {
                                  const auto push = [](lua_State* frame, const char* format, ...) {
                                      va_list items;
                                      va_start(items, format);
                                      // The list is not ended when an error passes: it holds nothing.
                                      prepareCallParam_vl(frame, format, items);
                                      va_end(items);
                                  };
                                  push(state, "iiiiii", 1, 2, 3, 4, 5, 6);
                              }),
                  tooMany)
            << free;
    }
    EXPECT_EQ(shown("calls"), "0");
    EXPECT_TRUE(alerts.empty());
}

TEST_F(FullFrame, WithRoomEnoughCalls)
{
    for (const int free : {24, 40}) {
        int result = 0;
        EXPECT_EQ(runWithFree(free,
                              [&result](lua_State* state) {
                                  EXPECT_TRUE(callLuaFunc(state, "count", "ii>i", 1, 2, &result));
                              }),
                  "")
            << free;
        EXPECT_EQ(result, 5) << free;
    }
}

TEST_F(FullFrame, NeverRaisesForWhatIsNoFunction)
{
    for (int free = 0; free < 24; ++free) {
        EXPECT_EQ(runWithFree(free,
                              [](lua_State* state) {
                                  int result = 77;
                                  EXPECT_FALSE(callLuaFunc(state, "missing", "ii>i", 1, 2, &result));
                                  EXPECT_EQ(result, 77);
                              }),
                  "")
            << free;
    }
    EXPECT_TRUE(alerts.empty());
}

TEST_F(FullFrame, NeverRaisesWithoutArguments)
{
    for (int free = 0; free < 24; ++free) {
        EXPECT_EQ(runWithFree(free,
                              [](lua_State* state) {
                                  int result = 77;
                                  const bool done = callLuaFunc(state, "count", ">i", &result);
                                  EXPECT_EQ(result, done ? 5 : 77);
                              }),
                  "")
            << free;
    }
}

TEST_F(FullFrame, RaisesForAFormatLongerThanAnyFrame)
{
    const std::string format(9000, 'i');
    const std::vector<CallItem> items(9000);
    EXPECT_EQ(
        runWithFree(mostSlots - 1,
                    [&](lua_State* state) { callLuaItems(state, "count", format.c_str(), items.data()); }),
        tooMany);
    EXPECT_EQ(shown("calls"), "0");
}

TEST_F(FullFrame, RaisesForArgumentsThatOnlyTheCallersFrameCouldHold)
{
    const std::string format(mostSlots - 5, 'i');
    const std::vector<CallItem> items(format.size());
    EXPECT_EQ(
        runWithFree(mostSlots - 1,
                    [&](lua_State* state) { callLuaItems(state, "count", format.c_str(), items.data()); }),
        tooMany);
    EXPECT_EQ(shown("calls"), "0");
}

TEST_F(FullFrame, RaisesTooManyArgumentsOfAStartedList)
{
    const auto call = [](lua_State* state, const char* format, ...) {
        va_list items;
        va_start(items, format);
        // The list is not ended when an error passes: it holds nothing.
        callLuaFunc_gen(state, "count", format, items);
        va_end(items);
    };
    EXPECT_EQ(runWithFree(2, [call](lua_State* state) { call(state, "iiii", 1, 2, 3, 4); }), tooMany);
    EXPECT_EQ(shown("calls"), "0");
}

TEST_F(FullFrame, HoldsNoMoreResultsThanItCan)
{
    const std::string format = ">" + std::string(9000, 'i');
    int output = 77;
    std::vector<CallItem> items(9000);
    for (CallItem& item : items)
        item.address = &output;
    EXPECT_FALSE(callLuaItems(L, "count", format.c_str(), items.data()));
    EXPECT_EQ(output, 77);
    EXPECT_EQ(shown("calls"), "0");
    EXPECT_EQ(lua_gettop(L), 0);

    // More than the frame of the call can hold above arguments that a bad letter makes none of its arguments.
    std::string bad(8050, 'i');
    bad[100] = '?';
    EXPECT_FALSE(callLuaItems(L, "count", bad.c_str(), items.data()));
    EXPECT_EQ(output, 77);
    EXPECT_EQ(shown("calls"), "0");
    EXPECT_EQ(lua_gettop(L), 0);

    // As the second half of a call.
    lua_getglobal(L, "count");
    EXPECT_FALSE(callLuaFunc1(L, "count", 0, std::string(9000, 'i').c_str()));
    EXPECT_EQ(lua_gettop(L), 1);
    EXPECT_TRUE(lua_isnil(L, 1));
    EXPECT_EQ(shown("calls"), "0");
}

TEST_F(FullFrame, HoldsThousandsOfItems)
{
    run("function echo(...) return ... end");
    constexpr int many = 7000;
    std::vector<int> outputs(many);
    std::vector<CallItem> items(2 * many);
    for (std::size_t i = 0; i < many; ++i) {
        items[i].integer = static_cast<int>(i);
        items[many + i].address = &outputs[i];
    }
    std::string format(2 * many + 1, 'i');
    format[many] = '>';
    EXPECT_TRUE(callLuaItems(L, "echo", format.c_str(), items.data()));
    for (std::size_t i = 0; i < many; ++i)
        ASSERT_EQ(outputs[i], static_cast<int>(i));
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(FullFrame, FailsToReadAndWriteQuietly)
{
    run("place, id, matrix = {1, 2, 3}, 5, {{1,2,3,4},{1,2,3,4},{1,2,3,4},{1,2,3,4}}");
    for (int free = 0; free < 32; ++free) {
        int read = 0;
        int written = 0;
        const auto host = [&](lua_State* state) {
            // The globals are a table that needs no slot.
            constexpr int globals = LUA_GLOBALSINDEX;
            KxGePoint3D point;
            KxDbObjectId id;
            KxGeMatrix3D matrix;
            std::vector<QuorPolyDesc> none;
            read += getAKxGePoint(state, globals, "place", point) ? 1 : 0;
            read += getAKxDbObjectId(state, globals, "id", id) ? 1 : 0;
            read += getMatrix(state, globals, "matrix", matrix) ? 1 : 0;
            written += setQuorPolyDescArray(state, globals, {}) ? 1 : 0;
            written += setSpolygonDesc2Lua(state, globals, {}) ? 1 : 0;
            setAKxGePoint(state, globals, "written", point);
            setStringArray(state, globals, {"one"});
            EXPECT_FALSE(getQuorPolyDescArray(state, globals, none));
            std::vector<std::string> texts;
            read += getStringArray(state, globals, texts) ? 1 : 0;
            EXPECT_FALSE(getAKxGePoint(state, globals, 1, point));
        };
        EXPECT_EQ(runWithFree(free, host), "") << free;
        if (free == 0) {
            EXPECT_EQ(read + written, 0);
        } else if (free >= 20) {
            EXPECT_EQ(read + written, 6) << free;
        }
    }
    EXPECT_TRUE(alerts.empty());
}

TEST_F(FullFrame, CallsInTwoStepsAndReadsOrFails)
{
    int read = 0;
    for (int free = 2; free < 32; ++free) {
        const auto host = [&read](lua_State* state) {
            ASSERT_TRUE(lua_checkstack(state, 1));
            lua_getglobal(state, "count");
            int result = 77;
            read += callLuaFunc1(state, "count", 0, "i", &result) ? 1 : 0;
            EXPECT_TRUE(result == 5 || result == 77);
            lua_pop(state, 1);
        };
        EXPECT_EQ(runWithFree(free, host), "") << free;
    }
    EXPECT_GT(read, 0);
    EXPECT_LT(read, 30);
}

} // namespace
