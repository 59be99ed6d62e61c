// Parameters and note tables: the host writes any records over any tables and reads them back.

#include "Drawn.h"
#include "Shapes.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorScriptor.h>
#include <cmath>
#include <sstream>

namespace {

constexpr const char* tables[] = {"param", "glb", "skey", "notes"};

QuorGlibScriptor& scriptor()
{
    static QuorGlibScriptor made;
    lua_tinker::set_error_outlet(fuzz::silence, nullptr);
    return made;
}

std::string text(const std::vector<KVParams>& records)
{
    std::ostringstream out;
    for (const KVParams& record : records)
        out << record << '\n';
    return out.str();
}

/// Reads a table twice, which must give the same.
template<class Read>
void readTwice(lua_State* L, Read read)
{
    const int height = lua_gettop(L);
    std::vector<KVParams> first;
    std::vector<KVParams> second;
    const Quor::GlibStatus status = read(first);
    fuzz::require(status == Quor::Ok || status == Quor::ScriptFailed || status == Quor::TableMissing ||
                      status == Quor::InvalidArgument,
                  "the status is one of a reader's");
    fuzz::require(read(second) == status, "a second reading has the same status");
    fuzz::require(text(first) == text(second), "a second reading gives the same");
    fuzz::require(lua_gettop(L) == height, "the stack is as high as before");
}

/// What was just written is there, unless a table takes no entries.
void writeAndRead(QuorGlibScriptor& made, fuzz::Input& input)
{
    const std::vector<KVParams> records = fuzz::readRecords(input, 4);
    const char* table = tables[input.below(std::size(tables))];
    const double factor = fuzz::readNumber(input);
    (void)made.setKeyValues(records, factor);
    if (made.clearParam(table) && made.setParam(table, records)) {
        std::vector<KVParams> read;
        fuzz::require(made.getParams_std(table, read) == Quor::Ok, "a table that was written can be read");
        fuzz::require(read.size() <= records.size(), "no more is read than was written");
    }
    (void)made.setDoubleParam(table, records.empty() ? "P1" : records[0].key.c_str(), factor);
    double values[23] = {};
    for (double& value : values)
        value = fuzz::readNumber(input);
    (void)made.setParams(values, factor);
    geolib::paramt last{nullptr, values[0], values[1]};
    const geolib::paramt cuts{&last, values[2], values[3]};
    (void)made.setParams(input.flag() ? &cuts : nullptr);
    (void)made.setConstFactor(factor);
    (void)made.setObjectId(static_cast<long long>(input.byte()) << 48);
}

} // namespace

const char fuzz::target[] = "parameters";

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QuorGlibScriptor& made = scriptor();
    lua_State* L = made.getLua(true);
    fuzz::Input input(data, size);
    const int written = input.byte();
    for (const char* table : tables) {
        fuzz::pushValue(L, input);
        lua_setglobal(L, table);
    }
    const int height = lua_gettop(L);
    const auto readAll = [&] {
        readTwice(L, [&](auto& records) { return made.getParams(records); });
        for (const char* table : tables) {
            readTwice(L, [&](auto& records) { return made.getParams_note(table, records); });
            readTwice(L, [&](auto& records) { return made.getParams_std(table, records); });
        }
        std::string type;
        const Quor::GlibStatus status = made.getSmrtlnType(type);
        fuzz::require(status == Quor::Ok || status == Quor::ValueMissing, "a type is there or not");
    };
    readAll();
    for (int i = 0; i < (written & 3); ++i)
        writeAndRead(made, input);
    readAll();
    fuzz::require(lua_gettop(L) == height, "the stack is as high as before");
    return 0;
}
