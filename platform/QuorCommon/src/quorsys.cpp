#include <QuorCommon/quorsys.h>

#if defined(_WIN32)
#include <sys/stat.h>
#include <sys/types.h>
#include <windows.h>
#else
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace quorsys {

#if defined(_WIN32)

unsigned int currentThreadId()
{
    return static_cast<unsigned int>(GetCurrentThreadId());
}

bool fileModificationTime(const char* path, long long& seconds)
{
    seconds = 0;
    struct _stat64 status;
    if (path == nullptr || _stat64(path, &status) != 0) return false;
    seconds = status.st_mtime;
    return true;
}

#else

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

#endif

} // namespace quorsys
