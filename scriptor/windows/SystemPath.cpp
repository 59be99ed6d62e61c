#include "../SystemPath.h"

#include <string>
#include <windows.h>

namespace quorlua {

std::filesystem::path systemPath(const char* name)
{
    const int size = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, name, -1, nullptr, 0);
    if (size <= 0) return {};
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, name, -1, wide.data(), size);
    wide.pop_back(); // the end mark
    return wide;
}

} // namespace quorlua
