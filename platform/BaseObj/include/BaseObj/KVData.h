#pragma once

#include <BaseObj/KVParams.h>

/// One key/value record of the database. Only the Lua host library converts it to and from Lua.
struct KVData {
    std::string key;
    KVValue value;

    friend bool operator==(const KVData&, const KVData&) = default;
};

/// Writes `{"key", value}`.
BASEOBJ_API std::ostream& operator<<(std::ostream& out, const KVData& value);
