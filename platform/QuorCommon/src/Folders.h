#pragma once

#include <string>

/// Where the two folders come from. All texts here have '/' as separator.
namespace folders {

/// The folders in force, resolved at the first call. Any thread; throws std::bad_alloc.
const std::string& installation();
const std::string& project();

/// Names a folder, or with null or "" goes back to its default, and reads the environment anew.
void setInstallation(const char* folder);
void setProject(const char* folder);

} // namespace folders
