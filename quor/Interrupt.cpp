#include "Interrupt.h"

#include <atomic>
#include <csignal>

namespace quor::interrupt {
namespace {

std::atomic<int> noted = 0;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void note(int signal)
{
    noted = signal;
    std::signal(signal, SIG_DFL);
}

} // namespace

void watch()
{
    for (const int signal : {SIGINT, SIGTERM}) {
        if (std::signal(signal, note) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

int signal()
{
    return noted;
}

} // namespace quor::interrupt
