// Scripts that use up the processor's stack, on threads with little of it and with much.

#include "scriptor_fixture.h"

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
GlibStatus statusOn(std::size_t kilobytes, const char* chunk)
{
    Run wanted{chunk, GlibStatus::NoState};
    EXPECT_TRUE(sys::runOnStack(kilobytes * 1024, run, &wanted));
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

TEST(NativeStack, SufficesForEveryOtherRecursion)
{
    const char* chunks[] = {
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
    };
#if defined(LUAJIT_VERSION)
    constexpr std::size_t kilobytes = 512;
#else
    constexpr std::size_t kilobytes = 256;
#endif
    for (const char* chunk : chunks)
        EXPECT_EQ(statusOn(kilobytes, chunk), GlibStatus::Ok) << chunk;
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
