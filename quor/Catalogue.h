#pragma once

#include <map>
#include <string>

namespace quor {

/// Texts of a program and their translations, in UTF-8.
using Catalogue = std::map<std::string, std::string>;

/// Reads a catalogue of messages that msgfmt has compiled: a .mo file in UTF-8, in either order of bytes. A
/// text that has plural forms stands under its singular, with the first of its translations; one without a
/// translation is left out.
///
/// Throws std::runtime_error when the file cannot be read or is none: the path, what is expected and what is
/// there.
Catalogue readCatalogue(const std::string& path);

} // namespace quor
