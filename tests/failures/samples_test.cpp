// Every sample component, loaded and drawn, with requests for memory refused: that of its state, and that of
// the library; the one request alone, and all from it on. With QUOR_FULL_SWEEPS set every request has its
// turn, else every eleventh.

#include "../rationed_memory.h"
#include "../rationed_states.h"

#include "../scriptor/scriptor_fixture.h"

#include <QuorCommon/QuorSystem.h>
#include <cstdlib>

namespace {

constexpr const char* folder = QUOR_SOURCE_DIR "/sample/project/components/";

bool areAllStatuses(int status)
{
    return status == Quor::Ok || status == Quor::ScriptFailed || status == Quor::SegmentMissing;
}

class Sample : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        QuorGlibScriptor probe;
        if (!probe.getLua(false)) GTEST_SKIP() << "this engine takes no allocator";
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
        QuorSystem::setInstallationFolder(QUOR_SOURCE_DIR "/sample/installation");
        path = std::string(folder) + GetParam();
        for (int i = 0; i < 20; ++i) {
            QuorGlibScriptor scriptor;
            drawn(scriptor);
        }
    }
    void TearDown() override
    {
        lua_tinker::set_error_outlet(nullptr, nullptr);
        QuorSystem::setInstallationFolder(nullptr);
        kxcom::clearQuorLastError();
    }

    /// Loads and draws; the number of primitives, or -1 when a status says that something failed.
    int drawn(QuorGlibScriptor& scriptor) const
    {
        const int loaded = scriptor.loadFile(path.c_str(), false);
        EXPECT_TRUE(areAllStatuses(loaded)) << loaded;
        if (loaded != Quor::Ok) return -1;
        Primitives primitives;
        std::vector<Keypoint> keypoints;
        const int main = scriptor.callSeg3D("main", primitives);
        const int points = scriptor.getKeypoints(keypoints);
        EXPECT_TRUE(areAllStatuses(main)) << main;
        EXPECT_TRUE(areAllStatuses(points)) << points;
        return main == Quor::Ok && points == Quor::Ok ? static_cast<int>(primitives.size()) : -1;
    }

    std::string path;
};

/// One way to run out of memory, and how to end it.
struct Shortage {
    const char* name;
    bool ofStates;
    bool once;

    void begin(int granted) const
    {
        rationed::statesRefuseOnce = rationed::refusesOnce = once;
        rationed::statesRefused = rationed::refused = 0;
        if (ofStates)
            rationed::statesLeft = granted;
        else
            rationed::allowed = granted;
    }
    /// Whether a request was refused.
    static bool end()
    {
        rationed::statesLeft = -1;
        rationed::allowed = -1;
        return rationed::statesRefused + rationed::refused != 0;
    }
};
constexpr Shortage shortages[] = {{"states, from one on", true, false},
                                  {"states, one alone", true, true},
                                  {"library, from one on", false, false},
                                  {"library, one alone", false, true}};

TEST_P(Sample, IsDrawnOrEndsInAStatus)
{
    constexpr int many = 20000;
    const int step = std::getenv("QUOR_FULL_SWEEPS") ? 1 : 11;
    QuorGlibScriptor whole;
    const int expected = drawn(whole);
    ASSERT_GT(expected, 0);
    int attempts = 0;
    for (const Shortage& shortage : shortages) {
        bool isRefused = true;
        for (int granted = 0; isRefused; granted += step, ++attempts) {
            ASSERT_LT(granted, many) << "never succeeded";
            const long before = rationed::blocksOfStates;
            {
                QuorGlibScriptor scriptor;
                shortage.begin(granted);
                const int made = drawn(scriptor);
                isRefused = Shortage::end();
                EXPECT_LE(made, expected) << shortage.name << ", " << granted;
                if (!isRefused) {
                    EXPECT_EQ(made, expected) << shortage.name << ", " << granted;
                }
                lua_State* L = scriptor.getLua(false);
                ASSERT_NE(L, nullptr);
                EXPECT_EQ(lua_gettop(L), 1) << shortage.name << ", " << granted;
                // What a load that failed left of the file is replaced by the next. Without memory for its
                // name there is no file to be loaded again.
                const int again =
                    scriptor.getFileName() ? scriptor.reloadLua(1) : scriptor.loadFile(path.c_str(), false);
                EXPECT_EQ(again, Quor::Ok) << shortage.name << ", " << granted;
                Primitives primitives;
                EXPECT_EQ(scriptor.callSeg3D("main", primitives), Quor::Ok);
                EXPECT_EQ(static_cast<int>(primitives.size()), expected) << shortage.name << ", " << granted;
            }
            EXPECT_EQ(rationed::blocksOfStates, before) << shortage.name << ", " << granted;
        }
    }
    RecordProperty("attempts", attempts);
}

INSTANTIATE_TEST_SUITE_P(Of, Sample,
                         testing::Values("control_valve_iso.lua", "elbow_90.lua", "gate_valve.lua",
                                         "reducer.lua", "support.lua", "tee.lua"),
                         [](const auto& sample) {
                             const std::string name = sample.param;
                             return name.substr(0, name.find('.'));
                         });

TEST(Samples, AreAllDrawnHere)
{
    constexpr std::ptrdiff_t inTheTable = 6;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), inTheTable);
}

} // namespace
