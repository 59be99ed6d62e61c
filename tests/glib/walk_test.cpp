#include "primary_state.h"

#include <QuorPrimary/QuorPrimaryFactories.h>
#include <climits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string sphere(int radius)
{
    return "createQuorGraphy3DSphere((1, 2, 3), " + std::to_string(radius) + ", 12, false)" + plainSolid;
}

class Walk : public PrimaryState {
protected:
    Quor::GlibStatus status(int index)
    {
        std::vector<QuorPrimary*> list;
        const Quor::GlibStatus answer = quorlua::parse_primary_byidx(L, index, list);
        EXPECT_THAT(list, IsEmpty());
        return answer;
    }
};

TEST_F(Walk, NeedsAState)
{
    std::vector<QuorPrimary*> list;
    EXPECT_EQ(quorlua::parse_primary_byidx(nullptr, 1, list), 11);
    EXPECT_THAT(list, IsEmpty());
}

TEST_F(Walk, NeedsATable)
{
    for (const char* value :
         {"nil", "5", "'text'", "true", "print", "io.stdout", "coroutine.create(function() end)"}) {
        run(std::string("return ") + value, 1);
        EXPECT_EQ(status(1), 11) << value;
        EXPECT_EQ(status(-1), 11) << value;
        EXPECT_EQ(lua_gettop(L), 1);
        lua_pop(L, 1);
    }
}

TEST_F(Walk, NeedsASlotOfTheStack)
{
    for (const int index : {0, 1, 2, 100, -1, -2, -9999, INT_MIN, INT_MAX, LUA_GLOBALSINDEX - 1,
                            LUA_GLOBALSINDEX - 300, LUA_ENVIRONINDEX})
        EXPECT_EQ(status(index), 11) << index;
    run("return {}", 1);
    for (const int index : {0, 2, 3, -2, INT_MIN, INT_MAX})
        EXPECT_EQ(status(index), 11) << index;
    EXPECT_EQ(status(1), 0);
    EXPECT_EQ(status(-1), 0);
    lua_pop(L, 1);
}

TEST_F(Walk, TakesIndicesFromBothEnds)
{
    run("return {{10, a, 1}}, {{10, a, 2}}, {{10, a, 3}}", 3);
    for (const auto& [index, radius] : {std::pair(1, 1), {2, 2}, {3, 3}, {-1, 3}, {-2, 2}, {-3, 1}}) {
        const auto made = parseAt(index);
        ASSERT_EQ(made.size(), 1u) << index;
        EXPECT_EQ(printed(*made[0]), sphere(radius)) << index;
    }
    lua_settop(L, 0);
}

TEST_F(Walk, TakesTheGlobalsAndTheRegistryLikeAnyTable)
{
    run("record = {10, a, 5}");
    EXPECT_EQ(parseAt(LUA_GLOBALSINDEX).size(), 1u);
    EXPECT_EQ(status(LUA_REGISTRYINDEX), 0);
}

TEST_F(Walk, TakesRecordsInAscendingOrderOfAnArray)
{
    EXPECT_THAT(parse("{{10, a, 1}, {10, a, 2}, {10, a, 3}, {10, a, 4}}"),
                ElementsAre(sphere(1), sphere(2), sphere(3), sphere(4)));
}

TEST_F(Walk, TakesRecordsInTheTablesOwnOrder)
{
    run("t = {} for i = 1, 50 do t['key' .. i] = {10, a, i} end t[0.5] = {10, a, 51} t[true] = {10, a, 52} "
        "t[-7] = {10, a, 53} order = {} for _, record in pairs(t) do order[#order + 1] = record[3] end");
    Texts expected;
    for (int i = 1; i <= 53; ++i)
        expected.push_back(sphere(std::stoi(shown("order[" + std::to_string(i) + "]"))));
    EXPECT_EQ(parse("t"), expected);
}

