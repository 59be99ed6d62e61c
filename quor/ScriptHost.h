#pragma once

#include "HostFolders.h"

namespace quor {

/// What a host sets up once for all its threads before it runs components' scripts: the folders, and that
/// messages and what scripts print go to standard error, and that no script can end the program. One at a
/// time; it outlives the states.
class ScriptHost {
public:
    /// Throws `Failure` (wrong usage) for a folder that is none.
    explicit ScriptHost(const HostFolders& folders);
    ~ScriptHost();
    ScriptHost(const ScriptHost&) = delete;
    ScriptHost& operator=(const ScriptHost&) = delete;
};

} // namespace quor
