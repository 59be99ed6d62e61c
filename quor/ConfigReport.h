#pragma once

#include "ConfigSession.h"

#include <string>
#include <vector>

namespace quor {

/// An answer on a line: a text, in which a control character is \x0A, a number, true or false; empty, without
/// a line, for null. In UTF-8.
std::string lineOf(const ConfigAnswer& answer);

/// Where an answer came from, and whether a path leads to something, in words.
std::string provenanceOf(const ConfigAnswer& answer);

/// An answer as a JSON object on one line.
std::string jsonOf(const ConfigAnswer& answer);

/// All answers under a head that says what was asked: as a table and as a JSON object, both in UTF-8.
/// Messages stand below the answer that they were shown with.
std::string tableOf(const ConfigSession& session, const std::vector<ConfigAnswer>& answers);
std::string jsonOf(const ConfigSession& session, const std::vector<ConfigAnswer>& answers, bool permitsNull);

/// How many there are of each kind, in one line.
std::string summaryOf(const std::vector<ConfigAnswer>& answers);

} // namespace quor