TEST_F(Walk, SkipsValuesThatAreNoTables)
{
    EXPECT_THAT(parse("{5, {10, a, 1}, 'text', true, print, io.stdout, coroutine.create(function() end), "
                      "{10, a, 2}, key = 7}"),
                ElementsAre(sphere(1), sphere(2)));
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Walk, SkipsRecordsWhoseCodeIsNoNumber)
{
    EXPECT_THAT(
        parse("{{'10', a, 5}, {nil, a, 5}, {true, a, 5}, {{10}, a, 5}, {}, {x = 1}, {print}, {10, a, 1}}"),
        ElementsAre(sphere(1)));
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Walk, SkipsCodesThatNameNoKind)
{
    run("t = {} for _, range in ipairs{{-300, 1}, {33, 39}, {42, 199}, {201, 299}, {301, 399}, {401, 499}, "
        "{501, 599}, "
        "{601, 699}, {701, 1100}} do for code = range[1], range[2] do "
        "t[#t + 1] = {code, a, 5} t[#t + 1] = {code, {t}} t[#t + 1] = {code, 1, 2, 3} end end");
    EXPECT_THAT(parse("t"), IsEmpty());
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Walk, SkipsCodesOutsideEveryInteger)
{
    EXPECT_THAT(
        parse("{{0/0, a, 5}, {1/0, a, 5}, {-1/0, a, 5}, {1e300, a, 5}, {-1e300, a, 5}, {2^63, a, 5}, {2^64 + "
              "10, a, 5}, {2^32 + 10, a, 5}, {2^31, a, 5}, {-2^31, a, 5}, {10, a, 1}}"),
        ElementsAre(sphere(1)));
}

TEST_F(Walk, CutsFractionsOffCodes)
{
    EXPECT_THAT(parse("{{10.9, a, 1}, {9.999, a, 2}, {-10.5, a, 3}}"), ElementsAre(sphere(1)));
}

TEST_F(Walk, ReadsPastMetatables)
{
    run("raise = {__index = function() error('index') end, __newindex = error, __len = error, __call = "
        "error, "
        "__gc = error, __tostring = error, __mode = 'k'}");
    EXPECT_THAT(
        parse("setmetatable({setmetatable({10, setmetatable({1, 2, 3}, raise), 5}, raise), "
              "setmetatable({10}, raise), setmetatable({}, raise), {40, setmetatable({{10, a, 6}}, raise)}}, "
              "raise)"),
        ElementsAre(sphere(5), sphere(6)));
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Walk, BearsLengthsThatLie)
{
    // An array with holes may report a length far beyond its values.
    run("t = {} for i = 0, 29 do t[2 ^ i] = {10, a, 5} end "
        "r = {10, a, 5} for i = 2, 29 do r[2 ^ i] = r[2 ^ i] or 1 end");
    EXPECT_EQ(parse("t").size(), 30u);
    EXPECT_THAT(parse("{r}"), ElementsAre(sphere(5)));
    EXPECT_THAT(parse("{{27, t}}"), ElementsAre("createQuorLineArr([], true)" + plainDrawing));
    for (int i = 0; i < 30; ++i)
        EXPECT_LE(parse("{{29, {[" + std::to_string(1 << i) + "] = {1, a}}}}").size(), 1u);
}

TEST_F(Walk, AppendsToTheList)
{
    run("return {{10, a, 1}, {10, a, 2}}", 1);
    const std::unique_ptr<QuorPrimary> before(createQuorLine({}, {}));
    std::vector<QuorPrimary*> list = {before.get(), nullptr};
    EXPECT_EQ(quorlua::parse_primary_byidx(L, 1, list), Quor::Ok);
    lua_pop(L, 1);
    ASSERT_EQ(list.size(), 4u);
    EXPECT_EQ(list[0], before.get());
    EXPECT_EQ(list[1], nullptr);
    const std::unique_ptr<QuorPrimary> first(list[2]), second(list[3]);
    EXPECT_EQ(printed(*first), sphere(1));
    EXPECT_EQ(printed(*second), sphere(2));
}

