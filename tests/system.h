#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What tests ask of the system besides the C++ library, the same for every system.
namespace sys {

/// Sets a variable of this process's environment, or takes it away when there is no value. On Windows an
/// empty value takes it away, too.
void setEnvironment(const char* name, const char* value);

/// A new folder among the system's temporary ones; its name begins with `prefix`.
std::filesystem::path makeFolder(const std::string& prefix);

/// A path written with '/', with the system's own separator.
std::string inSystemForm(std::string path);

/// The path of what is called `name` in a folder, both as bytes. (A path of the C++ library does not keep the
/// bytes of a name on Windows.) An empty name gives the folder.
inline std::string join(const std::filesystem::path& folder, const std::string& name)
{
    const std::string whole = std::filesystem::path(folder).make_preferred().string();
    return name.empty() ? whole : whole + inSystemForm('/' + name);
}

/// As long as it lives, the C library's locale writes numbers with a comma, if the system has or can make
/// one.
class CommaLocale {
public:
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    bool isSet() const { return isSet_; }

private:
    std::string before_;
    std::filesystem::path folder_;
    std::optional<std::string> placesBefore_;
    bool isSet_ = false;
};

/// How the name of a native module ends.
extern const char* const nativeModuleSuffix;

/// Says when a file, folder or pipe was changed last.
bool setFileTime(const std::string& path, long long seconds, long nanoseconds = 0);

/// Makes a symbolic link; false where the system makes none.
bool makeLink(const std::string& target, const std::string& link);

/// Something that is at a path but cannot be read as a file, as long as the object lives: a pipe that nobody
/// writes to; on Windows a file that somebody else has opened for himself.
class Obstacle {
public:
    explicit Obstacle(const std::string& path);
    ~Obstacle();
    Obstacle(const Obstacle&) = delete;
    Obstacle& operator=(const Obstacle&) = delete;

private:
    std::string path_;
    [[maybe_unused]] void* handle_ = nullptr; ///< where the system has one
};

/// Locks a file as a program does that works on it. Whether others can open it is the system's affair.
class FileLock {
public:
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    static const bool excludesOthers;

    /// What stands in the file that is locked, its first 100 bytes.
    std::string read() const;

private:
    void* handle_ = nullptr;
};

/// Paths of the system that are there and are no files.
std::vector<std::string> devices();

/// The system's number of the calling thread.
unsigned int threadId();

/// Runs work on a thread of its own that has a stack of so many bytes, and waits for it. False when there is
/// none.
bool runOnStack(std::size_t bytes, void (*work)(void* data), void* data);

/// As long as it lives, the process can have a few files open at once, where the system tells of a stack
/// through one.
class FewFiles {
public:
    FewFiles();
    ~FewFiles();
    FewFiles(const FewFiles&) = delete;
    FewFiles& operator=(const FewFiles&) = delete;

private:
    [[maybe_unused]] unsigned long long before_ = 0;
};

/// What tells the locale that the C library uses on this thread from any other.
const void* threadLocale();

/// The path that a text with '/' stands for, as the system writes it: on Windows with '\' and, when it begins
/// at the root, with the current drive.
std::string pathOf(std::string_view text);

/// What a program prints. It runs without arguments in `folder`, with this process's environment.
std::string outputOf(const std::string& program, const std::filesystem::path& folder);

#if defined(_WIN32)
/// Lets all libraries beside the program, the interpreter excepted, call `replacement` where they call a
/// function of another DLL by that name: a program's own function takes its place only where the program is
/// linked. True, so that it can be called before main.
bool replaceImports(const char* name, void (*replacement)());
#endif

/// None when the bytes are not GBK throughout.
std::optional<std::string> utf8FromGbk(std::string_view gbk);

} // namespace sys
