#include "script_limits.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <chrono>
#include <thread>

using Quor::GlibStatus;
using quorlua::LimitReached;
using quorlua::takeLimitReached;

namespace {

constexpr std::size_t megabyte = 1 << 20;

/// Keeps what is reported, in place of standard error.
class Reports {
public:
    Reports() { lua_tinker::set_error_outlet(take, this); }
    ~Reports() { lua_tinker::set_error_outlet(nullptr, nullptr); }
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;

    const std::vector<std::string>& all() const { return all_; }

private:
    static void take(const char* text, std::size_t length, void* self)
    {
        static_cast<Reports*>(self)->all_.emplace_back(text, length);
    }
    std::vector<std::string> all_;
};

double secondsOf(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(ScriptLimits, AreOffUntilAHostAsks)
{
    QuorGlibScriptor scriptor;
    EXPECT_EQ(lua_gethook(scriptor.getLua(false)), nullptr);
    EXPECT_EQ(runChunk(scriptor, "local t = {} for i = 1, 1e5 do t[i] = {i} end debug.sethook()"),
              GlibStatus::Ok);
    EXPECT_EQ(takeLimitReached(), LimitReached::None);
}

TEST(ScriptLimits, LeaveStatesThatAreThereAsTheyAre)
{
    QuorGlibScriptor scriptor;
    const Limited limited(0.25, 2 * megabyte);
    EXPECT_EQ(runChunk(scriptor, "debug.sethook() s = string.rep('x', 4e6)"), GlibStatus::Ok);
}

TEST(ScriptLimits, ArePutOnStatesThatNobodyTrustsAlone)
{
    const Limited limited(0, 0, true);
    QuorGlibScriptor scriptor;
    EXPECT_EQ(runChunk(scriptor, "x = io"), GlibStatus::Ok);
    EXPECT_EQ(luatext::shown(scriptor.getLua(false), "x"), "nil");
    EXPECT_EQ(lua_gethook(scriptor.getLua(false)), nullptr);
}

TEST(ScriptLimits, OfAStateWithoutAnyAreNotReached)
{
    QuorGlibScriptor before;
    const Limited limited(0.25);
    QuorGlibScriptor scriptor;
    quorlua::checkScriptLimits(before.getLua(false));
    quorlua::checkScriptLimits(nullptr);
    EXPECT_EQ(takeLimitReached(), LimitReached::None);
}

TEST(TimeLimit, MayBeLongerThanAnyClockCounts)
{
    const Limited limited(1e300);
    QuorGlibScriptor scriptor;
    EXPECT_EQ(runChunk(scriptor, "for i = 1, 1e5 do local t = {} end"), GlibStatus::Ok);
    EXPECT_EQ(takeLimitReached(), LimitReached::None);
}

TEST(TimeLimit, EndsFinalizersThatFinalizersMadeAsTheStateIsClosed)
{
    const Limited limited(0.1);
    const double seconds = secondsOf([] {
        QuorGlibScriptor scriptor;
        EXPECT_EQ(runChunk(scriptor, "kept = newproxy(true) getmetatable(kept).__gc = function()\n"
                                     "local other = newproxy(true) getmetatable(other).__gc = function()\n"
                                     "while true do local t = {} end end end"),
                  GlibStatus::Ok);
    });
    EXPECT_LT(seconds, 5);
}

TEST(TimeLimit, EndsALoopWithTheStatusOfAFailedSegment)
{
    const Reports reports;
    const Limited limited(0.25);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor, "function forever()\n while true do end\nend"), GlibStatus::Ok);
    EXPECT_EQ(scriptor.callSeg("forever"), GlibStatus::ScriptFailed);
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    EXPECT_EQ(takeLimitReached(), LimitReached::None);
}

TEST(TimeLimit, ReportsOnceWhereTheScriptStood)
{
    const Reports reports;
    const Limited limited(0.25);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor, "function forever()\n while true do pcall(error) end\nend"), GlibStatus::Ok);
    EXPECT_EQ(scriptor.callSeg("forever"), GlibStatus::ScriptFailed);
    ASSERT_EQ(reports.all().size(), 1U);
    EXPECT_THAT(reports.all()[0],
                testing::HasSubstr(":2: time limit: the script was stopped after 0.25 seconds"));
}

