#include "scriptor_fixture.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <functional>

namespace {

class SegmentArguments : public Scriptor {
protected:
    /// Calls, and cuts off the one result that a successful call leaves; gives its text.
    std::string result(const std::function<int()>& call)
    {
        const int before = height();
        const int status = call();
        EXPECT_EQ(status, Quor::Ok);
        EXPECT_EQ(height(), before + (status == Quor::Ok ? 1 : 0)) << "exactly one result";
        if (status != Quor::Ok) return "status " + std::to_string(status);
        const std::string text = luatext::textAt(state(), -1);
        lua_settop(state(), before);
        return text;
    }
    int failure(const std::function<int()>& call)
    {
        return kept([&] { return call(); });
    }

    /// Every result-leaving call of a segment, by what it passes.
    struct Call {
        const char* arguments;
        std::function<int(const char*)> call;
        bool wantsFunction;
    };
    std::vector<Call> calls()
    {
        return {
            {"records", [this](const char* name) { return scriptor.callSeg(name, records); }, true},
            {"records, style", [this](const char* name) { return scriptor.callSeg(name, records, style); },
             false},
            {"records, matrix", [this](const char* name) { return scriptor.callSeg(name, records, matrix); },
             true},
            {"style", [this](const char* name) { return scriptor.callSeg(name, style); }, false},
            {"table", [this](const char* name) { return scriptor.callSeg(name, table); }, true},
            {"table, style", [this](const char* name) { return scriptor.callSeg(name, table, style); }, true},
        };
    }

    std::vector<KVParams> records;
    StyleOfTest style;
    KxGeMatrix3D matrix;
    lua_tinker::table table{state(), 1};
};

TEST_F(SegmentArguments, AreARecordTable)
{
    run("function seg(...) args = select('#', ...); t = ... "
        "return textOf(t.n) .. t.s .. tostring(t.b) .. t.p[3] .. t.i end");
    records = {{"n", "", KVValue::ofDouble(1.5)},        {"s", "", KVValue::ofString("x")},
               {"b", "", KVValue::ofBool(false)},        {"p", "", KVValue::ofPoint({1, 2, 3})},
               {"skipped", "", KVValue::ofTag(6)},       {"i", "", KVValue::ofInt(1)},
               {"i", "later wins", KVValue::ofShort(-2)}};
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", records); }), "1.5xfalse3-2");
    EXPECT_EQ(shown("args"), "1");
    EXPECT_EQ(shown("t.skipped"), "nil");
    records.clear();
    run("function seg(t) return tostring(next(t)) end");
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", records); }), "nil");
}

TEST_F(SegmentArguments, AreARecordTableAndAStyle)
{
    run("function seg(t, style, ...) return t.k .. textOf(style:height()) .. select('#', ...) end");
    records = {{"k", "", KVValue::ofString("v")}};
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", records, style); }), "v2.50");
}

TEST_F(SegmentArguments, AreARecordTableAndAMatrix)
{
    run("function row(r) local t = {} for i = 1, #r do t[i] = textOf(r[i]) end return table.concat(t, ' ') "
        "end;"
        "function seg(t, m, ...) local r = {} for i = 1, 4 do r[i] = row(m[i]) end "
        "return t.k .. #m .. select('#', ...) .. table.concat(r, ',') end");
    records = {{"k", "", KVValue::ofString("v")}};
    matrix.setRow(0, 1, 2, 3, 4);
    matrix.setRow(3, 13, 14, 15, 16.5);
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", records, matrix); }),
              "v401 2 3 4,0 1 0 0,0 0 1 0,13 14 15 16.5");
}

TEST_F(SegmentArguments, AreAStyle)
{
    run("function seg(style, ...) style:setstyle('ISO') return style:getlen('abc') .. select('#', ...) end");
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", style); }), "30");
    EXPECT_EQ(style.name_, "ISO");
}

TEST_F(SegmentArguments, AreTheGivenTable)
{
    run("mine = {k = 'v'}; function seg(t, ...) return tostring(rawequal(t, mine)) .. select('#', ...) end;"
        "function styled(t, s, ...) return tostring(rawequal(t, mine)) .. textOf(s:height()) .. "
        "select('#', ...) end");
    lua_getglobal(state(), "mine");
    const lua_tinker::table given(state(), -1);
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", given); }), "true0");
    EXPECT_EQ(result([&] { return scriptor.callSeg("styled", given, style); }), "true2.50");
    EXPECT_TRUE(lua_istable(state(), given.index())) << "the handle's slot is left alone";
    lua_settop(state(), 1);
}

