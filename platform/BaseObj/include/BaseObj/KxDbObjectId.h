#pragma once

#include <BaseObj/Export.h>
#include <compare>
#include <iosfwd>

/// The id of a database object: a signed 64-bit value. A new id is the null id, 0.
class KxDbObjectId {
public:
    KxDbObjectId() = default;
    explicit KxDbObjectId(long long value) : value_(value) {}

    long long toInt() const { return value_; }
    void setId(long long value) { value_ = value; }
    bool isNull() const { return value_ == 0; }

    friend auto operator<=>(const KxDbObjectId&, const KxDbObjectId&) = default;

private:
    long long value_ = 0;
};

/// Writes the id's decimal digits; see `kxge::printInteger`.
BASEOBJ_API std::ostream& operator<<(std::ostream& out, const KxDbObjectId& value);
