#include <QuorCommon/quorsys.h>

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorsys {
namespace {

// Asked for at every look-up of per-thread data: in the loader's fixed block access is one instruction.
[[gnu::tls_model("initial-exec")]] constinit thread_local unsigned int knownThreadId = 0;

// The one thread of a forked child has another id than the thread that it was copied from.
[[maybe_unused]] const int forkHandler = pthread_atfork(nullptr, nullptr, [] { knownThreadId = 0; });

} // namespace

unsigned int currentThreadId()
{
    if (knownThreadId == 0) knownThreadId = static_cast<unsigned int>(gettid());
    return knownThreadId;
}

bool fileModificationTime(const char* path, long long& seconds)
{
    seconds = 0;
    struct stat status;
    if (path == nullptr || stat(path, &status) != 0) return false;
    seconds = status.st_mtime;
    return true;
}

} // namespace quorsys
