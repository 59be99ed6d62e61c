#pragma once

#include <QuorCommon/Export.h>

/// The path service: full paths inside the installation and inside the current project.
///
/// Layout of an installation:
///
///     bin\            scripts and configuration scripts, those read at run time included
///     bin\utils\      helper modules for scripts
///     bin\x64\        the platform folder: native modules and what belongs to them
///     sys\            descriptions and dictionaries of the product
///     project\        the project that is used when none is named
///
/// A project is one folder; files lie in it directly, or in its folders "sys", "skey" and others.
///
/// Names. A name is relative to the folder that it is resolved in, whatever it begins with: separators at its
/// beginning are dropped, "..", drive letters and "?" have no meaning here and stay. It may use '\' and '/'
/// alike; the path has the system's own separator throughout. Where folder and name meet there is exactly one
/// separator; inside a name nothing is merged. A null or empty name, or one of separators only, gives the
/// folder itself. Nothing is looked up on the disk: a path is given for what is missing as well.
///
/// Text is bytes. On Windows it is in the system's ANSI code page. Elsewhere a name that is well-formed UTF-8
/// is taken as UTF-8, where each 0x5C byte is a backslash; any other name is taken as GBK, where a 0x5C that
/// ends a double-byte character (first byte 0x81 to 0xFE, second 0x40 to 0xFE without 0x7F) belongs to the
/// character and stays. GBK bytes that happen to form UTF-8 are read as UTF-8. Bytes are never recoded.
///
/// Results. Functions that give a `const char*` never give null. The text belongs to the service, is kept per
/// thread, and is valid until the eighth later call on the same thread has returned, or the thread ends; it
/// may be an argument of any of these calls. It is "" when memory runs out, and on a thread that has ended
/// but for its last destructors. No exception leaves, except from the two set-up functions.
///
/// Threads. Any number of threads may ask at once. The set-up functions run while no other thread asks.
namespace QuorSystem {

/// Names the installation folder for the whole process. A relative folder is completed with the working
/// folder of this moment. Null or empty goes back to the default: the environment variable QUOR_INSTALLATION
/// when it is set and not empty, else the folder beside the program: the parent of the program's folder when
/// that is called "bin", else the program's folder itself (links to the program are followed). The
/// environment is read at the first use of the service and whenever a set-up function is called, not in
/// between. The folder need not exist. Throws std::bad_alloc, and then nothing has changed.
QUORCOMMON_API void setInstallationFolder(const char* folder);

/// Names the current project's folder, in the same manner. Default: the environment variable QUOR_PROJECT
/// when it is set and not empty, else "project" in the installation folder, following a later change of that.
QUORCOMMON_API void setProjectFolder(const char* folder);

/// The installation folder: absolute, without a separator at its end unless it is a root. (It stays relative
/// only when it was named so and the system does not tell the working folder.)
QUORCOMMON_API const char* quorEnv();

/// The current project's folder, in the same form.
QUORCOMMON_API const char* getCurrentProjPath();

/// The full path of a name in the installation folder, or in a folder of it (null or empty: the installation
/// itself).
QUORCOMMON_API const char* getFullQuorName(const char* name);
QUORCOMMON_API const char* getFullQuorName(const char* folder, const char* name);

/// The same path written to the caller's `buffer` of `size` bytes, the closing NUL included. True when it
/// fitted. False when it did not, or memory ran out: the buffer then holds an empty text, never a part of the
/// path. False as well, and nothing written, for a null buffer or a size below 1. The buffer may overlap the
/// name.
QUORCOMMON_API bool getFullQuorName(const char* name, char* buffer, int size);

/// The platform folder, without a separator at its end; and the full path of a name in it.
QUORCOMMON_API const char* quorFullPlatformPath();
QUORCOMMON_API const char* quorFullPlatformPath(const char* name);

/// The full path of a name in the run-time "bin" folder, which in this layout is the installation's "bin".
QUORCOMMON_API const char* getBinRuntimeFullName(const char* name);

/// The full path of a name in the "utils" folder of the run-time "bin" folder.
QUORCOMMON_API const char* getBinUtilsRuntimeFullName(const char* name);

/// The full path of a name in the current project's folder, or in a folder of it.
QUORCOMMON_API const char* getProjectFileFullPath(const char* name);
QUORCOMMON_API const char* getProjectFileFullPath(const char* folder, const char* name);

} // namespace QuorSystem
