#pragma once

#include "Input.h"

#include <BaseObj/KVParams.h>
#include <lua.hpp>
#include <vector>

/// Lua values out of bytes, in a small language that can be read, written and mutated:
///
///     0 to 9         the number
///     i BYTE         the byte as a number, from -128 to 127
///     N BYTE         a number that is hard to handle: not-a-number, 2^63, 1e300...
///     d EIGHT-BYTES  any double
///     k BYTE         the code of a record
///     s WORD SPACE   a string
///     Z COUNT BYTE   a string of one byte, up to 255 times
///     t f _          true, false, nil
///     p v            a point, a unit vector
///     { VALUES }     a table of the values, from 1 on; within it
///       = KEY VALUE    another entry
///       M              a metatable whose every event raises an error
///       # COUNT VALUE  a value that stands several times
///       @              the table itself, once in a case
///     * BYTE         one of the tables that are complete, once more
///     I BYTE         a 64-bit integer
///     u l F T        a foreign userdata, a light one, a function, a coroutine
///
/// Any other byte is its own number. What walks would meet, tables met again counted each time, is bounded.
namespace fuzz {

/// Pushes the next value. The state's memory must not be limited. [-0, +1, -]
void pushValue(lua_State* L, Input& input);

/// Records with keys, notes and values of every tag.
std::vector<KVParams> readRecords(Input& input, int most);

/// A number, an awkward one included.
double readNumber(Input& input);

} // namespace fuzz
