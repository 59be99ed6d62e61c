#include "PrimaryLine.h"

#include "ValueLine.h"

#include <QuorPrimary/PrimaryVisitor.h>
#include <fmt/format.h>
#include <string_view>

namespace quor {
namespace {

class LineVisitor final : public PrimaryAttributeVisitor {
public:
    LineVisitor(std::string& line, std::size_t& strays) : line_(line, strays) {}

    void visitNumber(double value) override { put(value); }
    void visitInteger(int value) override { put(value); }
    void visitBoolean(bool value) override { put(value); }
    void visitText(const std::string& value) override { put(value); }
    void visitPoint(const KxGePoint3D& value) override { put(value); }
    void visitVector(const KxGeVector3D& value) override { put(value); }
    void visitPolyline(const std::vector<QuorPolyDesc>& value) override { put(value); }
    void visitLoops(const std::vector<std::vector<QuorPolyDesc>>& value) override { put(value); }
    void visitPoints(const std::vector<KxGePoint3D>& value) override { put(value); }
    void visitParameters(const std::vector<KVParams>& value) override { put(value); }

    void visitName(const char* name) override
    {
        line_.raw(" ");
        line_.raw(name);
        line_.raw("=");
        before_ = "";
    }
    void visitNull() override { line_.raw("null"); }

private:
    template<class Value>
    void put(const Value& value)
    {
        line_.raw(before_);
        before_ = ", ";
        line_.put(value);
    }

    ValueLine line_;
    std::string_view before_ = "";
};

} // namespace

void appendLine(std::string& lines, std::size_t index, const QuorPrimary& primitive, std::size_t& strays)
{
    fmt::format_to(std::back_inserter(lines), "{} {}(", index, primitive.factoryName());
    LineVisitor visitor(lines, strays);
    primitive.visitArguments(visitor);
    lines += ')';
    primitive.visitAttributes(visitor);
    lines += '\n';
}

} // namespace quor
