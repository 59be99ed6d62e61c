#pragma once

#include <string>
#include <string_view>

/// What the systems know of folders, each in its own way. Separators are '/', as in PathText.h.
namespace folders {

/// A folder's name, completed with the working folder, without a separator at its end unless it is a root. It
/// stays relative when the system does not tell the working folder.
std::string absolute(std::string_view folder);

/// The folder of the program that runs; links to the program are followed.
std::string programFolder();

/// Whether a name is "bin", as the system compares names.
bool isBin(std::string_view name);

inline std::string withoutLastPart(const std::string& path)
{
    const std::size_t separator = path.rfind('/');
    if (separator == std::string::npos) return path;
    return path.substr(0, separator == 0 ? 1 : separator);
}

} // namespace folders
