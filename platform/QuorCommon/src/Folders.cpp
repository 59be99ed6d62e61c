#include "Folders.h"

#include "PathText.h"
#include "SystemFolders.h"

#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace folders {
namespace {

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
