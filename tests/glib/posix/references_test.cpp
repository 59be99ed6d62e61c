// A host whose references are solids or drawings: its factory stands here in place of the platform's.

#include "../primary_state.h"

#include <QuorPrimary/QuorPrimaryFactories.h>

namespace {

QuorPrimary* makeSolid()
{
    return createQuorGraphy3DSphere(KxGePoint3D(1, 2, 3), 5, 12, false);
}

QuorPrimary* makeDrawing()
{
    return createQuorLine(KxGePoint3D(1, 2, 3), KxGePoint3D(4, 5, 7));
}

QuorPrimary* (*makeReference)() = nullptr;

} // namespace

__attribute__((visibility("default"))) QuorPrimary*
createCadReference(const char*, const char*, const KxGePoint3D&, const KxGeVector3D&, const KxGeVector3D&)
{
    return makeReference();
}

namespace {

class ReferencesOfAHost : public PrimaryState {
protected:
    /// What is made of a reference behind records that set every attribute.
    Texts reference()
    {
        return parse("{{300, 7}, {400, 'STEEL'}, {500, 2.5}, {32, 'lib', 'block', a, x, y}}");
    }
};

TEST_F(ReferencesOfAHost, AreStampedAsSolidsWhereTheyAre)
{
    makeReference = makeSolid;
    EXPECT_THAT(reference(), testing::ElementsAre("createQuorGraphy3DSphere((1, 2, 3), 5, 12, false)"
                                                  " color=7 material=\"STEEL\""));
}

TEST_F(ReferencesOfAHost, AreStampedAsDrawingsWhereTheyAre)
{
    makeReference = makeDrawing;
    EXPECT_THAT(reference(), testing::ElementsAre("createQuorLine((1, 2, 3), (4, 5, 7))"
                                                  " color=7 thick=2.5 ltScale=1 lineType=null"));
}

} // namespace
