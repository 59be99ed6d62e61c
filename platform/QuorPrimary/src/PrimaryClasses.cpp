#include <QuorPrimary/PrimaryVisitor.h>
#include <QuorPrimary/QuorPrimary.h>

namespace {

void set(std::optional<std::string>& attribute, const char* text)
{
    if (text) {
        attribute = text;
    } else {
        attribute.reset();
    }
}

void visitValue(PrimaryAttributeVisitor& visitor, int value)
{
    visitor.visitInteger(value);
}

void visitValue(PrimaryAttributeVisitor& visitor, double value)
{
    visitor.visitNumber(value);
}

void visitValue(PrimaryAttributeVisitor& visitor, const std::string& value)
{
    visitor.visitText(value);
}

void visitValue(PrimaryAttributeVisitor& visitor, const KxGeVector3D& value)
{
    visitor.visitVector(value);
}

template<class Value>
void visitIfSet(PrimaryAttributeVisitor& visitor, const char* name, const std::optional<Value>& value)
{
    if (!value) return;
    visitor.visitName(name);
    visitValue(visitor, *value);
}

template<class Value>
void visitAlways(PrimaryAttributeVisitor& visitor, const char* name, const std::optional<Value>& value)
{
    visitor.visitName(name);
    if (value) {
        visitValue(visitor, *value);
    } else {
        visitor.visitNull();
    }
}

} // namespace

PrimaryVisitor::~PrimaryVisitor() = default;
PrimaryAttributeVisitor::~PrimaryAttributeVisitor() = default;

QuorPrimary::~QuorPrimary() = default;

void QuorPrimary::visitAttributes(PrimaryAttributeVisitor& visitor) const
{
    visitAlways(visitor, "color", color_);
}

QuorPrimary3D::~QuorPrimary3D() = default;

void QuorPrimary3D::setMaterial(const char* material)
{
    set(material_, material);
}

void QuorPrimary3D::visitAttributes(PrimaryAttributeVisitor& visitor) const
{
    QuorPrimary::visitAttributes(visitor);
    visitAlways(visitor, "material", material_);
    visitIfSet(visitor, "gsFlag", gsFlag_);
}

QuorPrimary2D::~QuorPrimary2D() = default;

void QuorPrimary2D::setLineType(const char* lineType)
{
    set(lineType_, lineType);
}

void QuorPrimary2D::visitAttributes(PrimaryAttributeVisitor& visitor) const
{
    QuorPrimary::visitAttributes(visitor);
    visitAlways(visitor, "thick", thick_);
    visitAlways(visitor, "ltScale", ltScale_);
    visitAlways(visitor, "lineType", lineType_);
}

QuorPrimaryText::~QuorPrimaryText() = default;

void QuorPrimaryText::visitAttributes(PrimaryAttributeVisitor& visitor) const
{
    QuorPrimary2D::visitAttributes(visitor);
    visitIfSet(visitor, "scale", scale_);
    visitIfSet(visitor, "height", height_);
    visitIfSet(visitor, "normal", normal_);
    visitIfSet(visitor, "txtFlag", txtFlag_);
}
