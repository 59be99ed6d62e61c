#include "limit.h"
#include "raw.h"
#include "ways.h"

#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/primitives.h>

namespace bench::ways {
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

template<class Parse>
void measureParse(Laps& laps, Parse parse)
{
    const ScriptState state(script);
    lua_getglobal(state.get(), "records");
    std::size_t made = 0;
    laps.repeat([&] {
        std::vector<QuorPrimary*> primitives;
        parse(state.get(), 1, primitives);
        made = primitives.size();
        for (const QuorPrimary* primitive : primitives)
            delete primitive;
    });
    require(made == 900, "parse 1000 records");
}

} // namespace

void parseRecordsRaw(Laps& laps)
{
    measureParse(laps, raw::parseRecords);
}

void parseRecordsLimit(Laps& laps)
{
    measureParse(laps, limit::parseRecords);
}

void parseRecordsLibrary(Laps& laps)
{
    measureParse(laps, [](lua_State* L, int index, std::vector<QuorPrimary*>& out) {
        static_cast<void>(quorlua::parse_primary_byidx(L, index, out));
    });
}

} // namespace bench::ways
