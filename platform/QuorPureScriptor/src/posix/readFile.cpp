#include "../ReadFile.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace lua_tinker::detail {
namespace {

std::string reason(int error)
{
    return std::generic_category().message(error);
}

} // namespace

std::string readFile(const char* path, std::string& problem)
{
    std::string bytes;
    struct Closer {
        ~Closer()
        {
            if (file >= 0) ::close(file);
        }
        int file;
        // Without waiting: a pipe without a writer would hold the host for ever.
    } opened{::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)};
    struct stat status {};
    if (opened.file < 0 || ::fstat(opened.file, &status) != 0) {
        problem = cannot("open", path, reason(errno));
        return bytes;
    }
    if (!S_ISREG(status.st_mode)) {
        problem = cannot("open", path, S_ISDIR(status.st_mode) ? reason(EISDIR) : "not a regular file");
        return bytes;
    }
    if (status.st_size > 0 && status.st_size < 0x1000000)
        bytes.reserve(static_cast<std::size_t>(status.st_size));
    char part[16384];
    for (;;) {
        const ssize_t count = ::read(opened.file, part, sizeof part);
        if (count > 0) {
            bytes.append(part, static_cast<std::size_t>(count));
        } else if (count == 0) {
            return bytes;
        } else if (errno != EINTR) {
            problem = cannot("read", path, reason(errno));
            return bytes;
        }
    }
}

} // namespace lua_tinker::detail
