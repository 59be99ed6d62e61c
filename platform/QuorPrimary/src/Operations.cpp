#include "MadePrimary.h"

#include <QuorPrimary/QuorOprPrimary.h>

namespace {

using primary::Made;

class BooleanOperation final : public Made<QuorOprPrimary, int, int, int> {
public:
    using Made::Made;
    BooleanOpr operation() const override { return static_cast<BooleanOpr>(std::get<0>(arguments())); }
    int mainElement() const override { return std::get<1>(arguments()); }
};

class SliceOperation final : public Made<QuorOprPrimary, int, KxGePoint3D, KxGeVector3D> {
public:
    using Made::Made;
    BooleanOpr operation() const override { return Slice; }
    int mainElement() const override { return std::get<0>(arguments()); }
};

} // namespace

QuorOprPrimary::~QuorOprPrimary() = default;

void QuorOprPrimary::visitAttributes(PrimaryAttributeVisitor&) const {}

QuorOprKVParamArray::QuorOprKVParamArray() : QuorPrimary("QuorOprKVParamArray", PrimaryKind::Parameters) {}

QuorOprKVParamArray::~QuorOprKVParamArray() = default;

void QuorOprKVParamArray::visitArguments(PrimaryVisitor& visitor) const
{
    visitor.visitParameters(params_);
}

void QuorOprKVParamArray::visitAttributes(PrimaryAttributeVisitor&) const {}

void QuorOprKVParamArray::setParams(const std::vector<KVParams>& params)
{
    std::vector<KVParams> copy = params; // a copy that fails half-way leaves the list as it was
    params_.swap(copy);
}

QuorOprPrimary* createQuorPrimaryBooleanOpr(int operation, int mainElement, int otherElement)
{
    return new BooleanOperation(__func__, operation, mainElement, otherElement);
}

QuorOprPrimary* createQuorPrimarySliceOpr(int mainElement, const KxGePoint3D& point,
                                          const KxGeVector3D& direction)
{
    if (!primary::isFinite(point) || !primary::isFinite(direction) || !primary::isDirection(direction))
        return nullptr;
    return new SliceOperation(__func__, mainElement, point, direction);
}
