#pragma once

#include "Drawing.h"

#include <cstddef>
#include <string>
#include <vector>

namespace quor {

/// A component to be drawn.
struct Job {
    std::string place; ///< its line, for messages
    DrawOptions draw;
    std::string target; ///< the place of the result, one text for each way of writing it
};

/// Reads the jobs of a file, whose form docs/command.md tells; "-" is standard input. Throws `Failure` (wrong
/// usage) that names the file, the line, what is expected and what is there; also where two jobs have one
/// output, and where one would write over what another reads, or over the file itself.
std::vector<Job> readJobs(const std::string& path, const LimitOptions& limits);

} // namespace quor
