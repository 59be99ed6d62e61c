#include <QuorMsgHandle/DebugTime.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <type_traits>

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

static_assert(std::is_trivially_destructible_v<Timer>);
constinit thread_local Timer timers[slotCount];

// Where a thread's timers are, known after its first call. A pointer is small enough for the loader's fixed
// block, where access is one instruction; the timers themselves would not fit when a host loads this library
// late.
#if defined(__ELF__)
[[gnu::tls_model("initial-exec")]]
#endif
constinit thread_local Timer* known = nullptr;

constinit std::atomic<bool> clockOn{false};

[[gnu::noinline]] Timer* findTimers()
{
    known = timers;
    return known;
}

/// The slot's timer; null for a number that is no slot.
Timer* timerOf(short slot)
{
    if (slot < 0 || slot >= slotCount) return nullptr;
    return (known == nullptr ? findTimers() : known) + slot;
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
    for (Timer& timer : timers)
        timer = Timer();
}

} // namespace kxcom
