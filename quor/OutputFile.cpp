#include "OutputFile.h"

#include "Failure.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quor {
namespace {

namespace fs = std::filesystem;

constexpr const char* standardOutput = "-";

/// The permissions of a new file, which `mkstemp` keeps to the owner.
mode_t usualMode()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

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

OutputFile::OutputFile(std::string path) : path_(std::move(path))
{
    if (path_ == standardOutput) {
        file_ = stdout;
        return;
    }
    std::error_code error;
    const fs::file_status status = fs::status(path_, error);
    if (status.type() == fs::file_type::directory) fail(EISDIR);
    // A link stays a link: the file that it leads to is what is replaced.
    const fs::path target = behindLinks(path_);
    if (fs::is_symlink(fs::symlink_status(target, error))) fail(ELOOP);
    target_ = target.string();
    // An open file that was removed has a link in the system's folders, but no place any more.
    const bool replaceable = fs::is_regular_file(status) && fs::equivalent(path_, target, error);
    if (fs::exists(status) && !replaceable) {
        file_ = std::fopen(path_.c_str(), "wb");
        if (!file_) fail(errno);
        return;
    }
    openBeside();
}

void OutputFile::openBeside()
{
    struct stat before {};
    const bool replaces = stat(target_.c_str(), &before) == 0;
    if (replaces && access(target_.c_str(), W_OK) != 0) fail(errno);
    temporary_ = target_ + ".XXXXXX";
    const int descriptor = mkstemp(temporary_.data());
    if (descriptor < 0) {
        const int reason = errno;
        temporary_.clear();
        fail(reason);
    }
    fchmod(descriptor, replaces ? before.st_mode & 0777 : usualMode());
    file_ = fdopen(descriptor, "wb");
    if (!file_) {
        const int reason = errno;
        close(descriptor);
        unlink(temporary_.c_str());
        fail(reason);
    }
}

OutputFile::~OutputFile()
{
    if (file_ && file_ != stdout) std::fclose(file_);
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void OutputFile::write(std::string_view bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) fail(errno);
}

void OutputFile::finish()
{
    if (std::fflush(file_) != 0) fail(errno);
    if (file_ == stdout) return;
    if (std::fclose(std::exchange(file_, nullptr)) != 0) fail(errno);
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) fail(errno);
    temporary_.clear();
}

void OutputFile::fail(int reason)
{
    const std::string name = path_ == standardOutput ? "standard output" : "-o " + path_;
    throw Failure(WrongUsage, fmt::format("{}: cannot be written: {}", name, std::strerror(reason)));
}

void removeOutput(const std::string& path)
{
    if (path == standardOutput) return;
    std::error_code error;
    const fs::path target = behindLinks(path);
    if (fs::is_regular_file(fs::symlink_status(target, error))) fs::remove(target, error);
}

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
