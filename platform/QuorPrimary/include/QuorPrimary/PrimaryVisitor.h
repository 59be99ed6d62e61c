#pragma once

#include <BaseObj/KVParams.h>
#include <KxGeBasic/KxGePoint3D.h>
#include <KxGeBasic/QuorPolyDesc.h>
#include <QuorPrimary/Export.h>
#include <string>
#include <vector>

/// Receives a primitive's values one by one, a function for each shape that a value can have. References are
/// valid during the call only. A visitor may throw; the primitive is unchanged and the exception reaches
/// whoever started the visit.
class QUORPRIMARY_API PrimaryVisitor {
public:
    virtual ~PrimaryVisitor();

    virtual void visitNumber(double value) = 0;
    virtual void visitInteger(int value) = 0;
    virtual void visitBoolean(bool value) = 0;
    /// Bytes of the host's code page.
    virtual void visitText(const std::string& value) = 0;
    virtual void visitPoint(const KxGePoint3D& value) = 0;
    virtual void visitVector(const KxGeVector3D& value) = 0;
    virtual void visitPolyline(const std::vector<QuorPolyDesc>& value) = 0;
    virtual void visitLoops(const std::vector<std::vector<QuorPolyDesc>>& value) = 0;
    virtual void visitPoints(const std::vector<KxGePoint3D>& value) = 0;
    virtual void visitParameters(const std::vector<KVParams>& value) = 0;

protected:
    PrimaryVisitor() = default;
    PrimaryVisitor(const PrimaryVisitor&) = default;
    PrimaryVisitor& operator=(const PrimaryVisitor&) = default;
};

/// Receives attributes: each is one call of `visitName`, then one call that gives its value, or `visitNull`
/// for an attribute that the primitive could have and has not.
class QUORPRIMARY_API PrimaryAttributeVisitor : public PrimaryVisitor {
public:
    ~PrimaryAttributeVisitor() override;

    /// The attribute's name in lower camel case ("color", "ltScale"); the text lives as long as the library.
    virtual void visitName(const char* name) = 0;
    virtual void visitNull() = 0;

protected:
    PrimaryAttributeVisitor() = default;
    PrimaryAttributeVisitor(const PrimaryAttributeVisitor&) = default;
    PrimaryAttributeVisitor& operator=(const PrimaryAttributeVisitor&) = default;
};
