#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <functional>
#include <string>

namespace quor {

class ScriptSession;

/// How and where a subcommand writes its result.
struct ResultOptions {
    std::string format;
    std::string output = "-";

    bool isJson() const { return format == "json"; }
};

/// Adds --format, which says what `text` is, and -o; the options must outlive the command.
void addResultOptions(CLI::App& command, ResultOptions& options, const std::string& defaultFormat,
                      const std::string& text);

/// Throws (wrong usage) when the output is a file that the session reads; else tells the session of it.
void checkOutput(const ResultOptions& options, ScriptSession& session);

/// Works, and removes the output of an earlier run when that fails other than by wrong usage. Throws (wrong
/// usage), and does nothing, for a format that is none and for an output without a name.
void withOutput(const ResultOptions& options, const std::function<void()>& work);

/// Writes a result that is there as a whole.
void writeResult(const ResultOptions& options, const std::string& utf8);

/// The head of a result in JSON, an object that is still open: the script's file name, and what of it was
/// called, in GBK, under `member`. `strays` as in ValueJson.h.
std::string jsonHead(const std::string& script, const char* member, const std::string& name,
                     std::size_t& strays);

/// Tells how many bytes of a result's texts were no characters, if there were any. `path` is the script's.
void tellStrays(const ResultOptions& options, const std::string& path, std::size_t strays);

} // namespace quor
