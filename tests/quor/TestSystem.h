#pragma once

#include "../system.h"
#include "CommandRun.h"

#include <memory>
#include <string>

/// What the tests need of the system and each has in its own way, in a folder of its own.
namespace testsystem {

extern const bool isWindows;

/// Runs a program whose output goes to files, and gives its exit code.
int runProgram(const Arguments& command, const Arguments& environment, const std::string& output,
               const std::string& errors);

/// The path of a file in every way in which the system lets it be written, the given one first.
std::vector<std::string> waysTo(const std::string& path);

/// Protects a file from being written. False where nothing protects it from this process.
bool protect(const std::string& path);

/// A mark that a file has beside its contents and keeps when it is replaced: its permissions, or on Windows
/// that it is hidden.
void mark(const std::string& path);
bool isMarked(const std::string& path);

/// As long as it lives, a file cannot be read: it has no permissions, or on Windows another program holds it
/// open for itself.
class Unreadable {
public:
    explicit Unreadable(const std::string& path);
    ~Unreadable();
    Unreadable(const Unreadable&) = delete;
    Unreadable& operator=(const Unreadable&) = delete;

    /// False where this process can read it all the same.
    bool isSo() const { return isSo_; }

private:
    std::string path_;
    std::unique_ptr<sys::FileLock> holder_;
    bool isSo_ = false;
};

/// As long as it lives, a pipe into which nobody writes: in the folder, or on Windows among the system's.
class Pipe {
public:
    explicit Pipe(const ScratchFolder& folder, const std::string& name);
    ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::shared_ptr<void> handle_; ///< where the system holds the pipe
};

/// The settings by which a program knows a terminal of a locale and a character set. Empty where the system
/// can make no such locale.
Arguments terminalOf(const ScratchFolder& folder, const std::string& locale, const std::string& set);

/// An argument as a terminal in GBK gives it.
std::string argumentInGbk(const std::string& utf8, const std::string& gbk);

/// A line that a script's `os.execute("echo WORD")` writes.
std::string echoed(const std::string& word);

/// The device that swallows all.
std::string nullDevice();

/// Copies the command, and what it must have beside it, into a folder; gives the copy's path.
std::string copyCommand(const std::string& folder);
/// The settings by which that copy finds its libraries.
Arguments settingsOfCopy();

} // namespace testsystem
