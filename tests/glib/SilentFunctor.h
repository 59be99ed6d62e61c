#pragma once

#include <QuorScriptor/GlibCallbacks.h>

/// A host object without an answer.
class SilentFunctor : public GlibScriptFunctor {
public:
    virtual ~SilentFunctor() = default;
    bool getCurrentObjectId(KxDbObjectId&) const override { return false; }
    bool getIsoPoint(int, KxGePoint3D&) const override { return false; }
    bool getDefaultIsoMat(KxGeMatrix3D&) const override { return false; }
    bool getIsoVgdir(unsigned short, unsigned short, KxGeVector3D&) const override { return false; }
    bool getNormalIsoMat4(unsigned short, unsigned short, unsigned short, unsigned short,
                          KxGeMatrix3D&) const override
    {
        return false;
    }
    bool getNormalIsoMat(unsigned short, unsigned short, KxGeMatrix3D&) const override { return false; }
    bool getArcIsoMat(unsigned short, unsigned short, unsigned short, KxGeMatrix3D&) const override
    {
        return false;
    }
    bool getRefIsoMat(KxGeMatrix3D&, int, int) const override { return false; }
    void* getCurrentObjectPointer() const override { return nullptr; }
    bool getPsView(KxGeVector3D&) const override { return false; }
};
