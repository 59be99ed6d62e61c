#include "scriptor_fixture.h"

namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

class UserInterface : public Scriptor {
protected:
    int exchange()
    {
        return kept([&] { return static_cast<int>(scriptor.exeLuaUI(first, second, records)); });
    }
    void answer(const std::string& results)
    {
        run("function quorgetparam_ui(...) count = select('#', ...); given = ... return " + results + " end");
        first = KxGePoint3D(1, 2, 3);
        second = KxGePoint3D(4, 5, 6);
        records = {{"old", "", {}}};
    }

    KxGePoint3D first{1, 2, 3};
    KxGePoint3D second{4, 5, 6};
    std::vector<KVParams> records{{"old", "", {}}};
};

TEST_F(UserInterface, PassesTheFirstPointAlone)
{
    answer("0, {10, 20, 30}, {40, 50, 60}, {}");
    EXPECT_EQ(exchange(), 0);
    EXPECT_EQ(shown("count .. ':' .. table.concat(given, ' ')"), "1:1 2 3");
}

TEST_F(UserInterface, TakesEverythingWhenTheStatusIsZero)
{
    answer("0, {10, 20, 30}, {40, 50, 60}, {P1 = 5, name = 'DN50'}");
    EXPECT_EQ(exchange(), 0);
    EXPECT_EQ(first, KxGePoint3D(10, 20, 30));
    EXPECT_EQ(second, KxGePoint3D(40, 50, 60));
    EXPECT_THAT(records, UnorderedElementsAre(KVParams{"P1", "", KVValue::ofDouble(5)},
                                              KVParams{"name", "", KVValue::ofString("DN50")}));
}

TEST_F(UserInterface, LeavesTheFirstPointForAnyOtherStatus)
{
    for (const int status : {1, 2, 5, -1, 100, 2147483647}) {
        answer(std::to_string(status) + ", {10, 20, 30}, {40, 50, 60}, {P1 = 5}");
        EXPECT_EQ(exchange(), status);
        EXPECT_EQ(first, KxGePoint3D(1, 2, 3)) << status;
        EXPECT_EQ(second, KxGePoint3D(40, 50, 60)) << "written whatever the status";
        EXPECT_EQ(records.size(), 1u) << status;
        EXPECT_EQ(records[0].key, "P1") << status;
    }
}

TEST_F(UserInterface, LeavesWhatTheScriptDoesNotReturn)
{
    answer("0");
    EXPECT_EQ(exchange(), 0);
    EXPECT_EQ(first, KxGePoint3D(1, 2, 3));
    EXPECT_EQ(second, KxGePoint3D(4, 5, 6));
    EXPECT_EQ(records.size(), 1u);
    answer("0, 'no point', 5, true");
    EXPECT_EQ(exchange(), 0);
    EXPECT_EQ(first, KxGePoint3D(1, 2, 3));
    EXPECT_EQ(second, KxGePoint3D(4, 5, 6));
    EXPECT_EQ(records[0].key, "old");
}

TEST_F(UserInterface, CannotReadAStatusThatIsNoNumber)
{
    for (const char* status : {"nil", "'0'", "{}", "print"}) {
        answer(std::string(status) + ", {10, 20, 30}, {40, 50, 60}, {}");
        EXPECT_EQ(exchange(), Quor::CadReturn::CallFailed) << status;
        EXPECT_EQ(first, KxGePoint3D(1, 2, 3)) << status;
    }
}

TEST_F(UserInterface, FailsWithoutAFunctionOrResults)
{
    EXPECT_EQ(exchange(), Quor::CadReturn::CallFailed) << "no function";
    run("quorgetparam_ui = 5");
    EXPECT_EQ(exchange(), Quor::CadReturn::CallFailed);
    EXPECT_THAT(alerts, IsEmpty());
    for (const char* results : {"", "nil", "nil, nil, nil, nil", "error('x')", "error({})", "error()"}) {
        answer(results);
        EXPECT_EQ(exchange(), Quor::CadReturn::CallFailed) << results;
        EXPECT_EQ(first, KxGePoint3D(1, 2, 3)) << results;
        EXPECT_EQ(second, KxGePoint3D(4, 5, 6)) << results;
        EXPECT_EQ(records[0].key, "old") << results;
    }
    EXPECT_EQ(alerts.size(), 3u) << "errors are reported";
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0) << "but are no segment's";
}

TEST_F(UserInterface, MayExchangeOnePointForBoth)
{
    answer("0, {10, 20, 30}, {40, 50, 60}, {}");
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.exeLuaUI(first, first, records)); }), 0);
    EXPECT_EQ(first, KxGePoint3D(10, 20, 30)) << "the first point is written last";
}

} // namespace
