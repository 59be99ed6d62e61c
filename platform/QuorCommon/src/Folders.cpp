#include "Folders.h"

#include "PathText.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <utility>

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <filesystem>
#include <system_error>
#endif

namespace folders {
namespace {

std::string withoutLastPart(const std::string& path)
{
    const std::size_t separator = path.rfind('/');
    if (separator == std::string::npos) return path;
    return path.substr(0, separator == 0 ? 1 : separator);
}

#if defined(_WIN32)

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

#else

/// Drops "." and empty parts. ".." stays: behind a link it leads elsewhere than the text says.
std::string tidy(std::string_view path)
{
    std::string result;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view part = path.substr(begin, end - begin);
        if (!part.empty() && part != ".") {
            if (!result.empty() || path.front() == '/') result += '/';
            result += part;
        }
        begin = end + 1;
    }
    if (result.empty()) return path.starts_with('/') ? "/" : ".";
    return result;
}

std::string absolute(std::string_view folder)
{
    std::string given = pathtext::fromName(folder);
    if (given.starts_with('/')) return tidy(given);
    std::error_code error;
    const std::filesystem::path working = std::filesystem::current_path(error);
    return tidy(error ? given : working.native() + '/' + given);
}

std::string programFolder()
{
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? absolute(".") : withoutLastPart(program.native());
}

bool isBin(std::string_view name)
{
    return name == "bin";
}

#endif

std::string besideProgram()
{
    const std::string folder = programFolder();
    const std::size_t separator = folder.rfind('/');
    const std::string_view last =
        std::string_view(folder).substr(separator == std::string::npos ? 0 : separator + 1);
    return isBin(last) ? withoutLastPart(folder) : folder;
}

/// The folders that were named ("" for none) and what follows from them.
struct State {
    std::string givenInstallation;
    std::string givenProject;
    std::string installation;
    std::string project;
};

/// The folder that was named, else that of the environment, else "".
std::string namedFolder(const std::string& given, const char* variable)
{
    if (!given.empty()) return given;
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0' ? absolute(value) : std::string();
}

State resolved(State state)
{
    state.installation = namedFolder(state.givenInstallation, "QUOR_INSTALLATION");
    if (state.installation.empty()) state.installation = besideProgram();
    state.project = namedFolder(state.givenProject, "QUOR_PROJECT");
    if (state.project.empty()) {
        state.project = state.installation;
        pathtext::append(state.project, "project");
    }
    return state;
}

State& current()
{
    // Never destroyed: other libraries may ask for a path while the process ends.
    static State* const state = new State(resolved(State()));
    return *state;
}

std::string givenFolder(const char* folder)
{
    return folder != nullptr && *folder != '\0' ? absolute(folder) : std::string();
}

} // namespace

const std::string& installation()
{
    return current().installation;
}

const std::string& project()
{
    return current().project;
}

void setInstallation(const char* folder)
{
    State next = current();
    next.givenInstallation = givenFolder(folder);
    current() = resolved(std::move(next));
}

void setProject(const char* folder)
{
    State next = current();
    next.givenProject = givenFolder(folder);
    current() = resolved(std::move(next));
}

} // namespace folders
