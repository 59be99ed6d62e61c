#include "../OutputFile.h"

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace quor {
namespace {

void doNothing(int) {}

} // namespace

StandardOutputAside::StandardOutputAside() : kept_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1))
{
    // Programs that a script starts would inherit it, if the signal were ignored.
    onBrokenPipe_ = std::signal(SIGPIPE, doNothing);
    std::fflush(stdout);
    if (kept_ >= 0) dup2(STDERR_FILENO, STDOUT_FILENO);
}

StandardOutputAside::~StandardOutputAside()
{
    std::fflush(stdout);
    std::signal(SIGPIPE, onBrokenPipe_);
    if (kept_ < 0) return;
    dup2(kept_, STDOUT_FILENO);
    close(kept_);
}

} // namespace quor
