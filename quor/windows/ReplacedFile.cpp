#include "../ReplacedFile.h"

#include "WideText.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <io.h>
#include <memory>
#include <sys/stat.h>
#include <windows.h>

namespace quor::replacedfile {
namespace {

using windows::wide;

[[noreturn]] void refuse(DWORD error)
{
    throw Refused(windows::reasonOf(error));
}

[[noreturn]] void refuseFor(int reason)
{
    throw Refused(std::strerror(reason));
}

/// A path in full. A device's begins with "\\.\", also where it was named as "NUL" or "CON".
std::wstring fullPath(const std::string& path)
{
    const std::wstring given = wide(path);
    const DWORD room = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
    std::wstring full(room, L'\0');
    const DWORD length = GetFullPathNameW(given.c_str(), room, full.data(), nullptr);
    if (length == 0 || length >= room) refuse(GetLastError());
    full.resize(length);
    return full;
}

struct CloseHandleOf {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseHandleOf>;

constexpr DWORD shared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

Handle openFile(const std::wstring& file, DWORD access)
{
    HANDLE handle =
        CreateFileW(file.c_str(), access, shared, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) refuse(GetLastError());
    return Handle(handle);
}

std::wstring behindLink(const Handle& file)
{
    std::wstring path(GetFinalPathNameByHandleW(file.get(), nullptr, 0, FILE_NAME_NORMALIZED), L'\0');
    const DWORD length = GetFinalPathNameByHandleW(file.get(), path.data(), static_cast<DWORD>(path.size()),
                                                   FILE_NAME_NORMALIZED);
    if (length == 0 || length >= path.size()) refuse(GetLastError());
    path.resize(length);
    return path;
}

} // namespace

std::string fileBehind(const std::string& path)
{
    const std::wstring full = fullPath(path);
    if (full.starts_with(LR"(\\.\)")) return {};
    const DWORD attributes = GetFileAttributesW(full.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return windows::utf8From(full);
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) refuseFor(EISDIR);
    const Handle file = openFile(full, FILE_READ_ATTRIBUTES);
    if (GetFileType(file.get()) != FILE_TYPE_DISK) return {};
    return windows::utf8From(attributes & FILE_ATTRIBUTE_REPARSE_POINT ? behindLink(file) : full);
}

std::FILE* openBeside(const std::string& file, std::string& temporary)
{
    // Whoever replaces a file must be able to write and to remove it.
    const std::wstring target = wide(file);
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        if (attributes & FILE_ATTRIBUTE_READONLY) refuseFor(EACCES);
        openFile(target, GENERIC_WRITE | DELETE);
    }
    constexpr int mostTries = 100;
    static std::atomic<DWORD> number = GetTickCount() ^ GetCurrentProcessId() << 12;
    int descriptor = -1;
    std::string name;
    for (int tries = 0; descriptor < 0 && tries < mostTries; ++tries) {
        name = file + "." + std::to_string(number++ % 1000000);
        descriptor = _wopen(wide(name).c_str(), _O_CREAT | _O_EXCL | _O_WRONLY | _O_BINARY | _O_NOINHERIT,
                            _S_IREAD | _S_IWRITE);
        if (descriptor < 0 && errno != EEXIST) refuseFor(errno);
    }
    if (descriptor < 0) refuseFor(EEXIST);
    std::FILE* opened = _fdopen(descriptor, "wb");
    if (!opened) {
        const int reason = errno;
        _close(descriptor);
        remove(name);
        refuseFor(reason);
    }
    temporary = std::move(name);
    return opened;
}

void replace(const std::string& file, const std::string& temporary)
{
    const std::wstring target = wide(file);
    const std::wstring source = wide(temporary);
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) SetFileAttributesW(source.c_str(), attributes);
    if (MoveFileExW(source.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) == 0) refuse(GetLastError());
}

std::FILE* openAsItIs(const std::string& path)
{
    std::FILE* opened = _wfopen(wide(path).c_str(), L"wb");
    if (!opened) refuseFor(errno);
    return opened;
}

void remove(const std::string& file)
{
    const std::wstring name = wide(file);
    // Elsewhere a file's own protection does not keep it in its folder.
    SetFileAttributesW(name.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(name.c_str());
}

} // namespace quor::replacedfile
