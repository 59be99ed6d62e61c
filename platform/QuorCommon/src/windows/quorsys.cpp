#include <QuorCommon/quorsys.h>

#include <windows.h>

namespace quorsys {

unsigned int currentThreadId()
{
    return GetCurrentThreadId();
}

// Not by the C library's status query, whose times move by an hour when summer time begins or ends.
bool fileModificationTime(const char* path, long long& seconds)
{
    seconds = 0;
    WIN32_FILE_ATTRIBUTE_DATA status;
    if (path == nullptr || !GetFileAttributesExA(path, GetFileExInfoStandard, &status)) return false;
    if ((status.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        // The time of what a link leads to.
        const HANDLE file =
            CreateFileA(path, FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        if (file == INVALID_HANDLE_VALUE) return false;
        const bool isTold = GetFileTime(file, nullptr, nullptr, &status.ftLastWriteTime) != 0;
        CloseHandle(file);
        if (!isTold) return false;
    }
    const auto high = static_cast<long long>(status.ftLastWriteTime.dwHighDateTime);
    const long long ticks = (high << 32) + status.ftLastWriteTime.dwLowDateTime;
    // Ticks of 100 ns since 1601, of which none is negative: cutting is towards earlier times.
    constexpr long long ticksPerSecond = 10'000'000;
    constexpr long long from1601To1970 = 11'644'473'600;
    seconds = ticks / ticksPerSecond - from1601To1970;
    return true;
}

} // namespace quorsys
