#pragma once

#include <string>
#include <string_view>

namespace quor::windows {

/// UTF-16 from UTF-8 and back; what is none becomes U+FFFD.
std::wstring wide(std::string_view utf8);
std::string utf8From(std::wstring_view text);

/// The system's reason for an error as `GetLastError` tells it, in ASCII.
std::string reasonOf(unsigned long error);

} // namespace quor::windows
