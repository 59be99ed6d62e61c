#pragma once

#include <QuorScriptor/QuorGlibScriptor.h>
#include <cstddef>
#include <map>
#include <memory>
#include <string>

namespace quor {

/// The scriptors of one thread, one for each script, kept from job to job. What a script leaves behind is not
/// kept: whoever has a scriptor for a job gives it back, and its state is made anew then, so that a job finds
/// what it would find alone.
class ScriptKeeper {
public:
    ScriptKeeper() = default;
    ScriptKeeper(const ScriptKeeper&) = delete;
    ScriptKeeper& operator=(const ScriptKeeper&) = delete;

    /// The scriptor of a script, in which nothing has run yet. It may have no state when memory ran out.
    QuorGlibScriptor& take(const std::string& systemPath);
    /// Ends what the script's state holds, so its finalizers run.
    void giveBack(QuorGlibScriptor& scriptor);
    /// Ends all of them.
    void clear() { scriptors_.clear(); }

private:
    /// Far more than a batch draws of at a time; a state that waits takes some 30,000 bytes.
    static constexpr std::size_t mostKept = 64;

    std::map<std::string, std::unique_ptr<QuorGlibScriptor>> scriptors_;
};

} // namespace quor
