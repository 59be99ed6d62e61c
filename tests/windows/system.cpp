#include "../system.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale.h>
#include <random>
#include <stdexcept>
#include <windows.h>

#include <psapi.h> // needs windows.h before it

namespace sys {
namespace {

void* opened(HANDLE handle, const std::string& path)
{
    if (handle == INVALID_HANDLE_VALUE) throw std::runtime_error("cannot open " + path);
    return handle;
}

/// The folder of a module's file.
std::string folderOf(HMODULE module)
{
    char path[1024];
    const DWORD length = GetModuleFileNameA(module, path, sizeof path);
    const std::string name(path, length);
    return name.substr(0, name.rfind('\\'));
}

/// In the table of what a module imports.
void replaceIn(HMODULE module, const char* name, void (*replacement)())
{
    auto* base = reinterpret_cast<std::uint8_t*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.Size == 0) return;
    const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
    for (; library->Name != 0; ++library) {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
        auto* functions = reinterpret_cast<IMAGE_THUNK_DATA*>(base + library->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++functions) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) continue;
            const auto* entry = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(entry->Name), name) != 0) continue;
            DWORD protection = 0;
            VirtualProtect(&functions->u1.Function, sizeof functions->u1.Function, PAGE_READWRITE,
                           &protection);
            functions->u1.Function = reinterpret_cast<ULONGLONG>(replacement);
            VirtualProtect(&functions->u1.Function, sizeof functions->u1.Function, protection, &protection);
        }
    }
}

} // namespace

bool replaceImports(const char* name, void (*replacement)())
{
    const HMODULE program = GetModuleHandleA(nullptr);
    const HMODULE interpreter = GetModuleHandleA("lua51.dll");
    HMODULE modules[256];
    DWORD bytes = 0;
    if (!K32EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &bytes)) std::abort();
    for (DWORD i = 0; i < bytes / sizeof *modules; ++i) {
        if (modules[i] == program || modules[i] == interpreter) continue;
        if (folderOf(modules[i]) == folderOf(program)) replaceIn(modules[i], name, replacement);
    }
    return true;
}

void setEnvironment(const char* name, const char* value)
{
    _putenv_s(name, value ? value : "");
}

std::filesystem::path makeFolder(const std::string& prefix)
{
    std::random_device number;
    for (;;) {
        const auto folder =
            std::filesystem::temp_directory_path() / (prefix + "-" + std::to_string(number()));
        if (std::filesystem::create_directories(folder)) return folder;
    }
}

CommaLocale::CommaLocale()
    : before_(std::setlocale(LC_ALL, nullptr)),
      isSet_(std::setlocale(LC_ALL, "German_Germany.1252") != nullptr)
{
}

CommaLocale::~CommaLocale()
{
    std::setlocale(LC_ALL, before_.c_str());
}

const char* const nativeModuleSuffix = ".dll";

std::string inSystemForm(std::string path)
{
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

bool setFileTime(const std::string& path, long long seconds, long nanoseconds)
{
    // Hundreds of nanoseconds since the year 1601.
    const auto ticks =
        static_cast<std::uint64_t>((seconds + 11'644'473'600) * 10'000'000 + nanoseconds / 100);
    const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    const HANDLE file = CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    const bool isSet = SetFileTime(file, nullptr, nullptr, &time) != 0;
    CloseHandle(file);
    return isSet;
}

bool makeLink(const std::string& target, const std::string& link)
{
    // Unprivileged: users make them only in the system's developer mode.
    CreateSymbolicLinkA(link.c_str(), target.c_str(), 2);
    const DWORD attributes = GetFileAttributesA(link.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

Obstacle::Obstacle(const std::string& path)
    : path_(path), handle_(opened(CreateFileA(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                              FILE_ATTRIBUTE_NORMAL, nullptr),
                                  path))
{
}

Obstacle::~Obstacle()
{
    CloseHandle(handle_);
    DeleteFileA(path_.c_str());
}

const bool FileLock::excludesOthers = true;

FileLock::FileLock(const std::string& path)
    : handle_(opened(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                 FILE_ATTRIBUTE_NORMAL, nullptr),
                     path))
{
}

FileLock::~FileLock()
{
    CloseHandle(handle_);
}

std::string FileLock::read() const
{
    char bytes[100];
    DWORD count = 0;
    SetFilePointer(handle_, 0, nullptr, FILE_BEGIN);
    ReadFile(handle_, bytes, sizeof bytes, &count, nullptr);
    return {bytes, count};
}

std::vector<std::string> devices()
{
    return {"NUL", R"(\\.\NUL)"};
}

unsigned int threadId()
{
    return GetCurrentThreadId();
}

const void* threadLocale()
{
    return reinterpret_cast<const void*>(static_cast<std::intptr_t>(_configthreadlocale(0)));
}

std::string pathOf(std::string_view text)
{
    std::string path = inSystemForm(std::string(text));
    if (path.starts_with('\\')) path.insert(0, std::filesystem::current_path().root_name().string());
    return path;
}

std::string outputOf(const std::string& program, const std::filesystem::path& folder)
{
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    if (!CreatePipe(&reader, &writer, &inherited, 0)) return "no pipe";
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = writer;
    PROCESS_INFORMATION process{};
    std::string command = '"' + program + '"';
    const bool runs = CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                     folder.string().c_str(), &startup, &process) != 0;
    CloseHandle(writer);
    std::string text;
    char byte = 0;
    for (DWORD count = 0; runs && ReadFile(reader, &byte, 1, &count, nullptr) && count == 1;) {
        if (byte != '\r') text += byte;
    }
    CloseHandle(reader);
    if (!runs) return "does not start: " + program;
    DWORD code = 1;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code == 0 ? text : "failed: " + text;
}

std::optional<std::string> utf8FromGbk(std::string_view gbk)
{
    constexpr UINT codePage = 936;
    const int length = static_cast<int>(gbk.size());
    std::wstring wide(gbk.size(), L'\0');
    const int units =
        MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, gbk.data(), length, wide.data(), length);
    if (units == 0 && length != 0) return std::nullopt;
    std::string utf8(gbk.size() * 3, '\0');
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), units, utf8.data(),
                                          static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(bytes));
    return utf8;
}

FewFiles::FewFiles() = default;
FewFiles::~FewFiles() = default;

bool runOnStack(std::size_t bytes, void (*work)(void* data), void* data)
{
    struct Task {
        void (*work)(void* data);
        void* data;
    } task{work, data};
    const auto run = [](void* given) -> DWORD {
        const Task* wanted = static_cast<Task*>(given);
        wanted->work(wanted->data);
        return 0;
    };
    const HANDLE thread =
        CreateThread(nullptr, bytes, run, &task, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (!thread) return false;
    WaitForSingleObject(thread, INFINITE);
    return CloseHandle(thread) != 0;
}

} // namespace sys
