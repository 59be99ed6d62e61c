#include "marshal_state.h"

#include <QuorScriptor/geometry.h>
#include <cmath>

namespace {

using namespace quorlua;

/// The same behaviour for points and for vectors.
struct Points {
    using Value = KxGePoint3D;
    template<class... Place>
    static auto get(lua_State* L, Place... place, Value& value)
    {
        return getAKxGePoint(L, place..., value);
    }
    template<class... Place>
    static void set(lua_State* L, Place... place, const Value& value)
    {
        setAKxGePoint(L, place..., value);
    }
};

struct Vectors {
    using Value = KxGeVector3D;
    template<class... Place>
    static auto get(lua_State* L, Place... place, Value& value)
    {
        return getAKxGeVector(L, place..., value);
    }
    template<class... Place>
    static void set(lua_State* L, Place... place, const Value& value)
    {
        setAKxGeVector(L, place..., value);
    }
};

template<class Triples>
class PointsAndVectors : public MarshalState {
protected:
    using Value = typename Triples::Value;

    int get(int index, Value& triple)
    {
        const SameHeight same(L);
        const int status = Triples::template get<int>(L, index, triple);
        return status;
    }
    bool get(int index, int key, Value& triple)
    {
        const SameHeight same(L);
        const bool read = Triples::template get<int, int>(L, index, key, triple);
        return read;
    }
    bool get(int index, const char* name, Value& triple)
    {
        const SameHeight same(L);
        const bool read = Triples::template get<int, const char*>(L, index, name, triple);
        return read;
    }
    void set(int index, const Value& triple)
    {
        const SameHeight same(L);
        Triples::template set<int>(L, index, triple);
    }
    void set(int index, int key, const Value& triple)
    {
        const SameHeight same(L);
        Triples::template set<int, int>(L, index, key, triple);
    }
    void set(int index, const char* name, const Value& triple)
    {
        const SameHeight same(L);
        Triples::template set<int, const char*>(L, index, name, triple);
    }

    std::string described(int index)
    {
        lua_pushvalue(this->L, index);
        return this->popDescribed();
    }

