#pragma once

#include "ResultOptions.h"
#include "ScriptSession.h"

#include <QuorPrimary/QuorPrimary.h>
#include <memory>
#include <string>
#include <vector>

namespace quor {

struct DrawOptions {
    ScriptOptions script;
    std::string segment;
    bool segmentGiven = false;
    ResultOptions result;
};

/// What a segment drew.
struct Drawing {
    std::string path;    ///< of the script, as it was found
    std::string script;  ///< its file name
    std::string segment; ///< in GBK
    std::vector<std::unique_ptr<QuorPrimary>> primitives;
};

/// Runs the script in a session that was just made. Throws `Failure`.
Drawing drawingOf(const DrawOptions& options, ScriptSession& session);

/// Writes the result, and tells what in it is no text. Throws `Failure` (wrong usage).
void write(const DrawOptions& options, const Drawing& drawing);

} // namespace quor
