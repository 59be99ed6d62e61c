#include "HostFolders.h"

#include "Failure.h"
#include "System.h"
#include "Terminal.h"

#include <QuorCommon/QuorSystem.h>
#include <filesystem>
#include <fmt/format.h>

namespace quor {
namespace {

/// A folder that can be named in two ways.
struct Named {
    const char* option;
    const char* variable;
    void (*set)(const char*);
    const char* (*get)();
};

constexpr Named installationFolder = {"--installation", "QUOR_INSTALLATION",
                                      QuorSystem::setInstallationFolder, QuorSystem::quorEnv};
constexpr Named projectFolder = {"--project", "QUOR_PROJECT", QuorSystem::setProjectFolder,
                                 QuorSystem::getCurrentProjPath};

void setFolder(const Named& folder, const std::optional<std::string>& given)
{
    if (given && given->empty())
        throw Failure(WrongUsage,
                      fmt::format("{}: the path of a folder is expected; it is empty", folder.option));
    const std::string named = given ? *given : system::environment(folder.variable).value_or("");
    if (named.empty()) return;
    const std::string place =
        fmt::format("{}{}{}", given ? folder.option : folder.variable, given ? " " : "=", named);
    // Of the environment the service reads the same by itself.
    const std::string name = terminal::systemName(named, place);
    if (given) folder.set(name.c_str());
    // What the service made of it is what counts: it may read separators where the system has none.
    std::error_code error;
    if (std::filesystem::is_directory(system::pathOf(terminal::fromSystemName(folder.get())), error)) return;
    throw Failure(WrongUsage, place + ": a folder is expected; there is none");
}

void addFolder(CLI::App& command, const Named& folder, std::optional<std::string>& given, const char* help)
{
    command
        .add_option_function<std::string>(
            folder.option, [&given](const std::string& value) { given = value; }, help)
        ->type_name("DIR")
        ->take_last();
}

} // namespace

void addFolderOptions(CLI::App& command, HostFolders& folders)
{
    addFolder(command, installationFolder, folders.installation,
              "The installation's folder; default QUOR_INSTALLATION, else the folder beside the program");
    addFolder(command, projectFolder, folders.project,
              "The project's folder; default QUOR_PROJECT, else \"project\" in the installation");
}

void setFolders(const HostFolders& folders)
{
    setFolder(installationFolder, folders.installation);
    setFolder(projectFolder, folders.project);
    terminal::expectPath(QuorSystem::quorEnv());
    terminal::expectPath(QuorSystem::getCurrentProjPath());
}

} // namespace quor