TEST(TimeLimit, LeavesAStateThatWorks)
{
    const Reports reports;
    const Limited limited(0.3);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor, "n = 0\n"
                                 "function forever() while true do n = n + 1 end end\n"
                                 "function count() local t = {} for i = 1, 500 do t[i] = {} end n = #t end\n"
                                 "co = coroutine.wrap(function() coroutine.yield() forever() end) co()"),
              GlibStatus::Ok);
    lua_State* L = scriptor.getLua(false);
    const int top = lua_gettop(L);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(scriptor.callSeg("forever"), GlibStatus::ScriptFailed);
        EXPECT_EQ(scriptor.callSeg("count"), GlibStatus::Ok);
        EXPECT_EQ(luatext::shown(L, "n"), "500");
        EXPECT_EQ(lua_gettop(L), top);
    }
    EXPECT_EQ(scriptor.callSeg("co"), GlibStatus::ScriptFailed);
    EXPECT_EQ(scriptor.callSeg("count"), GlibStatus::Ok);
}

TEST(TimeLimit, CountsEachOperationByItself)
{
    const Limited limited(0.3);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor,
                       "function wait() local start = os.clock() while os.clock() - start < 0.02 do end end"),
              GlibStatus::Ok);
    const auto all = [&scriptor] {
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(scriptor.callSeg("wait"), GlibStatus::Ok) << i;
    };
    EXPECT_GT(secondsOf(all), 0.35);
}

int callBack(lua_State* L)
{
    auto* scriptor = static_cast<QuorGlibScriptor*>(lua_touserdata(L, lua_upvalueindex(1)));
    lua_pushboolean(L, scriptor->callSeg("inner") == GlibStatus::Ok);
    return 1;
}

