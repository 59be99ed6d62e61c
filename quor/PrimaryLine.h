#pragma once

#include <QuorPrimary/QuorPrimary.h>
#include <cstddef>
#include <string>

namespace quor {

/// Adds a primitive in one line of UTF-8 for people, with a line feed: its place in the list, the factory,
/// the arguments in brackets and the attributes, as in `0 createQuorLine((0, 0, 0), (1, 0, 0)) color=3
/// thick=0.7 ltScale=1 lineType="DASHED"`.
void appendLine(std::string& lines, std::size_t index, const QuorPrimary& primitive, std::size_t& strays);

} // namespace quor
