#include "PrimaryJson.h"

#include <QuorPrimary/PrimaryVisitor.h>
#include <utility>

namespace quor {
namespace {

/// Arguments go into the array "args"; attributes become members of the object.
class JsonVisitor final : public PrimaryAttributeVisitor {
public:
    JsonVisitor(Json& object, std::size_t& strays) : object_(object), json_(strays) {}

    void visitNumber(double value) override { put(json_.of(value)); }
    void visitInteger(int value) override { put(value); }
    void visitBoolean(bool value) override { put(value); }
    void visitText(const std::string& value) override { put(json_.of(value)); }
    void visitPoint(const KxGePoint3D& value) override { put(json_.of(value)); }
    void visitVector(const KxGeVector3D& value) override { put(json_.of(value)); }
    void visitPolyline(const std::vector<QuorPolyDesc>& value) override { put(json_.of(value)); }
    void visitLoops(const std::vector<std::vector<QuorPolyDesc>>& value) override { put(json_.of(value)); }
    void visitPoints(const std::vector<KxGePoint3D>& value) override { put(json_.of(value)); }
    void visitParameters(const std::vector<KVParams>& value) override { put(json_.of(value)); }

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

    Json& object_;
    ValueJson json_;
    const char* name_ = nullptr;
};

} // namespace

Json jsonOf(const QuorPrimary& primitive, std::size_t& strays)
{
    Json object;
    object.emplace("factory", primitive.factoryName());
    object.emplace("args", Json::array());
    JsonVisitor visitor(object, strays);
    primitive.visitArguments(visitor);
    primitive.visitAttributes(visitor);
    return object;
}

void appendJson(std::string& json, const QuorPrimary& primitive, std::size_t& strays)
{
    json += jsonOf(primitive, strays).dump();
}

void appendJson(std::string& json, const std::string& utf8)
{
    json += Json(utf8).dump();
}

} // namespace quor
