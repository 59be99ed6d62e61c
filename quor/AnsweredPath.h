#pragma once

#include <string>

/// Paths that the configuration gave. Their bytes are the system's where they come from the path service, and
/// the script's own words are GBK.
namespace quor {

/// Whether a path leads to a file or folder that is there. Its separators may be of either kind; a relative
/// one is looked for in the project.
bool leadsSomewhere(const std::string& path);

/// A path in UTF-8.
std::string utf8FromAnsweredPath(const std::string& path);

} // namespace quor
