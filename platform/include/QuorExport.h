#pragma once

/// How a shared library of the host marks what it exports. A library's own Export.h names its macro and picks
/// one of these by whether the library itself is being built (NAME_EXPORTS). A static library marks nothing:
/// it, and all that link it, are compiled with NAME_STATIC.

#if defined(_WIN32)
#define QUOR_EXPORT __declspec(dllexport)
#define QUOR_IMPORT __declspec(dllimport)
#else
#define QUOR_EXPORT __attribute__((visibility("default")))
#define QUOR_IMPORT __attribute__((visibility("default")))
#endif
