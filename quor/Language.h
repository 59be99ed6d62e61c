#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

/// The language in which the library's messages are shown. They are written in Chinese, "zh"; a language is
/// there when a catalogue of it is, as share/locale/LANGUAGE/LC_MESSAGES/QuorScriptor.mo in the folder above
/// the program's. The command's own words stay as they are.
namespace quor::language {

/// Adds `--language` to the program and to every subcommand that it has by now; the last one given counts.
/// `wanted`, which must outlive the parsing, stays as it is when none is.
void addOption(CLI::App& program, std::optional<std::string>& wanted);

/// Sets the process's translation of messages, for good: that of the wanted language; without one, that of
/// the environment, as GNU gettext reads it. To be called once, before any script runs. The locale is left
/// alone.
///
/// Throws a `Failure` (wrong usage) for a wanted language that is not there. A language of the environment
/// that is not there leaves the messages in Chinese; so does a catalogue that cannot be read, which is said
/// on standard error.
void choose(const std::optional<std::string>& wanted);

} // namespace quor::language
