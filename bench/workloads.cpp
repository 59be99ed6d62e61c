#include "Workload.h"

#include "ways.h"

namespace bench {
namespace {

using namespace ways;

// clang-format off
//                                                   most of raw's  time  instructions, until reached
constexpr Way callStatus[] = {{"raw", callStatusRaw,                0,    0},
                              {"limit", callStatusLimit,            0,    0},
                              {"variadic", callStatusVariadic,      1.15, 1.20},
                              {"checked", callStatusChecked,        1.08, 1.10}};
constexpr Way callExchange[] = {{"raw", callExchangeRaw,            0,    0},
                                {"limit", callExchangeLimit,        0,    0},
                                {"variadic", callExchangeVariadic,  1.04, 1.05, 1.31},
                                {"checked", callExchangeChecked,    1.04, 1.05, 1.25}};
constexpr Way readPoints[] = {{"raw", readPointsRaw,                0,    0},
                              {"limit", readPointsLimit,            0,    0},
                              {"library", readPointsLibrary,        0.70, 0.80}};
constexpr Way writePoints[] = {{"raw", writePointsRaw,              0,    0},
                               {"limit", writePointsLimit,          0,    0},
                               {"library", writePointsLibrary,      1.02, 1.01}};
constexpr Way readMatrix[] = {{"raw", readMatrixRaw,                0,    0},
                              {"limit", readMatrixLimit,            0,    0},
                              {"library", readMatrixLibrary,        0.72, 0.86}};
constexpr Way writeMatrix[] = {{"raw", writeMatrixRaw,              0,    0},
                               {"limit", writeMatrixLimit,          0,    0},
                               {"library", writeMatrixLibrary,      1.02, 1.01, 1.09}};
constexpr Way parseRecords[] = {{"raw", parseRecordsRaw,            0,    0},
                                {"limit", parseRecordsLimit,        0,    0},
                                {"library", parseRecordsLibrary,    0.70, 0.83, 0.92}};
constexpr Way newState[] = {{"raw", newStateRaw,                    0,    0},
                            {"limit", newStateLimit,                0,    0},
                            {"library", newStateLibrary,            1.02, 1.02}};
constexpr Way getText[] = {{"raw", getTextRaw,                      0,    0},
                           {"limit", getTextLimit,                  0,    0},
                           {"library", getTextLibrary,              1.12, 1.15}};

constexpr Workload all[] = {{"call ss>i", 20000, callStatus},
                            {"call p>ipp", 10000, callExchange},
                            {"read 1000 points", 40, readPoints},
                            {"write 1000 points", 100, writePoints},
                            {"read a 4x4 matrix", 5000, readMatrix},
                            {"write a 4x4 matrix", 5000, writeMatrix},
                            {"parse 1000 records", 60, parseRecords},
                            {"new state", 60, newState},
                            {"text getter", 20000, getText}};
// clang-format on

} // namespace

std::span<const Workload> workloads()
{
    return all;
}

} // namespace bench
