#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

namespace quor {

/// Where the installation and the project lie; the path service's own choice where none is given.
struct HostFolders {
    std::optional<std::string> installation;
    std::optional<std::string> project;
};

/// Adds --installation and --project; the folders must outlive the command.
void addFolderOptions(CLI::App& command, HostFolders& folders);

/// Tells the path service, and the terminal, in whose messages they may stand. Throws a `Failure` (wrong
/// usage) for a folder that is none, be it given or named by the environment.
void setFolders(const HostFolders& folders);

} // namespace quor
