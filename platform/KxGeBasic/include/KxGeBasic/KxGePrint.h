#pragma once

#include <KxGeBasic/Export.h>
#include <iosfwd>

/// How the host's libraries write numbers for people and for logs. Nothing that is set on the stream plays a
/// part: neither its locale nor its flags, precision, width or fill, and none of them is changed. A stream
/// that fails keeps its state for the caller to test. Any thread may call, on a stream of its own.
namespace kxge {

/// Writes the shortest decimal text that reads back as the same double: `0.1`, `1e+300`, `-0`. What is no
/// number is written `inf`, `-inf` or `nan`.
KXGEBASIC_API void printNumber(std::ostream& out, double value);

/// Writes the digits without grouping.
KXGEBASIC_API void printInteger(std::ostream& out, long long value);

} // namespace kxge
