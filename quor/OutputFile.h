#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace quor {

/// Where a result goes: a file, or standard output for "-". A regular file is written beside its place, under
/// a name of its own, and takes the place when it is complete: who looks there finds the file of before or
/// the whole new one. What is no regular file (a device, a pipe) is written as it is.
///
/// Every failure throws `Failure` (wrong usage) that names the file and the system's reason.
class OutputFile {
public:
    explicit OutputFile(std::string path);
    /// Removes what was written, unless it was finished.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(std::string_view bytes);
    /// The same for a text in UTF-8, in the character set that texts for people have there.
    void writeText(std::string_view utf8);
    /// Writes what is still held back, and puts the file in its place.
    void finish();

private:
    [[noreturn]] void fail(const char* reason);

    std::string path_;
    std::string target_;
    std::string temporary_;
    std::FILE* file_ = nullptr;
};

/// Removes the file of an earlier run, if it is a regular one: after a failure nothing is there that could be
/// taken for a result. Of a link, the file that it leads to is removed, and the link stays.
void removeOutput(const std::string& path);

/// As long as it lives, what this process and those that it starts write to standard output goes to standard
/// error, and whoever writes to a pipe that nobody reads any more meets an error, by which this process does
/// not end.
class StandardOutputAside {
public:
    StandardOutputAside();
    ~StandardOutputAside();
    StandardOutputAside(const StandardOutputAside&) = delete;
    StandardOutputAside& operator=(const StandardOutputAside&) = delete;

private:
    int kept_;
    [[maybe_unused]] void (*onBrokenPipe_)(int) = nullptr; ///< where the system has a signal for it
};

} // namespace quor
