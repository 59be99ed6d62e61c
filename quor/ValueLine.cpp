#include "ValueLine.h"

#include "CharacterSet.h"

#include <cmath>
#include <fmt/format.h>
#include <limits>

namespace quor {
namespace {

/// As `value`, but not-a-number without a sign: which one it has depends on the processor.
double plain(double value)
{
    return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

} // namespace

void ValueLine::put(int value)
{
    fmt::format_to(std::back_inserter(line_), "{}", value);
}

void ValueLine::put(long long value)
{
    fmt::format_to(std::back_inserter(line_), "{}", value);
}

/// The shortest text that reads back as the same number; a whole number without a fraction.
void ValueLine::put(double value)
{
    fmt::format_to(std::back_inserter(line_), "{}", plain(value));
}

void ValueLine::put(const std::string& gbk)
{
    line_ += '"';
    for (const char byte : charset::utf8FromGbk(gbk, strays_)) {
        if (byte == '"' || byte == '\\') {
            line_ += '\\';
            line_ += byte;
        } else if (byte == '\n') {
            line_ += "\\n";
        } else if (byte == '\r') {
            line_ += "\\r";
        } else if (byte == '\t') {
            line_ += "\\t";
        } else if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) {
            fmt::format_to(std::back_inserter(line_), "\\x{:02x}", static_cast<unsigned>(byte));
        } else {
            line_ += byte;
        }
    }
    line_ += '"';
}

void ValueLine::put(const QuorPoint& value)
{
    fmt::format_to(std::back_inserter(line_), "({}, {}, {})", plain(value.x), plain(value.y), plain(value.z));
}

void ValueLine::put(const KxGeMatrix3D& value)
{
    const char* before = "[";
    for (int row = 0; row < 4; ++row) {
        fmt::format_to(std::back_inserter(line_), "{}({}, {}, {}, {})", before, plain(value(row, 0)),
                       plain(value(row, 1)), plain(value(row, 2)), plain(value(row, 3)));
        before = ", ";
    }
    line_ += ']';
}

void ValueLine::put(const QuorPolyDesc& value)
{
    fmt::format_to(std::back_inserter(line_), "{{{}, {}, {}, {}, ", value.kind, plain(value.startWidth),
                   plain(value.endWidth), plain(value.bulge));
    put(value.point);
    line_ += '}';
}

void ValueLine::put(const KVValue& value)
{
    switch (value.tag()) {
    case KVTag::Short:
    case KVTag::Int:
        return put(value.asInt());
    case KVTag::Double:
        return put(value.asDouble());
    case KVTag::Bool:
        return put(value.asBool());
    case KVTag::String:
        return put(value.asString());
    case KVTag::Point:
        return put(value.asPoint());
    default:
        line_ += "null";
    }
}

void ValueLine::put(const KVParams& record)
{
    put(record.key);
    line_ += '=';
    put(record.value);
    if (record.note.empty()) return;
    line_ += " (";
    put(record.note);
    line_ += ')';
}

void ValueLine::put(const KVData& record)
{
    put(record.key);
    line_ += '=';
    put(record.value);
}

} // namespace quor
