#include "class_library.h"
#include "lua_state.h"

#include <stdexcept>

namespace {

using lua_tinker::class_add;
using lua_tinker::class_def;
using lua_tinker::class_inh;
using lua_tinker::push_object;
using lua_tinker::read_object;
using testing::ElementsAre;

class Style {
public:
    virtual ~Style() = default;
    virtual double height() const { return 2.5; }
    virtual double length(const char* text) { return static_cast<double>(std::string(text).size()); }
    virtual void choose(const char* name) { chosen = name; }
    double scale(double factor, bool twice) const noexcept { return twice ? 2 * factor : factor; }
    std::string name(const std::string& prefix) const { return prefix + chosen; }
    long long id(long long offset) { return offset + 1; }
    Style* self() { return this; }
    bool same(const Style* other) const { return other == this; }
    int fail() { throw std::runtime_error("style is broken"); }

    std::string chosen;
};

class HostStyle : public Style {
public:
    double height() const override { return 7.0; }
    double length(const char* text) override { return 10 * Style::length(text); }
};

struct Ballast {
    virtual ~Ballast() = default;
    double weights[4] = {1, 2, 3, 4};
};

// Its `Style` does not lie at its start.
class Heavy : public Ballast, public Style {
public:
    int weight() const { return 100; }
};

class Unknown {
public:
    int get() { return 0; }
};

class Later : public Unknown {};

class LuaClass : public LuaState {
protected:
    LuaClass()
    {
        class_add<Style>(L, "Style");
        class_def<Style>(L, "height", &Style::height);
        class_def<Style>(L, "length", &Style::length);
        class_def<Style>(L, "choose", &Style::choose);
        class_def<Style>(L, "scale", &Style::scale);
        class_def<Style>(L, "name", &Style::name);
        class_def<Style>(L, "id", &Style::id);
        class_def<Style>(L, "self", &Style::self);
        class_def<Style>(L, "same", &Style::same);
        class_def<Style>(L, "fail", &Style::fail);
        class_add<Heavy>(L, "Heavy");
        class_def<Heavy>(L, "weight", &Heavy::weight);
        class_inh<Heavy, Style>(L);
        EXPECT_EQ(lua_gettop(L), 0);
    }

