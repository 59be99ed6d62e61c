#include <QuorMsgHandle/DebugTime.h>

#include "../../private/PerThread.h"

#include <algorithm>
#include <atomic>
#include <chrono>

namespace kxcom {
namespace {

using Clock = std::chrono::steady_clock;

struct Timer {
    unsigned long long depth = 0;
    unsigned long long count = 0;
    Clock::duration total{};
    Clock::time_point start{};
    bool timed = false;
};

constexpr short slotCount = 64;

#if !defined(_WIN32)

// A thread's timers, made at its first call. The pointer lies in the loader's fixed block, where access is
// one instruction. All per-thread data of a library goes there together, and what is left of that block is
// small when a host loads the library late: so the timers themselves lie elsewhere.
#if defined(__ELF__)
[[gnu::tls_model("initial-exec")]]
#endif
constinit thread_local Timer* known = nullptr;

#endif

struct Timers {
    Timer slots[slotCount];

#if !defined(_WIN32)
    ~Timers()
    {
        known = nullptr;
    }
#endif
};

constinit std::atomic<bool> clockOn{false};

[[gnu::noinline]] Timer* findTimers()
{
    auto* timers = platform::perThread<Timers>();
    return timers == nullptr ? nullptr : timers->slots;
}

/// The thread's timers; null where there are none.
Timer* allTimers()
{
#if defined(_WIN32)
    return findTimers(); // a variable of the thread is no shorter way there
#else
    if (known == nullptr) known = findTimers();
    return known;
#endif
}

/// The slot's timer; null for a number that is no slot, too.
Timer* timerOf(short slot)
{
    if (slot < 0 || slot >= slotCount) return nullptr;
    Timer* timers = allTimers();
    return timers == nullptr ? nullptr : timers + slot;
}

} // namespace

void quorDebugTimeBegin(short slot)
{
    Timer* timer = timerOf(slot);
    if (timer == nullptr || timer->depth++ != 0) return;
    timer->timed = clockOn.load(std::memory_order_relaxed);
    if (timer->timed) timer->start = Clock::now();
}

void quorDebugTimeEnd(short slot)
{
    Timer* timer = timerOf(slot);
    if (timer == nullptr || timer->depth == 0 || --timer->depth != 0) return;
    ++timer->count;
    if (timer->timed) timer->total += Clock::now() - timer->start;
}

void quorDebugTimeEnable(bool on)
{
    clockOn.store(on, std::memory_order_relaxed);
}

unsigned long long quorDebugTimeCount(short slot)
{
    const Timer* timer = timerOf(slot);
    return timer == nullptr ? 0 : timer->count;
}

double quorDebugTimeTotal(short slot)
{
    const Timer* timer = timerOf(slot);
    return timer == nullptr ? 0.0 : std::chrono::duration<double>(timer->total).count();
}

void quorDebugTimeReset()
{
    if (Timer* timers = allTimers()) std::fill_n(timers, slotCount, Timer());
}

} // namespace kxcom
