#include "Limits.h"

#include "Guard.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/ScriptLimits.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <new>

namespace quorlua {
namespace limits {

using Clock = std::chrono::steady_clock;

struct Limiter {
    Limiter() noexcept = default;

    /// The state's own allocator.
    lua_Alloc allocate = nullptr;
    void* allocator = nullptr;
    std::size_t used = 0;
    std::size_t mostBytes = std::numeric_limits<std::size_t>::max();
    /// Zero for no limit.
    Clock::duration time = Clock::duration::zero();
    Clock::time_point deadline;
    /// Of the outermost operation.
    lua_State* running = nullptr;
    int operations = 0;
    unsigned int requests = 0;
    bool isOver = false;
    bool isReported = false;
    bool wasRefused = false;
    bool untrusted = false;
    const void* passed[2] = {nullptr, nullptr};
#if defined(LUAJIT_VERSION)
    lua_State* state = nullptr;
    bool takesLastBlock = false;
    const void* lastBlock = nullptr;
#endif
    char message[96] = "";
};

constinit std::atomic<bool> inUse{false};

namespace {

// Between two looks at the clock: some 10 microseconds of instructions.
constexpr int usualCount = 1000;
constexpr unsigned int requestsBetweenLooks = 64;
// To fill so much takes as long as many small requests.
constexpr std::size_t largeRequest = 65536;
// For finalizers, when a state at its limit is cleaned up.
constexpr std::size_t slackOfCollection = 65536;

/// Beyond it a clock could not count.
constexpr double mostSeconds = 1e8;

ScriptLimits limitsOfNewStates;
constinit thread_local LimitReached reached = LimitReached::None;

bool isTimed(const Limiter& limiter)
{
    return limiter.time != Clock::duration::zero();
}

void noteOver(Limiter& limiter)
{
    limiter.isOver = true;
    reached = LimitReached::Time;
}

bool mayGrow(Limiter& limiter, std::size_t more)
{
    // Outside of operations nobody could catch the error.
    if (limiter.operations == 0) return true;
    if (isTimed(limiter)) {
        const bool look = ++limiter.requests % requestsBetweenLooks == 0 || more >= largeRequest;
        if (!limiter.isOver && look && Clock::now() >= limiter.deadline) noteOver(limiter);
        if (limiter.isOver) return false;
    }
    if (limiter.used <= limiter.mostBytes && more <= limiter.mostBytes - limiter.used) return true;
    limiter.wasRefused = true;
    return false;
}

/// Never refuses to shrink a block or to keep its size, which the interpreter relies on.
void* allocate(void* user, void* block, std::size_t before, std::size_t size)
{
    Limiter& limiter = *static_cast<Limiter*>(user);
    const std::size_t held = block ? before : 0;
    if (size > held && !mayGrow(limiter, size - held)) return nullptr;
    void* made = limiter.allocate(limiter.allocator, block, before, size);
    if (made || size == 0) limiter.used += size - held;
#if defined(LUAJIT_VERSION)
    if (limiter.takesLastBlock && !block) limiter.lastBlock = made;
    if (block && block == limiter.lastBlock)
        lua_setallocf(limiter.state, limiter.allocate, limiter.allocator);
#endif
    return made;
}

Limiter* limiterOf(lua_State* L)
{
    if (!inUse.load(std::memory_order_relaxed) || !L) return nullptr;
    void* user = nullptr;
    return lua_getallocf(L, &user) == allocate ? static_cast<Limiter*>(user) : nullptr;
}

void count(lua_State* L, lua_Debug*);

void setHook(lua_State* L, int instructions)
{
    lua_sethook(L, count, LUA_MASKCOUNT, instructions);
}

/// Tells where the script stood, past "_ALERT": nothing of the script's runs any more.
void reportOnce(lua_State* L, Limiter& limiter)
{
    if (limiter.isReported) return;
    limiter.isReported = true;
    lua_Debug frame{};
    if (lua_getstack(L, 0, &frame) != 0 && lua_getinfo(L, "Sl", &frame) != 0 && frame.currentline > 0)
        lua_tinker::print_error(nullptr, "%s:%d: %s", frame.short_src, frame.currentline, limiter.message);
    else
        lua_tinker::print_error(nullptr, "%s", limiter.message);
}

/// Raises an error when the time is over: one of memory. The interpreter runs a message handler for every
/// other, and while a hook is at work it calls no hook for what the handler does. [-0, +0, e]
void check(lua_State* L, Limiter& limiter)
{
    if (limiter.operations == 0 || !isTimed(limiter)) return;
    if (!limiter.isOver && Clock::now() < limiter.deadline) return;
    reportOnce(L, limiter);
    noteOver(limiter);
    lua_newuserdata(L, 1);
    luaL_error(L, "%s", limiter.message); // the host has put another allocator in place
}

void count(lua_State* L, lua_Debug*)
{
    Limiter* limiter = limiterOf(L);
    if (!limiter) return;
    const bool isOver = limiter->operations > 0 && (limiter->isOver || Clock::now() >= limiter->deadline);
    const int wanted = isOver ? 1 : usualCount;
    if (lua_gethookcount(L) != wanted) setHook(L, wanted);
    check(L, *limiter);
}

int collectAll(lua_State* L)
{
    lua_gc(L, LUA_GCCOLLECT, 0);
    return 0;
}

/// Without it a state that is full of what nobody uses any more would not get as far as to collect it.
void cleanUp(Limiter& limiter)
{
    const std::size_t most = limiter.mostBytes;
    limiter.mostBytes = most + slackOfCollection;
    if (lua_cpcall(limiter.running, collectAll, nullptr) != 0) lua_pop(limiter.running, 1);
    limiter.mostBytes = most;
}

std::size_t bytesOf(lua_State* L)
{
    constexpr std::size_t kilobyte = 1024;
    return static_cast<std::size_t>(lua_gc(L, LUA_GCCOUNT, 0)) * kilobyte +
           static_cast<std::size_t>(lua_gc(L, LUA_GCCOUNTB, 0));
}

void setTime(Limiter& limiter, double seconds)
{
    if (!(seconds > 0)) return;
    const auto time = std::chrono::duration<double>(seconds < mostSeconds ? seconds : mostSeconds);
    limiter.time = std::max(std::chrono::duration_cast<Clock::duration>(time), Clock::duration(1));
    char digits[32];
    const std::size_t length = numberText(seconds, digits);
    std::snprintf(limiter.message, sizeof limiter.message,
                  "time limit: the script was stopped after %.*s seconds", static_cast<int>(length), digits);
}

#if defined(LUAJIT_VERSION)

/// That engine keeps memory of its own behind its allocator, and gives it back only where it finds that
/// allocator again as the state ends. So it gets it back as soon as no finalizer can run any more, which is
/// when it frees what the registry holds.
int keepLastBlock(lua_State* L)
{
    constexpr int key = -0x51553104;
    Limiter* limiter = limiterOf(L);
    limiter->takesLastBlock = true;
    lua_newuserdata(L, 1);
    limiter->takesLastBlock = false;
    lua_rawseti(L, LUA_REGISTRYINDEX, key);
    return 0;
}

#endif

} // namespace

Limiter* begin(lua_State* L)
{
    Limiter* limiter = limiterOf(L);
    if (!limiter) return nullptr;
    if (limiter->operations++ > 0) return limiter;
    limiter->running = L;
    if (!isTimed(*limiter)) return limiter;
    if (!lua_gethook(L)) setHook(L, usualCount);
    limiter->deadline = Clock::now() + limiter->time;
    return limiter;
}

void end(Limiter& limiter)
{
    if (limiter.operations > 1) {
        --limiter.operations;
        return;
    }
    if (limiter.wasRefused) {
        if (reached == LimitReached::None) reached = LimitReached::Memory;
        cleanUp(limiter);
    }
    limiter.operations = 0;
    limiter.isOver = false;
    limiter.wasRefused = false;
    limiter.isReported = false;
}

bool limitNewState(lua_State* L, bool untrusted)
{
    ScriptLimits wanted = limitsOfNewStates;
    wanted.untrusted = wanted.untrusted || untrusted;
    if (!(wanted.seconds > 0) && wanted.bytes == 0 && !wanted.untrusted) return true;
    auto* limiter = new (std::nothrow) Limiter;
    if (!limiter) return false;
    if (wanted.bytes > 0) limiter->mostBytes = wanted.bytes;
    limiter->untrusted = wanted.untrusted;
    setTime(*limiter, wanted.seconds);
    limiter->allocate = lua_getallocf(L, &limiter->allocator);
    limiter->used = bytesOf(L);
#if defined(LUAJIT_VERSION)
    limiter->state = L;
#endif
    lua_setallocf(L, allocate, limiter);
    // From the beginning: each coroutine takes over the hook of the one that makes it.
    if (isTimed(*limiter)) setHook(L, usualCount);
    bool complete = guard::prepare(L);
#if defined(LUAJIT_VERSION)
    complete = complete && lua_cpcall(L, keepLastBlock, nullptr) == 0;
#endif
    if (complete) return true;
    lua_setallocf(L, limiter->allocate, limiter->allocator);
    lua_sethook(L, nullptr, 0, 0);
    lua_settop(L, 0);
    delete limiter;
    return false;
}

void closeState(lua_State* L)
{
    const std::unique_ptr<Limiter> limiter(limiterOf(L));
    begin(L);
    lua_close(L);
}

bool hasTimeLimit(lua_State* L)
{
    const Limiter* limiter = limiterOf(L);
    return limiter && isTimed(*limiter);
}

bool hasMemoryLimit(lua_State* L)
{
    const Limiter* limiter = limiterOf(L);
    return limiter && limiter->mostBytes != Limiter().mostBytes;
}

bool isTimeOver(lua_State* L)
{
    Limiter* limiter = limiterOf(L);
    if (!limiter || limiter->operations == 0 || !isTimed(*limiter)) return false;
    if (!limiter->isOver && Clock::now() < limiter->deadline) return false;
    reportOnce(L, *limiter);
    noteOver(*limiter);
    return true;
}

bool isUntrusted(lua_State* L)
{
    const Limiter* limiter = limiterOf(L);
    return limiter && limiter->untrusted;
}

void rememberPassed(lua_State* L, Passed which, const void* pointer)
{
    if (Limiter* limiter = limiterOf(L)) limiter->passed[static_cast<int>(which)] = pointer;
}

bool mayBeUsed(lua_State* L, Passed which, const void* pointer)
{
    const Limiter* limiter = limiterOf(L);
    return !limiter || !limiter->untrusted || limiter->passed[static_cast<int>(which)] == pointer;
}

} // namespace limits

void limitNewStates(const ScriptLimits& wanted)
{
    limits::limitsOfNewStates = wanted;
    if (wanted.seconds > 0 || wanted.bytes > 0 || wanted.untrusted) limits::inUse = true;
}

ScriptOperation::ScriptOperation(lua_State* L)
    : limiter_(limits::inUse.load(std::memory_order_relaxed) ? limits::begin(L) : nullptr)
{
}

ScriptOperation::~ScriptOperation()
{
    if (limiter_) limits::end(*static_cast<limits::Limiter*>(limiter_));
}

LimitReached takeLimitReached()
{
    const LimitReached met = limits::reached;
    limits::reached = LimitReached::None;
    return met;
}

void checkScriptLimits(lua_State* L)
{
    if (limits::Limiter* limiter = limits::limiterOf(L)) limits::check(L, *limiter);
}

} // namespace quorlua
