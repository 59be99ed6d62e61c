#include "letters.h"
#include "marshal_state.h"

#include <climits>

namespace {

using namespace quorlua;
using testing::ElementsAre;

int pushWithList(lua_State* L, const char* format, ...)
{
    va_list items;
    va_start(items, format);
    const int count = prepareCallParam_vl(L, format, items);
    va_end(items);
    return count;
}

class TwoStepCalls : public MarshalState {};

TEST_F(TwoStepCalls, CallNothingWhereTheStackHoldsFewerValues)
{
    run("function touch() touched = true end");
    const SameHeight same(L);
    lua_getglobal(L, "touch");
    for (const int arguments : {-1, 1, 2, INT_MAX})
        EXPECT_FALSE(callLuaFunc1(L, "touch", arguments, "")) << arguments;
    EXPECT_EQ(shown("touched"), "nil");
    lua_pop(L, 1);
}

TEST_F(TwoStepCalls, PushAFunctionAndItsArgumentsThenCallThem)
{
    run("function add(a, b) return a + b, 'sum' end");
    lua_pushliteral(L, "below");
    const int arguments = prepareCallParam(L, "add", "ii>ignored", 2, 3);
    EXPECT_EQ(arguments, 2);
    ASSERT_EQ(lua_gettop(L), 4);
    EXPECT_TRUE(lua_isfunction(L, 2));
    EXPECT_EQ(lua_tonumber(L, 3), 2);
    EXPECT_EQ(lua_tonumber(L, 4), 3);
    int sum = 0;
    std::string text;
    EXPECT_TRUE(callLuaFunc1(L, "add", arguments, "ir", &sum, &text));
    EXPECT_EQ(sum, 5);
    EXPECT_EQ(text, "sum");
    // The results stay.
    EXPECT_EQ(lua_gettop(L), 3);
    EXPECT_STREQ(lua_tostring(L, 1), "below");
    EXPECT_EQ(lua_tonumber(L, 2), 5);
    EXPECT_STREQ(lua_tostring(L, 3), "sum");
}

TEST_F(TwoStepCalls, LeaveAValueThatIsNoFunction)
{
    run("number, list = 12, {'list'}");
    EXPECT_EQ(prepareCallParam(L, "missing", "i", 1), -1);
    ASSERT_EQ(lua_gettop(L), 1);
    EXPECT_TRUE(lua_isnil(L, 1));
    EXPECT_EQ(prepareCallParam(L, "number", "i", 1), -1);
    ASSERT_EQ(lua_gettop(L), 2);
    EXPECT_EQ(lua_tonumber(L, 2), 12);
    EXPECT_EQ(prepareCallParam(L, "list", "i", 1), -1);
    ASSERT_EQ(lua_gettop(L), 3);
    EXPECT_EQ(popDescribed(), "{\"list\"}");
    EXPECT_TRUE(alerts.empty());
}

TEST_F(TwoStepCalls, FindNoFunctionBehindARaisingMetatable)
{
    run("setmetatable(_G, {__index = function() error('strict') end})");
    EXPECT_EQ(prepareCallParam(L, "missing", "i", 1), -1);
    EXPECT_EQ(lua_gettop(L), 1);
    EXPECT_TRUE(lua_isnil(L, 1));
    EXPECT_TRUE(alerts.empty());
}

TEST_F(TwoStepCalls, WithoutAStateAFunctionOrAFormatPushNothing)
{
    EXPECT_EQ(prepareCallParam(nullptr, "seen", "i", 1), -1);
    EXPECT_EQ(prepareCallParam(L, nullptr, "i", 1), -1);
    EXPECT_EQ(prepareCallParam(L, "seen", nullptr), -1);
    EXPECT_EQ(pushWithList(nullptr, "i", 1), -1);
    EXPECT_EQ(pushWithList(L, nullptr), -1);
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(TwoStepCalls, PushArgumentsAlone)
{
    const std::string text = "text";
    EXPECT_EQ(pushWithList(L, "irn>x", 5, &text, true), 3);
    ASSERT_EQ(lua_gettop(L), 3);
    EXPECT_EQ(lua_tonumber(L, 1), 5);
    EXPECT_STREQ(lua_tostring(L, 2), "text");
    EXPECT_EQ(lua_toboolean(L, 3), 1);
    EXPECT_EQ(pushWithList(L, ""), 0);
    EXPECT_EQ(pushWithList(L, ">i"), 0);
    EXPECT_EQ(lua_gettop(L), 3);
}

TEST_F(TwoStepCalls, AdvanceTheList)
{
    const auto next = [this](const char* format, ...) {
        va_list items;
        va_start(items, format);
        EXPECT_EQ(prepareCallParam_vl(L, format, items), 2);
        const int after = va_arg(items, int);
        va_end(items);
        return after;
    };
    EXPECT_EQ(next("id>d", 5, 1.5, 99), 99);
}

TEST_F(TwoStepCalls, TakeAFunctionFetchedByTheCaller)
{
    lua_getglobal(L, "seen");
    const int arguments = pushWithList(L, "is", 5, "text");
    bool done = false;
    EXPECT_TRUE(callLuaFunc1(L, "seen", arguments, "n", &done));
    EXPECT_TRUE(done);
    EXPECT_EQ(whatWasSeen(), "5 \"text\"");
}

TEST_F(TwoStepCalls, WithABadArgumentLetterCountNothingAndLeaveWhatWasPushed)
{
    EXPECT_EQ(prepareCallParam(L, "seen", "ii?i", 1, 2, 3), 0);
    EXPECT_EQ(lua_gettop(L), 3);
    EXPECT_TRUE(lua_isfunction(L, 1));
    EXPECT_EQ(lua_tonumber(L, 3), 2);
    lua_settop(L, 0);
    EXPECT_EQ(pushWithList(L, "iT", 1), 0);
    EXPECT_EQ(lua_gettop(L), 1);
    EXPECT_EQ(pushWithList(L, "T"), 0);
    EXPECT_EQ(lua_gettop(L), 1);
}

TEST_F(TwoStepCalls, CopyTheTablesOfTheState)
{
    lua_State* other = luaL_newstate();
    {
        const lua_tinker::table foreign(other);
        push("{'own'}");
        const lua_tinker::table own(L, 1);
        EXPECT_EQ(prepareCallParam(L, "seen", "icti", 1, foreign.handle(), own.handle(), 2), 4);
        ASSERT_EQ(lua_gettop(L), 6);
        EXPECT_TRUE(callLuaFunc1(L, "seen", 4, ""));
        EXPECT_EQ(whatWasSeen(), "1 {\"own\"} 2 nil");
        EXPECT_EQ(lua_gettop(L), 1);
        EXPECT_EQ(pushWithList(L, "ct", own.handle(), foreign.handle()), 2);
        EXPECT_TRUE(lua_rawequal(L, 1, 2));
        EXPECT_TRUE(lua_isnil(L, 3));
    }
    lua_close(other);
}

TEST_F(TwoStepCalls, PrintAnErrorAndLeaveItsMessage)
{
    run("function fail() error('no such size', 0) end");
    lua_pushliteral(L, "below");
    int status = 77;
    const int arguments = prepareCallParam(L, "fail", "i", 5);
    EXPECT_FALSE(callLuaFunc1(L, "the name", arguments, "i", &status));
    EXPECT_EQ(status, 77);
    ASSERT_EQ(lua_gettop(L), 2);
    EXPECT_STREQ(lua_tostring(L, 2), "no such size");
    EXPECT_THAT(alerts, ElementsAre("error running function `the name': no such size"));
}

TEST_F(TwoStepCalls, PrintAnErrorWithoutANameToo)
{
    run("function fail() error('no such size', 0) end");
    EXPECT_FALSE(callLuaFunc1(L, nullptr, prepareCallParam(L, "fail", ""), ""));
    EXPECT_THAT(alerts, ElementsAre("error running function `': no such size"));
}

TEST_F(TwoStepCalls, PrintErrorsThatAreNoText)
{
    const struct {
        const char* error;
        const char* report;
    } cases[] = {{"{}", "(error object is a table value)"},
                 {"nil", "(error object is a nil value)"},
                 {"12.5", "12.5"},
                 {"'100%s%n'", "100%s%n"}};
    for (const auto& [error, report] : cases) {
        alerts.clear();
        run(std::string("function fail() error(") + error + ", 0) end");
        const int top = lua_gettop(L);
        EXPECT_FALSE(callLuaFunc1(L, "fail", prepareCallParam(L, "fail", ""), "i", nullptr)) << error;
        EXPECT_THAT(alerts, ElementsAre(std::string("error running function `fail': ") + report)) << error;
        EXPECT_EQ(lua_gettop(L), top + 1) << error;
    }
}

TEST_F(TwoStepCalls, PrintTheErrorOfALongText)
{
    run("function fail() error(string.rep('x', 100000), 0) end");
    EXPECT_FALSE(callLuaFunc1(L, "fail", prepareCallParam(L, "fail", ""), ""));
    EXPECT_THAT(alerts, ElementsAre("error running function `fail': " + std::string(100000, 'x')));
}

TEST_F(TwoStepCalls, OfSomethingThatIsNoFunctionPrintWhatItIs)
{
    EXPECT_EQ(prepareCallParam(L, "missing", ""), -1);
    EXPECT_FALSE(callLuaFunc1(L, "missing", 0, ""));
    EXPECT_THAT(alerts, ElementsAre("error running function `missing': attempt to call a nil value"));
    EXPECT_EQ(lua_gettop(L), 1);
}

TEST_F(TwoStepCalls, ReadNoResultsForAnEmptyFormat)
{
    EXPECT_TRUE(callLuaFunc1(L, "seen", prepareCallParam(L, "seen", "i", 1), ""));
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(TwoStepCalls, CallAndFailWithoutAFormat)
{
    EXPECT_FALSE(callLuaFunc1(L, "seen", prepareCallParam(L, "seen", "i", 1), nullptr));
    EXPECT_EQ(whatWasSeen(), "1");
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(TwoStepCalls, WhoseResultsAreAllNilAreFalseAndLeaveThem)
{
    answer("nil");
    int a = 77, b = 77;
    EXPECT_FALSE(callLuaFunc1(L, "answer", prepareCallParam(L, "answer", ""), "ii", &a, &b));
    EXPECT_EQ(a, 77);
    EXPECT_EQ(lua_gettop(L), 2);
}

TEST_F(TwoStepCalls, WithABadResultLetterAreFalseAndLeaveTheResults)
{
    answer("5, 6, 7");
    int a = 0, b = 77;
    for (const char* format : {"i?i", "i>i", "ixi"}) {
        lua_settop(L, 0);
        EXPECT_FALSE(callLuaFunc1(L, "answer", prepareCallParam(L, "answer", ""), format, &a, &b)) << format;
        EXPECT_EQ(a, 5) << format;
        EXPECT_EQ(b, 77) << format;
        EXPECT_EQ(lua_gettop(L), 3) << format;
    }
    EXPECT_TRUE(alerts.empty());
}

TEST_F(TwoStepCalls, HandOutTablesWhereTheyStand)
{
    answer("5, {'first'}, {'second'}, 6");
    lua_pushliteral(L, "below");
    lua_tinker::table first;
    lua_tinker::table* second = nullptr;
    int a = 0, b = 0;
    EXPECT_TRUE(
        callLuaFunc1(L, "answer", prepareCallParam(L, "answer", ""), "icti", &a, &first, &second, &b));
    EXPECT_EQ(lua_gettop(L), 5);
    EXPECT_EQ(first.index(), 3);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->index(), 4);
    EXPECT_EQ(b, 6);
    delete second;
}

TEST_F(TwoStepCalls, LeaveResultsThatWereWalkedAsTheyWere)
{
    answer("{a = {}, b = 5, c = {}}, {{1,{1,2,3}}, 'bad'}, 12");
    std::vector<std::vector<KVParams>> maps;
    std::vector<QuorPolyDesc> vertices;
    std::string text;
    EXPECT_TRUE(callLuaFunc1(L, "answer", prepareCallParam(L, "answer", ""), "bgr", &maps, &vertices, &text));
    EXPECT_EQ(lua_gettop(L), 3);
    EXPECT_EQ(text, "12");
}

TEST_F(TwoStepCalls, NeedTheirValuesOnTheStack)
{
    lua_getglobal(L, "seen");
    EXPECT_FALSE(callLuaFunc1(L, "seen", 1, ""));
    EXPECT_FALSE(callLuaFunc1(L, "seen", -1, ""));
    EXPECT_FALSE(callLuaFunc1(nullptr, "seen", 0, ""));
    EXPECT_EQ(lua_gettop(L), 1);
    EXPECT_EQ(shown("what"), "nil");
    EXPECT_TRUE(callLuaFunc1(L, nullptr, 0, ""));
}

} // namespace
