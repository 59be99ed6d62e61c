#include "SilentFunctor.h"
#include "glib_functions.h"

#include <sstream>

namespace {

using testing::ElementsAre;

/// A component that is drawn with the host's answers.
class GlibSegment : public GlibFunctions {
protected:
    GlibSegment()
    {
        functor.point = {1, 2, 3};
        functor.vector = {0, 0, -1};
        functor.matrix = KxGeMatrix3D();
        functor.matrix.setRow(0, 0, 2, 0, 0);
        functor.matrix.setRow(3, 10, 20, 30, 1);
    }

    static std::vector<std::string> printed(const Primitives& primitives)
    {
        std::vector<std::string> texts;
        for (const QuorPrimary* primitive : primitives) {
            std::ostringstream out;
            out << *primitive;
            texts.push_back(out.str());
        }
        return texts;
    }
};

/// What a drawing ends in that no attribute but its colour was set for.
const std::string plain = " thick=0 ltScale=1 lineType=null";

/// A point is a row that is multiplied by the matrix: its translation is the fourth row.
constexpr const char* component = R"(
    function moved(point, matrix)
        local result = {}
        for column = 1, 3 do
            result[column] = point[1] * matrix[1][column] + point[2] * matrix[2][column] +
                             point[3] * matrix[3][column] + matrix[4][column]
        end
        return result
    end
    function main()
        local at, view, style = glib.getIsoPoint(1), glib.getPsView(), glib.getCurrentTxtstyle()
        return {
            {300, 3},
            {16, at, moved(at, glib.getNormalIsoMat(1, 2))},
            {18, at, style:getlen('DN80'), view},
            {40, {{19, 1, at, 'DN80', 0, 1, style:height()}}},
            {10, moved({0, 0, 0}, glib.getRefIsoMat()), 5},
        }
    end
)";

TEST_F(GlibSegment, DrawsWithTheHostsAnswers)
{
    run(component);
    Primitives primitives;
    ASSERT_EQ(scriptor.callSeg3D("main", primitives), Quor::Ok);
    EXPECT_THAT(functor.calls,
                ElementsAre("getIsoPoint(1)", "getPsView()", "getNormalIsoMat(1, 2)", "getRefIsoMat(0, -1)"));
    EXPECT_THAT(
        printed(primitives),
        ElementsAre("createQuorLine((1, 2, 3), (10, 24, 33)) color=3" + plain,
                    "createQuorCirc((1, 2, 3), 4, (0, 0, -1)) color=3" + plain,
                    "createQuorText(1, (1, 2, 3), \"DN80\", 0) color=3" + plain + " scale=1 height=2.5",
                    "createQuorGraphy3DSphere((10, 20, 30), 5, 12, false) color=3 material=null"));
}

TEST_F(GlibSegment, FailsWhenItNeedsWhatTheHostDoesNotAnswer)
{
    run(component);
    functor.manner = FunctorOfTest::Manner::Refusing;
    Primitives primitives;
    EXPECT_EQ(scriptor.callSeg3D("main", primitives), Quor::ScriptFailed);
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003);
    EXPECT_TRUE(primitives.empty());
    EXPECT_EQ(alerts.size(), 1u) << "the script's own error is reported";
    alerts.clear();
    kxcom::clearQuorLastError();
}

TEST_F(GlibSegment, MayGoOnWithoutTheHostsAnswers)
{
    run("function main() local view = glib.getPsView() or {0, 0, 1}"
        " return {{18, glib.getIsoPoint(1) or {0, 0, 0}, 5, view}} end");
    scriptor.setFunction(nullptr);
    Primitives primitives;
    ASSERT_EQ(scriptor.callSeg3D("main", primitives), Quor::Ok);
    EXPECT_THAT(printed(primitives),
                ElementsAre("createQuorCirc((0, 0, 0), 5, (0, 0, 1)) color=257" + plain));
}

/// Draws another component, with another object, whenever the script asks for a point.
class DrawingFunctor final : public SilentFunctor {
public:
    bool getIsoPoint(int number, KxGePoint3D& point) const override
    {
        QuorGlibScriptor inner;
        inner.setFunction(&inside);
        std::string script = "function main() point = glib.getIsoPoint(5)"
                             " return {{300, 9}, {400, 'INNER'}, {16, point, {0, 0, 0}}} end";
        EXPECT_EQ(inner.loadBuffer(bufferOf(script), 1000, false), Quor::Ok);
        Primitives primitives;
        EXPECT_EQ(inner.callSeg3D("main", primitives), Quor::Ok);
        EXPECT_EQ(primitives.size(), 1u);
        point = {static_cast<double>(number), 0, 0};
        return true;
    }

    FunctorOfTest inside;
};

TEST_F(GlibSegment, IsDrawnWholeAlthoughTheHostDrawsAnotherMeanwhile)
{
    const DrawingFunctor drawing;
    scriptor.setFunction(&drawing);
    run("function main() local a, b = glib.getIsoPoint(3), glib.getIsoPoint(4)"
        " return {{300, 3}, {16, a, b}} end");
    Primitives primitives;
    ASSERT_EQ(scriptor.callSeg3D("main", primitives), Quor::Ok);
    EXPECT_THAT(printed(primitives), ElementsAre("createQuorLine((3, 0, 0), (4, 0, 0)) color=3" + plain));
    EXPECT_THAT(drawing.inside.calls, ElementsAre("getIsoPoint(5)", "getIsoPoint(5)"));
}

} // namespace
