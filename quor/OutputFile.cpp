#include "OutputFile.h"

#include "Failure.h"
#include "ReplacedFile.h"
#include "Terminal.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <utility>

namespace quor {
namespace {

constexpr const char* standardOutput = "-";

} // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path))
{
    if (path_ == standardOutput) {
        file_ = stdout;
        return;
    }
    try {
        target_ = replacedfile::fileBehind(path_);
        file_ =
            target_.empty() ? replacedfile::openAsItIs(path_) : replacedfile::openBeside(target_, temporary_);
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
