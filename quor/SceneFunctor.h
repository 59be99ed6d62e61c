#pragma once

#include "Scene.h"

#include <QuorScriptor/GlibCallbacks.h>
#include <memory>

namespace quor {

/// Answers a script's questions about the drawing from a scene. What the scene does not hold it does not
/// know.
class SceneFunctor final : public GlibScriptFunctor {
public:
    explicit SceneFunctor(Scene scene);
    virtual ~SceneFunctor() = default;

    bool getCurrentObjectId(KxDbObjectId& id) const override;
    bool getIsoPoint(int number, KxGePoint3D& point) const override;
    bool getDefaultIsoMat(KxGeMatrix3D& matrix) const override;
    bool getIsoVgdir(unsigned short a, unsigned short b, KxGeVector3D& direction) const override;
    bool getNormalIsoMat4(unsigned short a, unsigned short b, unsigned short c, unsigned short d,
                          KxGeMatrix3D& matrix) const override;
    bool getNormalIsoMat(unsigned short a, unsigned short b, KxGeMatrix3D& matrix) const override;
    bool getArcIsoMat(unsigned short a, unsigned short b, unsigned short c,
                      KxGeMatrix3D& matrix) const override;
    bool getRefIsoMat(KxGeMatrix3D& matrix, int a, int b) const override;
    /// The address of something that is this functor's alone, where the scene says that there is an object.
    void* getCurrentObjectPointer() const override;
    bool getPsView(KxGeVector3D& direction) const override;

    const Scene& scene() const { return scene_; }

private:
    Scene scene_;
    std::unique_ptr<char> object_;
};

} // namespace quor
