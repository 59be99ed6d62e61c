#pragma once

/// The wish of a user, or of another program, that the command ends: SIGINT and SIGTERM.
namespace quor::interrupt {

/// From now on the first such signal is only noted; the second ends the process, as without this. A signal
/// that was ignored stays so.
void watch();

/// The signal that came; 0 for none.
int signal();

/// The exit code of a command that a signal ended.
inline int exitCode(int signal)
{
    return 128 + signal;
}

} // namespace quor::interrupt
