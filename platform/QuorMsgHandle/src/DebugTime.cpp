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

bool isSlot(short slot)
{
    return slot >= 0 && slot < slotCount;
}

/// The slot's timer; null for a number that is no slot, too.
Timer* timerOf(short slot)
{
    if (!isSlot(slot)) return nullptr;
    Timer* timers = allTimers();
    return timers == nullptr ? nullptr : timers + slot;
}

// What is rare stands apart: what a function saves for it would be paid for by every call.
[[gnu::noinline]] void startClock(Timer& timer)
{
    timer.start = Clock::now();
}

[[gnu::noinline]] void stopClock(Timer& timer)
{
    timer.total += Clock::now() - timer.start;
}

void begin(Timer& timer)
{
    if (timer.depth++ != 0) return;
    timer.timed = clockOn.load(std::memory_order_relaxed);
    if (timer.timed) startClock(timer);
}

void end(Timer& timer)
{
    if (timer.depth == 0 || --timer.depth != 0) return;
    ++timer.count;
    if (timer.timed) stopClock(timer);
}

template<void (*act)(Timer& timer)>
[[gnu::noinline]] void onFoundTimer(short slot)
{
    if (Timer* timers = allTimers()) act(timers[slot]);
}

/// Does it with the slot's timer, where there is one.
template<void (*act)(Timer& timer)>
void onTimer(short slot)
{
    if (!isSlot(slot)) return;
#if !defined(_WIN32)
    if (known != nullptr) [[likely]]
        return act(known[slot]);
#endif
    onFoundTimer<act>(slot);
}

} // namespace

void quorDebugTimeBegin(short slot)
{
    onTimer<begin>(slot);
}

void quorDebugTimeEnd(short slot)
{
    onTimer<end>(slot);
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
