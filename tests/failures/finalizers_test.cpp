// Every exported operation in a state whose script has left objects with finalizers that raise: wherever the
// collector runs, one of them does.

#include "../OverwritingMemory.h"
#include "operations.h"

namespace {

using namespace failures;

/// Each object is collected at the next run of the collector, and leaves another one.
constexpr const char* litter = R"(
    finalized, raisesAt, raisesOn = 0, 0, false
    function leave()
        getmetatable(newproxy(true)).__gc = function()
            finalized = finalized + 1
            if raisesAt > 0 then leave() end
            if finalized == raisesAt or (raisesOn and raisesAt > 0 and finalized > raisesAt) then
                error('a finalizer')
            end
        end
    end
)";

class Finalizers : public testing::TestWithParam<Operation> {
protected:
    void SetUp() override
    {
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
    }
    void TearDown() override
    {
        lua_tinker::set_error_outlet(nullptr, nullptr);
        kxcom::clearQuorLastError();
    }

    static void setGlobals(lua_State* L, int raisesAt, bool raisesOn)
    {
        lua_pushnumber(L, 0);
        lua_setglobal(L, "finalized");
        lua_pushboolean(L, raisesOn);
        lua_setglobal(L, "raisesOn");
        lua_pushnumber(L, raisesAt);
        lua_setglobal(L, "raisesAt");
    }

    static void prepare(Setting& setting)
    {
        setting.begin();
        if (GetParam().prepare) GetParam().prepare(setting);
    }

    /// Runs the operation while the collector runs wherever it can; whether a finalizer raised.
    static bool attempt(int raisesAt, bool raisesOn)
    {
        const Operation& operation = GetParam();
        Setting setting;
        lua_State* L = setting.L;
        EXPECT_EQ(luaL_dostring(L, litter), 0);
        prepare(setting);
        lua_gc(L, LUA_GCCOLLECT, 0);
        setGlobals(L, raisesAt, raisesOn);
        lua_getglobal(L, "leave");
        lua_call(L, 0, 0);
        lua_gc(L, LUA_GCSTOP, 0);
        const int pause = lua_gc(L, LUA_GCSETPAUSE, 0);
        const int multiplier = lua_gc(L, LUA_GCSETSTEPMUL, 100000);
        lua_gc(L, LUA_GCRESTART, 0);
        const bool succeeded = operation.call(setting);
        lua_gc(L, LUA_GCSTOP, 0);
        lua_gc(L, LUA_GCSETPAUSE, pause);
        lua_gc(L, LUA_GCSETSTEPMUL, multiplier);
        lua_getglobal(L, "finalized");
        const bool raised = lua_tonumber(L, -1) >= raisesAt;
        lua_pop(L, 1);
        setGlobals(L, 0, false);
        lua_gc(L, LUA_GCRESTART, 0);
        checkLeft(setting, operation, succeeded);
        EXPECT_TRUE(succeeded || raised);
        EXPECT_TRUE(setting.isUsable());
        prepare(setting);
        EXPECT_TRUE(operation.call(setting)) << "when no finalizer raises";
        EXPECT_EQ(operation.look(setting), Seen::Whole) << "when no finalizer raises";
        return raised;
    }
};

TEST_P(Finalizers, EndInAStatusWhereverTheyRaise)
{
    constexpr int many = 3000;
    int attempts = 0;
    for (const bool raisesOn : {false, true}) {
        for (int raisesAt = 1; raisesAt < many; ++raisesAt, ++attempts) {
            SCOPED_TRACE(std::to_string(raisesAt) + (raisesOn ? " and on" : " alone"));
            if (!attempt(raisesAt, raisesOn)) break;
            ASSERT_FALSE(HasFailure());
        }
    }
    RecordProperty("attempts", attempts);
}

class Collector : public Finalizers {};

TEST_P(Collector, TakesNothingThatIsStillRead)
{
    Setting setting;
    prepare(setting);
    {
        const OverwritingMemory overwriting(setting.L);
        EXPECT_TRUE(GetParam().call(setting));
    }
    EXPECT_EQ(lua_gettop(setting.L) - top, GetParam().left);
    EXPECT_EQ(GetParam().look(setting), Seen::Whole);
}

INSTANTIATE_TEST_SUITE_P(Of, Collector, testing::ValuesIn(allOperations()),
                         [](const auto& row) { return nameOf(row.param) + std::to_string(row.index); });

INSTANTIATE_TEST_SUITE_P(Of, Finalizers, testing::ValuesIn(allOperations()),
                         [](const auto& row) { return nameOf(row.param) + std::to_string(row.index); });

} // namespace
