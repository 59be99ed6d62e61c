#include "../TestSystem.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <windows.h>

namespace fs = std::filesystem;

namespace testsystem {
namespace {

std::wstring wide(const std::string& utf8)
{
    return fs::path(std::u8string(utf8.begin(), utf8.end())).wstring();
}

/// So that the program's reader of arguments gives it back: backslashes count only before a quotation mark.
std::wstring quoted(const std::wstring& argument)
{
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') text.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, L'\\') + L'"';
}

std::wstring commandLine(const Arguments& command)
{
    std::wstring line;
    for (const std::string& argument : command)
        line += (line.empty() ? L"" : L" ") + quoted(wide(argument));
    return line;
}

struct WithoutCase {
    bool operator()(const std::wstring& one, const std::wstring& other) const
    {
        return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_LESS_THAN;
    }
};

std::wstring environmentBlock(const Arguments& settings)
{
    std::map<std::wstring, std::wstring, WithoutCase> variables;
    const auto set = [&variables](const std::wstring& setting) {
        // A name may begin with '=': the drives' current folders.
        const std::size_t equals = setting.find(L'=', 1);
        const std::wstring name = setting.substr(0, equals);
        if (equals == std::wstring::npos)
            variables.erase(name);
        else
            variables[name] = setting.substr(equals + 1);
    };
    wchar_t* const own = GetEnvironmentStringsW();
    for (const wchar_t* entry = own; *entry != 0; entry += std::wcslen(entry) + 1)
        set(entry);
    FreeEnvironmentStringsW(own);
    for (const std::string& setting : settings)
        set(wide(setting));
    std::wstring block;
    for (const auto& [name, value] : variables)
        block += name + L'=' + value + L'\0';
    return block + L'\0';
}

HANDLE fileForAChild(const std::string& path, DWORD access, DWORD disposition)
{
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE file = CreateFileW(wide(path).c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                              disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("cannot open " + path);
    return file;
}

} // namespace

const bool isWindows = true;

int runProgram(const Arguments& command, const Arguments& environment, const std::string& output,
               const std::string& errors)
{
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = fileForAChild("NUL", GENERIC_READ, OPEN_EXISTING);
    start.hStdOutput = fileForAChild(output, GENERIC_WRITE, CREATE_ALWAYS);
    start.hStdError = fileForAChild(errors, GENERIC_WRITE, CREATE_ALWAYS);
    std::wstring line = commandLine(command);
    std::wstring block = environmentBlock(environment);
    PROCESS_INFORMATION child{};
    const BOOL isStarted = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE,
                                          CREATE_UNICODE_ENVIRONMENT, block.data(), nullptr, &start, &child);
    for (HANDLE file : {start.hStdInput, start.hStdOutput, start.hStdError})
        CloseHandle(file);
    if (!isStarted) return 127;
    WaitForSingleObject(child.hProcess, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(child.hProcess, &exitCode);
    CloseHandle(child.hThread);
    CloseHandle(child.hProcess);
    return static_cast<int>(exitCode);
}

std::vector<std::string> waysTo(const std::string& path)
{
    std::vector<std::string> ways = {path, sys::inSystemForm(path), path, path,
                                     R"(\\?\)" + sys::inSystemForm(path)};
    ways[2][ways[2].rfind('/')] = '\\';
    const bool isCapital = path[0] >= 'A' && path[0] <= 'Z';
    ways[3][0] = static_cast<char>(path[0] + (isCapital ? 'a' - 'A' : 'A' - 'a'));
    return ways;
}

bool protect(const std::string& path)
{
    return SetFileAttributesW(wide(path).c_str(), FILE_ATTRIBUTE_READONLY) != 0;
}

void mark(const std::string& path)
{
    if (SetFileAttributesW(wide(path).c_str(), FILE_ATTRIBUTE_HIDDEN) == 0)
        throw std::runtime_error("no attributes for " + path);
}

bool isMarked(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_HIDDEN) != 0;
}

Unreadable::Unreadable(const std::string& path)
    : path_(path), holder_(std::make_unique<sys::FileLock>(path)), isSo_(true)
{
}

Unreadable::~Unreadable() = default;

Pipe::Pipe(const ScratchFolder& folder, const std::string& name)
    : path_("//./pipe/" + fs::path(folder.path("x")).parent_path().filename().string() + name)
{
    HANDLE handle = CreateNamedPipeW(wide(sys::inSystemForm(path_)).c_str(), PIPE_ACCESS_DUPLEX,
                                     PIPE_TYPE_BYTE, PIPE_UNLIMITED_INSTANCES, 0, 0, 0, nullptr);
    if (handle == INVALID_HANDLE_VALUE) throw std::runtime_error("no pipe " + path_);
    handle_.reset(handle, CloseHandle);
}

Pipe::~Pipe() = default;

Arguments terminalOf(const ScratchFolder&, const std::string& locale, const std::string& set)
{
    return {"LC_ALL=" + locale + "." + set};
}

std::string argumentInGbk(const std::string& utf8, const std::string&)
{
    return utf8;
}

std::string echoed(const std::string& word)
{
    return word + "\r\n";
}

std::string nullDevice()
{
    return "NUL";
}

std::string copyCommand(const std::string& folder)
{
    fs::create_directories(folder);
    const fs::path own = fs::path(quorCommand()).parent_path();
    for (const fs::directory_entry& entry : fs::directory_iterator(own)) {
        const fs::path name = entry.path().filename();
        if (name == "quor.exe" || name.extension() == ".dll") fs::copy_file(entry.path(), folder / name);
    }
    return folder + "/quor.exe";
}

Arguments settingsOfCopy()
{
    return {};
}

} // namespace testsystem
