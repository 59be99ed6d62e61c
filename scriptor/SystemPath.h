#pragma once

#include <filesystem>

namespace quorlua {

/// The path that a name means to the system's narrow functions: bytes as they are, or in the ANSI code page.
/// It is empty for a name that is not in that code page. Throws `std::bad_alloc`. Any thread.
std::filesystem::path systemPath(const char* name);

} // namespace quorlua
