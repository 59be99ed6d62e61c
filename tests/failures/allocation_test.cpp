// Every exported operation with every request for memory refused in turn: that of its state, and that of the
// library; the one request alone, and all from it on.

#include "../rationed_memory.h"
#include "../rationed_states.h"

#include "operations.h"

namespace {

using namespace failures;

enum class Memory { OfStates, OfTheLibrary };

struct Way {
    Memory memory;
    bool once;
};
constexpr Way ways[] = {{Memory::OfStates, false},
                        {Memory::OfStates, true},
                        {Memory::OfTheLibrary, false},
                        {Memory::OfTheLibrary, true}};

std::string described(const Way& way, int granted)
{
    return std::string(way.memory == Memory::OfStates ? "states: " : "library: ") +
           (way.once ? "the one request behind " : "all requests behind ") + std::to_string(granted);
}

void grant(const Way& way, int requests)
{
    rationed::statesRefuseOnce = rationed::refusesOnce = way.once;
    (way.memory == Memory::OfStates ? static_cast<void>(rationed::statesLeft = requests)
                                    : static_cast<void>(rationed::allowed = requests));
}

/// Ends the shortage; how many requests were refused in it.
long endOf(const Way& way)
{
    rationed::statesLeft = -1;
    rationed::allowed = -1;
    const long refused = way.memory == Memory::OfStates ? rationed::statesRefused : rationed::refused;
    rationed::statesRefused = rationed::refused = 0;
    return refused;
}

/// The blocks of both kinds that are in use now.
std::pair<long, long> blocksInUse()
{
#if defined(_WIN32)
    return {rationed::blocksOfStates, 0}; // a library there gives its blocks back elsewhere
#else
    return {rationed::blocksOfStates, rationed::taken - rationed::returned};
#endif
}

void prepare(Setting& setting, const Operation& operation)
{
    setting.begin();
    if (operation.prepare) operation.prepare(setting);
}

class Allocation : public testing::TestWithParam<Operation> {
protected:
    void SetUp() override
    {
        QuorGlibScriptor probe;
        if (!probe.getLua(false)) GTEST_SKIP() << "this engine takes no allocator";
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
        // What is made once, at the first uses and the first failures of anything, stays.
        for (int i = 0; i < 20; ++i)
            attempt(ways[0], i % 2 == 0 ? -1 : firstOf(ways[0]));
    }
    void TearDown() override
    {
        endOf(ways[0]);
        lua_tinker::set_error_outlet(nullptr, nullptr);
        kxcom::clearQuorLastError();
    }

    /// How many requests are granted at least.
    static int firstOf(const Way& way)
    {
        return GetParam().makesState && way.memory == Memory::OfStates ? rationed::requestsOfLibraries() : 0;
    }

    /// Lets the operation have so many requests, in a fresh state, and looks at everything that it left; then
    /// once more with all memory. Whether a request was refused.
    static bool attempt(const Way& way, int granted)
    {
        const Operation& operation = GetParam();
        Setting setting;
        prepare(setting, operation);
        lua_gc(setting.L, LUA_GCCOLLECT, 0);
        // Nothing is collected while memory is short, so that every request counts.
        lua_gc(setting.L, LUA_GCSTOP, 0);
        grant(way, granted);
        const bool succeeded = operation.call(setting);
        const bool isRefused = endOf(way) != 0;
        lua_gc(setting.L, LUA_GCRESTART, 0);
        checkLeft(setting, operation, succeeded);
        EXPECT_TRUE(succeeded || isRefused);
        EXPECT_TRUE(setting.isUsable());
        prepare(setting, operation);
        EXPECT_TRUE(operation.call(setting)) << "when there is memory again";
        EXPECT_EQ(operation.look(setting), Seen::Whole) << "when there is memory again";
        return isRefused;
    }
};

TEST_P(Allocation, EndsInAStatusWhereverItFails)
{
    constexpr int many = 3000;
    int attempts = 0;
    for (const Way& way : ways) {
        const int first = firstOf(way);
        for (int granted = first; granted < first + many; ++granted, ++attempts) {
            SCOPED_TRACE(described(way, granted));
            const auto before = blocksInUse();
            const bool isRefused = attempt(way, granted);
            EXPECT_EQ(blocksInUse(), before) << "blocks of states and of the library";
            if (!isRefused) break;
            ASSERT_FALSE(HasFailure());
        }
    }
    RecordProperty("attempts", attempts);
}

INSTANTIATE_TEST_SUITE_P(Of, Allocation, testing::ValuesIn(allOperations()),
                         [](const auto& row) { return nameOf(row.param) + std::to_string(row.index); });

} // namespace
