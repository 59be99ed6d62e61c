#include "letters.h"
#include "marshal_state.h"

#include <QuorScriptor/geometry.h>

namespace {

using namespace quorlua;

constexpr const char* script = R"(
    function same(...) return ... end
    function number() return 7193 end
    function kept() return {1, 2, 3} end
    function busy() local t = {} for i = 1, 50 do t[i] = 'entry ' .. i end return 5 end
    data = {place = {1, 2, 3}, ids = {1, 2}, texts = {'one', 'two'}}
)";

/// Grants 0, 1, 2, ... requests for memory until an operation succeeds. Every failure is a result: no panic,
/// the stack as it was.
class OutOfMemory : public testing::Test {
protected:
    void SetUp() override
    {
        if (!rationed.L) GTEST_SKIP() << "this engine takes no allocator";
        L = rationed.L;
        luaL_openlibs(L);
        lua_tinker::init(L);
        ASSERT_EQ(luaL_dostring(L, script), 0) << lua_tostring(L, -1);
        lua_settop(L, 0);
    }

    /// `operation` puts the stack back when it succeeds.
    template<class Operation>
    void untilSuccess(Operation operation, bool needsMemory = true)
    {
        constexpr int many = 5000;
        const int top = lua_gettop(L);
        for (int granted = 0; granted < many; ++granted) {
            lua_gc(L, LUA_GCCOLLECT, 0);
            // Nothing is collected while memory is short, so that every request counts.
            lua_gc(L, LUA_GCSTOP, 0);
            testing::internal::CaptureStderr();
            rationed.left = granted;
            const bool done = operation();
            rationed.left = -1;
            testing::internal::GetCapturedStderr();
            lua_gc(L, LUA_GCRESTART, 0);
            ASSERT_EQ(lua_gettop(L), top) << "with " << granted << " requests granted";
            if (!done) continue;
            EXPECT_EQ(granted > 0, needsMemory);
            return;
        }
        FAIL() << "never succeeded";
    }

    RationedState rationed;
    lua_State* L = nullptr;
};

TEST_F(OutOfMemory, CallsAreFalse)
{
    int result = 0;
    untilSuccess([&] { return callLuaFunc(L, "same", "i>i", 5, &result); });
    EXPECT_EQ(result, 5);
}

TEST_F(OutOfMemory, CallsOfBusyFunctionsAreFalse)
{
    int result = 0;
    untilSuccess([&] { return callLuaFunc(L, "busy", ">i", &result); });
    EXPECT_EQ(result, 5);
}

TEST_F(OutOfMemory, CallsWithEveryKindOfArgumentAreFalse)
{
    const std::string text = "r";
    const KxDbObjectId id(5);
    const KxGePoint3D point(1, 2, 3);
    const KxGeMatrix3D matrix;
    const std::vector<KxGePoint3D> points(3);
    const std::vector<KxDbObjectId> ids(3);
    const std::vector<std::string> texts(3, "text");
    const std::vector<std::vector<QuorPolyDesc>> polylines(2, std::vector<QuorPolyDesc>(2));
    const std::vector<KVParams> records(2, KVParams{"key", "note", KVValue::ofString("value")});
    const std::vector<std::vector<KVParams>> lists(2, records);
    const std::vector<KVData> pairs(2, KVData{"key", KVValue::ofPoint({1, 2, 3})});
    lua_newtable(L);
    const lua_tinker::table table(L, 1);
    int first = 0;
    untilSuccess([&] {
        return callLua<"isrIopXPOSlmMaBbkc>i">(L, "same", 5, "text", text, 7LL, id, point, matrix, points,
                                               ids, texts, polylines, records, records, records, lists, lists,
                                               pairs, table, &first);
    });
    EXPECT_EQ(first, 5);
}

