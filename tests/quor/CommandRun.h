#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// What a run of the command gave. A run that a signal ended has 128 and the signal's number as exit code.
struct CommandRun {
    int exitCode = -1;
    std::string output;
    std::string errors;
};

using Arguments = std::vector<std::string>;

/// Runs `quor` with the sample's installation and project, and messages in Chinese, whatever the locale of
/// this process is. `environment` holds NAME=VALUE texts that are set over those of this process; a NAME
/// alone is taken away. On Windows all texts are UTF-8.
CommandRun runQuor(const Arguments& arguments, const Arguments& environment = {});

/// The command's path.
std::string quorCommand();

/// Runs any program in the same way; 127 is the exit code of one that is not there.
CommandRun runProgram(const Arguments& command, const Arguments& environment = {});

/// A folder of its own that goes with the object. Paths have '/' on every system, names are in UTF-8.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path(std::string_view name) const;
    /// Makes a folder and returns its path.
    std::string makeFolder(std::string_view name) const;
    /// Writes a file and returns its path.
    std::string write(std::string_view name, std::string_view bytes) const;
    /// The names of what is in the folder, in order.
    std::vector<std::string> names() const;

private:
    std::filesystem::path folder_;
};

std::string readFile(const std::string& path);