TEST_F(Walk, PrimitivesOutliveTheState)
{
    lua_State* other = luaL_newstate();
    ASSERT_EQ(luaL_loadstring(other,
                              "return {{400, 'steel'}, {32, 'library', 'block', {1, 2, 3}, {1, 0, 0}, {0, 1, "
                              "0}}, {19, 1, {1, 2, 3}, 'text', 0}, {200, {name = 'gate'}}}"),
              0);
    ASSERT_EQ(lua_pcall(other, 0, 1, 0), 0);
    std::vector<QuorPrimary*> list;
    EXPECT_EQ(quorlua::parse_primary_byidx(other, 1, list), Quor::Ok);
    lua_close(other);
    Texts texts;
    for (QuorPrimary* primitive : list) {
        texts.push_back(printed(*primitive));
        delete primitive;
    }
    EXPECT_THAT(
        texts,
        ElementsAre("createCadReference(\"library\", \"block\", (1, 2, 3), (1, 0, 0), (0, 1, 0)) color=257",
                    "createQuorText(1, (1, 2, 3), \"text\", 0)" + plainDrawing,
                    "QuorOprKVParamArray([{\"name\", \"\", string:\"gate\"}])"));
}

TEST_F(Walk, LeavesTheTableAsItWas)
{
    run("t = {{10, a, 5}, {'10', 5}, {40, {{3, 1}}}, [7.5] = {200, {[1] = 2, [2.5] = 'x'}}}");
    EXPECT_EQ(parse("t").size(), 2u);
    EXPECT_EQ(shown("t[2][1] .. type(t[2][1]) .. t[1][3] .. t[3][2][1][1] .. t[7.5][2][1] .. t[7.5][2][2.5]"),
              "10string5"
              "32x");
    EXPECT_EQ(parse("t").size(), 2u);
}

TEST_F(Walk, GoesOnWithinANativeFunction)
{
    lua_pushcfunction(L, [](lua_State* state) {
        std::vector<QuorPrimary*> list;
        lua_pushnumber(state, quorlua::parse_primary_byidx(state, 1, list));
        lua_pushnumber(state, static_cast<double>(list.size()));
        for (const QuorPrimary* primitive : list)
            delete primitive;
        return 2;
    });
    lua_setglobal(L, "parse");
    run("status, made = parse{{10, a, 5}, {40, {{10, a, 5}}}}");
    EXPECT_EQ(shown("status"), "0");
    EXPECT_EQ(shown("made"), "2");
    run("status = coroutine.wrap(function() return parse{{10, a, 5}} end)()");
    EXPECT_EQ(shown("status"), "0");
}

// The host may let the collector run while it reads parameters, and with it the script's finalizers.
TEST_F(Walk, EndsInATableThatAFinalizerChangesMeanwhile)
{
    parse("{{200, {}}}"); // what a first call keeps in the state is there
    run(R"(
        collectgarbage('stop')
        collectgarbage('setstepmul', 1000000)
        t = {}
        for i = 1, 40 do t[i] = {200, {DN = i}} end
        getmetatable(newproxy(true)).__gc = function()
            for i = 1, 40 do t[i] = nil end
            for i = 1, 640 do t['new' .. i] = {10, a, i} end
            ran = true
        end
    )");
    lua_getglobal(L, "t");
    lua_gc(L, LUA_GCRESTART, 0);
    const auto made = parseAt(-1);
    lua_pop(L, 1);
    ASSERT_FALSE(made.empty());
    EXPECT_EQ(printed(*made[0]), "QuorOprKVParamArray([{\"DN\", \"\", double:1}])");
    if (shown("ran") == "nil") {
        EXPECT_EQ(made.size(), 40u) << "nothing changed the table";
    }
}

TEST_F(Walk, IsCompleteWhenAFinalizerRaises)
{
    parse("{{200, {}}}"); // what a first call keeps in the state is there
    run(R"(
        collectgarbage('stop')
        collectgarbage('setstepmul', 1000000)
        t = {}
        for i = 1, 40 do t[i] = {10, a, i} end
        for i = 1, 10 do getmetatable(newproxy(true)).__gc = function() error('finalizer') end end
    )");
    lua_getglobal(L, "t");
    lua_gc(L, LUA_GCRESTART, 0);
    EXPECT_EQ(parseAt(-1).size(), 40u);
    lua_pop(L, 1);
    for (int i = 0; i < 20; ++i) // the rest of the finalizers, before the state is closed
        if (luaL_dostring(L, "collectgarbage()") != 0) lua_pop(L, 1);
}

} // namespace