TEST_F(OutOfMemory, CallsOfFunctionsThatAMetatableGivesAreFalse)
{
    ASSERT_EQ(luaL_dostring(L, R"(
        setmetatable(_G, {__index = function(globals, name)
            local all = {}
            for i = 1, 20 do all[i] = {name} end
            return rawget(globals, 'same')
        end})
    )"),
              0);
    int result = 0;
    untilSuccess([&] { return callLuaFunc(L, "absent", "i>i", 5, &result); });
    EXPECT_EQ(result, 5);
}

TEST_F(OutOfMemory, NumbersAreReadAsTextOrNotAtAll)
{
    std::string text;
    const auto read = [&] {
        text.clear();
        return callLuaFunc(L, "number", ">r", &text) && text == "7193";
    };
    // What a state's first call makes is there then, and the text is all that takes memory.
    ASSERT_TRUE(read());
    untilSuccess(read);
}

TEST_F(OutOfMemory, TablesAreKeptOrNot)
{
    untilSuccess([&] {
        lua_tinker::table table;
        const bool done = callLuaFunc(L, "kept", ">c", &table);
        if (done) lua_settop(L, 0);
        return done;
    });
}

TEST_F(OutOfMemory, CallsInTwoStepsLeaveOneValue)
{
    int result = 0;
    untilSuccess([&] {
        const std::string text(100, 'x');
        const int arguments = prepareCallParam(L, "same", "ir", 5, &text);
        EXPECT_EQ(lua_gettop(L), arguments < 0 ? 1 : 1 + arguments);
        const bool done = arguments >= 0 && callLuaFunc1(L, "same", arguments, "i", &result);
        EXPECT_EQ(lua_gettop(L), 1);
        lua_settop(L, 0);
        return done;
    });
    EXPECT_EQ(result, 5);
}

TEST_F(OutOfMemory, ArgumentsAloneArePushedOrNot)
{
    const auto push = [this](const char* format, ...) {
        va_list items;
        va_start(items, format);
        const int count = prepareCallParam_vl(L, format, items);
        va_end(items);
        return count;
    };
    const KxGePoint3D point(1, 2, 3);
    untilSuccess([&] {
        const int count = push("ipp", 5, &point, &point);
        EXPECT_EQ(lua_gettop(L), count < 0 ? 0 : 3);
        lua_settop(L, 0);
        return count == 3;
    });
}

TEST_F(OutOfMemory, WritersWriteOrFail)
{
    lua_newtable(L);
    untilSuccess([&] { return setQuorPolyDescArray(L, 1, std::vector<QuorPolyDesc>(3)); });
    untilSuccess([&] {
        return setSpolygonDesc2Lua(L, 1,
                                   std::vector<std::vector<QuorPolyDesc>>(2, std::vector<QuorPolyDesc>(2)));
    });
}

TEST_F(OutOfMemory, WritersWithoutAResultLeaveTheStack)
{
    const KxGePoint3D point(1, 2, 3);
    lua_newtable(L);
    untilSuccess([&] {
        setAKxGePoint(L, 1, "a field that is new", point);
        KxGePoint3D written;
        return getAKxGePoint(L, 1, "a field that is new", written) && written == point;
    });
    untilSuccess([&] {
        setAKxGePoint(L, 1, 7, point);
        KxGePoint3D written;
        return getAKxGePoint(L, 1, 7, written) && written == point;
    });
    untilSuccess([&] {
        setKxGePointArray(L, 1, std::vector<KxGePoint3D>(20, point));
        std::vector<KxGePoint3D> written;
        return getKxGePointArray(L, 1, written) && written.size() == 20;
    });
}

TEST_F(OutOfMemory, ReadersPastMetamethodsNeedNone)
{
    lua_getglobal(L, "data");
    lua_getfield(L, 1, "place");
    lua_getfield(L, 1, "ids");
    lua_getfield(L, 1, "texts");
    KxGePoint3D point;
    std::vector<KxDbObjectId> ids;
    std::vector<std::string> texts;
    untilSuccess(
        [&] {
            return getAKxGePoint(L, 2, point) == 0 && getKxDbObjectIdArray(L, 3, ids) &&
                   getStringArray(L, 4, texts);
        },
        false);
    EXPECT_EQ(point, KxGePoint3D(1, 2, 3));
    EXPECT_EQ(ids.size(), 2u);
    EXPECT_EQ(texts.size(), 2u);
}

