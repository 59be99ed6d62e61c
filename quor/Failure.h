#pragma once

#include <stdexcept>
#include <string>

namespace quor {

/// What the command tells its caller.
enum ExitCode : int {
    Done = 0,
    ScriptFailed = 1, ///< the script, or what was asked of it, failed
    WrongUsage = 2,   ///< the command cannot do what its arguments say
};

/// Ends a subcommand that has said all there is to say.
struct Ended {
    explicit Ended(int code) : exitCode(code) {}

    int exitCode;
};

/// Ends a subcommand. The text is what people read: bytes for the terminal, without a line feed at the end.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode exitCode, const std::string& text) : std::runtime_error(text), exitCode_(exitCode) {}

    ExitCode exitCode() const { return exitCode_; }

private:
    ExitCode exitCode_;
};

} // namespace quor
