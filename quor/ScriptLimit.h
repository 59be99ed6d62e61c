#pragma once

#include <CLI/CLI.hpp>
#include <QuorScriptor/ScriptLimits.h>
#include <memory>
#include <string>

namespace quor {

/// What every subcommand that runs scripts takes about what they may do.
struct LimitOptions {
    std::string seconds = "60";
    std::string mebibytes = "2048";
    bool untrusted = false;
};

/// Adds the options, which must outlive the command.
void addLimitOptions(CLI::App& command, LimitOptions& options);

/// As long as it lives, the states that are made have the limits of the options, and all that runs in them
/// together has the time of the time limit. Where a script does not heed it, since no engine can interrupt
/// what it does, the command is ended a moment later, with a message and the exit code of a script that
/// failed. One at a time; it outlives the states.
class ScriptLimit {
public:
    /// The options must outlive it. Throws `Failure` (wrong usage) for one that is no limit.
    explicit ScriptLimit(const LimitOptions& options);
    ~ScriptLimit();
    ScriptLimit(const ScriptLimit&) = delete;
    ScriptLimit& operator=(const ScriptLimit&) = delete;

    /// The script that runs from now on, as messages name it.
    void setScript(const std::string& path);
    /// The file of a result, which an earlier run may have left, and which must not be there when this one is
    /// ended.
    void setOutput(const std::string& path);

    /// Throws `Failure` (of the script) when a limit was met since it was asked last. To be asked when a
    /// script failed.
    void check();

private:
    class Watchdog;

    const LimitOptions& options_;
    std::unique_ptr<Watchdog> watchdog_;
    std::string script_;
};

} // namespace quor
