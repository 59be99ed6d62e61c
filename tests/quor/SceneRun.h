#pragma once

#include "CommandRun.h"

#include <string>
#include <vector>

/// Scripts that ask the host, with scenes that answer.
class SceneRun {
public:
    SceneRun();

    /// Draws with a scene of that text. `body` is the body of a script's "main".
    CommandRun draw(const std::string& scene, const std::string& body) const;

    /// What `expression`, in Lua and as many values as it gives, answers in a script under a scene: the
    /// numbers, also those in tables, in their order, each exactly. The command must say nothing.
    std::vector<double> numbers(const std::string& scene, const std::string& expression) const;

    /// Where the scene stands: what it names is looked for beside it.
    const ScratchFolder& folder() const { return folder_; }
    std::string scenePath() const { return folder_.path("scene.json"); }

private:
    ScratchFolder folder_;
};
