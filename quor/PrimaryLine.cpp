#include "PrimaryLine.h"

#include "CharacterSet.h"

#include <QuorPrimary/PrimaryVisitor.h>
#include <fmt/format.h>
#include <string_view>

namespace quor {
namespace {

class LineVisitor final : public PrimaryAttributeVisitor {
public:
    LineVisitor(std::string& line, std::size_t& strays) : line_(line), strays_(strays) {}

    void visitNumber(double value) override { next(), put(value); }
    void visitInteger(int value) override { next(), put(value); }
    void visitBoolean(bool value) override { next(), put(value); }
    void visitText(const std::string& value) override { next(), put(value); }
    void visitPoint(const KxGePoint3D& value) override { next(), put(value.toQuorPoint()); }
    void visitVector(const KxGeVector3D& value) override { next(), put(value.toQuorPoint()); }
    void visitPolyline(const std::vector<QuorPolyDesc>& value) override { next(), put(value); }
    void visitLoops(const std::vector<std::vector<QuorPolyDesc>>& value) override { next(), put(value); }
    void visitPoints(const std::vector<KxGePoint3D>& value) override { next(), put(value); }
    void visitParameters(const std::vector<KVParams>& value) override { next(), put(value); }

    void visitName(const char* name) override
    {
        line_ += ' ';
        line_ += name;
        line_ += '=';
        before_ = "";
    }
    void visitNull() override { line_ += "null"; }

private:
    void next()
    {
        line_ += before_;
        before_ = ", ";
    }

    /// The shortest text that reads back as the same number; a whole number without a fraction.
    void put(double value) { fmt::format_to(std::back_inserter(line_), "{}", value); }
    void put(int value) { fmt::format_to(std::back_inserter(line_), "{}", value); }
    void put(bool value) { line_ += value ? "true" : "false"; }
    void put(const std::string& gbk);
    void put(const QuorPoint& point)
    {
        fmt::format_to(std::back_inserter(line_), "({}, {}, {})", point.x, point.y, point.z);
    }
    void put(const KxGePoint3D& point) { put(point.toQuorPoint()); }
    void put(const QuorPolyDesc& vertex)
    {
        fmt::format_to(std::back_inserter(line_), "{{{}, {}, {}, {}, ", vertex.kind, vertex.startWidth,
                       vertex.endWidth, vertex.bulge);
        put(vertex.point);
        line_ += '}';
    }
    void put(const KVParams& record);
    template<class Item>
    void put(const std::vector<Item>& items)
    {
        std::string_view before = "";
        line_ += '[';
        for (const Item& item : items) {
            line_ += before;
            put(item);
            before = ", ";
        }
        line_ += ']';
    }

    std::string& line_;
    std::size_t& strays_;
    std::string_view before_ = "";
};

void LineVisitor::put(const std::string& gbk)
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

void LineVisitor::put(const KVParams& record)
{
    put(record.key);
    line_ += '=';
    switch (record.value.tag()) {
    case KVTag::Short:
    case KVTag::Int:
        return put(record.value.asInt());
    case KVTag::Double:
        return put(record.value.asDouble());
    case KVTag::Bool:
        return put(record.value.asBool());
    case KVTag::String:
        return put(record.value.asString());
    case KVTag::Point:
        return put(record.value.asPoint());
    default:
        line_ += "null";
    }
}

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
