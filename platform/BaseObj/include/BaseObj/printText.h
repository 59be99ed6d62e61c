#pragma once

#include <BaseObj/Export.h>
#include <iosfwd>
#include <string_view>

namespace baseobj {

/// Writes a text in double quotes on one line. A quote and a backslash get a backslash before them; line
/// feed, carriage return and tab become `\n`, `\r` and `\t`, and any other byte below 0x20, and 0x7F, `\x`
/// with two lower-case hexadecimal digits. All other bytes pass as they are. The text is taken byte by byte,
/// whatever its code page, so that the original can always be told from the output. Settings of the stream
/// play no part.
BASEOBJ_API void printText(std::ostream& out, std::string_view text);

} // namespace baseobj
