#include "OutputFile.h"

#include "Failure.h"
#include "ReplacedFile.h"
#include "Terminal.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <mutex>
#include <utility>

namespace quor {
namespace {

constexpr const char* standardOutput = "-";

/// To be held while the folder of a file is changed. A system lets one thread at a time do that anyway, but
/// the others may wait at work: two threads then take a third more processor time.
std::mutex& folderMutex(const std::string& file)
{
    static std::array<std::mutex, 16> mutexes;
    const std::string folder = system::textOf(system::pathOf(file).parent_path());
    return mutexes[std::hash<std::string>()(folder) % mutexes.size()];
}

std::FILE* openBeside(const std::string& file, std::string& temporary)
{
    const std::lock_guard lock(folderMutex(file));
    return replacedfile::openBeside(file, temporary);
}

} // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path))
{
    if (path_ == standardOutput) {
        file_ = stdout;
        return;
    }
    try {
        target_ = replacedfile::fileBehind(path_);
        file_ = target_.empty() ? replacedfile::openAsItIs(path_) : openBeside(target_, temporary_);
    } catch (const replacedfile::Refused& refused) {
        fail(refused.what());
    }
}

OutputFile::~OutputFile()
{
    if (file_ && file_ != stdout) std::fclose(file_);
    if (!temporary_.empty()) replacedfile::remove(temporary_);
}

void OutputFile::write(std::string_view bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) fail(std::strerror(errno));
}

void OutputFile::writeText(std::string_view utf8)
{
    write(terminal::printed(utf8, file_ == stdout ? system::Stream::Output : system::Stream::File));
}

void OutputFile::finish()
{
    if (std::fflush(file_) != 0) fail(std::strerror(errno));
    if (file_ == stdout) return;
    if (std::fclose(std::exchange(file_, nullptr)) != 0) fail(std::strerror(errno));
    if (temporary_.empty()) return;
    try {
        const std::lock_guard lock(folderMutex(target_));
        replacedfile::replace(target_, temporary_);
    } catch (const replacedfile::Refused& refused) {
        fail(refused.what());
    }
    temporary_.clear();
}

void OutputFile::fail(const char* reason)
{
    const std::string name = path_ == standardOutput ? "standard output" : "-o " + path_;
    throw Failure(WrongUsage, fmt::format("{}: cannot be written: {}", name, reason));
}

void removeOutput(const std::string& path)
{
    if (path == standardOutput) return;
    try {
        const std::string file = replacedfile::fileBehind(path);
        const std::filesystem::path place = system::pathOf(file);
        std::error_code error;
        if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(place, error))) return;
        replacedfile::remove(file);
        if (std::filesystem::exists(place, error))
            terminal::say("-o {}: the file of an earlier run cannot be removed", path);
    } catch (const replacedfile::Refused&) {
        return; // nothing that could be taken for a result
    }
}

} // namespace quor
