#include "WideText.h"

#include <cstring>
#include <system_error>
#include <windows.h>

namespace quor::windows {

std::wstring wide(std::string_view utf8)
{
    const int size = static_cast<int>(utf8.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, text.data(), length);
    return text;
}

std::string utf8From(std::wstring_view text)
{
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

std::string reasonOf(unsigned long error)
{
    if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION)
        return "another program holds it open";
    const std::error_code code(static_cast<int>(error), std::system_category());
    const std::error_condition known = code.default_error_condition();
    // The system's own words are in its own language and character set.
    if (known.category() == std::generic_category()) return std::strerror(known.value());
    return "the system's error " + std::to_string(error);
}

} // namespace quor::windows
