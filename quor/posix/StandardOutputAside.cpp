#include "../OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

namespace quor {

StandardOutputAside::StandardOutputAside() : kept_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1))
{
    std::fflush(stdout);
    if (kept_ >= 0) dup2(STDERR_FILENO, STDOUT_FILENO);
}

StandardOutputAside::~StandardOutputAside()
{
    std::fflush(stdout);
    if (kept_ < 0) return;
    dup2(kept_, STDOUT_FILENO);
    close(kept_);
}

} // namespace quor