    template<class T>
    void give(const char* name, T* object)
    {
        push_object(L, object);
        lua_setglobal(L, name);
    }
};

TEST_F(LuaClass, CallsThroughTheHostsPointer)
{
    HostStyle style;
    give<Style>("style", &style);
    EXPECT_EQ(shown("style:height()"), "7");
    EXPECT_EQ(shown("style:length('abc')"), "30");
    EXPECT_EQ(shown("style:scale(1.5, true)"), "3");
    EXPECT_EQ(shown("style:id(int64('4000000000000000000'))"), "4000000000000000001");
    EXPECT_EQ(shown("style:id(5)"), "6");
    EXPECT_EQ(shown("select('#', style:choose('bold'))"), "0");
    EXPECT_EQ(style.chosen, "bold");
    EXPECT_EQ(shown("style:name('very ')"), "very bold");
    EXPECT_EQ(shown("style:self():height()"), "7");
    EXPECT_EQ(shown("style:same(style:self())"), "true");
}

TEST_F(LuaClass, LeavesTheObjectAloneOnWrongArguments)
{
    HostStyle style;
    style.chosen = "old";
    give<Style>("style", &style);
    run("foreign = io.stdout");
    for (const char* call : {
             "style.choose()",
             "style.choose(nil, 'x')",
             "style.choose({}, 'x')",
             "style.choose('s', 'x')",
             "style.choose(foreign, 'x')",
             "style.choose(newproxy(), 'x')",
             "style.choose(int64(1), 'x')",
             "style:choose()",
             "style:choose(nil)",
             "style:choose({})",
             "style:scale('1', true)",
             "style:scale(1)",
             "style:scale(1, 1)",
             "style:same()",
             "style:same({})",
             "style:same(foreign)",
             "style:id('5')",
         }) {
        EXPECT_EQ(shown(std::string("select('#', ") + call + ")"), "0") << call;
        EXPECT_EQ(style.chosen, "old") << call;
    }
}

TEST_F(LuaClass, ReportsAnExceptionOfTheObject)
{
    Style style;
    give("style", &style);
    EXPECT_EQ(shown("select('#', style:fail())"), "0");
    EXPECT_THAT(alerts, ElementsAre("a host function failed: style is broken"));
}

TEST_F(LuaClass, InheritsWithTheRightPointer)
{
    Heavy heavy;
    ASSERT_NE(static_cast<void*>(&heavy), static_cast<void*>(static_cast<Style*>(&heavy)));
    give("heavy", &heavy);
    EXPECT_EQ(shown("heavy:weight()"), "100");
    EXPECT_EQ(shown("heavy:height()"), "2.5");
    run("heavy:choose('lead')");
    EXPECT_EQ(heavy.chosen, "lead");
    lua_getglobal(L, "heavy");
    EXPECT_EQ(read_object<Style>(L, -1), static_cast<Style*>(&heavy));
    EXPECT_EQ(read_object<Heavy>(L, -1), &heavy);
    EXPECT_EQ(read_object<Unknown>(L, -1), nullptr);
    lua_pop(L, 1);
    Style style;
    give("style", &style);
    lua_getglobal(L, "style");
    EXPECT_EQ(read_object<Heavy>(L, -1), nullptr) << "a parent's object is none of the derived class";
    lua_pop(L, 1);
    EXPECT_EQ(shown("select('#', heavy.weight(style))"), "0");
    EXPECT_EQ(shown("style.weight"), "nil");
}

TEST_F(LuaClass, ReadsNothingFromOtherValues)
{
    run("return nil, 1, 'x', {}, print, newproxy(), io.stdout, int64(1)", 8);
    lua_pushlightuserdata(L, this);
    for (int index = 1; index <= 10; ++index)
        EXPECT_EQ(read_object<Style>(L, index), nullptr) << index;
    EXPECT_EQ(lua_gettop(L), 9);
    lua_settop(L, 0);
}

TEST_F(LuaClass, TrustsNoEmptyBlockUnderItsMetatable)
{
    Style style;
    give("style", &style);
    run("fake = newproxy(); debug.setmetatable(fake, debug.getmetatable(style)); return fake", 1);
    EXPECT_EQ(read_object<Style>(L, 1), nullptr);
    lua_settop(L, 0);
    EXPECT_EQ(shown("select('#', Style.height(fake))"), "0");
}

TEST_F(LuaClass, PushesNilForNoObjectAndNoClass)
{
    Unknown unknown;
    push_object<Style>(L, nullptr);
    push_object(L, &unknown);
    EXPECT_TRUE(lua_isnil(L, 1));
    EXPECT_TRUE(lua_isnil(L, 2));
    lua_settop(L, 0);
    class_def<Unknown>(L, "get", &Unknown::get);
    class_inh<Later, Unknown>(L);
    EXPECT_EQ(lua_gettop(L), 0);
    lua_State* fresh = luaL_newstate();
    Style style;
    push_object(fresh, &style);
    EXPECT_TRUE(lua_isnil(fresh, 1));
    EXPECT_EQ(read_object<Style>(fresh, 1), nullptr);
    EXPECT_FALSE(lua_tinker::detail::push_methods(fresh, typeid(Style)));
    EXPECT_EQ(lua_gettop(fresh), 1);
    lua_close(fresh);
}

TEST_F(LuaClass, KeepsItsMetatableFromScripts)
{
    Style style;
    give("style", &style);
    EXPECT_EQ(shown("getmetatable(style)"), "false");
    EXPECT_EQ(shown("pcall(setmetatable, style, {})"), "false");
    EXPECT_EQ(shown("type(Style)"), "table");
    EXPECT_EQ(shown("style.height == Style.height"), "true");
    EXPECT_EQ(shown("style.absent"), "nil");
    EXPECT_EQ(shown("style[1]"), "nil");
    EXPECT_EQ(shown("style[nil]"), "nil");
}

TEST_F(LuaClass, ReportsAssignmentsAndIgnoresThem)
{
    Style style;
    give("style", &style);
    run("style.height = 5; style[1] = 5; style['%s%n'] = 5");
    EXPECT_EQ(shown("style:height()"), "2.5");
    EXPECT_THAT(alerts, ElementsAre("attempt to assign to field `height' of a host object",
                                    "attempt to assign to field `number' of a host object",
                                    "attempt to assign to field `%s%n' of a host object"));
}

TEST_F(LuaClass, IsFoundByName)
{
    Style style;
    lua_tinker::meta_push(L, "Style");
    push_object(L, &style);
    ASSERT_TRUE(lua_getmetatable(L, 2));
    EXPECT_TRUE(lua_rawequal(L, 1, 3));
    lua_tinker::meta_push(L, "Absent");
    lua_tinker::meta_push(L, nullptr);
    EXPECT_TRUE(lua_isnil(L, 4));
    EXPECT_TRUE(lua_isnil(L, 5));
    EXPECT_EQ(lua_gettop(L), 5);
    lua_settop(L, 0);
}

TEST_F(LuaClass, KeepsItsMethodsWhenAddedAgain)
{
    Style style;
    give("style", &style);
    class_add<Style>(L, "Manner");
    EXPECT_EQ(shown("Manner == Style"), "true");
    EXPECT_EQ(shown("style:height()"), "2.5");
}

TEST_F(LuaClass, IsStoredPastStrictGlobals)
{
    run("setmetatable(_G, {__newindex = function() error('strict') end})");
    class_add<Unknown>(L, "Unknown");
    EXPECT_EQ(shown("type(Unknown)"), "table");
}

TEST_F(LuaClass, IsOneAcrossSharedLibraries)
{
    registerShared(L);
    Shared here;
    here.number = 5;
    give("here", &here);
    EXPECT_EQ(shown("here:get()"), "5");
    pushShared(L);
    ASSERT_NE(read_object<Shared>(L, -1), nullptr);
    EXPECT_EQ(read_object<Shared>(L, -1)->number, 77);
    lua_pop(L, 1);
}

} // namespace
