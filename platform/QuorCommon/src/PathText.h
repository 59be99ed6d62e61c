#pragma once

#include <string>
#include <string_view>

/// The text of paths. Inside this library every separator is '/', which is never a part of a double-byte
/// character; only `toSystemForm` knows how the system writes it.
namespace pathtext {

/// A name with each separator turned into '/'. A backslash byte inside a double-byte character stays.
std::string fromName(std::string_view name);

/// Appends a name to a path with one separator between them; a name of separators only appends nothing.
void append(std::string& path, std::string_view name);

/// Turns '/' into the system's separator.
void toSystemForm(std::string& path);

} // namespace pathtext
