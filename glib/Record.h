#pragma once

#include "Budget.h"
#include "Messages.h"
#include "Values.h"

#include <lua.hpp>
#include <type_traits>
#include <vector>

/// One record of a primitive table, and the types of fields that it is read by. Reading is raw, raises
/// nothing and leaves what it pushed for the walk to cut off, once per record.
namespace quorlua::glib {

/// What a kind that reports says of a record that it refuses. It is shown when the whole table has been
/// walked: showing it runs the script's "_ALERT", and a script may change the table.
struct Report {
    const char* message;
    int number; ///< that the message takes, or `noNumber`

    static constexpr int noNumber = -1;
};

/// What a hatch takes that its record does not carry: the numbers on the stack of the walk's caller, at
/// positions 5 and 6. Scripts in use rely on it.
struct HatchNumbers {
    double angle = 0.0;
    double scale = 1.0;
};

/// A record on the stack.
struct Record {
    lua_State* L;
    int index;  ///< of the record, absolute
    int length; ///< of its sequence part
    const HatchNumbers& hatch;
    std::vector<Report>& reports; ///< where complaints go
    Budget& budget;               ///< that lists and texts are taken from

    /// Whether a field may be there: the one behind the sequence part is not, by what that part is.
    bool mayHave(int field) const { return field - 1 != length; }
    /// Pushes a field. [-0, +1, -]
    void push(int field) const { lua_rawgeti(L, index, field); }
    void complain(const char* message) const
    {
        if (message) reports.push_back({message, Report::noNumber});
    }
    void complainOfLength(const char* message) const
    {
        if (message) reports.push_back({message, length});
    }
};

/// The types of fields. Each has a C++ value, a letter for the reference page, and a reader that is false for
/// a field that is missing or of another type. A text lives as long as the record.
template<class Coordinates>
bool readCoordinates(const Record& record, int field, Coordinates& value)
{
    QuorPoint point;
    record.push(field);
    if (!values::readPoint(record.L, -1, point)) return false;
    value.set(point.x, point.y, point.z);
    return true;
}

struct PointField {
    using Value = KxGePoint3D;
    static constexpr const char* letter = "P";
    static bool read(const Record& record, int field, Value& value)
    {
        return readCoordinates(record, field, value);
    }
};

struct VectorField {
    using Value = KxGeVector3D;
    static constexpr const char* letter = "V";
    static bool read(const Record& record, int field, Value& value)
    {
        return readCoordinates(record, field, value);
    }
};

struct NumberField {
    using Value = double;
    static constexpr const char* letter = "N";
    static bool read(const Record& record, int field, Value& value)
    {
        record.push(field);
        return values::readNumber(record.L, -1, value);
    }
};

struct IntegerField {
    using Value = int;
    static constexpr const char* letter = "I";
    static bool read(const Record& record, int field, Value& value)
    {
        double number = 0;
        record.push(field);
        if (!values::readNumber(record.L, -1, number)) return false;
        value = static_cast<int>(values::toInteger(number));
        return true;
    }
};

struct TextField {
    using Value = const char*;
    static constexpr const char* letter = "S";
    static bool read(const Record& record, int field, Value& value)
    {
        record.push(field);
        if (lua_type(record.L, -1) != LUA_TSTRING) return false;
        if (!record.budget.takeBytes(lua_objlen(record.L, -1))) return false;
        value = lua_tostring(record.L, -1);
        return true;
    }
};

struct FlagField {
    using Value = bool;
    static constexpr const char* letter = "B";
    static bool read(const Record& record, int field, Value& value)
    {
        record.push(field);
        if (lua_type(record.L, -1) != LUA_TBOOLEAN) return false;
        value = lua_toboolean(record.L, -1) != 0;
        return true;
    }
};

struct PolylineField {
    using Value = std::vector<QuorPolyDesc>;
    static constexpr const char* letter = "PL";
    static bool read(const Record& record, int field, Value& value)
    {
        record.push(field);
        return lua_istable(record.L, -1) &&
               values::readPolyline(record.L, lua_gettop(record.L), value, record.budget);
    }
};

/// A table whose values are polylines. It is read where a table stands (`OptionalTable`).
struct LoopsField {
    using Value = std::vector<std::vector<QuorPolyDesc>>;
    static constexpr const char* letter = "table of PL";
    static bool read(const Record& record, int field, Value& value)
    {
        record.push(field);
        return values::readPolylines(record.L, lua_gettop(record.L), value, record.budget);
    }
};

/// The points of a table in traversal order; what is none is passed over.
struct PointsField {
    using Value = std::vector<KxGePoint3D>;
    static constexpr const char* letter = "table of P";
    static bool read(const Record& record, int field, Value& value);
};

/// Named parameters, as the platform reads them.
struct ParametersField {
    using Value = std::vector<KVParams>;
    static constexpr const char* letter = "table";
    static bool read(const Record& record, int field, Value& value);
};

/// An angle as a number, or else a direction.
struct AngleOrDirection {
    double angle = 0.0;
    KxGeVector3D direction;
    bool isAngle = false;
};
struct AngleOrDirectionField {
    using Value = AngleOrDirection;
    static constexpr const char* letter = "N or V";
    static bool read(const Record& record, int field, Value& value)
    {
        value.isAngle = NumberField::read(record, field, value.angle);
        return value.isAngle || VectorField::read(record, field, value.direction);
    }
};

/// The other element of an operation as an index, or the plane of a slice, by the operation in field 2.
struct OperandOrPlane {
    int element = 0;
    KxGePoint3D point;
    KxGeVector3D direction;
};
struct OperandField {
    using Value = OperandOrPlane;
    static constexpr const char* letter = "I or {P, V}";
    static bool read(const Record& record, int field, Value& value);
};

/// The records of a group. They stay on top of the stack, for the walk to enter.
struct RecordsField {
    struct Value {};
    static constexpr const char* letter = "table of records";
    static bool read(const Record& record, int field, Value&)
    {
        record.push(field);
        return lua_istable(record.L, -1);
    }
};

} // namespace quorlua::glib