TEST_F(OutOfMemory, ReadersOfFieldsReadOrFail)
{
    lua_getglobal(L, "data");
    KxGePoint3D point;
    untilSuccess([&] { return getAKxGePoint(L, 1, "place", point); });
    EXPECT_EQ(point, KxGePoint3D(1, 2, 3));
}

// Scripts can leave an object whose finalizer raises: every allocation may then raise.
TEST_F(OutOfMemory, RaisingFinalizersEndInAResult)
{
    ASSERT_EQ(luaL_dostring(L, R"(
        finalized = 0
        function litter()
            for i = 1, 20 do
                getmetatable(newproxy(true)).__gc = function() finalized = finalized + 1 error('finalizer') end
            end
        end
        function answer() return {1, 2, 3} end
    )"),
              0);
    lua_settop(L, 0);
    lua_newtable(L);
    const std::vector<KxGePoint3D> points(50);
    int done = 0;
    testing::internal::CaptureStderr();
    for (int i = 0; i < 50; ++i) {
        lua_gc(L, LUA_GCSTOP, 0);
        lua_getglobal(L, "litter");
        lua_call(L, 0, 0);
        lua_gc(L, LUA_GCRESTART, 0);
        KxGePoint3D point;
        std::string text;
        for (int round = 0; round < 20; ++round) {
            done += callLuaFunc(L, "answer", "PP>p", &points, &points, &point) ? 1 : 0;
            done += callLuaFunc(L, "number", ">r", &text) ? 1 : 0;
            setKxGePointArray(L, 1, points);
            setAKxGePoint(L, 1, "field", point);
            getAKxGePoint(L, 1, "field", point);
        }
        ASSERT_EQ(lua_gettop(L), 1);
    }
    testing::internal::GetCapturedStderr();
    lua_gc(L, LUA_GCSTOP, 0);
    lua_getglobal(L, "finalized");
    EXPECT_GT(lua_tonumber(L, -1), 0);
    EXPECT_GT(done, 0);
}

int collect(lua_State* L)
{
    lua_gc(L, LUA_GCCOLLECT, 0);
    return 0;
}

// Making room is tried again behind a finalizer that raised: then there may be no memory.
TEST_F(OutOfMemory, BehindARaisingFinalizerIsAResult)
{
    ASSERT_EQ(luaL_dostring(L, R"(
        failure = {}
        function litter() getmetatable(newproxy(true)).__gc = function() error(failure) end end
    )"),
              0);
    lua_settop(L, 0);
    lua_getglobal(L, "data");
    lua_getfield(L, 1, "place");
    constexpr int values = 40; // more than a frame has room for at first
    ASSERT_TRUE(lua_checkstack(L, values));
    lua_settop(L, values);
    lua_gc(L, LUA_GCSETSTEPMUL, 1000000); // a whole cycle at once
    constexpr int many = 20;
    for (int granted = 0; granted < many; ++granted) {
        while (lua_cpcall(L, collect, nullptr) != 0)
            lua_pop(L, 1);
        lua_gc(L, LUA_GCSTOP, 0);
        lua_getglobal(L, "litter");
        lua_call(L, 0, 0);
        lua_gc(L, LUA_GCRESTART, 0);
        rationed.left = granted;
        KxGePoint3D point;
        const int status = getAKxGePoint(L, 2, point);
        rationed.left = -1;
        ASSERT_EQ(lua_gettop(L), values) << granted;
        if (granted == 0) {
            EXPECT_NE(status, 0);
        } else if (granted == many - 1) {
            EXPECT_EQ(status, 0);
        }
        EXPECT_EQ(point, status == 0 ? KxGePoint3D(1, 2, 3) : KxGePoint3D()) << granted;
    }
}

} // namespace