TEST(TimeLimit, IsThatOfTheOutermostOperation)
{
    const Reports reports;
    const Limited limited(0.15);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(
        runChunk(scriptor,
                 "function inner() local start = os.clock() while os.clock() - start < 0.01 do end end\n"
                 "function outer() for i = 1, 1000 do callBack() end end"),
        GlibStatus::Ok);
    lua_State* L = scriptor.getLua(false);
    lua_pushlightuserdata(L, &scriptor);
    lua_pushcclosure(L, callBack, 1);
    lua_setglobal(L, "callBack");
    EXPECT_EQ(scriptor.callSeg("outer"), GlibStatus::ScriptFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
}

TEST(TimeLimit, HoldsForEveryOperationThatRunsScripts)
{
    const Reports reports;
    const Limited limited(0.25);
    const ScriptFolder folder;
    const std::string forever = folder.write("forever.lua", "while true do end");
    QuorGlibScriptor scriptor;
    EXPECT_EQ(scriptor.loadFile(forever.c_str(), false), GlibStatus::ScriptFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    EXPECT_EQ(scriptor.reloadLua(0), GlibStatus::ScriptFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);

    QuorGlibScriptor other;
    EXPECT_EQ(runChunk(other, "while true do end"), GlibStatus::ScriptFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    other.initLua();
    ASSERT_EQ(runChunk(other,
                       "function f() while true do end end quorgetparam_ui = f\n"
                       "param = setmetatable({}, {__newindex = f}) glb = setmetatable({}, {__index = f})"),
              GlibStatus::Ok);
    int result = 0;
    EXPECT_FALSE(quorlua::callLuaFunc(other.getLua(false), "f", ">i", &result));
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    KxGePoint3D first;
    KxGePoint3D second;
    std::vector<KVParams> parameters;
    EXPECT_EQ(other.exeLuaUI(first, second, parameters), Quor::CadReturn::CallFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    EXPECT_FALSE(other.setDoubleParam("param", "P1", 1.0));
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    std::string type;
    EXPECT_NE(other.getSmrtlnType(type), GlibStatus::Ok);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
}

int requireObject(lua_State* L)
{
    quorlua::requireObjectIdInState(L, KxDbObjectId(5), "objects");
    return 0;
}

TEST(TimeLimit, HoldsForAnOperationThatRaises)
{
    const Reports reports;
    const Limited limited(0.1);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor,
                       "local function f() local start = os.clock() while os.clock() - start < 2 do end\n"
                       "outlasted = true end objects = setmetatable({}, {__newindex = f})"),
              GlibStatus::Ok);
    lua_State* L = scriptor.getLua(false);
    lua_pushcfunction(L, requireObject);
    EXPECT_NE(lua_pcall(L, 0, 0, 0), 0);
    lua_pop(L, 1);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    EXPECT_EQ(luatext::shown(L, "outlasted"), "nil");
    // The operation has ended: what the host runs itself is not limited.
    EXPECT_EQ(luaL_dostring(L, "local start = os.clock() while os.clock() - start < 0.15 do end"), 0);
}

TEST(TimeLimit, HoldsForWhatAHostMakesAnOperation)
{
    const Reports reports;
    const Limited limited(0.1);
    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
    ASSERT_EQ(luaL_loadstring(L, "local start = os.clock() while os.clock() - start < 2 do end"), 0);
    {
        const quorlua::ScriptOperation operation(L);
        EXPECT_NE(lua_pcall(L, 0, 0, 0), 0);
    }
    lua_pop(L, 1);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    const quorlua::ScriptOperation ofNothing(nullptr);
}

int sleepBeyondTheLimit(lua_State*)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    return 0;
}

TEST(TimeLimit, IsLookedAtWhenMuchMemoryIsWanted)
{
    const Reports reports;
    const Limited limited(0.1);
    QuorGlibScriptor scriptor;
    lua_register(scriptor.getLua(false), "sleep", sleepBeyondTheLimit);
    ASSERT_EQ(runChunk(scriptor, "half = string.rep('x', 40000)\n"
                                 "function f() sleep() local whole = half .. half got = true end"),
              GlibStatus::Ok);
    EXPECT_EQ(scriptor.callSeg("f"), GlibStatus::ScriptFailed);
    EXPECT_EQ(luatext::shown(scriptor.getLua(false), "got"), "nil");
}

TEST(TimeLimit, EndsTheReadingOfNotesWhoseTextsAreLong)
{
    const Limited limited(0.1);
    QuorGlibScriptor scriptor;
    // In pieces that each are done in time where everything takes thirty times as long.
    ASSERT_EQ(runChunk(scriptor, "long = ('k'):rep(1000)"), GlibStatus::Ok);
    ASSERT_EQ(runChunk(scriptor, "long = {long:rep(400), 5}", 200), GlibStatus::Ok);
    ASSERT_EQ(runChunk(scriptor, "notes = {} for i = 1, 2000 do notes[i] = long end", 300), GlibStatus::Ok);
    std::vector<KVParams> notes;
    EXPECT_EQ(scriptor.getParams_note("notes", notes), GlibStatus::ScriptFailed);
    EXPECT_EQ(quorlua::takeLimitReached(), quorlua::LimitReached::Time);
    EXPECT_LT(notes.size(), 2000u);
}

TEST(TimeLimit, EndsTheReadingOfAnAnswer)
{
    const Reports reports;
    const Limited limited(0.1);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor,
                       "local function rep(v, n) local t = {} for i = 1, n do t[i] = v end return t end\n"
                       "local bad = rep({1, {0, 0, 0}}, 1000) bad[1001] = 'no vertex'\n"
                       "function walk() return rep({25, bad}, 1e5) end\n"
                       "function none() return {} end"),
              GlibStatus::Ok);
    Primitives drawn;
    const double seconds = secondsOf([&] { EXPECT_EQ(scriptor.callSeg("walk", drawn), GlibStatus::Ok); });
    EXPECT_LT(seconds, 2.0) << "a hundred million vertices";
    EXPECT_TRUE(drawn.empty());
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    EXPECT_EQ(reports.all().size(), 1U);
    EXPECT_EQ(scriptor.callSeg("none", drawn), GlibStatus::Ok);
    EXPECT_EQ(takeLimitReached(), LimitReached::None);
}

