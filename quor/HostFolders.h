#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace quor {

/// Where the installation and the project lie; empty for the path service's own choice.
struct HostFolders {
    std::string installation;
    std::string project;
};

/// Adds --installation and --project; the folders must outlive the command.
void addFolderOptions(CLI::App& command, HostFolders& folders);

/// Tells the path service, and the terminal, in whose messages they may stand. Throws a `Failure` (wrong
/// usage) for a folder that is none.
void setFolders(const HostFolders& folders);

} // namespace quor
