#pragma once

#include <BaseObj/KVData.h>
#include <BaseObj/KVParams.h>
#include <KxGeBasic/KxGePoint3D.h>
#include <QuorPureScriptor/Export.h>
#include <cstddef>
#include <lua.hpp>
#include <string>
#include <vector>

/// Reading and writing of fields and of parameter lists.
///
/// A value can stand in three places, which are three overloads: at a stack index; at an integer key of the
/// table at a stack index, past metamethods; in a named field of that table, through metamethods. A stack
/// index below 1 counts from the top as the stack stands at the call. A null state, a null name and an index
/// that holds no table are failures.
///
/// Types are strict: a number is a Lua number (a string of digits is none), a text a Lua string, a flag a
/// boolean, a point a table with numbers at 1, 2 and 3. On failure outputs are untouched.
///
/// Readers leave the stack as it was. Those by stack index and by integer key never raise and use up to four
/// free slots: [-0, +0, -]; those by name may raise what an `__index` raises, and memory errors: [-0, +0, e].
/// Writers may raise memory errors, and by name also what a `__newindex` raises: [-0, +0, e].
namespace quorlua {

/// Stack forms give 0 on success and 1 on failure, the others true and false.
QUORPURESCRIPTOR_API int getADouble(lua_State* L, int index, double& value);
QUORPURESCRIPTOR_API bool getADouble(lua_State* L, int tableIndex, int key, double& value);
QUORPURESCRIPTOR_API bool getADouble(lua_State* L, int tableIndex, const char* name, double& value);

/// The number is cut toward zero to 64 bits, of which the low 32 are kept; what 64 bits cannot hold, and
/// not-a-number, is 0.
QUORPURESCRIPTOR_API int getAInt(lua_State* L, int index, int& value);
QUORPURESCRIPTOR_API bool getAInt(lua_State* L, int tableIndex, int key, int& value);
QUORPURESCRIPTOR_API bool getAInt(lua_State* L, int tableIndex, const char* name, int& value);

/// The text is Lua's own: it lives as long as the string does, in the table forms as long as the table holds
/// it.
QUORPURESCRIPTOR_API int getAString(lua_State* L, int index, const char*& text);
QUORPURESCRIPTOR_API bool getAString(lua_State* L, int tableIndex, int key, const char*& text);
QUORPURESCRIPTOR_API bool getAString(lua_State* L, int tableIndex, const char* name, const char*& text);

QUORPURESCRIPTOR_API int getABoolean(lua_State* L, int index, bool& flag);
QUORPURESCRIPTOR_API bool getABoolean(lua_State* L, int tableIndex, int key, bool& flag);
QUORPURESCRIPTOR_API bool getABoolean(lua_State* L, int tableIndex, const char* name, bool& flag);

/// The coordinates are read past metamethods.
QUORPURESCRIPTOR_API int getAPoint(lua_State* L, int index, double& x, double& y, double& z);
QUORPURESCRIPTOR_API bool getAPoint(lua_State* L, int tableIndex, int key, double& x, double& y, double& z);
QUORPURESCRIPTOR_API bool getAPoint(lua_State* L, int tableIndex, const char* name, double& x, double& y,
                                    double& z);

/// Fills the existing table at the index, past metamethods. [-0, +0, m]
QUORPURESCRIPTOR_API void setAPoint(lua_State* L, int tableIndex, double x, double y, double z);
/// Stores a new point at a key of the table, past metamethods. [-0, +0, m]
QUORPURESCRIPTOR_API void setAPoint(lua_State* L, int tableIndex, int key, double x, double y, double z);
/// Stores a new point in a field of the table. [-0, +0, e]
QUORPURESCRIPTOR_API void setAPoint(lua_State* L, int tableIndex, const char* name, double x, double y,
                                    double z);

/// Store a value in a field of the table; a null text clears it, a point becomes a new table. [-0, +0, e]
QUORPURESCRIPTOR_API void setGlbParamValue(lua_State* L, int tableIndex, const char* key, double value);
QUORPURESCRIPTOR_API void setGlbParamValue(lua_State* L, int tableIndex, const char* key, int value);
QUORPURESCRIPTOR_API void setGlbParamValue(lua_State* L, int tableIndex, const char* key, const char* value);
QUORPURESCRIPTOR_API void setGlbParamValue(lua_State* L, int tableIndex, const char* key, bool value);
QUORPURESCRIPTOR_API void setGlbParamValue(lua_State* L, int tableIndex, const char* key,
                                           const QuorPoint& value);

/// Store a number, and a 64-bit integer as the binding layer's userdata, in a field of the table. [-0, +0, e]
QUORPURESCRIPTOR_API void setFieldDouble(lua_State* L, int tableIndex, const char* name, double value);
QUORPURESCRIPTOR_API void setFieldInt64(lua_State* L, int tableIndex, const char* name, long long value);

/// Stores one record in the field named by its key; its note is not written. A value is a number, a string, a
/// boolean or a point by its tag; a record of any other tag is not written. [-0, +0, e]
QUORPURESCRIPTOR_API void setTableKv(lua_State* L, int tableIndex, const KVParams& record);

/// Removes every entry of the table, past metamethods; its metatable stays. [-0, +0, -]
QUORPURESCRIPTOR_API void clearLuaTable(lua_State* L, int tableIndex);

// Lists of records. A writer adds to what the table holds and gives false when the index holds no table;
// records whose tag is none of short, double, point, string, int and bool are not written, and the entries of
// an array close up. [-0, +0, e]
//
// A reader appends to the list, or replaces it when `clearFirst` is set, and never raises: [-0, +0, -]. It
// gives false when the index holds no table (the list is then as it was, or cleared), or when memory or stack
// runs out, or beyond 67,108,864 entries in all or 1 GiB of records and texts (with what was read so far). A
// number becomes a double, a string a string, a boolean a bool, a
// point a point; any other value leaves the record without one. So shorts and ints come back as doubles,
// everything else exactly as written. A key that is a number is rendered as Lua prints it; entries with other
// keys, and entries of another shape than the layout's, are passed over.

/// {key = value, ...}, in Lua's traversal order; a later record of the same key overwrites. Notes are not
/// written.
QUORPURESCRIPTOR_API bool setParams(lua_State* L, int tableIndex, const std::vector<KVParams>& records);
QUORPURESCRIPTOR_API bool getParams(lua_State* L, int tableIndex, std::vector<KVParams>& records,
                                    bool clearFirst);

/// {key = {note, value}, ...}. A note that is no string is read as empty.
QUORPURESCRIPTOR_API bool setParams_note(lua_State* L, int tableIndex, const std::vector<KVParams>& records);
QUORPURESCRIPTOR_API bool getParams_note(lua_State* L, int tableIndex, std::vector<KVParams>& records,
                                         bool clearFirst);

/// {{key, value, note}, ...} in order, read up to the first nil; the nested form is an array of those.
QUORPURESCRIPTOR_API bool setArrayParams(lua_State* L, int tableIndex, const std::vector<KVParams>& records);
QUORPURESCRIPTOR_API bool getArrayParams(lua_State* L, int tableIndex, std::vector<KVParams>& records,
                                         bool clearFirst);
QUORPURESCRIPTOR_API bool setArrayParams(lua_State* L, int tableIndex,
                                         const std::vector<std::vector<KVParams>>& lists);
QUORPURESCRIPTOR_API bool getArrayParams(lua_State* L, int tableIndex,
                                         std::vector<std::vector<KVParams>>& lists, bool clearFirst);

/// {{key, value}, ...} in order, read up to the first nil.
QUORPURESCRIPTOR_API bool setKVdataArray(lua_State* L, int tableIndex, const std::vector<KVData>& records);
QUORPURESCRIPTOR_API bool getKVdataArray(lua_State* L, int tableIndex, std::vector<KVData>& records,
                                         bool clearFirst);

/// Append a pattern, after a ';', to where Lua looks for modules ("package.path") and for native modules
/// ("package.cpath"); an absent path becomes the pattern. Without a "package" table nothing happens.
///
/// Elsewhere than on Windows every '\' that separates names becomes '/': in text that is valid UTF-8 that is
/// every one, otherwise the text is taken for GBK and the second bytes of its characters are kept. A native
/// module's ".dll" at the pattern's end becomes ".so" there. Tables are read and written past metamethods.
/// [-0, +0, m]
QUORPURESCRIPTOR_API void addPath(lua_State* L, const char* pattern);
QUORPURESCRIPTOR_API void addCPath(lua_State* L, const char* pattern);

/// Whether a global is a function. One that cannot be fetched, because a metatable on the globals raises or
/// memory runs out, is none. [-0, +0, -]
QUORPURESCRIPTOR_API bool is_global_function(lua_State* L, const char* name);

/// A number with up to 14 significant digits ("%.14g"), as Lua prints it, whatever the locale.
QUORPURESCRIPTOR_API std::string numberText(double value);
/// The same into a buffer, which is not terminated; the length of the text.
QUORPURESCRIPTOR_API std::size_t numberText(double value, char (&buffer)[32]);

} // namespace quorlua