TEST(Distrust, StaysWithAScriptorWhenItsStateIsMadeAnew)
{
    const ScriptFolder folder;
    const std::string file = folder.write("script.lua", "trusted = os.execute ~= nil");
    QuorGlibScriptor scriptor;
    {
        const Limited limited(0, 0, true);
        scriptor.initLua();
        ASSERT_EQ(scriptor.loadFile(file.c_str(), false), GlibStatus::Ok);
        EXPECT_EQ(luatext::shown(scriptor.getLua(false), "trusted"), "false");
    }
    EXPECT_EQ(scriptor.reloadLua(1), GlibStatus::Ok);
    EXPECT_EQ(luatext::shown(scriptor.getLua(false), "trusted"), "false");
    scriptor.initLua();
    EXPECT_EQ(luatext::shown(scriptor.getLua(false), "os.execute == nil"), "true");
    EXPECT_EQ(luatext::shown(QuorGlibScriptor().getLua(false), "os.execute == nil"), "false");
}

TEST(Distrust, StaysWithAScriptorThatHadNoStateMeanwhile)
{
    const Reports reports;
    QuorGlibScriptor scriptor;
    {
        const Limited limited(0, 0, true);
        scriptor.initLua();
    }
    EXPECT_EQ(runChunk(scriptor, "error('lost')"), GlibStatus::ScriptFailed);
    ASSERT_EQ(scriptor.getLua(false), nullptr);
    {
        const Limited limited(0, 1000);
        scriptor.initLua();
        ASSERT_EQ(scriptor.getLua(false), nullptr);
    }
    scriptor.initLua();
    EXPECT_EQ(luatext::shown(scriptor.getLua(false), "os.execute == nil"), "true");
}

TEST(FileThatLostItsState, CountsAsChanged)
{
    const ScriptFolder folder;
    const std::string file = folder.write("script.lua", "loads = (loads or 0) + 1 function seg() end", 1000);
    QuorGlibScriptor scriptor;
    const auto loseState = [&](int seconds) {
        const Limited limited(0, 1000);
        folder.setTime("script.lua", seconds);
        EXPECT_EQ(scriptor.loadFile(file.c_str(), true), GlibStatus::ScriptFailed);
        EXPECT_EQ(scriptor.getLua(false), nullptr);
    };
    ASSERT_EQ(scriptor.loadFile(file.c_str(), false), GlibStatus::Ok);
    loseState(2000);
    EXPECT_EQ(scriptor.loadFile(file.c_str(), false), GlibStatus::ScriptFailed)
        << "there is no state to run it in";
    EXPECT_EQ(scriptor.reloadLua(2), GlibStatus::ScriptFailed);
    EXPECT_EQ(scriptor.loadFile(file.c_str(), true), GlibStatus::Ok);
    EXPECT_EQ(luatext::shown(scriptor.getLua(false), "loads"), "1");
    EXPECT_EQ(scriptor.callSeg("seg"), GlibStatus::Ok);
    loseState(3000);
    EXPECT_EQ(scriptor.reloadLua(3), GlibStatus::Ok);
    EXPECT_EQ(luatext::shown(scriptor.getLua(false), "loads"), "1");
    EXPECT_EQ(scriptor.reloadLua(3), GlibStatus::Ok);
    EXPECT_EQ(luatext::shown(scriptor.getLua(false), "loads"), "1") << "it is loaded, and has not changed";
}

TEST(TimeLimit, HoldsWhileAStateIsClosed)
{
    const Reports reports;
    const Limited limited(0.25);
    {
        QuorGlibScriptor scriptor;
        ASSERT_EQ(
            runChunk(
                scriptor,
                "p = newproxy(true) getmetatable(p).__gc = function() while true do local t = {} end end"),
            GlibStatus::Ok);
    }
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
}

TEST(TimeLimit, LetsNoScriptTakeAwayTheHook)
{
    const Reports reports;
    const Limited limited(0.25);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor, "ok, text = pcall(debug.sethook)"), GlibStatus::Ok);
    EXPECT_THAT(luatext::shown(scriptor.getLua(false), "text"),
                testing::HasSubstr("belongs to the time limit"));
}

int hookCalls = 0;

void hookOfHost(lua_State* L, lua_Debug*)
{
    ++hookCalls;
    quorlua::checkScriptLimits(L);
}

TEST(TimeLimit, SharesTheHookWithAHostThatAsksItself)
{
    const Reports reports;
    const Limited limited(0.25);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor, "function forever() while true do end end"), GlibStatus::Ok);
    lua_sethook(scriptor.getLua(false), hookOfHost, LUA_MASKCOUNT, 1000);
    hookCalls = 0;
    EXPECT_EQ(scriptor.callSeg("forever"), GlibStatus::ScriptFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
    EXPECT_GT(hookCalls, 10);
    EXPECT_EQ(lua_gethook(scriptor.getLua(false)), hookOfHost);
}

