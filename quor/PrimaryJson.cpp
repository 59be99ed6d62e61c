#include "PrimaryJson.h"

#include "CharacterSet.h"

#include <QuorPrimary/PrimaryVisitor.h>
#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

namespace quor {
namespace {

using Json = nlohmann::ordered_json;

/// A number that has no fraction is written without one. What is no number has no form in JSON: it becomes a
/// text that other languages read back as that value.
Json fromNumber(double number)
{
    constexpr double exactIntegers = 9007199254740992.0;
    if (std::isnan(number)) return "NaN";
    if (std::isinf(number)) return number > 0 ? "Infinity" : "-Infinity";
    const bool isInteger = std::abs(number) <= exactIntegers && number == std::trunc(number);
    const bool isMinusZero = number == 0 && std::signbit(number);
    if (isInteger && !isMinusZero) return static_cast<long long>(number);
    return number;
}

Json fromPoint(const QuorPoint& point)
{
    return Json::array({fromNumber(point.x), fromNumber(point.y), fromNumber(point.z)});
}

/// Arguments go into the array "args"; attributes become members of the object.
class JsonVisitor final : public PrimaryAttributeVisitor {
public:
    JsonVisitor(Json& object, std::size_t& strays) : object_(object), strays_(strays) {}

    void visitNumber(double value) override { put(fromNumber(value)); }
    void visitInteger(int value) override { put(value); }
    void visitBoolean(bool value) override { put(value); }
    void visitText(const std::string& value) override { put(text(value)); }
    void visitPoint(const KxGePoint3D& value) override { put(fromPoint(value.toQuorPoint())); }
    void visitVector(const KxGeVector3D& value) override { put(fromPoint(value.toQuorPoint())); }
    void visitPolyline(const std::vector<QuorPolyDesc>& value) override { put(polyline(value)); }
    void visitLoops(const std::vector<std::vector<QuorPolyDesc>>& value) override
    {
        Json loops = Json::array();
        for (const auto& loop : value)
            loops.push_back(polyline(loop));
        put(std::move(loops));
    }
    void visitPoints(const std::vector<KxGePoint3D>& value) override
    {
        Json points = Json::array();
        for (const KxGePoint3D& point : value)
            points.push_back(fromPoint(point.toQuorPoint()));
        put(std::move(points));
    }
    void visitParameters(const std::vector<KVParams>& value) override
    {
        Json records = Json::array();
        for (const KVParams& record : value)
            records.push_back(parameter(record));
        put(std::move(records));
    }

    void visitName(const char* name) override { name_ = name; }
    void visitNull() override { put(nullptr); }

private:
    void put(Json value)
    {
        if (name_)
            object_.emplace(name_, std::move(value));
        else
            object_["args"].push_back(std::move(value));
    }

    std::string text(const std::string& gbk) { return charset::utf8FromGbk(gbk, strays_); }

    static Json polyline(const std::vector<QuorPolyDesc>& vertices)
    {
        Json array = Json::array();
        for (const QuorPolyDesc& vertex : vertices)
            array.push_back(
                Json::array({vertex.kind, fromNumber(vertex.startWidth), fromNumber(vertex.endWidth),
                             fromNumber(vertex.bulge), fromPoint(vertex.point.toQuorPoint())}));
        return array;
    }

    Json parameter(const KVParams& record)
    {
        Json object;
        object.emplace("key", text(record.key));
        object.emplace("note", text(record.note));
        object.emplace("value", value(record.value));
        return object;
    }

    Json value(const KVValue& value)
    {
        switch (value.tag()) {
        case KVTag::Short:
            return value.asShort();
        case KVTag::Int:
            return value.asInt();
        case KVTag::Double:
            return fromNumber(value.asDouble());
        case KVTag::Bool:
            return value.asBool();
        case KVTag::String:
            return text(value.asString());
        case KVTag::Point:
            return fromPoint(value.asPoint());
        default:
            return nullptr;
        }
    }

    Json& object_;
    std::size_t& strays_;
    const char* name_ = nullptr;
};

} // namespace

void appendJson(std::string& json, const QuorPrimary& primitive, std::size_t& strays)
{
    Json object;
    object.emplace("factory", primitive.factoryName());
    object.emplace("args", Json::array());
    JsonVisitor visitor(object, strays);
    primitive.visitArguments(visitor);
    primitive.visitAttributes(visitor);
    json += object.dump();
}

void appendJson(std::string& json, const std::string& utf8)
{
    json += Json(utf8).dump();
}

} // namespace quor
