#pragma once

#include <string>
#include <vector>

namespace quor {

/// A file that was looked for.
struct FoundFile {
    std::string path; ///< the first place where something is; the given one when nothing is anywhere
    bool isThere = false;
    std::vector<std::string> searched;
};

/// Looks for a script, or a scene, as an argument names it: a path from the working folder, else one in the
/// project, in the project's folder of its kind, and a script also in the installation. Throws `Failure`
/// (wrong usage) for a name that no file can have.
FoundFile findScript(const std::string& given);
FoundFile findScene(const std::string& given);

/// Where a file was looked for, on lines of its own; nothing when that was one place.
std::string listOfPlaces(const FoundFile& file);

} // namespace quor
