#pragma once

#include <CLI/CLI.hpp>
#include <QuorScriptor/ScriptLimits.h>
#include <chrono>
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

/// As long as it lives, the states that are made have the limits of the options. One at a time; it outlives
/// the states.
class NewStateLimits {
public:
    /// Throws `Failure` (wrong usage) for an option that is no limit.
    explicit NewStateLimits(const LimitOptions& options);
    ~NewStateLimits();
    NewStateLimits(const NewStateLimits&) = delete;
    NewStateLimits& operator=(const NewStateLimits&) = delete;

    /// The time limit; 0 for none.
    double seconds() const { return seconds_; }

private:
    double seconds_;
};

/// Throws `Failure` (of that script) when a limit was met on this thread since it was asked last. To be asked
/// when a script failed.
void checkLimits(const LimitOptions& options, const std::string& script);

/// That a script has used up the time, where nothing within it could end it.
std::string overTime(const std::string& script, const LimitOptions& options);

/// What a script that heeds its limit takes at most until it has ended, its report included.
inline constexpr std::chrono::milliseconds patienceForScripts(500);

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
    NewStateLimits limits_;
    std::unique_ptr<Watchdog> watchdog_;
    std::string script_;
};

} // namespace quor
