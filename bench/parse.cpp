#include "Workload.h"
#include "raw.h"

#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/primitives.h>

namespace {

constexpr const char* script = R"(
    records = {}
    for i = 1, 1000, 10 do
        for _, record in ipairs {
            {300, i % 256},
            {2, {0, 0, i}, {0, 0, i + 100}, 25},
            {3, 10, 20, 30, {i, 0, 0}, {1, 0, 0}, {0, 1, 0}},
            {16, {0, 0, 0}, {i, i, 0}},
            {15, {0, 0, 0}, {0, 0, 50}, 25, 10},
            {18, {0, 0, 0}, 12.5, {0, 0, 1}},
            {2, {0, 0, 0}, {i, 0, 0}, 15, true},
            {16, {0, 0, 0}, {0, i, i}},
            {3, 1, 2, 3, {0, 0, i}, {0, 1, 0}, {0, 0, 1}},
            {18, {i, i, i}, 5, {1, 0, 0}},
        } do records[#records + 1] = record end
    end
)";

void libraryParse(lua_State* L, int index, std::vector<QuorPrimary*>& out)
{
    static_cast<void>(quorlua::parse_primary_byidx(L, index, out));
}

template<class Parse>
void parseRecords(benchmark::State& run, Parse parse)
{
    const bench::ScriptState state(script);
    lua_settop(state.get(), 0);
    lua_getglobal(state.get(), "records");
    std::size_t made = 0;
    for (auto _ : run) {
        std::vector<QuorPrimary*> primitives;
        parse(state.get(), 1, primitives);
        made = primitives.size();
        for (const QuorPrimary* primitive : primitives)
            delete primitive;
    }
    bench::require(made == 900, "parse 1000 records");
}

BENCHMARK_CAPTURE(parseRecords, raw, raw::parseRecords)->Name("parse 1000 records/raw");
BENCHMARK_CAPTURE(parseRecords, library, libraryParse)->Name("parse 1000 records/library");

} // namespace
