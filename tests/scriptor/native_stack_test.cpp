// Scripts that use up the processor's stack, on threads with little of it and with much.

#include "script_limits.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <memory>
#include <vector>

using Quor::GlibStatus;

namespace {

struct Run {
    const char* chunk;
    GlibStatus status;
};

void run(void* given)
{
    Run& wanted = *static_cast<Run*>(given);
    QuorGlibScriptor scriptor;
    std::string chunk = wanted.chunk;
    wanted.status = scriptor.loadBuffer(bufferOf(chunk), 100, false);
}

/// What a chunk's load gives on a thread with a stack of so many kilobytes.
GlibStatus statusOn(std::size_t kilobytes, const char* chunk, void (*work)(void* data) = run)
{
    Run wanted{chunk, GlibStatus::NoState};
    EXPECT_TRUE(sys::runOnStack(kilobytes * 1024, work, &wanted));
    return wanted.status;
}

constexpr std::size_t stacks[] = {256, 1024, 8192};

TEST(NativeStack, SufficesForCallbacksThatSubstituteWithoutEnd)
{
    for (const std::size_t kilobytes : stacks)
        EXPECT_EQ(statusOn(kilobytes,
                           "local function down(s) return (s:gsub('.', down)) end\n"
                           "local ok, text = pcall(down, 'a')\n"
                           "assert(not ok and string.find(text, 'stack overflow', 1, true), text)"),
                  GlibStatus::Ok)
            << kilobytes;
}

TEST(NativeStack, SufficesForCallbacksThatSubstituteOnceMore)
{
    for (const std::size_t kilobytes : stacks)
        EXPECT_EQ(statusOn(kilobytes, "local function inner() return 'c' end\n"
                                      "local function outer(s) return (s:gsub('.', inner)) end\n"
                                      "assert(('ab'):gsub('.', outer) == 'cc')"),
                  GlibStatus::Ok)
            << kilobytes;
}

TEST(NativeStack, SufficesForPatternsOfAnyLength)
{
    for (const std::size_t kilobytes : stacks)
        for (const char* call : {"s:find(p)", "s:match(p)", "s:gsub(p, '')", "s:gmatch(p)()"}) {
            const std::string chunk = std::string("for _, item in ipairs({'a?', 'a*', 'a-'}) do\n"
                                                  "local s, p = ('a'):rep(100000), item:rep(100000)\n"
                                                  "local ok, text = pcall(function() return ") +
                                      call + " end) assert(not ok, text) end";
            EXPECT_EQ(statusOn(kilobytes, chunk.c_str()), GlibStatus::Ok) << kilobytes << " " << call;
        }
}

TEST(NativeStack, LeavesPatternsAloneThatFit)
{
    const char* chunk = "local s = ('a'):rep(150)\n"
                        "assert(s:find(('a?'):rep(150)) == 1)\n"
                        "assert(s:match('^' .. ('a'):rep(150) .. '$') == s)\n"
                        "local text = ('-'):rep(100000) assert(text:find(text, 1, true) == 1)\n"
                        "local n = 0 for word in ('one two'):gmatch('%a+') do n = n + 1 end assert(n == 2)\n"
                        "assert(('%d'):rep(2):gsub('%%', '') == 'dd')";
    for (const std::size_t kilobytes : stacks)
        EXPECT_EQ(statusOn(kilobytes, chunk), GlibStatus::Ok) << kilobytes;
}

/// Ways to recurse through the interpreter's own code, and the library's.
const char* const recursions[] = {
    "local function f() return (coroutine.wrap(f)()) end assert(not pcall(f))",
    "local function f() table.sort({1, 2, 3}, f) return true end pcall(f)",
    "local function f() return (pcall(f)) end f()",
    "local function f() return (xpcall(error, f)) end f()",
    "loadstring(('function f() '):rep(190) .. (' end'):rep(190))",
    "loadstring(('('):rep(100000))",
    "package.preload.x = function() package.loaded.x = nil return (require('x')) end pcall(require, 'x')",
    "local function f(s) loadstring(('function f() '):rep(190) .. (' end'):rep(190)) return (s:gsub('.', "
    "f)) end "
    "pcall(f, 'a')",
    "local m = {} m.__index = function(t, k) return (setmetatable({}, m)[k]) end pcall(m.__index, {}, 1)",
    // Of some functions the depth has no end when they do not fail, only breadth.
    "local function f() local read = false load(function() if not read then read = true f() end end) end f()",
    "local source = ('do '):rep(90) .. (' end '):rep(90) local function f() local read = false "
    "load(function() if not read then read = true f() end end) return loadstring(source) end f()",
    "local o o = setmetatable({}, {__tostring = function(s) return (string.format('%s', s)) end}) "
    "pcall(string.format, '%s', o) pcall(tostring, o)",
    "local t t = setmetatable({}, {__index = function(s) return (os.time(s)) end}) pcall(os.time, t)",
    "local n = 0 local module = module local function f() n = n + 1 module('m' .. n, f) end pcall(f)",
    "local print, tostring = print, tostring _G.tostring = function() return (print(1)) end pcall(print, 1) "
    "_G.tostring = tostring",
    "local t t = setmetatable({}, {__index = function() return (string.gsub('a', 'a', t)) end}) "
    "pcall(string.gsub, 'a', 'a', t)",
    "local function f() return (table.foreach({1}, f)) end pcall(f)",
    "local function f() return (xpcall(f, f)) end f()",
    "local m = {} m.__lt = function(a, b) table.sort({a, b, a}) return true end "
    "local o = setmetatable({}, m) pcall(table.sort, {o, o, o})",
};

#if defined(LUAJIT_VERSION)
constexpr std::size_t recursionStacks[] = {512, 600};
#else
constexpr std::size_t recursionStacks[] = {256, 280, 1024, 1700};
#endif

TEST(NativeStack, SufficesForEveryOtherRecursion)
{
    for (const std::size_t kilobytes : recursionStacks)
        for (const char* chunk : recursions)
            EXPECT_EQ(statusOn(kilobytes, chunk), GlibStatus::Ok) << kilobytes << " " << chunk;
}

TEST(NativeStack, SufficesForEveryOtherRecursionOfAnUntrustedScript)
{
    const Limited untrusted(0, 0, true);
    for (const std::size_t kilobytes : recursionStacks)
        for (const char* chunk : recursions)
            EXPECT_EQ(statusOn(kilobytes, chunk), GlibStatus::Ok) << kilobytes << " " << chunk;
}

TEST(NativeStack, SufficesForFinalizersWithinFinalizers)
{
    const char* chunk = "local depth, made = 0, 0\n"
                        "local function arm()\n"
                        "made = made + 1 if made > 5000 then return end\n"
                        "getmetatable(newproxy(true)).__gc = function()\n"
                        "depth = depth + 1 for i = 1, 20 do arm() end\n"
                        "for i = 1, 20 do collectgarbage('restart') string.upper(('x'):rep(5000) .. i) end\n"
                        "depth = depth - 1 end end\n"
                        "for i = 1, 200 do arm() end\n"
                        "for i = 1, 200 do pcall(string.upper, ('x'):rep(5000) .. i) end";
    for (const std::size_t kilobytes : recursionStacks)
        EXPECT_NE(statusOn(kilobytes, chunk), GlibStatus::NoState) << kilobytes;
}

#if defined(LUAJIT_VERSION)
TEST(NativeStack, SufficesForBuffersThatAskForTexts)
{
    for (const char* call : {"put(o)", "putf('%s', o)"}) {
        const std::string chunk = "local new = require('string.buffer').new\n"
                                  "local o o = setmetatable({}, {__tostring = function() new():" +
                                  std::string(call) +
                                  " return '' end})\nlocal ok, text = pcall(tostring, o)\n"
                                  "assert(not ok and string.find(text, 'stack overflow', 1, true), text)";
        for (const std::size_t kilobytes : recursionStacks)
            EXPECT_EQ(statusOn(kilobytes, chunk.c_str()), GlibStatus::Ok) << kilobytes << " " << call;
    }
}
#endif

/// A host's functions that call the script.
QuorGlibScriptor* calling = nullptr;

int callSegment(lua_State* L)
{
    lua_pushinteger(L, static_cast<int>(calling->callSeg("again")));
    return 1;
}

int callByFormat(lua_State* L)
{
    lua_pushboolean(L, static_cast<int>(quorlua::callLuaFunc(L, "again", "d", 1.5)));
    return 1;
}

int callInTwoSteps(lua_State* L)
{
    const int count = quorlua::prepareCallParam(L, "again", "d", 1.5);
    lua_pushboolean(L, static_cast<int>(count >= 0 && quorlua::callLuaFunc1(L, "again", count, "")));
    return 1;
}

int callPushed(lua_State* L)
{
    lua_getglobal(L, "again");
    lua_pushboolean(L, static_cast<int>(quorlua::callLuaFunc1(L, "again", 0, "")));
    return 1;
}

constexpr luaL_Reg hostFunctions[] = {{"segment", callSegment},
                                      {"format", callByFormat},
                                      {"steps", callInTwoSteps},
                                      {"pushed", callPushed},
                                      {nullptr, nullptr}};

void runWithHost(void* given)
{
    Run& wanted = *static_cast<Run*>(given);
    QuorGlibScriptor scriptor;
    calling = &scriptor;
    scriptor.addLib("host", hostFunctions);
    std::string chunk = wanted.chunk;
    wanted.status = scriptor.loadBuffer(bufferOf(chunk), 100, false);
}

TEST(NativeStack, SufficesForHostFunctionsThatCallTheScript)
{
    for (const char* name : {"segment", "format", "steps", "pushed"})
        for (const std::size_t kilobytes : {recursionStacks[0], stacks[1], stacks[2]}) {
            const std::string chunk = "local depth, deepest = 0, 0 function again() depth = depth + 1 "
                                      "deepest = math.max(depth, deepest) host." +
                                      std::string(name) +
                                      "() depth = depth - 1 end again() assert(deepest > 5)";
            EXPECT_EQ(statusOn(kilobytes, chunk.c_str(), runWithHost), GlibStatus::Ok)
                << kilobytes << " " << name;
        }
}

/// Scriptors that call each other in turn. An interpreter counts the calls of each state alone.
std::vector<std::unique_ptr<QuorGlibScriptor>> inTurn;
int turns = 0;
int deepestTurn = 0;

enum class Asked { Segment, Primitives, Parameters, Buffer };
Asked asked = Asked::Segment;

int callNext(lua_State*)
{
    QuorGlibScriptor& next = *inTurn[static_cast<std::size_t>(++turns) % inTurn.size()];
    deepestTurn = std::max(deepestTurn, turns);
    std::vector<QuorPrimary*> primitives;
    std::vector<KVParams> record(1);
    std::string chunk = "host.next()";
    switch (asked) {
    case Asked::Segment:
        static_cast<void>(next.callSeg("turn"));
        break;
    case Asked::Primitives:
        static_cast<void>(next.callSeg3D("turn", primitives));
        break;
    case Asked::Parameters:
        record[0].key = "length";
        record[0].value = KVValue::ofDouble(1);
        next.setKeyValues(record, 1);
        break;
    case Asked::Buffer:
        static_cast<void>(next.loadBuffer(bufferOf(chunk), 1000LL * turns, false));
        break;
    }
    --turns;
    return 0;
}

void runInTurn(void* given)
{
    Run& wanted = *static_cast<Run*>(given);
    static constexpr luaL_Reg host[] = {{"next", callNext}, {nullptr, nullptr}};
    for (const std::unique_ptr<QuorGlibScriptor>& scriptor : inTurn) {
        scriptor->addLib("host", host);
        std::string chunk = wanted.chunk;
        ASSERT_EQ(scriptor->loadBuffer(bufferOf(chunk), 100, false), GlibStatus::Ok);
    }
    turns = deepestTurn = 0;
    wanted.status = inTurn.front()->callSeg("turn");
}

TEST(NativeStack, SufficesForScriptorsThatCallEachOther)
{
    lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
    // A pattern that is matched without a look at the stack takes part of the reserve.
    const char* chunk = "function turn() local x = ('a'):rep(150) x:find(('a?'):rep(150)) host.next() end "
                        "local turn = turn param = setmetatable({}, {__newindex = function() turn() end})";
    for (const Asked how : {Asked::Segment, Asked::Primitives, Asked::Parameters, Asked::Buffer})
        for (const std::size_t scriptors : {2, 8})
            for (const std::size_t kilobytes : {recursionStacks[0], stacks[1], stacks[2]}) {
                SCOPED_TRACE(std::to_string(static_cast<int>(how)) + " " + std::to_string(kilobytes));
                asked = how;
                inTurn.clear();
                for (std::size_t i = 0; i < scriptors; ++i)
                    inTurn.push_back(std::make_unique<QuorGlibScriptor>());
                EXPECT_EQ(statusOn(kilobytes, chunk, runInTurn), GlibStatus::Ok);
                EXPECT_GT(deepestTurn, 5);
            }
    inTurn.clear();
    lua_tinker::set_error_outlet(nullptr, nullptr);
}

int drawInNewScriptor(lua_State*)
{
    deepestTurn = std::max(deepestTurn, ++turns);
    QuorGlibScriptor referenced;
    std::string chunk = "drawing.draw()";
    static_cast<void>(referenced.loadBuffer(bufferOf(chunk), 100, false));
    --turns;
    return 0;
}

TEST(NativeStack, SufficesForAScriptorMadeAtEachCall)
{
    static constexpr luaL_Reg host[] = {{"draw", drawInNewScriptor}, {nullptr, nullptr}};
    lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
    quorlua::addRegLuaModule("drawing", host);
    for (const std::size_t kilobytes : {recursionStacks[0], stacks[1]}) {
        turns = deepestTurn = 0;
        EXPECT_EQ(statusOn(kilobytes, "drawing.draw()"), GlibStatus::Ok) << kilobytes;
        EXPECT_GT(deepestTurn, 5) << kilobytes;
    }
    lua_tinker::set_error_outlet(nullptr, nullptr);
}

/// As a host's own `print` may be.
int showText(lua_State* L)
{
    lua_getglobal(L, "tostring");
    lua_pushvalue(L, 1);
    lua_call(L, 1, 1);
    return 0;
}

TEST(NativeStack, SufficesForAFunctionOfTheHostInPlaceOfTheInterpreters)
{
    static constexpr luaL_Reg replaced[] = {{"print", showText}, {nullptr, nullptr}};
    quorlua::addRegLuaModule("_G", replaced);
    for (const std::size_t kilobytes : recursionStacks)
        EXPECT_EQ(statusOn(kilobytes, "local print = print function tostring() return (print(1)) end "
                                      "assert(not pcall(print, 1))"),
                  GlibStatus::Ok)
            << kilobytes;
}

/// Runs a chunk, and then a pattern that takes more stack than there is.
GlibStatus statusWithLongPattern(const char* before)
{
    QuorGlibScriptor scriptor;
    std::string chunk = before;
    chunk += "\nlocal s = ('a'):rep(300000)\n"
             "local ok, text = pcall(string.find, s, ('a?'):rep(300000) .. 'b')\n"
             "assert(not ok)";
    return runChunk(scriptor, chunk);
}

TEST(NativeStack, IsKnownToAScriptThatHasOpenedAllFiles)
{
    const sys::FewFiles few;
    EXPECT_EQ(statusWithLongPattern("local kept = {} repeat local file = io.open('/dev/null') "
                                    "kept[#kept + 1] = file until not file"),
              GlibStatus::Ok);
}

TEST(NativeStack, IsAssumedToBeSmallWhereNobodyTells)
{
    const sys::FewFiles few;
    std::vector<std::ifstream> files;
    while (files.emplace_back("/dev/null")) {
    }
    EXPECT_EQ(statusWithLongPattern("assert(('ab'):gsub('.', function() return 'c' end) == 'cc')"),
              GlibStatus::Ok);
}

TEST(Safeguards, SayWhatTheInterpreterSays)
{
    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
    EXPECT_EQ(luatext::shown(L, "select(2, pcall(function() unpack(5) end))"),
              "[string \"shown\"]:1: bad argument #1 to 'unpack' (table expected, got number)");
    EXPECT_EQ(luatext::shown(L, "select(2, pcall(unpack, {}, 1, 1e7))"), "too many results to unpack");
    EXPECT_EQ(luatext::shown(L, "select('#', unpack({1, nil, 3}, 1, 3))"), "3");
    EXPECT_EQ(luatext::shown(L, "select('#', unpack({}, 5, 1))"), "0");
    EXPECT_EQ(luatext::shown(L, "select('#', unpack({}, 2^31 - 3, 2^31 - 1))"), "3");
    EXPECT_EQ(luatext::shown(L, "select(2, pcall(function() string.find() end))"),
              "[string \"shown\"]:1: bad argument #1 to 'find' (string expected, got no value)");
    EXPECT_THAT(luatext::shown(L, "select(2, pcall(function() return string.match('a', '(') end))"),
                testing::HasSubstr("unfinished capture"));
}

} // namespace
