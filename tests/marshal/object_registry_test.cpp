#include "marshal_state.h"

#include <BaseObj/KxDbObjectId.h>
#include <QuorScriptor/objectregistry.h>
#include <functional>
#include <limits>

namespace {

using namespace quorlua;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* registry = "objects";

/// Runs host code in a protected call. The message of the error that it raised; empty when there was none.
std::string raisedBy(lua_State* L, std::function<void(lua_State*)> host)
{
    const SameHeight same(L);
    const lua_CFunction run = [](lua_State* state) {
        const auto& work = *static_cast<std::function<void(lua_State*)>*>(lua_touserdata(state, 1));
        lua_settop(state, 0);
        work(state);
        return 0;
    };
    if (lua_cpcall(L, run, &host) == 0) return {};
    std::string message = luatext::textAt(L, -1);
    lua_pop(L, 1);
    return message;
}

class ObjectRegistry : public MarshalState {
protected:
    void TearDown() override
    {
        EXPECT_THAT(alerts, IsEmpty()) << "nothing here prints";
        MarshalState::TearDown();
    }

    /// Finds, and gives the number of values left on the stack, which stay there.
    std::pair<bool, int> find(long long id, const char* name = registry)
    {
        const int top = lua_gettop(L);
        const bool found = findObjectIdInState(L, KxDbObjectId(id), name);
        return {found, lua_gettop(L) - top};
    }

    /// Makes an object's table with a field by which it is known, and pops it.
    void require(long long id, const char* mark, const char* name = registry)
    {
        const SameHeight same(L);
        ASSERT_TRUE(requireObjectIdInState(L, KxDbObjectId(id), name));
        ASSERT_TRUE(lua_istable(L, -1));
        lua_pushstring(L, mark);
        lua_setfield(L, -2, "mark");
        lua_pop(L, 1);
    }

    /// From here on every unknown global that is read or written raises an error.
    void makeGlobalsStrict()
    {
        run("setmetatable(_G, {__index = function(_, name) error('read of ' .. name) end,"
            " __newindex = function(_, name) error('write of ' .. name) end})");
    }

