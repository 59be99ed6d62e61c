#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>

/// What writing a result is to each system: posix/ReplacedFile.cpp and windows/ReplacedFile.cpp. Paths are in
/// the command's own character set.
namespace quor::replacedfile {

/// Why a file cannot be written, in the system's words.
class Refused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The regular file that is replaced when a path is written, be it there or not: the path's own, or the one
/// that links lead to. Empty for what is no regular file, which is written as it is. Throws `Refused` for a
/// folder, for links in a circle, and where the system tells already that the file may not be written.
std::string fileBehind(const std::string& path);

/// Makes a file beside one that is to be replaced, with its permissions; where there is none yet, with those
/// of any new file. Sets its name. Throws `Refused`, and then there is none.
std::FILE* openBeside(const std::string& file, std::string& temporary);

/// Puts the finished file in the place of the other. Throws `Refused`, and then the other is as it was.
void replace(const std::string& file, const std::string& temporary);

/// Opens what is written as it is. Throws `Refused`.
std::FILE* openAsItIs(const std::string& path);

/// Removes a file, if it can be.
void remove(const std::string& file);

} // namespace quor::replacedfile
