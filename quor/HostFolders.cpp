#include "HostFolders.h"

#include "Failure.h"
#include "Terminal.h"

#include <QuorCommon/QuorSystem.h>
#include <filesystem>
#include <fmt/format.h>

namespace quor {
namespace {

void setFolder(void (*set)(const char*), const std::string& folder, const char* option)
{
    if (folder.empty()) return;
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error))
        throw Failure(WrongUsage, fmt::format("{} {}: a folder is expected; there is none", option, folder));
    set(folder.c_str());
}

} // namespace

void addFolderOptions(CLI::App& command, HostFolders& folders)
{
    command
        .add_option(
            "--installation", folders.installation,
            "The installation's folder; default QUOR_INSTALLATION, else the folder beside the program")
        ->type_name("DIR");
    command
        .add_option("--project", folders.project,
                    "The project's folder; default QUOR_PROJECT, else \"project\" in the installation")
        ->type_name("DIR");
}

void setFolders(const HostFolders& folders)
{
    setFolder(QuorSystem::setInstallationFolder, folders.installation, "--installation");
    setFolder(QuorSystem::setProjectFolder, folders.project, "--project");
    terminal::expectPath(QuorSystem::quorEnv());
    terminal::expectPath(QuorSystem::getCurrentProjPath());
}

} // namespace quor
