#pragma once

#include "Record.h"

#include <cstddef>
#include <tuple>
#include <utility>

/// What a row of the table of kinds is made of. A row says everything about a kind of record: its code and
/// name, how long a record must be, its fields from field 2 on, the factory, and what is set on the new
/// primitive. The compiler expands a row into the reads that one would write by hand; whoever explains or
/// checks records reads the same row.
namespace quorlua::glib {

/// How long a record must be, and the message for one that is not.
struct Length {
    enum Rule : unsigned char { AtLeast, Exactly };
    Rule rule;
    int number;
    const char* message = nullptr;

    constexpr bool allows(int length) const { return rule == AtLeast ? length >= number : length == number; }
};
constexpr Length atLeast(int number, const char* message = nullptr)
{
    return {Length::AtLeast, number, message};
}
constexpr Length exactly(int number, const char* message = nullptr)
{
    return {Length::Exactly, number, message};
}

/// A required field: without it there is no primitive. Its value reaches the factory as it is.
template<class Type>
struct Required {
    const char* name;
    const char* message = nullptr; ///< for a record in which it cannot be read
    static constexpr bool optional = false;
    using FieldType = Type;
    using Value = typename Type::Value;

    bool read(const Record& record, int field, Value& value) const
    {
        if (Type::read(record, field, value)) return true;
        record.complain(message);
        return false;
    }
};

/// The lengths of the records in which an optional field is looked at: all, or those from a length on, or
/// those of one length.
struct LookedAt {
    int fromLength = 0;
    int onlyLength = 0;

    constexpr bool in(int length) const
    {
        return length >= fromLength && (onlyLength == 0 || length == onlyLength);
    }
};

/// A value that may be missing.
template<class Value>
struct Maybe {
    Value value{};
    bool given = false;

    explicit operator bool() const { return given; }
};

/// An optional field: missing, or of another type, it leaves the default.
template<class Type>
struct Optional {
    const char* name;
    LookedAt lookedAt{};
    static constexpr bool optional = true;
    using FieldType = Type;
    using Value = Maybe<typename Type::Value>;

    constexpr Optional fromLength(int length) const { return {name, {length, 0}}; }
    constexpr Optional onlyLength(int length) const { return {name, {0, length}}; }

    bool read(const Record& record, int field, Value& value) const
    {
        value.given =
            lookedAt.in(record.length) && record.mayHave(field) && Type::read(record, field, value.value);
        return true;
    }
};

/// An optional field whose value is a list: empty when the field is no table, but a table that is no such
/// list makes the record malformed.
template<class Type>
struct OptionalTable {
    const char* name;
    LookedAt lookedAt{};
    static constexpr bool optional = true;
    using FieldType = Type;
    using Value = typename Type::Value;

    constexpr OptionalTable onlyLength(int length) const { return {name, {0, length}}; }

    bool read(const Record& record, int field, Value& value) const
    {
        if (!lookedAt.in(record.length)) return true;
        record.push(field);
        return !lua_istable(record.L, -1) || Type::read(record, field, value);
    }
};

// The letters that the rows are written in.
template<class Type>
constexpr Required<Type> required(const char* name, const char* message = nullptr)
{
    return {name, message};
}
constexpr auto P(const char* name, const char* message = nullptr)
{
    return required<PointField>(name, message);
}
constexpr auto V(const char* name, const char* message = nullptr)
{
    return required<VectorField>(name, message);
}
constexpr auto N(const char* name, const char* message = nullptr)
{
    return required<NumberField>(name, message);
}
constexpr auto I(const char* name, const char* message = nullptr)
{
    return required<IntegerField>(name, message);
}
constexpr auto S(const char* name)
{
    return required<TextField>(name);
}
constexpr auto B(const char* name)
{
    return required<FlagField>(name);
}
constexpr auto PL(const char* name)
{
    return required<PolylineField>(name);
}
template<class Type>
constexpr Optional<Type> opt(Required<Type> field)
{
    return {field.name};
}
template<class Type>
constexpr OptionalTable<Type> optTable(Required<Type> field)
{
    return {field.name};
}

template<class... Field>
constexpr std::tuple<Field...> fields(Field... list)
{
    return {list...};
}

/// A row of a kind that makes a primitive. `make` takes the values of the fields in order, the record before
/// them where it wants it, and returns the new primitive or null. `factory` is that call for the reader,
/// fields as a letter and their number, followed after ';' by what else there is to say of it; `afterwards`
/// is what is then set on the primitive.
template<class Fields, class Make>
struct Kind {
    int code;
    const char* name;
    Length length;
    Fields fields;
    const char* factory;
    const char* afterwards;
    Make make;
};
template<class Fields, class Make>
constexpr Kind<Fields, Make> kind(int code, const char* name, Length length, Fields fields,
                                  const char* factory, const char* afterwards, Make make)
{
    return {code, name, length, fields, factory, afterwards, make};
}

template<class Fields>
struct ValuesOfFields;
template<class... Field>
struct ValuesOfFields<std::tuple<Field...>> {
    using Type = std::tuple<typename Field::Value...>;
};
/// The values that a row's fields are read into.
template<class Fields>
using ValuesOf = typename ValuesOfFields<Fields>::Type;

/// Reads the fields of a record, which stand from field 2 on. False at the first that the record cannot do
/// without and that cannot be read.
template<class... Field, std::size_t... i>
bool readFields(const std::tuple<Field...>& fields, const Record& record,
                std::tuple<typename Field::Value...>& values, std::index_sequence<i...>)
{
    return (std::get<i>(fields).read(record, static_cast<int>(i) + 2, std::get<i>(values)) && ...);
}
template<class... Field>
bool readFields(const std::tuple<Field...>& fields, const Record& record,
                std::tuple<typename Field::Value...>& values)
{
    return readFields(fields, record, values, std::index_sequence_for<Field...>{});
}

/// Calls a row's factory with the values of its fields, the record before them where it asks for it.
template<class Make, class... Values>
auto callFactory(const Make& make, const Record& record, Values&... values)
{
    if constexpr (std::is_invocable_v<const Make&, const Record&, Values&...>)
        return make(record, values...);
    else
        return make(values...);
}

/// Reads a record by a row and makes its primitive; null when the record does not fit the row.
template<class Fields, class Make>
auto makeBy(const Kind<Fields, Make>& row, const Record& record)
{
    ValuesOf<Fields> values{};
    const auto create = [&](auto&... value) { return callFactory(row.make, record, value...); };
    using Made = decltype(std::apply(create, values));
    if (!row.length.allows(record.length)) {
        record.complainOfLength(row.length.message);
        return Made(nullptr);
    }
    return readFields(row.fields, record, values) ? std::apply(create, values) : Made(nullptr);
}

} // namespace quorlua::glib
