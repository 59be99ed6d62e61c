#pragma once

#include <BaseObj/KVParams.h>
#include <KxGeBasic/KxGePoint3D.h>
#include <QuorPrimary/QuorPrimary.h>
#include <vector>

/// An instruction to combine bodies of the list that it stands in: nothing of its own is drawn. Its indices
/// count the primitives of that list from 0, operations and parameter arrays included. It carries no colour:
/// one that is set can be read back and is never visited.
class QUORPRIMARY_API QuorOprPrimary : public QuorPrimary {
public:
    /// What is done to the main element. Any other number is the application's own.
    enum BooleanOpr : int {
        Unite = 1,     ///< the other element is added to it
        Subtract = 2,  ///< the other element is taken away from it
        Intersect = 3, ///< what it shares with the other element remains
        Slice = 4      ///< what lies on one side of a plane remains
    };

    ~QuorOprPrimary() override;
    void visitAttributes(PrimaryAttributeVisitor& visitor) const override;

    /// The operation, as the factory was given it.
    virtual BooleanOpr operation() const = 0;
    /// The index in the list of the element that the operation changes, as the factory was given it.
    virtual int mainElement() const = 0;

protected:
    explicit QuorOprPrimary(const char* factory) : QuorPrimary(factory, PrimaryKind::Operation) {}
};

/// A list of named parameters that travels among the primitives. It carries no colour, as operations carry
/// none. It is the one primitive that is made with `new`; its factory's name is its class's, and its one
/// argument is the list.
class QUORPRIMARY_API QuorOprKVParamArray : public QuorPrimary {
public:
    /// An empty list.
    QuorOprKVParamArray();
    ~QuorOprKVParamArray() override;
    void visitArguments(PrimaryVisitor& visitor) const override;
    void visitAttributes(PrimaryAttributeVisitor& visitor) const override;

    /// Replaces the list by a copy of `params`.
    void setParams(const std::vector<KVParams>& params);
    const std::vector<KVParams>& getParams() const { return params_; }

private:
    std::vector<KVParams> params_;
};

/// A boolean operation. All three integers are kept as they are, an `operation` that `BooleanOpr` does not
/// list and indices outside the list included: never null. The caller owns the result.
/// - operation: a `QuorOprPrimary::BooleanOpr`
/// - mainElement, otherElement: indices in the list
QUORPRIMARY_API QuorOprPrimary* createQuorPrimaryBooleanOpr(int operation, int mainElement, int otherElement);

/// A cut by a plane. Null when a coordinate is not finite or the direction is all zero. The caller owns the
/// result.
/// - mainElement: index in the list
/// - point: a point of the plane
/// - direction: the plane's normal; the side that it points to is cut away. Its length plays no part.
QUORPRIMARY_API QuorOprPrimary* createQuorPrimarySliceOpr(int mainElement, const KxGePoint3D& point,
                                                          const KxGeVector3D& direction);