TEST(TimeLimit, TakesTheHookBackWhenAHostLeavesIt)
{
    const Reports reports;
    const Limited limited(0.25);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor, "function forever() while true do end end"), GlibStatus::Ok);
    lua_sethook(scriptor.getLua(false), nullptr, 0, 0);
    EXPECT_EQ(scriptor.callSeg("forever"), GlibStatus::ScriptFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
}

/// A function for scripts that takes its time, and asks for the limits at its end.
int waitAndAsk(lua_State* L)
{
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < std::chrono::milliseconds(300)) {
    }
    quorlua::checkScriptLimits(L);
    return 0;
}

TEST(TimeLimit, HasNoPlaceToReportInAFunctionOfTheHost)
{
    const Reports reports;
    const Limited limited(0.25);
    QuorGlibScriptor scriptor;
    lua_register(scriptor.getLua(false), "waitAndAsk", waitAndAsk);
    EXPECT_EQ(runChunk(scriptor, "waitAndAsk()"), GlibStatus::ScriptFailed);
    ASSERT_FALSE(reports.all().empty());
    EXPECT_EQ(reports.all()[0], "time limit: the script was stopped after 0.25 seconds");
}

void* allocateByAnother(void* other, void* block, std::size_t before, std::size_t size)
{
    const auto& [allocate, user] = *static_cast<std::pair<lua_Alloc, void*>*>(other);
    return allocate(user, block, before, size);
}

TEST(TimeLimit, IsNoneWhileAHostHasAnAllocatorOfItsOwn)
{
    const Reports reports;
    const Limited limited(0.25);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor,
                       "function wait() local start = os.clock() while os.clock() - start < 0.3 do end end"),
              GlibStatus::Ok);
    lua_State* L = scriptor.getLua(false);
    std::pair<lua_Alloc, void*> own{};
    own.first = lua_getallocf(L, &own.second);
    lua_setallocf(L, allocateByAnother, &own);
    EXPECT_EQ(scriptor.callSeg("wait"), GlibStatus::Ok);
    lua_setallocf(L, own.first, own.second);
    EXPECT_EQ(scriptor.callSeg("wait"), GlibStatus::ScriptFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Time);
}

TEST(TimeLimit, IsNoneOutsideOfOperations)
{
    const Limited limited(0.01);
    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
    ASSERT_EQ(
        luaL_loadstring(L, "local start = os.clock() while os.clock() - start < 0.05 do local t = {} end"),
        0);
    EXPECT_EQ(lua_pcall(L, 0, 0, 0), 0);
    quorlua::checkScriptLimits(L);
}

TEST(MemoryLimit, EndsAScriptThatEats)
{
    const Limited limited(0, 4 * megabyte);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor, "function eat() local t = {} while true do t[#t + 1] = {} end end\n"
                                 "function fits() return #string.rep('x', 1e6) end"),
              GlibStatus::Ok);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(scriptor.callSeg("eat"), GlibStatus::ScriptFailed);
        EXPECT_EQ(takeLimitReached(), LimitReached::Memory);
        EXPECT_EQ(scriptor.callSeg("fits"), GlibStatus::Ok);
        EXPECT_EQ(takeLimitReached(), LimitReached::None);
    }
}

TEST(MemoryLimit, IsExactToTheRequest)
{
    const Limited limited(0, 4 * megabyte);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor,
                       "function hold(size) held = nil collectgarbage() held = string.rep('x', size) end\n"
                       "function little() hold(1e6) end function much() hold(5e6) end"),
              GlibStatus::Ok);
    EXPECT_EQ(scriptor.callSeg("little"), GlibStatus::Ok);
    EXPECT_EQ(scriptor.callSeg("much"), GlibStatus::ScriptFailed);
    EXPECT_EQ(scriptor.callSeg("little"), GlibStatus::Ok);
}

