#include "limit.h"
#include "raw.h"
#include "ways.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/geometry.h>

namespace bench::ways {
namespace {

constexpr int pointCount = 1000;

constexpr const char* script = R"(
    points = {}
    for i = 1, 1000 do points[i] = {i, i + 0.5, -i} end
    matrix = {{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}
)";

/// The global is slot 1 of an otherwise empty stack.
void pushGlobal(lua_State* L, const char* name)
{
    lua_settop(L, 0);
    lua_getglobal(L, name);
}

template<class Read>
void measureReadPoints(Laps& laps, Read read)
{
    const ScriptState state(script);
    pushGlobal(state.get(), "points");
    std::vector<KxGePoint3D> points;
    laps.repeat([&] { read(state.get(), 1, points); });
    require(points.size() == pointCount && points[999] == KxGePoint3D(1000, 1000.5, -1000),
            "read 1000 points");
}

template<class Write>
void measureWritePoints(Laps& laps, Write write)
{
    const ScriptState state("");
    lua_State* L = state.get();
    const std::vector<KxGePoint3D> points(pointCount, KxGePoint3D(1, 2, 3));
    // What a lap leaves behind is collected at its end: left to itself the collector would meet each way at
    // another time, and find other blocks.
    laps.repeat([&] {
        lua_createtable(L, pointCount, 0);
        write(L, 1, points);
        lua_settop(L, 0);
        lua_gc(L, LUA_GCCOLLECT, 0);
    });
    lua_createtable(L, pointCount, 0);
    write(L, 1, points);
    require(lua_objlen(L, 1) == pointCount, "write 1000 points");
}

template<class Read>
void measureReadMatrix(Laps& laps, Read read)
{
    const ScriptState state(script);
    pushGlobal(state.get(), "matrix");
    KxGeMatrix3D matrix;
    laps.repeat([&] { read(state.get(), 1, matrix); });
    require(matrix(3, 3) == 16, "read a 4x4 matrix");
}

template<class Write>
void measureWriteMatrix(Laps& laps, Write write)
{
    const ScriptState state("");
    lua_State* L = state.get();
    const KxGeMatrix3D matrix;
    lua_settop(L, 1);
    lua_tinker::table table(L, 1);
    laps.repeat([&] {
        lua_settop(L, 0);
        lua_createtable(L, 4, 0);
        write(L, table, matrix);
    });
    require(lua_objlen(L, 1) == 4, "write a 4x4 matrix");
}

} // namespace

void readPointsRaw(Laps& laps)
{
    measureReadPoints(laps, raw::readPoints);
}

void readPointsLimit(Laps& laps)
{
    measureReadPoints(laps, limit::readPoints);
}

void readPointsLibrary(Laps& laps)
{
    measureReadPoints(laps, quorlua::getKxGePointArray);
}

void writePointsRaw(Laps& laps)
{
    measureWritePoints(laps, raw::writePoints);
}

void writePointsLimit(Laps& laps)
{
    measureWritePoints(laps, limit::writePoints);
}

void writePointsLibrary(Laps& laps)
{
    measureWritePoints(laps, quorlua::setKxGePointArray);
}

void readMatrixRaw(Laps& laps)
{
    measureReadMatrix(laps, raw::readMatrix);
}

void readMatrixLimit(Laps& laps)
{
    measureReadMatrix(laps, limit::readMatrix);
}

void readMatrixLibrary(Laps& laps)
{
    measureReadMatrix(
        laps, [](lua_State* L, int index, KxGeMatrix3D& matrix) { quorlua::getMatrix(L, index, matrix); });
}

void writeMatrixRaw(Laps& laps)
{
    measureWriteMatrix(laps, [](lua_State* L, lua_tinker::table&, const KxGeMatrix3D& matrix) {
        raw::writeMatrix(L, 1, matrix);
    });
}

void writeMatrixLimit(Laps& laps)
{
    measureWriteMatrix(laps, [](lua_State* L, lua_tinker::table&, const KxGeMatrix3D& matrix) {
        limit::writeMatrix(L, 1, matrix);
    });
}

void writeMatrixLibrary(Laps& laps)
{
    measureWriteMatrix(laps, [](lua_State*, lua_tinker::table& table, const KxGeMatrix3D& matrix) {
        quorlua::setMatrix(table, matrix);
    });
}

} // namespace bench::ways
