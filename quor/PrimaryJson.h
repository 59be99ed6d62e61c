#pragma once

#include "ValueJson.h"

#include <QuorPrimary/QuorPrimary.h>
#include <cstddef>
#include <string>

namespace quor {

/// A primitive as a JSON object; docs/json.md says what is in it. Texts, in GBK, become UTF-8; `strays` grows
/// by the bytes that belong to no character (CharacterSet.h).
Json jsonOf(const QuorPrimary& primitive, std::size_t& strays);

/// Adds the same, without blanks and on one line.
void appendJson(std::string& json, const QuorPrimary& primitive, std::size_t& strays);

/// Adds a text that is UTF-8 as a JSON string.
void appendJson(std::string& json, const std::string& utf8);

} // namespace quor
