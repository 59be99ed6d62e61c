// What the sample's components say beside their drawings, and whether the drawings fit together.

#include <QuorCommon/QuorSystem.h>
#include <QuorPrimary/PrimaryVisitor.h>
#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <algorithm>
#include <cmath>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <sstream>
#include <string_view>

namespace {

using Quor::GlibStatus;
using testing::ElementsAre;
using testing::Pair;
using Primitives = std::vector<std::unique_ptr<QuorPrimary>>;

/// A primitive's numbers and points, in order.
struct Values final : PrimaryVisitor {
    explicit Values(const QuorPrimary& primitive) { primitive.visitArguments(*this); }

    void visitNumber(double value) override { numbers.push_back(value); }
    void visitInteger(int value) override { integers.push_back(value); }
    void visitBoolean(bool) override {}
    void visitText(const std::string&) override {}
    void visitPoint(const KxGePoint3D& value) override { points.push_back(value.toQuorPoint()); }
    void visitVector(const KxGeVector3D&) override {}
    void visitPolyline(const std::vector<QuorPolyDesc>&) override {}
    void visitLoops(const std::vector<std::vector<QuorPolyDesc>>&) override {}
    void visitPoints(const std::vector<KxGePoint3D>&) override {}
    void visitParameters(const std::vector<KVParams>&) override {}

    std::vector<double> numbers;
    std::vector<int> integers;
    std::vector<QuorPoint> points;
};

double distance(const QuorPoint& one, const QuorPoint& other)
{
    return std::hypot(one.x - other.x, one.y - other.y, one.z - other.z);
}

class Samples : public testing::Test {
protected:
    Samples()
    {
        QuorSystem::setInstallationFolder(QUOR_SOURCE_DIR "/sample/installation");
        QuorSystem::setProjectFolder(QUOR_SOURCE_DIR "/sample/project");
        scriptor_ = std::make_unique<QuorGlibScriptor>();
    }
    ~Samples() override
    {
        QuorSystem::setInstallationFolder(nullptr);
        QuorSystem::setProjectFolder(nullptr);
    }

    void load(const std::string& component)
    {
        const std::string path =
            QuorSystem::getProjectFileFullPath("components", (component + ".lua").c_str());
        ASSERT_EQ(scriptor_->loadFile(path.c_str(), false), GlibStatus::Ok) << path;
    }

    Primitives draw(const char* segment)
    {
        std::vector<QuorPrimary*> list;
        EXPECT_EQ(scriptor_->callSeg3D(segment, list), GlibStatus::Ok);
        Primitives primitives;
        for (QuorPrimary* primitive : list)
            primitives.emplace_back(primitive);
        return primitives;
    }

    std::vector<Keypoint> keypoints()
    {
        std::vector<Keypoint> list;
        EXPECT_EQ(scriptor_->getKeypoints(list), GlibStatus::Ok);
        return list;
    }

    bool set(const char* name, double value) { return scriptor_->setDoubleParam("param", name, value); }

