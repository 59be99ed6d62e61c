#include "ValueJson.h"

#include "CharacterSet.h"

#include <cmath>

namespace quor {

/// A number that has no fraction is written without one. What is no number has no form in JSON: it becomes a
/// text that other languages read back as that value.
Json ValueJson::of(double value) const
{
    constexpr double exactIntegers = 9007199254740992.0;
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
    const bool isInteger = std::abs(value) <= exactIntegers && value == std::trunc(value);
    const bool isMinusZero = value == 0 && std::signbit(value);
    if (isInteger && !isMinusZero) return static_cast<long long>(value);
    return value;
}

Json ValueJson::of(const std::string& gbk) const
{
    return charset::utf8FromGbk(gbk, strays_);
}

Json ValueJson::of(const QuorPoint& value) const
{
    return Json::array({of(value.x), of(value.y), of(value.z)});
}

Json ValueJson::of(const KxGeMatrix3D& value) const
{
    Json rows = Json::array();
    for (int row = 0; row < 4; ++row) {
        Json numbers = Json::array();
        for (int column = 0; column < 4; ++column)
            numbers.push_back(of(value(row, column)));
        rows.push_back(std::move(numbers));
    }
    return rows;
}

Json ValueJson::of(const QuorPolyDesc& value) const
{
    return Json::array(
        {value.kind, of(value.startWidth), of(value.endWidth), of(value.bulge), of(value.point)});
}

Json ValueJson::of(const KVValue& value) const
{
    switch (value.tag()) {
    case KVTag::Short:
    case KVTag::Int:
        return value.asInt();
    case KVTag::Double:
        return of(value.asDouble());
    case KVTag::Bool:
        return value.asBool();
    case KVTag::String:
        return of(value.asString());
    case KVTag::Point:
        return of(value.asPoint());
    default:
        return nullptr;
    }
}

Json ValueJson::of(const KVParams& record) const
{
    Json object;
    object.emplace("key", of(record.key));
    object.emplace("note", of(record.note));
    object.emplace("value", of(record.value));
    return object;
}

Json ValueJson::of(const KVData& record) const
{
    Json object;
    object.emplace("key", of(record.key));
    object.emplace("value", of(record.value));
    return object;
}

} // namespace quor