    static constexpr std::pair<bool, int> foundOne{true, 1}, foundNothing{false, 0}, leftValue{false, 1};
};

TEST_F(ObjectRegistry, IsMadeAsAnEmptyTable)
{
    const SameHeight same(L);
    initObjectIdInState(L, registry);
    EXPECT_EQ(shown("describe(objects)"), "{}");
}

TEST_F(ObjectRegistry, HasANameWhenNoneIsGiven)
{
    initObjectIdInState(L, nullptr);
    EXPECT_EQ(shown("describe(quor_global_temp)"), "{}");
    require(7, "seven", nullptr);
    EXPECT_EQ(find(7, nullptr), foundOne);
    EXPECT_EQ(shown("quor_global_temp['7'].mark"), "seven");
    EXPECT_EQ(shown("objects"), "nil");
}

TEST_F(ObjectRegistry, MayHaveAnyName)
{
    for (const char* name : {"", "a b", "\xB6\xD4\xCF\xF3"}) {
        initObjectIdInState(L, name);
        require(1, "one", name);
        EXPECT_EQ(find(1, name), foundOne) << name;
        EXPECT_EQ(popDescribed(), "{mark=\"one\"}");
        lua_getglobal(L, name);
        EXPECT_EQ(popDescribed(), "{1={mark=\"one\"}}");
    }
}

TEST_F(ObjectRegistry, StaysWhenItIsATable)
{
    run("objects = {['5'] = {}} before = objects");
    initObjectIdInState(L, registry);
    EXPECT_EQ(shown("objects == before"), "true");
    EXPECT_EQ(find(5), foundOne);
}

TEST_F(ObjectRegistry, TakesThePlaceOfWhatIsNoTable)
{
    for (const char* value : {"nil", "false", "12", "'text'", "print", "newproxy()", "int64(1)"}) {
        run(std::string("objects = ") + value);
        initObjectIdInState(L, registry);
        EXPECT_EQ(shown("describe(objects)"), "{}") << value;
    }
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(ObjectRegistry, HasTheDecimalTextOfAnIdAsKey)
{
    initObjectIdInState(L, registry);
    const struct {
        long long id;
        const char* key;
    } cases[] = {
        {-5, "-5"},
        {0, "0"},
        {1, "1"},
        {1234567, "1234567"},
        {4611686018427388001, "4611686018427388001"},
        {std::numeric_limits<long long>::max(), "9223372036854775807"},
        {std::numeric_limits<long long>::min(), "-9223372036854775808"},
    };
    for (const auto& [id, key] : cases) {
        require(id, key);
        EXPECT_EQ(shown("rawget(objects, '" + std::string(key) + "').mark"), key);
        EXPECT_EQ(find(id), foundOne) << key;
        lua_settop(L, 0);
    }
    run("count = 0 for key in pairs(objects) do count = count + 1 end");
    EXPECT_EQ(shown("count"), std::to_string(std::size(cases)));
}

TEST_F(ObjectRegistry, KeepsObjectsWhoseDoublesAreAlikeApart)
{
    initObjectIdInState(L, registry);
    require(9007199254740992, "even");
    require(9007199254740993, "odd");
    EXPECT_EQ(shown("objects['9007199254740992'].mark .. objects['9007199254740993'].mark"), "evenodd");
}

TEST_F(ObjectRegistry, GivesTheTableThatWasRequired)
{
    initObjectIdInState(L, registry);
    ASSERT_TRUE(requireObjectIdInState(L, KxDbObjectId(5), registry));
    ASSERT_EQ(lua_gettop(L), 1);
    EXPECT_EQ(find(5), foundOne);
    EXPECT_TRUE(lua_rawequal(L, 1, 2));
    EXPECT_EQ(find(6), foundNothing);
}

TEST_F(ObjectRegistry, StartsAnObjectAfreshWhenItIsRequiredAgain)
{
    initObjectIdInState(L, registry);
    require(5, "first");
    EXPECT_EQ(find(5), foundOne);
    ASSERT_TRUE(requireObjectIdInState(L, KxDbObjectId(5), registry));
    EXPECT_EQ(lua_gettop(L), 2);
    EXPECT_FALSE(lua_rawequal(L, 1, 2));
    EXPECT_EQ(find(5), foundOne);
    EXPECT_TRUE(lua_rawequal(L, 2, 3));
    EXPECT_EQ(popDescribed(), "{}");
}

TEST_F(ObjectRegistry, LetsScriptsAttachData)
{
    initObjectIdInState(L, registry);
    require(5, "five");
    run("objects['5'].length = 12 objects['6'] = {mark = 'of the script'}");
    EXPECT_EQ(find(5), foundOne);
    EXPECT_EQ(popDescribed(), "{length=12,mark=\"five\"}");
    EXPECT_EQ(find(6), foundOne);
    EXPECT_EQ(popDescribed(), "{mark=\"of the script\"}");
}

TEST_F(ObjectRegistry, LeavesNilWhenItIsAbsent)
{
    EXPECT_EQ(find(5), leftValue);
    EXPECT_TRUE(lua_isnil(L, 1));
    EXPECT_EQ(find(5, nullptr), leftValue);
    EXPECT_TRUE(lua_isnil(L, 2));
}

TEST_F(ObjectRegistry, LeavesWhatIsNoTable)
{
    for (const char* value : {"false", "12", "'text'", "print", "newproxy()", "io.stdout"}) {
        run(std::string("objects = ") + value);
        lua_settop(L, 0);
        EXPECT_EQ(find(5), leftValue) << value;
        lua_getglobal(L, registry);
        EXPECT_TRUE(lua_rawequal(L, 1, 2)) << value;
    }
}

TEST_F(ObjectRegistry, LeavesNothingForAnObjectThatHasNoTable)
{
    run("objects = {['1'] = false, ['2'] = 12, ['3'] = 'text', ['4'] = print, ['5'] = io.stdout, [6] = {}}");
    for (const long long id : {1, 2, 3, 4, 5, 6, 7})
        EXPECT_EQ(find(id), foundNothing) << id;
}

TEST_F(ObjectRegistry, IsReadThroughMetamethods)
{
    run("of7 = {mark = 'of the metatable'}"
        " objects = setmetatable({}, {__index = function(_, key) if key == '7' then return of7 end end})");
    EXPECT_EQ(find(7), foundOne);
    EXPECT_EQ(popDescribed(), "{mark=\"of the metatable\"}");
    EXPECT_EQ(find(8), foundNothing);

    run("hidden = {['9'] = {}} objects = nil setmetatable(_G, {__index = {objects = hidden}})");
    EXPECT_EQ(find(9), foundOne);
    initObjectIdInState(L, registry);
    EXPECT_EQ(shown("rawget(_G, 'objects')"), "nil") << "the one there is stays";
}

TEST_F(ObjectRegistry, IsWrittenThroughMetamethods)
{
    run("log = '' objects = setmetatable({}, {__newindex = function(t, key, value)"
        " log = log .. key .. type(value) rawset(t, key, value) end})");
    require(3, "three");
    EXPECT_EQ(shown("log .. objects['3'].mark"), "3tablethree");
    run("objects = newproxy(true) getmetatable(objects).__newindex = function(_, key, value) kept = value end"
        " getmetatable(objects).__index = function() return kept end");
    require(4, "four");
    EXPECT_EQ(shown("kept.mark"), "four") << "there is no test for a table";
}

TEST_F(ObjectRegistry, LeavesWhatItThenGivesForARequiredObject)
{
    run("objects = setmetatable({}, {__newindex = function() end})");
    EXPECT_TRUE(requireObjectIdInState(L, KxDbObjectId(5), registry));
    EXPECT_EQ(lua_gettop(L), 1);
    EXPECT_TRUE(lua_isnil(L, 1));
}

TEST_F(ObjectRegistry, ThatRaisesWhenReadHasNoTables)
{
    run("objects = setmetatable({['1'] = {}}, {__index = function() error('no reading') end})");
    EXPECT_EQ(find(5), foundNothing);
    EXPECT_EQ(find(1), foundOne);
}

TEST_F(ObjectRegistry, ThatRaisesWhenWrittenRaisesForARequiredObject)
{
    run("objects = setmetatable({}, {__newindex = function() error('no writing', 0) end})");
    EXPECT_EQ(raisedBy(L,
                       [](lua_State* state) {
                           requireObjectIdInState(state, KxDbObjectId(5), registry);
                           FAIL() << "nothing was raised";
                       }),
              "no writing");
}

TEST_F(ObjectRegistry, ThatIsNoneRaisesForARequiredObject)
{
    const struct {
        const char* value;
        const char* message;
    } cases[] = {
        {"nil", "attempt to index a nil value"},        {"false", "attempt to index a boolean value"},
        {"12", "attempt to index a number value"},      {"'text'", "attempt to index a string value"},
        {"print", "attempt to index a function value"}, {"newproxy()", "attempt to index a userdata value"},
    };
    for (const auto& [value, message] : cases) {
        run(std::string("objects = ") + value);
        EXPECT_THAT(raisedBy(L,
                             [](lua_State* state) {
                                 requireObjectIdInState(state, KxDbObjectId(5), registry);
                                 FAIL() << "nothing was raised";
                             }),
                    HasSubstr(message));
    }
}

TEST_F(ObjectRegistry, IsAbsentWhereGlobalsRaise)
{
    makeGlobalsStrict();
    EXPECT_EQ(find(5), leftValue);
    EXPECT_TRUE(lua_isnil(L, 1));
    lua_settop(L, 0);
    initObjectIdInState(L, registry);
    EXPECT_EQ(lua_gettop(L), 0);
    EXPECT_EQ(shown("rawget(_G, 'objects')"), "nil");
    EXPECT_THAT(
        raisedBy(L, [](lua_State* state) { requireObjectIdInState(state, KxDbObjectId(5), registry); }),
        HasSubstr("attempt to index a nil value"));
}

TEST_F(ObjectRegistry, IsMadeWhereGlobalsRaiseOnlyWhenRead)
{
    run("setmetatable(_G, {__index = function() error('read') end})");
    initObjectIdInState(L, registry);
    require(5, "five");
    EXPECT_EQ(find(5), foundOne);
}

TEST_F(ObjectRegistry, WorksWhereGlobalsRaiseAndItIsThere)
{
    initObjectIdInState(L, registry);
    makeGlobalsStrict();
    initObjectIdInState(L, registry);
    require(5, "five");
    EXPECT_EQ(find(5), foundOne);
}

TEST_F(ObjectRegistry, IsNotWithoutAState)
{
    initObjectIdInState(nullptr, registry);
    EXPECT_FALSE(findObjectIdInState(nullptr, KxDbObjectId(1), registry));
    EXPECT_FALSE(requireObjectIdInState(nullptr, KxDbObjectId(1), nullptr));
}

TEST_F(ObjectRegistry, IsUsedWithFewSlotsLeft)
{
    run("objects = {['5'] = {mark = 'five'}}");
    for (int free = 0; free < 24; ++free) {
        int found = 0;
        const std::string message = raisedBy(L, [free, &found](lua_State* state) {
            while (lua_gettop(state) < LUAI_MAXCSTACK - free && lua_checkstack(state, 1))
                lua_pushboolean(state, 0);
            const int top = lua_gettop(state);
            ASSERT_EQ(top, LUAI_MAXCSTACK - free);
            initObjectIdInState(state, "another");
            ASSERT_EQ(lua_gettop(state), top);
            found = findObjectIdInState(state, KxDbObjectId(5), registry) ? 1 : 0;
            ASSERT_EQ(lua_gettop(state), top + found) << "nothing is left without room";
            lua_settop(state, top);
            requireObjectIdInState(state, KxDbObjectId(6), registry);
            ASSERT_EQ(lua_gettop(state), top + 1);
        });
        if (free == 0) {
            EXPECT_EQ(found, 0);
            EXPECT_THAT(message, HasSubstr("stack overflow"));
        } else if (free >= 16) {
            EXPECT_EQ(found, 1) << free;
            EXPECT_EQ(message, "") << free;
        } else if (!message.empty()) {
            EXPECT_THAT(message, HasSubstr("stack overflow")) << free;
        }
    }
}

/// Grants 0, 1, 2, ... requests for memory until an operation succeeds.
class ObjectRegistryOutOfMemory : public testing::Test {
protected:
    void SetUp() override
    {
        if (!rationed.L) GTEST_SKIP() << "this engine takes no allocator";
        L = rationed.L;
        luaL_openlibs(L);
    }

    /// `operation` is true when it succeeded; the values that it leaves are removed.
    template<class Operation>
    void untilSuccess(Operation operation)
    {
        for (int granted = 0; granted < 1000; ++granted) {
            lua_gc(L, LUA_GCCOLLECT, 0);
            // Nothing is collected while memory is short, so that every request counts.
            lua_gc(L, LUA_GCSTOP, 0);
            rationed.left = granted;
            const bool done = operation();
            rationed.left = -1;
            lua_gc(L, LUA_GCRESTART, 0);
            if (done) {
                EXPECT_GT(granted, 0);
                lua_settop(L, 0);
                return;
            }
            ASSERT_EQ(lua_gettop(L), 0) << "with " << granted << " requests granted";
        }
        FAIL() << "never succeeded";
    }

    RationedState rationed;
    lua_State* L = nullptr;
};

TEST_F(ObjectRegistryOutOfMemory, IsMadeOrNot)
{
    untilSuccess([this] {
        initObjectIdInState(L, "a registry whose name is new");
        rationed.left = -1;
        lua_getglobal(L, "a registry whose name is new");
        const bool made = lua_istable(L, -1);
        lua_pop(L, 1);
        return made;
    });
}

TEST_F(ObjectRegistryOutOfMemory, FindsOrLeavesNothing)
{
    ASSERT_EQ(luaL_dostring(L, "objects = setmetatable({}, {__index = function(_, key) return {key} end})"),
              0);
    untilSuccess([this] { return findObjectIdInState(L, KxDbObjectId(123456789), registry); });
}

TEST_F(ObjectRegistryOutOfMemory, FindsWithStrictGlobalsOrLeavesNothing)
{
    ASSERT_EQ(luaL_dostring(L, "objects = {['123456789'] = {}}"
                               " setmetatable(_G, {__index = function() error('read') end})"),
              0);
    untilSuccess([this] { return findObjectIdInState(L, KxDbObjectId(123456789), registry); });
}

TEST_F(ObjectRegistryOutOfMemory, RaisesForARequiredObject)
{
    ASSERT_EQ(luaL_dostring(L, "objects = {}"), 0);
    untilSuccess([this] {
        const std::string message = raisedBy(
            L, [](lua_State* state) { requireObjectIdInState(state, KxDbObjectId(123456789), registry); });
        if (!message.empty()) {
            EXPECT_EQ(message, "not enough memory");
        }
        return message.empty();
    });
}

} // namespace
