#include "../rationed_memory.h"
#include "primary_table.h"

#include <gmock/gmock.h>
#include <new>

namespace {

using namespace table;

constexpr const char* longText = "a text too long to be kept within a string object";

template<class Action>
long blocksOf(const Action& action)
{
    const long before = rationed::taken;
    const auto kept = action();
    return rationed::taken - before;
}

/// Runs the action with 0, 1, 2, ... blocks of memory until it succeeds; returns how often it failed. After
/// each failure `check` runs.
template<class Action, class Check>
int failuresOf(const Action& action, const Check& check)
{
    for (int blocks = 0;; ++blocks) {
        bool failed = false;
        rationed::allowed = blocks;
        try {
            action();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        rationed::allowed = -1;
        if (!failed) return blocks;
        check();
    }
}

TEST(Memory, OfAPrimitiveIsOneBlock)
{
    EXPECT_EQ(
        blocksOf([] {
            return std::unique_ptr<QuorPrimary>(createQuorGraphy3DCylinder({}, {0, 0, 1}, 25, 32, false));
        }),
        1);
    EXPECT_EQ(blocksOf([] { return std::unique_ptr<QuorPrimary>(createQuorText(1, {}, "DN50", 0.0)); }), 1);
}

TEST(Memory, OfListsAndLongTextsIsABlockEachBesides)
{
    EXPECT_EQ(blocksOf([] { return std::unique_ptr<QuorPrimary>(createQuorText(1, {}, longText, 0.0)); }), 2);
    const auto line = polylineOf(1);
    EXPECT_EQ(blocksOf([&] { return std::unique_ptr<QuorPrimary>(createQuorPline2D(line, 0)); }), 2);
}

TEST(Memory, OfARefusedPrimitiveIsNone)
{
    const auto create = [] {
        return std::unique_ptr<QuorPrimary>(createQuorText(1, {notANumber, 0, 0}, longText, 0.0));
    };
    EXPECT_EQ(create(), nullptr);
    EXPECT_EQ(blocksOf(create), 0);
}

TEST(ExhaustedMemory, LeavesNothingBehindAFactory)
{
    const auto outer = polylineOf(1);
    const Loops inner = {polylineOf(2), polylineOf(3)};
    const int failures = failuresOf(
        [&] {
            delete createQuorGraphy3DPolygon({}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, 1, outer, inner, 32, false,
                                             1);
        },
        [] {});
    EXPECT_EQ(failures, 5); // the object, the outer loop, the list of loops, two loops
    EXPECT_EQ(failuresOf(
                  [] {
                      delete createCadReference(longText, longText, {}, {1, 0, 0}, {0, 1, 0});
                  },
                  [] {}),
              3);
}

TEST(ExhaustedMemory, LeavesANamedAttributeAsItWas)
{
    const std::unique_ptr<QuorPrimary3D> solid(createQuorGraphy3DSphere({}, 1, 12, false));
    EXPECT_EQ(
        failuresOf([&] { solid->setMaterial(longText); }, [&] { EXPECT_EQ(solid->getMaterial(), nullptr); }),
        1);

    const std::unique_ptr<QuorPrimary2D> line(createQuorLine({}, {}));
    line->setLineType("DASHED");
    EXPECT_EQ(failuresOf([&] { line->setLineType(longText); },
                         [&] { EXPECT_STREQ(line->getLineType(), "DASHED"); }),
              1);
}

TEST(ExhaustedMemory, LeavesAParameterArrayAsItWas)
{
    const Params before = {{"P1", "", KVValue::ofInt(1)}};
    const Params after = {{longText, longText, KVValue::ofString(longText)}};
    QuorOprKVParamArray array;
    array.setParams(before);
    EXPECT_EQ(failuresOf([&] { array.setParams(after); }, [&] { EXPECT_EQ(array.getParams(), before); }), 4);
    EXPECT_EQ(array.getParams(), after);
}

} // namespace
