#pragma once

#include "Scene.h"

#include <string>

namespace quor {

/// Reads a scene from its file, whose form docs/scene.md tells. Nothing in it is passed over or guessed:
/// every failure is a `Failure` (wrong usage) that names the file, the place in it, what is expected, and
/// what is there. Fonts are not opened.
Scene readScene(const std::string& path);

} // namespace quor