    std::unique_ptr<QuorGlibScriptor> scriptor_;
};

const char* const components[] = {"gate_valve", "elbow_90", "reducer", "tee", "support", "control_valve_iso"};

TEST_F(Samples, KeypointsOfEveryComponent)
{
    load("gate_valve");
    EXPECT_THAT(keypoints(), ElementsAre(Pair(1, KxGePoint3D(-75, 0, 0)), Pair(2, KxGePoint3D(75, 0, 0)),
                                         Pair(3, KxGePoint3D(0, 0, 311))));
    load("elbow_90");
    EXPECT_THAT(keypoints(), ElementsAre(Pair(1, KxGePoint3D(-76, 0, 0)), Pair(2, KxGePoint3D(0, 76, 0))));
    load("reducer");
    EXPECT_THAT(keypoints(), ElementsAre(Pair(1, KxGePoint3D(0, 0, 0)), Pair(2, KxGePoint3D(102, 0, 0))));
    load("tee");
    EXPECT_THAT(keypoints(), ElementsAre(Pair(1, KxGePoint3D(-86, 0, 0)), Pair(2, KxGePoint3D(86, 0, 0)),
                                         Pair(3, KxGePoint3D(0, 76, 0))));
    load("support");
    EXPECT_THAT(keypoints(), ElementsAre(Pair(1, KxGePoint3D(0, 0, 0)), Pair(2, KxGePoint3D(0, 0, -157.15))));
    load("control_valve_iso");
    EXPECT_THAT(keypoints(), ElementsAre(Pair(1, KxGePoint3D(-8, 0, 0)), Pair(2, KxGePoint3D(8, 0, 0)),
                                         Pair(3, KxGePoint3D(0, 17, 0))));
}

TEST_F(Samples, DirectionsThatTheHostAsksFor)
{
    const struct {
        const char* component;
        const char* gbk;
    } cases[] = {{"gate_valve", "\xCA\xD6\xC2\xD6\xB7\xBD\xCF\xF2"},
                 {"tee", "\xD6\xA7\xB9\xDC\xB7\xBD\xCF\xF2"}};
    for (const auto& [component, gbk] : cases) {
        load(component);
        int needed = 0;
        std::string text;
        EXPECT_EQ(scriptor_->callSeg("needxdir", needed, text), GlibStatus::Ok);
        EXPECT_EQ(needed, 1);
        EXPECT_EQ(text, gbk);
    }
}

TEST_F(Samples, ValveAnswersWhereItsOtherFlangeComes)
{
    load("gate_valve");
    KxGePoint3D first(10, 20, 30);
    KxGePoint3D second;
    std::vector<KVParams> parameters;
    EXPECT_EQ(scriptor_->exeLuaUI(first, second, parameters), Quor::CadReturn::Accepted);
    EXPECT_EQ(first, KxGePoint3D(10, 20, 30));
    EXPECT_EQ(second, KxGePoint3D(160, 20, 30));
    EXPECT_THAT(parameters, ElementsAre(KVParams{"P11", "", KVValue::ofDouble(0)}));
}

TEST_F(Samples, SmartLineTypes)
{
    const char* const types[] = {"VALVE", "ELBOW", "REDUCER", "TEE", "SUPPORT", "VALVE"};
    for (std::size_t i = 0; i < std::size(components); ++i) {
        load(components[i]);
        std::string type;
        EXPECT_EQ(scriptor_->getSmrtlnType(type), GlibStatus::Ok);
        EXPECT_EQ(type, types[i]);
    }
}

TEST_F(Samples, NotesTellEveryParameterWithItsValue)
{
    for (const char* component : components) {
        load(component);
        std::vector<KVParams> values;
        std::vector<KVParams> notes;
        ASSERT_EQ(scriptor_->getParams_std("param", values), GlibStatus::Ok);
        ASSERT_EQ(scriptor_->getParams_note("param_note", notes), GlibStatus::Ok) << component;
        std::erase_if(values, [](const KVParams& record) { return record.key == "MAKER"; });
        ASSERT_EQ(notes.size(), values.size()) << component;
        for (const KVParams& note : notes) {
            EXPECT_NE(note.note, "") << component << ' ' << note.key;
            const auto value = std::find_if(values.begin(), values.end(),
                                            [&](const KVParams& record) { return record.key == note.key; });
            ASSERT_NE(value, values.end()) << component << ' ' << note.key;
            EXPECT_EQ(note.value, value->value) << component << ' ' << note.key;
        }
    }
}

TEST_F(Samples, MaterialsStandInTheInstallationsList)
{
    std::ifstream file(QUOR_SOURCE_DIR "/sample/installation/sys/materials.txt", std::ios::binary);
    std::set<std::string> known;
    for (std::string line; std::getline(file, line);)
        known.insert(line.substr(0, line.find('\t')));
    for (const char* component : components) {
        load(component);
        for (const auto& primitive : draw("main")) {
            const QuorPrimary3D* solid = primitive->toPrimary3D();
            if (!solid) continue;
            ASSERT_NE(solid->getMaterial(), nullptr) << component;
            EXPECT_EQ(known.count(solid->getMaterial()), 1u) << component << ": " << *primitive;
        }
    }
}

TEST_F(Samples, OperationsNameSolidsThatStandBeforeThem)
{
    for (const char* component : components) {
        load(component);
        const Primitives list = draw("main");
        int operations = 0;
        for (std::size_t i = 0; i < list.size(); ++i) {
            const std::string_view factory = list[i]->factoryName();
            const bool isSlice = factory == "createQuorPrimarySliceOpr";
            if (!isSlice && factory != "createQuorPrimaryBooleanOpr") continue;
            ++operations;
            std::vector<int> elements = Values(*list[i]).integers;
            if (!isSlice) elements.erase(elements.begin());
            for (const int element : elements) {
                ASSERT_GE(element, 0) << component;
                ASSERT_LT(element, static_cast<int>(i)) << component;
                EXPECT_NE(list[static_cast<std::size_t>(element)]->toPrimary3D(), nullptr) << component;
            }
        }
        const bool drawsSolids = std::any_of(list.begin(), list.end(), [](const auto& primitive) {
            return primitive->toPrimary3D() != nullptr;
        });
        EXPECT_EQ(operations > 0, drawsSolids) << component;
    }
}

TEST_F(Samples, FlangesOfTheValveEndAtItsKeypoints)
{
    load("gate_valve");
    for (const double length : {150.0, 180.0, 190.0}) {
        ASSERT_TRUE(set("P1", length));
        double least = 0;
        double most = 0;
        for (const auto& primitive : draw("main")) {
            if (std::string_view(primitive->factoryName()) != "createQuorGraphy3DCylinder") continue;
            for (const QuorPoint& point : Values(*primitive).points) {
                if (point.y != 0 || point.z != 0) continue;
                least = std::min(least, point.x);
                most = std::max(most, point.x);
            }
        }
        EXPECT_EQ(least, -length / 2);
        EXPECT_EQ(most, length / 2);
        EXPECT_EQ(keypoints()[0].second, KxGePoint3D(least, 0, 0));
        EXPECT_EQ(keypoints()[1].second, KxGePoint3D(most, 0, 0));
    }
}

TEST_F(Samples, NutsOfTheValveLieOnTheBoltCircle)
{
    load("gate_valve");
    ASSERT_TRUE(set("P6", 8));
    int nuts = 0;
    for (const auto& primitive : draw("main")) {
        if (std::string_view(primitive->factoryName()) != "createQuorGraphy3DPrism1") continue;
        ++nuts;
        const Values values(*primitive);
        EXPECT_NEAR(std::hypot(values.points[0].y, values.points[0].z), 125.0 / 2, 1e-9);
        EXPECT_NEAR(distance(values.points[0], values.points[2]), 12, 1e-9);
        EXPECT_EQ(std::abs(values.points[0].x), 55);
    }
    EXPECT_EQ(nuts, 16);
}

TEST_F(Samples, ValvesStemTurnsAboutTheRun)
{
    load("gate_valve");
    for (const auto& [turn, wheel] :
         {std::pair(90.0, KxGePoint3D(0, -311, 0)), std::pair(180.0, KxGePoint3D(0, 0, -311)),
          std::pair(270.0, KxGePoint3D(0, 311, 0))}) {
        ASSERT_TRUE(set("P11", turn));
        EXPECT_EQ(keypoints()[2].second, wheel) << turn;
        EXPECT_EQ(keypoints()[0].second, KxGePoint3D(-75, 0, 0)) << turn;
    }
}

TEST_F(Samples, ElbowsBendClosesOntoItsKeypoints)
{
    load("elbow_90");
    ASSERT_TRUE(set("P4", 30));
    for (const double turn : {0.0, 33.0, 90.0, 200.0}) {
        ASSERT_TRUE(set("P5", turn));
        const QuorPoint inlet = keypoints()[0].second.toQuorPoint();
        const QuorPoint outlet = keypoints()[1].second.toQuorPoint();
        int bends = 0;
        for (const auto& primitive : draw("main")) {
            if (!primitive->toPrimary3D()) continue;
            ++bends;
            const Values values(*primitive);
            const QuorPoint& centre = values.points[0];
            EXPECT_EQ(values.points[1], inlet) << turn;
            EXPECT_EQ(values.points[2], outlet) << turn;
            EXPECT_NEAR(distance(centre, inlet), 76, 1e-9) << turn;
            EXPECT_NEAR(distance(centre, outlet), 76, 1e-9) << turn;
            // The bend leaves both ends at right angles to the way to the centre: along the pipes' axes.
            EXPECT_NEAR(centre.x, inlet.x, 1e-9) << turn;
            EXPECT_NEAR(distance(inlet, outlet), 76 * std::sqrt(2.0), 1e-9) << turn;
            EXPECT_EQ(values.integers.front(), 0) << "the shorter way round";
        }
        EXPECT_EQ(bends, 3);
    }
}

TEST_F(Samples, SupportsRodsTouchThePipeAndEndOnTheFloor)
{
    load("support");
    for (const double bolts : {1.0, 2.0, 3.0}) {
        ASSERT_TRUE(set("P8", bolts));
        int rings = 0;
        for (const auto& primitive : draw("main")) {
            const Values values(*primitive);
            const std::string_view factory = primitive->factoryName();
            if (factory == "createQuorGraphy3DTorus1") {
                ++rings;
                EXPECT_DOUBLE_EQ(values.numbers[0] - values.numbers[1], 114.3 / 2);
                EXPECT_LT(std::abs(values.points[0].x), 125);
            }
            if (factory == "createQuorGraphy3DCylinder") {
                EXPECT_EQ(values.points[0].z, 0);
                EXPECT_DOUBLE_EQ(values.points[1].z, -157.15);
            }
        }
        EXPECT_EQ(rings, static_cast<int>(bolts));
    }
}

} // namespace
