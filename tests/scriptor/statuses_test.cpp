#include "scriptor_fixture.h"

namespace {

TEST(Statuses, OfTheScriptorHaveTheirNumbers)
{
    const std::pair<Quor::GlibStatus, int> numbers[] = {{Quor::Ok, 0},
                                                        {Quor::FileNotExamined, 1},
                                                        {Quor::NoState, 3},
                                                        {Quor::ScriptFailed, 4},
                                                        {Quor::ValueMissing, 8},
                                                        {Quor::SegmentMissing, 10},
                                                        {Quor::TableMissing, 12},
                                                        {Quor::InvalidArgument, 11},
                                                        {Quor::BufferRefused, 14}};
    for (const auto& [status, number] : numbers)
        EXPECT_EQ(static_cast<int>(status), number);
    EXPECT_EQ(sizeof(Quor::GlibStatus), sizeof(int));
}

TEST(Statuses, OfTheExchangeHaveTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(Quor::CadReturn::Accepted), 0);
    EXPECT_EQ(static_cast<int>(Quor::CadReturn::StateMissing), 2);
    EXPECT_EQ(static_cast<int>(Quor::CadReturn::CallFailed), 5);
    EXPECT_EQ(sizeof(Quor::CadReturn), sizeof(int));
}

} // namespace