    using MarshalState::L;
    const Value given{1, 2.5, -3};
    const Value before{7, 8, 9};
    Value value{7, 8, 9};
};

using Both = testing::Types<Points, Vectors>;
TYPED_TEST_SUITE(PointsAndVectors, Both, );

#define THIS_TEST(name) TYPED_TEST(PointsAndVectors, name)

// What is no {x, y, z} of numbers.
constexpr const char* misshapen[] = {"nil",       "true",        "12",        "'text'",
                                     "print",     "{}",          "{1,2}",     "{1,2,'3'}",
                                     "{'1',2,3}", "{1,false,3}", "light",     "newproxy()",
                                     "{x=1,y=2}", "int64(123)",  "{{1,2,3}}", "{[2]=2,[3]=3}"};

THIS_TEST(GoFromAnIndexToThatIndex)
{
    for (const int index : {1, -1, -2}) {
        this->push("{}");
        if (index == -2) lua_pushinteger(this->L, 5);
        this->set(index, this->given);
        EXPECT_EQ(this->described(1), "{1,2.5,-3}");
        EXPECT_EQ(this->get(index, this->value), 0);
        EXPECT_EQ(this->value, this->given) << index;
        lua_settop(this->L, 0);
    }
}

THIS_TEST(FillTheTableThatIsThere)
{
    this->push("{10, 20, 30, 40, name = 'kept'}");
    this->set(1, this->given);
    EXPECT_EQ(this->popDescribed(), "{1,2.5,-3,40,name=\"kept\"}");
}

THIS_TEST(AreNotReadFromOtherShapes)
{
    for (const char* expression : misshapen) {
        this->push(expression);
        EXPECT_EQ(this->get(-1, this->value), 1) << expression;
        EXPECT_EQ(this->value, this->before) << expression;
        lua_pop(this->L, 1);

        this->push(std::string("{") + expression + ", name = " + expression + "}");
        EXPECT_FALSE(this->get(-1, 1, this->value)) << expression;
        EXPECT_FALSE(this->get(1, "name", this->value)) << expression;
        EXPECT_EQ(this->value, this->before) << expression;
        lua_pop(this->L, 1);
    }
}

THIS_TEST(AreReadPastWhatFollows)
{
    this->push("{1, 2.5, -3, 4, 'five'}");
    EXPECT_EQ(this->get(1, this->value), 0);
    EXPECT_EQ(this->value, this->given);
    lua_pop(this->L, 1);
}

THIS_TEST(KeepNumbersThatAreNone)
{
    this->push("{0/0, 1/0, -1/0}");
    EXPECT_EQ(this->get(1, this->value), 0);
    EXPECT_TRUE(std::isnan(this->value.toQuorPoint().x));
    EXPECT_EQ(this->value.toQuorPoint().y, HUGE_VAL);
    EXPECT_EQ(this->value.toQuorPoint().z, -HUGE_VAL);
    lua_pop(this->L, 1);
}

THIS_TEST(GoToAKeyOfATable)
{
    this->push("{'first'}");
    this->set(1, 2, this->given);
    this->set(-1, -7, this->before);
    EXPECT_TRUE(this->get(1, 2, this->value));
    EXPECT_EQ(this->value, this->given);
    EXPECT_TRUE(this->get(-1, -7, this->value));
    EXPECT_EQ(this->value, this->before);
    EXPECT_EQ(this->popDescribed(), "{-7={7,8,9},1=\"first\",2={1,2.5,-3}}");
}

THIS_TEST(GoToAFieldOfATable)
{
    this->push("{}");
    this->set(-1, "place", this->given);
    EXPECT_TRUE(this->get(1, "place", this->value));
    EXPECT_EQ(this->value, this->given);
    EXPECT_EQ(this->popDescribed(), "{place={1,2.5,-3}}");
}

THIS_TEST(ReplaceWhatAFieldHeld)
{
    this->push("{place = {1, 2, 3, 'old'}}");
    this->set(1, "place", this->given);
    EXPECT_EQ(this->popDescribed(), "{place={1,2.5,-3}}");
}

THIS_TEST(AreNotWrittenUnderAnEmptyName)
{
    this->push("{}");
    this->set(1, "", this->given);
    this->set(1, static_cast<const char*>(nullptr), this->given);
    EXPECT_EQ(this->popDescribed(), "{}");
}

THIS_TEST(AreNotReadWithoutAName)
{
    this->push("{[''] = {1, 2, 3}}");
    EXPECT_FALSE(this->get(1, static_cast<const char*>(nullptr), this->value));
    EXPECT_EQ(this->value, this->before);
    lua_pop(this->L, 1);
}

THIS_TEST(AreReadFromTheFieldOfAnEmptyName)
{
    this->push("{[''] = {1, 2.5, -3}}");
    EXPECT_TRUE(this->get(1, "", this->value));
    EXPECT_EQ(this->value, this->given);
    lua_pop(this->L, 1);
}

THIS_TEST(AreReadFromFieldsThroughMetamethodsAndFromKeysPastThem)
{
    this->push("setmetatable({}, {__index = function() return {1, 2.5, -3} end})");
    EXPECT_FALSE(this->get(1, 1, this->value));
    EXPECT_EQ(this->value, this->before);
    EXPECT_TRUE(this->get(1, "any", this->value));
    EXPECT_EQ(this->value, this->given);
    lua_pop(this->L, 1);
}

THIS_TEST(AreWrittenToFieldsThroughMetamethodsAndToKeysPastThem)
{
    this->push("setmetatable({}, {__newindex = function(t, k, v) rawset(t, 'got ' .. k, v) end})");
    this->set(1, 1, this->given);
    this->set(1, "name", this->given);
    EXPECT_EQ(this->popDescribed(), "{{1,2.5,-3},got name={1,2.5,-3}}");
}

THIS_TEST(AreWrittenToTheFieldOfAnObject)
{
    this->run(
        "object = newproxy(true); getmetatable(object).__newindex = function(_, k, v) got = {[k] = v} end");
    this->push("object");
    this->set(-1, "name", this->given);
    this->set(-1, 1, this->given);
    this->set(-1, this->given);
    lua_pop(this->L, 1);
    this->push("got");
    EXPECT_EQ(this->popDescribed(), "{name={1,2.5,-3}}");
}

THIS_TEST(SurviveRaisingMetamethods)
{
    this->push("setmetatable({}, {__index = error, __newindex = error})");
    EXPECT_FALSE(this->get(1, "name", this->value));
    EXPECT_EQ(this->value, this->before);
    this->set(1, "name", this->given);
    EXPECT_TRUE(this->alerts.empty());
    EXPECT_EQ(this->popDescribed(), "{}");
}

// The name counts as pushed: -1 is the name itself, and -2 the slot that was on top.
THIS_TEST(AreReadFromFieldsByTheIndexAsItStandsAfterTheName)
{
    this->push("{place = {1, 2.5, -3}}");
    EXPECT_FALSE(this->get(-1, "place", this->value));
    EXPECT_EQ(this->value, this->before);
    this->push("{place = {4, 5, 6}}");
    EXPECT_TRUE(this->get(-2, "place", this->value));
    EXPECT_EQ(this->value, (typename TestFixture::Value(4, 5, 6)));
    lua_settop(this->L, 0);
}

THIS_TEST(AreWrittenByTheIndexAsItStandsBefore)
{
    this->push("{}");
    lua_pushinteger(this->L, 5);
    this->set(-2, "place", this->given);
    this->set(-2, 1, this->given);
    lua_pop(this->L, 1);
    EXPECT_EQ(this->popDescribed(), "{{1,2.5,-3},place={1,2.5,-3}}");
}

THIS_TEST(NeedATable)
{
    for (const char* expression : {"nil", "true", "12", "'text'", "print", "newproxy()", "light"}) {
        this->push(expression);
        this->set(1, this->given);
        this->set(1, 1, this->given);
        this->set(1, "name", this->given);
        EXPECT_FALSE(this->get(1, 1, this->value)) << expression;
        EXPECT_FALSE(this->get(1, "name", this->value)) << expression;
        lua_pop(this->L, 1);
    }
    EXPECT_EQ(this->value, this->before);
    EXPECT_TRUE(this->alerts.empty());
}

THIS_TEST(NeedASlot)
{
    this->push("{}");
    this->push("{}");
    for (const int index : {0, 3, 100, -3, -4, -5, -100, -9999}) {
        this->set(index, this->given);
        this->set(index, 1, this->given);
        this->set(index, "name", this->given);
        EXPECT_EQ(this->get(index, this->value), 1) << index;
        EXPECT_FALSE(this->get(index, 1, this->value)) << index;
        EXPECT_FALSE(this->get(index, "name", this->value)) << index;
    }
    EXPECT_EQ(this->value, this->before);
    EXPECT_EQ(this->popDescribed(), "{}");
    EXPECT_EQ(this->popDescribed(), "{}");
}

THIS_TEST(NeedAState)
{
    using Access = TypeParam;
    lua_State* none = nullptr;
    EXPECT_EQ((Access::template get<int>(none, 1, this->value)), 1);
    EXPECT_FALSE((Access::template get<int, int>(none, 1, 1, this->value)));
    EXPECT_FALSE((Access::template get<int, const char*>(none, 1, "name", this->value)));
    Access::template set<int>(none, 1, this->given);
    Access::template set<int, int>(none, 1, 1, this->given);
    Access::template set<int, const char*>(none, 1, "name", this->given);
    EXPECT_EQ(this->value, this->before);
}

THIS_TEST(AreReachedInPseudoTables)
{
    this->set(LUA_GLOBALSINDEX, "place", this->given);
    EXPECT_TRUE(this->get(LUA_GLOBALSINDEX, "place", this->value));
    EXPECT_EQ(this->value, this->given);
    EXPECT_EQ(this->shown("describe(place)"), "{1,2.5,-3}");
}

THIS_TEST(AreReachedInAnUpvalue)
{
    this->push("{1, 2.5, -3}");
    lua_pushcclosure(
        this->L,
        [](lua_State* frame) {
            typename TypeParam::Value found;
            const bool read = TypeParam::template get<int>(frame, lua_upvalueindex(1), found) == 0;
            lua_pushboolean(frame, read && found == typename TypeParam::Value(1, 2.5, -3));
            return 1;
        },
        1);
    lua_call(this->L, 0, 1);
    EXPECT_EQ(this->popDescribed(), "true");
}

} // namespace
