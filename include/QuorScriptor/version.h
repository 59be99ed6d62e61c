#pragma once

/// The version, in this one place: the build, the packages and the command read it from here.
///
/// Major: programs must be compiled anew, and perhaps changed. Minor: something was added, and what was there
/// stays as it was. Patch: nothing in the headers changed. MINOR and PATCH stay below 100.
#define QUORSCRIPTOR_VERSION_MAJOR 1
#define QUORSCRIPTOR_VERSION_MINOR 1
#define QUORSCRIPTOR_VERSION_PATCH 0

/// The three numbers as one that grows with them, for `#if`.
#define QUORSCRIPTOR_VERSION_NUMBER                                                                          \
    (QUORSCRIPTOR_VERSION_MAJOR * 10000 + QUORSCRIPTOR_VERSION_MINOR * 100 + QUORSCRIPTOR_VERSION_PATCH)

#define QUORSCRIPTOR_VERSION_QUOTE_(number) #number
#define QUORSCRIPTOR_VERSION_JOIN_(major, minor, patch)                                                      \
    QUORSCRIPTOR_VERSION_QUOTE_(major)                                                                       \
    "." QUORSCRIPTOR_VERSION_QUOTE_(minor) "." QUORSCRIPTOR_VERSION_QUOTE_(patch)

/// The version as a text, "MAJOR.MINOR.PATCH".
#define QUORSCRIPTOR_VERSION                                                                                 \
    QUORSCRIPTOR_VERSION_JOIN_(QUORSCRIPTOR_VERSION_MAJOR, QUORSCRIPTOR_VERSION_MINOR,                       \
                               QUORSCRIPTOR_VERSION_PATCH)

#if !defined(RC_INVOKED) // a resource file wants the numbers alone

#include <QuorScriptor/Export.h>

namespace Quor {

/// The version of the library that runs, which may be newer than the headers that the program was compiled
/// with; those say QUORSCRIPTOR_VERSION. Never null; a constant. Any thread.
QUORSCRIPTOR_API const char* version() noexcept;

/// The same as a number, to be compared with QUORSCRIPTOR_VERSION_NUMBER.
QUORSCRIPTOR_API int versionNumber() noexcept;

} // namespace Quor

#endif
