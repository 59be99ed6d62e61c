#include "letters.h"
#include "marshal_state.h"

#include <QuorMsgHandle/DebugTime.h>
#include <cstring>

namespace {

using namespace quorlua;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

bool callWithList(lua_State* L, const char* function, const char* format, ...)
{
    va_list items;
    va_start(items, format);
    const bool done = callLuaFunc_gen(L, function, format, items);
    va_end(items);
    return done;
}

class Calls : public MarshalState {
protected:
    Calls() { run("function count(...) calls = (calls or 0) + 1; arguments = select('#', ...) end"); }
};

TEST_F(Calls, ReadTheirResultsInOrder)
{
    run("function getStatus(kind, size) return 7, kind .. size, {1, 2, 3} end");
    int status = 0;
    std::string text;
    KxGePoint3D point;
    {
        const SameHeight same(L);
        EXPECT_TRUE(callLuaFunc(L, "getStatus", "ss>irp", "PIPE", "DN50", &status, &text, &point));
    }
    EXPECT_EQ(status, 7);
    EXPECT_EQ(text, "PIPEDN50");
    EXPECT_EQ(point, KxGePoint3D(1, 2, 3));
}

TEST_F(Calls, HaveTheSameResultInEveryForm)
{
    run("function add(a, b) return a + b end");
    int sum = 0;
    EXPECT_TRUE(callWithList(L, "add", "ii>i", 2, 3, &sum));
    EXPECT_EQ(sum, 5);
    EXPECT_TRUE((callLua<"ii>i">(L, "add", 3, 4, &sum)));
    EXPECT_EQ(sum, 7);
    CallItem items[3] = {};
    items[0].integer = 4;
    items[1].integer = 5;
    items[2].address = &sum;
    EXPECT_TRUE(callLuaItems(L, "add", "ii>i", items));
    EXPECT_EQ(sum, 9);
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(Calls, PassWhatTheBufferOfATextHoldsNow)
{
    run("function same(text) return text end");
    char buffer[16];
    for (const char* text : {"one", "other", "on", "", "one"}) {
        std::strcpy(buffer, text);
        std::string answer = "?";
        EXPECT_TRUE(callLuaFunc(L, "same", "s>r", buffer, &answer));
        EXPECT_EQ(answer, text);
    }
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(Calls, FindTheFunctionThatBearsTheNameNow)
{
    int number = 0;
    run("function answer() return 1 end");
    EXPECT_TRUE(callLuaFunc(L, "answer", ">i", &number));
    run("function answer() return 2 end");
    EXPECT_TRUE(callLuaFunc(L, "answer", ">i", &number));
    EXPECT_EQ(number, 2);
    run("answer = 5");
    EXPECT_FALSE(callLuaFunc(L, "answer", ">i", &number));
    run("answer = nil setmetatable(_G, {__index = function() return function() return 3 end end})");
    EXPECT_TRUE(callLuaFunc(L, "answer", ">i", &number));
    EXPECT_EQ(number, 3);
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(Calls, AdvanceTheListTheyAreGiven)
{
    run("function same(...) return ... end");
    const auto next = [this](const char* format, ...) {
        va_list items;
        va_start(items, format);
        EXPECT_TRUE(callLuaFunc_gen(L, "same", format, items));
        const int after = va_arg(items, int);
        va_end(items);
        return after;
    };
    int a = 0;
    double b = 0;
    EXPECT_EQ(next("id>id", 5, 1.5, &a, &b, 99), 99);
    EXPECT_EQ(a, 5);
    EXPECT_EQ(b, 1.5);
}

TEST_F(Calls, OfMissingFunctionsAreFalseAndSilent)
{
    run("number, text, list = 12, 'text', {}; callable = setmetatable({}, {__call = function() called = true "
        "end})");
    int status = 77;
    for (const char* name : {"missing", "number", "text", "list", "callable", "", "nil"}) {
        const SameHeight same(L);
        EXPECT_FALSE(callLuaFunc(L, name, "ss>i", "PIPE", "DN50", &status)) << name;
        EXPECT_FALSE(callLuaFunc(L, name, ">i", &status)) << name;
        EXPECT_FALSE(callLuaFunc(L, name, "")) << name;
    }
    EXPECT_EQ(status, 77);
    EXPECT_EQ(shown("called"), "nil");
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Calls, WithoutAFunctionOrAFormatAreFalse)
{
    EXPECT_FALSE(callLuaFunc(L, nullptr, "i", 1));
    EXPECT_FALSE(callLuaFunc(L, "count", nullptr));
    EXPECT_FALSE(callLuaFunc(nullptr, "count", "i", 1));
    EXPECT_FALSE(callWithList(nullptr, "count", "i", 1));
    EXPECT_FALSE(callLuaItems(L, "count", nullptr, nullptr));
    EXPECT_FALSE(callLuaItems(nullptr, "count", "", nullptr));
    EXPECT_FALSE(callLuaItems(L, nullptr, "", nullptr));
    EXPECT_EQ(shown("calls"), "nil");
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(Calls, FindNoFunctionBehindARaisingMetatable)
{
    run("function defined() end setmetatable(_G, {__index = function(_, name) error('undefined ' .. name) "
        "end})");
    {
        const SameHeight same(L);
        EXPECT_FALSE(callLuaFunc(L, "missing", "i", 1));
        EXPECT_TRUE(callLuaFunc(L, "defined", "i", 1));
    }
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Calls, FindFunctionsThroughTheMetatableOfTheGlobals)
{
    run("setmetatable(_G, {__index = function(_, name) return function() return name end end})");
    std::string name;
    EXPECT_TRUE(callLuaFunc(L, "made", ">r", &name));
    EXPECT_EQ(name, "made");
}

TEST_F(Calls, ReportAnErrorOnceWithATraceback)
{
    run("function inner() error('no such size') end function outer() inner() return 1 end");
    int status = 77;
    {
        const SameHeight same(L);
        EXPECT_FALSE(callLuaFunc(L, "outer", "i>i", 1, &status));
    }
    EXPECT_EQ(status, 77);
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_THAT(alerts[0], HasSubstr("no such size\nstack traceback:\n"));
    EXPECT_THAT(alerts[0], HasSubstr("inner"));
}

TEST_F(Calls, ReportErrorsThatAreNoText)
{
    const struct {
        const char* error;
        const char* report;
    } cases[] = {{"{}", "(error object is a table value)"},
                 {"nil", "(error object is a nil value)"},
                 {"12", "12"},
                 {"true", "(error object is a boolean value)"},
                 {"'100%s%n'", "100%s%n"}};
    for (const auto& [error, report] : cases) {
        alerts.clear();
        run(std::string("function fail() error(") + error + ", 0) end");
        const SameHeight same(L);
        EXPECT_FALSE(callLuaFunc(L, "fail", "")) << error;
        ASSERT_EQ(alerts.size(), 1u) << error;
        EXPECT_THAT(alerts[0], StartsWith(std::string(report) + "\nstack traceback:")) << error;
    }
}

TEST_F(Calls, SurviveAnEndlessRecursion)
{
    run("function forever() return 1 + forever() end");
    const SameHeight same(L);
    EXPECT_FALSE(callLuaFunc(L, "forever", ""));
    EXPECT_TRUE(callLuaFunc(L, "count", ""));
}

TEST_F(Calls, OfAnArrowAloneAreTrueWhenTheFunctionRuns)
{
    const SameHeight same(L);
    EXPECT_TRUE(callLuaFunc(L, "count", ">"));
    EXPECT_TRUE(callLua<">">(L, "count"));
    EXPECT_TRUE(callLuaItems(L, "count", ">", nullptr));
    EXPECT_EQ(shown("calls .. ' ' .. arguments"), "3 0");
    EXPECT_FALSE(callLuaFunc(L, "error", ">"));
}

TEST_F(Calls, WithoutAnArrowReadNothing)
{
    run("function nothing() end");
    const SameHeight same(L);
    EXPECT_TRUE(callLuaFunc(L, "count", "is", 1, "two"));
    EXPECT_EQ(shown("arguments"), "2");
    EXPECT_TRUE(callLuaFunc(L, "count", ""));
    EXPECT_TRUE(callLua<"">(L, "count"));
    EXPECT_EQ(shown("calls .. ' ' .. arguments"), "3 0");
    EXPECT_TRUE(callLuaFunc(L, "nothing", "i", 1));
}

TEST_F(Calls, WhoseResultsAreAllNilAreFalse)
{
    int status = 77;
    char untouched[] = "untouched";
    char* text = untouched;
    for (const char* values : {"", "nil", "nil, nil", "nil, nil, 5"}) {
        answer(values);
        const SameHeight same(L);
        EXPECT_FALSE(callLuaFunc(L, "answer", "ss>is", "PIPE", "DN50", &status, &text)) << values;
        EXPECT_FALSE((callLua<">is">(L, "answer", &status, &text))) << values;
    }
    EXPECT_EQ(status, 77);
    EXPECT_EQ(text, untouched);
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Calls, PassOverAResultOfAnotherType)
{
    answer("'text', 5, nil, true");
    int a = 77, b = 0, c = 77;
    bool d = false;
    const SameHeight same(L);
    EXPECT_TRUE(callLuaFunc(L, "answer", ">iiin", &a, &b, &c, &d));
    EXPECT_EQ(a, 77);
    EXPECT_EQ(b, 5);
    EXPECT_EQ(c, 77);
    EXPECT_TRUE(d);
}

TEST_F(Calls, CutOrFillTheResults)
{
    int a = 0, b = 77;
    answer("5, 6, 7");
    EXPECT_TRUE(callLuaFunc(L, "answer", ">i", &a));
    EXPECT_EQ(a, 5);
    answer("8");
    EXPECT_TRUE(callLuaFunc(L, "answer", ">ii", &a, &b));
    EXPECT_EQ(a, 8);
    EXPECT_EQ(b, 77);
}

TEST_F(Calls, WithABadFirstArgumentLetterCallTheFunctionWithNone)
{
    for (const char* format : {"T", "?", "Ti", "e", "\xD6\xD0"}) {
        run("arguments = nil");
        const SameHeight same(L);
        // What follows the byte is taken for results.
        EXPECT_EQ(callLuaFunc(L, "count", format, 1), format[1] == '\0') << format;
        EXPECT_EQ(shown("arguments"), "0") << format;
    }
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Calls, WithABadLaterArgumentLetterCallWhatWasPushedLast)
{
    const struct {
        const char* format;
        const char* type;
    } cases[] = {{"i?>i", "number"}, {"si T", "number"}, {"nT", "boolean"}, {"ip\x01>i", "table"}};
    const KxGePoint3D point;
    for (const auto& [format, type] : cases) {
        alerts.clear();
        const SameHeight same(L);
        if (format[0] == 's')
            EXPECT_FALSE(callLuaFunc(L, "count", format, "text", 1));
        else
            EXPECT_FALSE(callLuaFunc(L, "count", format, 1, &point));
        ASSERT_EQ(alerts.size(), 1u) << format;
        EXPECT_THAT(alerts[0], StartsWith(std::string("attempt to call a ") + type + " value")) << format;
    }
    EXPECT_EQ(shown("calls"), "nil");
}

TEST_F(Calls, WithABadArgumentLetterAfterACallableValueCallThat)
{
    push("function(...) others = select('#', ...) return {'kept'}, 5 end");
    const lua_tinker::table callable(L, 1);
    lua_tinker::table result;
    int number = 0;
    EXPECT_TRUE(callLuaFunc(L, "count", "ic?ci", 1, callable.handle(), &result, &number));
    EXPECT_EQ(shown("others"), "0");
    EXPECT_EQ(shown("calls"), "nil");
    EXPECT_EQ(number, 5);
    // Above the handler, the function and the argument that stayed.
    EXPECT_EQ(result.index(), 5);
    EXPECT_EQ(lua_gettop(L), 5);
    EXPECT_EQ(popDescribed(), "{\"kept\"}");
}

TEST_F(Calls, WithABadResultLetterAreFalseAndKeepWhatWasStored)
{
    answer("5, 6, 7");
    for (const char* format : {">i?i", ">ixi", ">i>i", ">i i", ">i\xFFi", ">iei"}) {
        int a = 0, b = 77;
        const SameHeight same(L);
        EXPECT_FALSE(callLuaFunc(L, "answer", format, &a, &b)) << format;
        EXPECT_EQ(a, 5) << format;
        EXPECT_EQ(b, 77) << format;
    }
    int first = 77;
    EXPECT_FALSE(callLuaFunc(L, "answer", ">?i", &first));
    EXPECT_FALSE(callLuaFunc(L, "answer", ">>", &first));
    EXPECT_EQ(first, 77);
    int a = 0, b = 0;
    EXPECT_FALSE(callLuaFunc(L, "answer", ">ii?", &a, &b));
    EXPECT_EQ(a, 5);
    EXPECT_EQ(b, 6);
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Calls, KeepTheSlotOfATable)
{
    answer("5, {'first'}, {'second'}, 'text'");
    for (const int height : {0, 3}) {
        lua_settop(L, height);
        lua_tinker::table first;
        int number = 0;
        std::string text;
        EXPECT_TRUE(callLuaFunc(L, "answer", ">ic", &number, &first));
        // The handler, the number, the table.
        EXPECT_EQ(first.index(), height + 3);
        EXPECT_EQ(lua_gettop(L), height + 3);
        EXPECT_EQ(popDescribed(), "{\"first\"}");
        lua_settop(L, height);

        lua_tinker::table* second = nullptr;
        EXPECT_TRUE(callLuaFunc(L, "answer", ">ictr", &number, &first, &second, &text));
        EXPECT_EQ(text, "text");
        EXPECT_EQ(first.index(), height + 3);
        ASSERT_NE(second, nullptr);
        EXPECT_EQ(second->index(), height + 4);
        EXPECT_EQ(second->state(), L);
        // What lies above the last table is gone.
        EXPECT_EQ(lua_gettop(L), height + 4);
        EXPECT_STREQ(second->get<const char*>(1), "second");
        EXPECT_STREQ(first.get<const char*>(1), "first");
        delete second;
    }
}

TEST_F(Calls, KeepTheSlotOfATableInTheCheckedForm)
{
    answer("{'first'}, {'second'}");
    lua_tinker::table first;
    lua_tinker::table* second = nullptr;
    EXPECT_TRUE((callLua<">tc">(L, "answer", &second, &first)));
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->index(), 2);
    EXPECT_EQ(first.index(), 3);
    EXPECT_EQ(lua_gettop(L), 3);
    delete second;
}

TEST_F(Calls, KeepNoSlotForAResultThatIsNoTable)
{
    answer("5, 'text'");
    lua_tinker::table first;
    lua_tinker::table* second = nullptr;
    EXPECT_TRUE(callLuaFunc(L, "answer", ">ct", &first, &second));
    EXPECT_EQ(first.state(), nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(Calls, KeepTheSlotOfATableBeforeABadLetter)
{
    answer("{'first'}, 5");
    lua_tinker::table first;
    EXPECT_FALSE(callLuaFunc(L, "answer", ">c?", &first));
    EXPECT_EQ(first.index(), 2);
    EXPECT_EQ(lua_gettop(L), 2);
    EXPECT_EQ(popDescribed(), "{\"first\"}");
}

TEST_F(Calls, LeaveTheOtherHandlesOnAnOldTableAlone)
{
    push("{'old'}");
    lua_tinker::table handle(L, 1);
    const lua_tinker::table sharing = handle;
    answer("{'new'}");
    EXPECT_TRUE(callLuaFunc(L, "answer", ">c", &handle));
    EXPECT_EQ(sharing.index(), 1);
    EXPECT_EQ(handle.index(), 3);
}

TEST_F(Calls, TurnANumberThatIsReadAsTextIntoAStringWhereItStands)
{
    answer("12, {}");
    std::string text;
    lua_tinker::table table;
    EXPECT_TRUE(callLuaFunc(L, "answer", ">rc", &text, &table));
    EXPECT_EQ(text, "12");
    EXPECT_EQ(lua_type(L, 2), LUA_TSTRING);
    EXPECT_EQ(table.index(), 3);
}

TEST_F(Calls, ReadManyItems)
{
    run("function echo(...) return ... end");
    std::vector<CallItem> items;
    std::vector<int> outputs(300);
    for (int i = 0; i < 300; ++i) {
        CallItem item{};
        item.integer = i * i;
        items.push_back(item);
    }
    for (int& output : outputs) {
        CallItem item{};
        item.address = &output;
        items.push_back(item);
    }
    std::string format(601, 'i');
    format[300] = '>';
    {
        const SameHeight same(L);
        EXPECT_TRUE(callLuaItems(L, "echo", format.c_str(), items.data()));
    }
    for (int i = 0; i < 300; ++i)
        ASSERT_EQ(outputs[static_cast<std::size_t>(i)], i * i);
}

TEST_F(Calls, TakeMoreVariableItemsThanAreKeptAside)
{
    run("function sum(...) local s = 0 for i = 1, select('#', ...) do s = s + select(i, ...) * i end return "
        "s, s, s end");
    double a = 0, b = 0;
    int c = 0;
    EXPECT_TRUE(callLuaFunc(L, "sum", "idididididididididididididididid>ddi", 1, 1.0, 1, 1.0, 1, 1.0, 1, 1.0,
                            1, 1.0, 1, 1.0, 1, 1.0, 1, 1.0, 1, 1.0, 1, 1.0, 1, 1.0, 1, 1.0, 1, 1.0, 1, 1.0, 1,
                            1.0, 1, 1.0, &a, &b, &c));
    EXPECT_EQ(a, 32 * 33 / 2);
    EXPECT_EQ(b, a);
    EXPECT_EQ(c, a);
}

TEST_F(Calls, NestThroughTheHost)
{
    lua_pushcfunction(L, [](lua_State* state) {
        int inner = 0;
        const bool done = callLuaFunc(state, "inner", "i>i", 20, &inner);
        lua_pushnumber(state, done ? inner + 1 : -1);
        return 1;
    });
    lua_setglobal(L, "host");
    run("function inner(n) return n * 2 end function outer() return host() + 100 end");
    int result = 0;
    EXPECT_TRUE(callLuaFunc(L, "outer", ">i", &result));
    EXPECT_EQ(result, 141);
}

TEST_F(Calls, AreTimedInSlot25)
{
    kxcom::quorDebugTimeReset();
    EXPECT_TRUE(callLuaFunc(L, "count", ""));
    EXPECT_FALSE(callLuaFunc(L, "missing", ""));
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 2u);
    EXPECT_TRUE(callWithList(L, "count", ""));
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 2u);
}

TEST_F(Calls, WorkInAStateWithoutLibraries)
{
    lua_State* bare = luaL_newstate();
    lua_pushcfunction(bare, [](lua_State* state) {
        lua_pushinteger(state, lua_gettop(state));
        return 1;
    });
    lua_setglobal(bare, "count");
    int counted = 0;
    EXPECT_TRUE(callLuaFunc(bare, "count", "iI>i", 1, 2LL, &counted));
    EXPECT_EQ(counted, 2);
    EXPECT_EQ(lua_gettop(bare), 0);
    lua_close(bare);
}

} // namespace
