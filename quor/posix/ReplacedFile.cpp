#include "../ReplacedFile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace quor::replacedfile {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(int reason)
{
    throw Refused(std::strerror(reason));
}

/// The permissions of a new file, which `mkstemp` keeps to the owner. To be known before threads start:
/// asking changes them for a moment.
const mode_t usualMode = [] {
    const mode_t mask = umask(0);
    umask(mask);
    return static_cast<mode_t>(0666 & ~mask);
}();

/// The file that a path leads to through links, also where there is none yet. Of links that lead in a circle,
/// one of them.
fs::path behindLinks(fs::path path)
{
    constexpr int mostLinks = 40;
    std::error_code error;
    for (int links = 0; links < mostLinks && fs::is_symlink(fs::symlink_status(path, error)); ++links)
        path = path.parent_path() / fs::read_symlink(path, error);
    return path;
}

} // namespace

std::string fileBehind(const std::string& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::directory) refuse(EISDIR);
    // A link stays a link: the file that it leads to is what is replaced.
    const fs::path target = behindLinks(path);
    if (fs::is_symlink(fs::symlink_status(target, error))) refuse(ELOOP);
    // An open file that was removed has a link in the system's folders, but no place any more.
    const bool replaceable = fs::is_regular_file(status) && fs::equivalent(path, target, error);
    if (fs::exists(status) && !replaceable) return {};
    return target.string();
}

std::FILE* openBeside(const std::string& file, std::string& temporary)
{
    struct stat before {};
    const bool replaces = stat(file.c_str(), &before) == 0;
    if (replaces && access(file.c_str(), W_OK) != 0) refuse(errno);
    std::string name = file + ".XXXXXX";
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) refuse(errno);
    fchmod(descriptor, replaces ? before.st_mode & 0777 : usualMode);
    std::FILE* opened = fdopen(descriptor, "wb");
    if (!opened) {
        const int reason = errno;
        close(descriptor);
        unlink(name.c_str());
        refuse(reason);
    }
    temporary = std::move(name);
    return opened;
}

void replace(const std::string& file, const std::string& temporary)
{
    if (std::rename(temporary.c_str(), file.c_str()) != 0) refuse(errno);
}

std::FILE* openAsItIs(const std::string& path)
{
    std::FILE* opened = std::fopen(path.c_str(), "wb");
    if (!opened) refuse(errno);
    return opened;
}

void remove(const std::string& file)
{
    unlink(file.c_str());
}

} // namespace quor::replacedfile
