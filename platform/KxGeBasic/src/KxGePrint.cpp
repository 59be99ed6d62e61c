#include <KxGeBasic/KxGeBasic.h>
#include <KxGeBasic/KxGePrint.h>

#include <array>
#include <charconv>
#include <cmath>
#include <ostream>
#include <string_view>

namespace {

// Unformatted output: the formatted kind would take the stream's width and locale into account.
void put(std::ostream& out, std::string_view text)
{
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

template<class Number>
void putExact(std::ostream& out, Number value)
{
    // The longest are -2.2250738585072014e-308 and -9223372036854775808.
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    put(out, {digits.data(), static_cast<std::size_t>(end - digits.data())});
}

template<class... Numbers>
void putRow(std::ostream& out, Numbers... numbers)
{
    std::string_view before = "(";
    ((put(out, before), kxge::printNumber(out, numbers), before = ", "), ...);
    put(out, ")");
}

} // namespace

void kxge::printNumber(std::ostream& out, double value)
{
    if (std::isnan(value)) {
        put(out, "nan"); // its sign and payload say nothing
    } else {
        putExact(out, value);
    }
}

void kxge::printInteger(std::ostream& out, long long value)
{
    putExact(out, value);
}

std::ostream& operator<<(std::ostream& out, const QuorPoint& value)
{
    putRow(out, value.x, value.y, value.z);
    return out;
}

std::ostream& operator<<(std::ostream& out, const KxGePoint3D& value)
{
    return out << value.toQuorPoint();
}

std::ostream& operator<<(std::ostream& out, const KxGeVector3D& value)
{
    return out << value.toQuorPoint();
}

std::ostream& operator<<(std::ostream& out, const KxGeMatrix3D& value)
{
    std::string_view before = "(";
    for (int row = 0; row < 4; ++row) {
        put(out, before);
        putRow(out, value(row, 0), value(row, 1), value(row, 2), value(row, 3));
        before = ", ";
    }
    put(out, ")");
    return out;
}

std::ostream& operator<<(std::ostream& out, const QuorPolyDesc& value)
{
    put(out, "{");
    kxge::printInteger(out, value.kind);
    for (const double number : {value.startWidth, value.endWidth, value.bulge}) {
        put(out, ", ");
        kxge::printNumber(out, number);
    }
    put(out, ", ");
    out << value.point;
    put(out, "}");
    return out;
}
