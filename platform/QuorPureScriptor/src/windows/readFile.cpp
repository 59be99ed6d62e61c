#include "../ReadFile.h"

#include <cerrno>
#include <system_error>
#include <windows.h>

namespace lua_tinker::detail {
namespace {

/// In the words of the C library where it has any, as on other systems.
std::string reason(DWORD error)
{
    int number = 0;
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_FILENAME_EXCED_RANGE:
        number = ENOENT;
        break;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        number = EACCES;
        break;
    case ERROR_TOO_MANY_OPEN_FILES:
        number = EMFILE;
        break;
    default:
        return "error " + std::to_string(error) + " of the system";
    }
    return std::generic_category().message(number);
}

} // namespace

std::string readFile(const char* path, std::string& problem)
{
    std::string bytes;
    struct Closer {
        ~Closer()
        {
            if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
        }
        HANDLE file;
        // The flag lets a folder be opened, so that it can be told from what is not there.
    } opened{CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                         OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr)};
    if (opened.file == INVALID_HANDLE_VALUE) {
        problem = cannot("open", path, reason(GetLastError()));
        return bytes;
    }
    BY_HANDLE_FILE_INFORMATION status{};
    if (GetFileType(opened.file) != FILE_TYPE_DISK || !GetFileInformationByHandle(opened.file, &status)) {
        problem = cannot("open", path, "not a regular file");
        return bytes;
    }
    if (status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
        problem = cannot("open", path, std::generic_category().message(EISDIR));
        return bytes;
    }
    if (status.nFileSizeHigh == 0 && status.nFileSizeLow < 0x1000000) bytes.reserve(status.nFileSizeLow);
    char part[16384];
    for (;;) {
        DWORD count = 0;
        if (!ReadFile(opened.file, part, sizeof part, &count, nullptr)) {
            problem = cannot("read", path, reason(GetLastError()));
            return bytes;
        }
        if (count == 0) return bytes;
        bytes.append(part, count);
    }
}

} // namespace lua_tinker::detail
