#include "../SystemFolders.h"

#include "../PathText.h"

#include <cstring>
#include <windows.h>

namespace folders {

std::string absolute(std::string_view folder)
{
    std::string given = pathtext::fromName(folder);
    pathtext::toSystemForm(given);
    const DWORD needed = GetFullPathNameA(given.c_str(), 0, nullptr, nullptr);
    std::string full(needed, '\0');
    const DWORD length = needed == 0 ? 0 : GetFullPathNameA(given.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed) return pathtext::fromName(given);
    full.resize(length);
    full = pathtext::fromName(full);
    // A drive keeps its separator: without it the text would mean the drive's current folder.
    while (full.size() > 1 && full.back() == '/' && full[full.size() - 2] != ':')
        full.pop_back();
    return full;
}

std::string programFolder()
{
    std::string path(MAX_PATH, '\0');
    for (;;) {
        const DWORD length = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) return absolute(".");
        if (length < path.size()) {
            path.resize(length);
            return withoutLastPart(pathtext::fromName(path));
        }
        path.resize(path.size() * 2);
    }
}

bool isBin(std::string_view name)
{
    return name.size() == 3 && _strnicmp(name.data(), "bin", 3) == 0;
}

} // namespace folders
