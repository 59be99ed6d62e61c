#pragma once

#include "JsonFile.h"
#include "ValueJson.h"
#include "ValueLine.h"

#include <lua.hpp>
#include <string>
#include <vector>

namespace quor {

struct LuaField;

/// A value of a script with what is in it, away from its state.
struct LuaValue {
    enum class Kind {
        Boolean,
        Number,
        Integer64,
        Text,
        Table,
        Seen,   ///< a table that has been read before: `text` is where, as in `.name[1]`, in UTF-8
        Deeper, ///< a table below the deepest that is read
        Other,  ///< a function, a thread, a userdata: `text` says which
    };

    Kind kind = Kind::Other;
    bool truth = false;
    double number = 0;
    long long integer = 0;
    /// Of a text its bytes, in GBK.
    std::string text;
    /// Of a table: the values at 1, 2, 3 and so on up to the first nil.
    std::vector<LuaValue> list;
    /// The others: numbers in order, texts by their bytes, truth values; keys of other types in no order.
    std::vector<LuaField> fields;
    /// How many entries there are besides.
    std::size_t leftOut = 0;
};

/// One entry of a table.
struct LuaField {
    LuaValue key;
    LuaValue value;
};

/// The value at a stack index. Of tables are read, in the order above, 1000 entries in all and 20 levels; a
/// table that comes again, as it does within itself, is read once. Metamethods are not asked.
/// [-0, +0, -]
LuaValue readLuaValue(lua_State* L, int index);

/// An array as a list, an object as fields; texts become GBK. A `Failure` (wrong usage) for what Lua cannot
/// have in a table, null.
LuaValue luaValueOf(const JsonNode& node);

/// Pushes a value that `luaValueOf` made, nil when memory runs out. [-0, +1, -]
void pushLuaValue(lua_State* L, const LuaValue& value);

/// As docs/json.md has it.
Json jsonOf(const LuaValue& value, const ValueJson& json);

/// As a script would write it; what a script cannot write stands in angle brackets.
void putValue(ValueLine& line, const LuaValue& value);

} // namespace quor
