#pragma once

#include <QuorCommon/Export.h>

/// What the library asks of the operating system itself.
namespace quorsys {

/// The operating system's id of the calling thread, as debuggers and process lists show it. Never 0. An id is
/// used again once its thread has ended. Cheap after a thread's first call; right in a forked child too.
QUORCOMMON_API unsigned int currentThreadId();

/// When what `path` names was last changed, in whole seconds since 1970-01-01 00:00 UTC, the part of a second
/// cut off downwards. Links are followed. The path is the system's own form: it is not converted. True for
/// whatever exists, folders and pipes included, readable or not; it is never opened, so nothing blocks.
/// False, with `seconds` 0, for a null or empty path, a missing file, a link to nothing, a path that leads
/// through something that is no folder. Any thread.
QUORCOMMON_API bool fileModificationTime(const char* path, long long& seconds);

} // namespace quorsys
