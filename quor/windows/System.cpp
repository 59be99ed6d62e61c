#include "../System.h"

#include "../CharacterSet.h"
#include "WideText.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <memory>

#include <windows.h>

#include <shellapi.h>

namespace quor::system {
namespace {

std::string nameOf(unsigned int codePage)
{
    return codePage == CP_UTF8 ? "UTF-8" : "CP" + std::to_string(codePage);
}

/// A console's own set; of anything else that of the system.
std::string setBehind(DWORD stream)
{
    DWORD mode = 0;
    const bool isConsole = GetConsoleMode(GetStdHandle(stream), &mode) != 0;
    return nameOf(isConsole ? GetConsoleOutputCP() : GetACP());
}

} // namespace

const char* const separators = "/\\";

CharacterSets readCharacterSets()
{
    CharacterSets sets = {"UTF-8", nameOf(GetACP()), {}, {}, {}};
    sets.file = charset::namedByEnvironment();
    if (!sets.file.empty()) {
        sets.output = sets.errors = sets.file;
        return sets;
    }
    sets.file = sets.fileNames;
    sets.output = setBehind(STD_OUTPUT_HANDLE);
    sets.errors = setBehind(STD_ERROR_HANDLE);
    return sets;
}

/// Those that `main` is given have lost what the ANSI code page lacks.
std::vector<std::string> arguments(int count, char** given)
{
    int wideCount = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> wide(
        CommandLineToArgvW(GetCommandLineW(), &wideCount), LocalFree);
    if (!wide) return {given, given + count};
    std::vector<std::string> arguments;
    for (int i = 0; i < wideCount; ++i)
        arguments.push_back(windows::utf8From(wide.get()[i]));
    return arguments;
}

std::optional<std::string> environment(const char* variable)
{
    const wchar_t* value = _wgetenv(windows::wide(variable).c_str());
    if (!value) return std::nullopt;
    return windows::utf8From(value);
}

std::filesystem::path programFile()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) return path.substr(0, length);
        path.resize(path.size() * 2);
    }
}

void makeStreamsBinary()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    // It is by itself only in some versions of the run-time library.
    std::setvbuf(stderr, nullptr, _IONBF, 0);
}

bool isErrorsTerminal()
{
    return _isatty(_fileno(stderr)) != 0;
}

void emptyInput()
{
    const int nothing = _open("NUL", _O_RDONLY | _O_BINARY);
    if (nothing < 0) return;
    _dup2(nothing, _fileno(stdin));
    _close(nothing);
}

const bool ignoresCase = true;

} // namespace quor::system