TEST(MemoryLimit, ThatLeavesNoStateIsNotTakenForAnUnchangedFile)
{
    // Archives and builds that are to be repeatable date files in the first seconds of the clock.
    constexpr long long oldest = 2;
    ScriptFolder folder;
    const std::string path = folder.write("a.lua", "a = 1", 1000);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(scriptor.loadFile(path.c_str(), false), GlibStatus::Ok);
    folder.write("a.lua", "a = 1", oldest);
    {
        const Limited limited(0, 1000);
        EXPECT_EQ(scriptor.loadFile(path.c_str(), true), GlibStatus::ScriptFailed);
        EXPECT_EQ(scriptor.getLua(false), nullptr);
    }
    EXPECT_EQ(scriptor.loadFile(path.c_str(), true), GlibStatus::Ok);
    EXPECT_NE(scriptor.getLua(false), nullptr);
}

#if defined(LUAJIT_VERSION)
TEST(MemoryLimit, LetsNoScriptHaveCodeCompiled)
{
    const Limited limited(0, 4 * megabyte);
    QuorGlibScriptor scriptor;
    EXPECT_EQ(runChunk(scriptor, "jit.on() assert(not jit.status())"), GlibStatus::Ok);
    quorlua::limitNewStates({});
    QuorGlibScriptor free;
    EXPECT_EQ(runChunk(free, "assert(jit.status())"), GlibStatus::Ok);
}
#endif

TEST(MemoryLimit, LeavesWhatAScriptHoldsAndRefusesMore)
{
    const Limited limited(0, 4 * megabyte);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(runChunk(scriptor, "list = {}\n"
                                 "function fill() for i = 1, 1e7 do list[i] = {} end end\n"
                                 "function isKept() assert(#list > 1000) end\n"
                                 "function release() list = nil end"),
              GlibStatus::Ok);
    EXPECT_EQ(scriptor.callSeg("fill"), GlibStatus::ScriptFailed);
    EXPECT_EQ(scriptor.callSeg("isKept"), GlibStatus::Ok);
    EXPECT_EQ(scriptor.callSeg("release"), GlibStatus::Ok);
}

TEST(MemoryLimit, RefusesNothingToAHostOutsideOfOperations)
{
    const Limited limited(0, megabyte);
    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
    ASSERT_NE(L, nullptr);
    lua_newuserdata(L, 4 * megabyte);
    lua_pop(L, 1);
    lua_gc(L, LUA_GCCOLLECT, 0);
    EXPECT_EQ(runChunk(scriptor, "x = {}"), GlibStatus::Ok);
}

TEST(MemoryLimit, CountsWhatAHostHolds)
{
    const Limited limited(0, 4 * megabyte);
    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
    ASSERT_NE(L, nullptr);
    const int top = lua_gettop(L);
    lua_newuserdata(L, 8 * megabyte);
    EXPECT_EQ(runChunk(scriptor, "x = {}"), GlibStatus::ScriptFailed);
    EXPECT_EQ(takeLimitReached(), LimitReached::Memory);
    scriptor.initLua();
    EXPECT_EQ(lua_gettop(scriptor.getLua(false)), top);
    EXPECT_EQ(runChunk(scriptor, "x = {}"), GlibStatus::Ok);
}

TEST(MemoryLimit, IsNoLimitOfTimeWhereAHostAsks)
{
    const Limited limited(0, 4 * megabyte);
    QuorGlibScriptor scriptor;
    lua_register(scriptor.getLua(false), "waitAndAsk", waitAndAsk);
    EXPECT_EQ(runChunk(scriptor, "waitAndAsk()"), GlibStatus::Ok);
}

TEST(MemoryLimit, BelowWhatTheLibrariesTakeLeavesNoState)
{
    const Limited limited(0, 10000);
    QuorGlibScriptor scriptor;
    EXPECT_EQ(scriptor.getLua(false), nullptr);
    EXPECT_EQ(scriptor.callSeg("any"), GlibStatus::NoState);
}

TEST(MemoryLimit, IsThatOfEachThreadsOwnOperations)
{
    const Limited limited(0, 4 * megabyte);
    LimitReached there = LimitReached::None;
    std::thread([&there] {
        QuorGlibScriptor scriptor;
        EXPECT_EQ(runChunk(scriptor, "string.rep('x', 1e7)"), GlibStatus::ScriptFailed);
        there = takeLimitReached();
    }).join();
    EXPECT_EQ(there, LimitReached::Memory);
    EXPECT_EQ(takeLimitReached(), LimitReached::None);
}

} // namespace
