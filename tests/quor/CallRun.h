#pragma once

#include "CommandRun.h"

#include <nlohmann/json.hpp>
#include <string>

/// Calls of a script's functions by format.
class CallRun {
public:
    CallRun();

    /// Calls "f", which the script defines, in a terminal of UTF-8. `arguments` are those behind FUNCTION.
    CommandRun call(const std::string& script, const Arguments& arguments) const;

    /// What "f" sees of its arguments, each with its type: numbers to 17 digits, texts in quotes, tables with
    /// their keys in order, parted by "|". `letters` are the arguments' letters alone.
    std::string seen(const std::string& letters, const Arguments& texts, const Arguments& options = {}) const;

    /// What a call prints as text that returns what `expressions`, in Lua, say.
    std::string lines(const std::string& letters, const std::string& expressions) const;
    /// The values in JSON; null where one is not given.
    nlohmann::json values(const std::string& letters, const std::string& expressions) const;

    const ScratchFolder& folder() const { return folder_; }
    std::string script() const { return folder_.path("s.lua"); }

private:
    ScratchFolder folder_;
};