TEST_F(SegmentArguments, MayBeASlotThatHoldsNoTable)
{
    run("function seg(v) return tostring(v) end");
    lua_pushnumber(state(), 42);
    const lua_tinker::table given(state(), -1);
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", given); }), "42");
    lua_settop(state(), 1);
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", given); }), "nil") << "a slot that is gone";
}

TEST_F(SegmentArguments, LeaveOutATableOfAnotherState)
{
    run("function seg(...) return select('#', ...) .. type((...)) end;"
        "function styled(s, ...) return textOf(s:height()) .. select('#', ...) .. type((...)) end");
    QuorGlibScriptor other;
    lua_State* foreign = other.getLua(false);
    const int before = lua_gettop(foreign);
    for (const lua_tinker::table& given : {lua_tinker::table(foreign, 1), lua_tinker::table()}) {
        EXPECT_EQ(result([&] { return scriptor.callSeg("seg", given); }), "1nil");
        EXPECT_EQ(result([&] { return scriptor.callSeg("styled", given, style); }), "2.51nil")
            << "the style moves down, and nil fills the end";
        EXPECT_EQ(lua_gettop(foreign), before);
    }
}

TEST_F(SegmentArguments, GoToWhatTheTestLetsThrough)
{
    run("number = 5; text = 'x'; flag = false; record = {};"
        "callable = setmetatable({}, {__call = function(self, ...) return select('#', ...) end})");
    for (const Call& call : calls()) {
        for (const char* name : {"missing", "", static_cast<const char*>(nullptr)})
            EXPECT_EQ(failure([&] { return call.call(name); }), Quor::SegmentMissing) << call.arguments;
        for (const char* name : {"number", "text", "flag", "record"}) {
            kxcom::clearQuorLastError();
            EXPECT_EQ(failure([&] { return call.call(name); }),
                      call.wantsFunction ? Quor::SegmentMissing : Quor::ScriptFailed)
                << call.arguments << " to " << name;
            EXPECT_EQ(kxcom::getQuorLastErrorCode(), call.wantsFunction ? 0 : 2003)
                << call.arguments << " to " << name;
        }
        if (call.wantsFunction)
            EXPECT_EQ(failure([&] { return call.call("callable"); }), Quor::SegmentMissing) << call.arguments;
        else
            EXPECT_THAT(result([&] { return call.call("callable"); }), testing::AnyOf("1", "2"))
                << call.arguments;
    }
}

TEST_F(SegmentArguments, OfAFailingSegmentLeaveNothing)
{
    for (const char* body : {"error('x')", "error({})", "error()"}) {
        run(std::string("function fails() ") + body + " end");
        for (const Call& call : calls()) {
            kxcom::clearQuorLastError();
            alerts.clear();
            EXPECT_EQ(failure([&] { return call.call("fails"); }), Quor::ScriptFailed) << call.arguments;
            EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003) << call.arguments;
            EXPECT_EQ(utf8(kxcom::getQuorLastErrorText()), "图形库调用出错：fails") << call.arguments;
            EXPECT_EQ(alerts.size(), 1u) << call.arguments;
        }
    }
}

TEST_F(SegmentArguments, BringBackExactlyOneResult)
{
    run("function none() end; function three() return 'a', 'b', 'c' end");
    for (const Call& call : calls()) {
        EXPECT_EQ(result([&] { return call.call("none"); }), "nil") << call.arguments;
        EXPECT_EQ(result([&] { return call.call("three"); }), "a") << call.arguments;
    }
}

TEST_F(SegmentArguments, LeaveTheThreadsContextForTheParse)
{
    run("function seg() return {{16, {0, 0, 0}, {1, 0, 0}}} end");
    Primitives primitives;
    draw("{{300, 7}}", primitives);
    ASSERT_EQ(scriptor.callSeg("seg", style), Quor::Ok);
    EXPECT_EQ(scriptor.parsePrimary(primitives), Quor::Ok);
    ASSERT_EQ(primitives.size(), 1u);
    EXPECT_EQ(primitives[0]->getColor(), 7);
    EXPECT_EQ(height(), 2) << "the result stays for further readers";
    scriptor.getLua(true);
    EXPECT_EQ(currentColour(), 257);
}

TEST_F(SegmentArguments, MayBeMany)
{
    run("function seg(t) local n = 0 for _ in pairs(t) do n = n + 1 end return n end");
    for (int i = 0; i < 20000; ++i)
        records.push_back({"k" + std::to_string(i), "", KVValue::ofInt(i)});
    EXPECT_EQ(result([&] { return scriptor.callSeg("seg", records); }), "20000");
}

} // namespace
