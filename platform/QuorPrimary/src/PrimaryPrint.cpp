#include <BaseObj/printText.h>
#include <KxGeBasic/KxGePrint.h>
#include <QuorPrimary/PrimaryVisitor.h>
#include <QuorPrimary/QuorPrimary.h>

#include <ostream>
#include <string_view>

namespace {

/// Writes values, with commas between those that no attribute's name stands between.
class Printer final : public PrimaryAttributeVisitor {
public:
    explicit Printer(std::ostream& out) : out_(out) {}

    void put(std::string_view text) { out_.write(text.data(), static_cast<std::streamsize>(text.size())); }

    void visitNumber(double value) override { kxge::printNumber(next(), value); }
    void visitInteger(int value) override { kxge::printInteger(next(), value); }
    void visitBoolean(bool value) override { next(), put(value ? "true" : "false"); }
    void visitText(const std::string& value) override { baseobj::printText(next(), value); }
    void visitPoint(const KxGePoint3D& value) override { next() << value; }
    void visitVector(const KxGeVector3D& value) override { next() << value; }
    void visitPolyline(const std::vector<QuorPolyDesc>& value) override { next(), putList(value); }
    void visitLoops(const std::vector<std::vector<QuorPolyDesc>>& value) override { next(), putList(value); }
    void visitPoints(const std::vector<KxGePoint3D>& value) override { next(), putList(value); }
    void visitParameters(const std::vector<KVParams>& value) override { next(), putList(value); }

    void visitName(const char* name) override
    {
        put(" ");
        put(name);
        put("=");
        before_ = "";
    }
    void visitNull() override { put("null"); }

private:
    std::ostream& next()
    {
        put(before_);
        before_ = ", ";
        return out_;
    }

    template<class Item>
    void putItem(const Item& item)
    {
        out_ << item;
    }
    template<class Item>
    void putItem(const std::vector<Item>& items)
    {
        putList(items);
    }
    template<class Item>
    void putList(const std::vector<Item>& items)
    {
        std::string_view before = "";
        put("[");
        for (const Item& item : items) {
            put(before);
            putItem(item);
            before = ", ";
        }
        put("]");
    }

    std::ostream& out_;
    std::string_view before_ = "";
};

} // namespace

void QuorPrimary::print(std::ostream& out) const
{
    Printer printer(out);
    printer.put(factory_);
    printer.put("(");
    visitArguments(printer);
    printer.put(")");
    visitAttributes(printer);
}

std::ostream& operator<<(std::ostream& out, const QuorPrimary& primary)
{
    primary.print(out);
    return out;
}
