#pragma once

#include <string>

namespace lua_tinker::detail {

/// All bytes of a regular file. What is none - a folder, a pipe, a device - is not read, and nothing is
/// waited for. On failure `problem` says what could not be done to which file and why; else it stays empty.
/// Throws std::bad_alloc.
std::string readFile(const char* path, std::string& problem);

/// The words for `problem`.
inline std::string cannot(const char* action, const char* path, const std::string& why)
{
    return std::string("cannot ") + action + ' ' + path + ": " + why;
}

} // namespace lua_tinker::detail
