// Every script of tests/hostile that a limit of the library can end, or that needs none.

#include "../hostile/cases.h"
#include "script_limits.h"

#include <ostream>

using hostile::Ending;
using Quor::GlibStatus;
using quorlua::LimitReached;
using quorlua::takeLimitReached;

namespace hostile {

void PrintTo(const Case& one, std::ostream* stream)
{
    *stream << one.name;
}

} // namespace hostile

namespace {

std::vector<hostile::Case> casesOfTheLibrary()
{
    std::vector<hostile::Case> cases;
    for (const hostile::Case& one : hostile::cases)
        if (one.ending != Ending::Watchdog && one.ending != Ending::Refused) cases.push_back(one);
    return cases;
}

class HostileScript : public testing::TestWithParam<hostile::Case> {
protected:
    /// Loads the script and draws, as a host does it. Primitives of a script that survives are freed.
    static GlibStatus draw(QuorGlibScriptor& scriptor, const hostile::Case& one)
    {
        const std::string file = QUOR_SOURCE_DIR "/tests/hostile/" + std::string(one.name) + ".lua";
        const GlibStatus loaded = scriptor.loadFile(file.c_str(), false);
        if (loaded != GlibStatus::Ok) return loaded;
        Primitives primitives;
        return scriptor.callSeg3D("main", primitives);
    }
};

TEST_P(HostileScript, EndsByItsStatusOrWithinItsLimit)
{
    const hostile::Case& one = GetParam();
    const bool isTimed = one.ending == Ending::Time || one.ending == Ending::Limited;
    const Limited limited(isTimed ? 0.1 : 30, std::size_t{8} << 20);
    QuorGlibScriptor scriptor;
    ASSERT_NE(scriptor.getLua(false), nullptr);
    const GlibStatus status = draw(scriptor, one);
    const LimitReached reached = takeLimitReached();
    switch (one.ending) {
    case Ending::Done:
        EXPECT_EQ(status, GlibStatus::Ok);
        break;
    case Ending::Error:
        EXPECT_EQ(status, GlibStatus::ScriptFailed);
        break;
    case Ending::Survives:
        EXPECT_NE(status, GlibStatus::NoState);
        return;
    case Ending::Time:
        EXPECT_EQ(status, GlibStatus::ScriptFailed);
        EXPECT_EQ(reached, LimitReached::Time);
        return;
    case Ending::Memory:
        EXPECT_EQ(status, GlibStatus::ScriptFailed);
        EXPECT_EQ(reached, LimitReached::Memory);
        return;
    case Ending::Limited:
        EXPECT_EQ(status, GlibStatus::ScriptFailed);
        EXPECT_NE(reached, LimitReached::None);
        return;
    case Ending::Watchdog:
    case Ending::Refused:
        FAIL() << "not for the library to end";
    }
    EXPECT_EQ(reached, LimitReached::None);
}

INSTANTIATE_TEST_SUITE_P(Library, HostileScript, testing::ValuesIn(casesOfTheLibrary()),
                         [](const auto& one) { return std::string(one.param.name); });

} // namespace
