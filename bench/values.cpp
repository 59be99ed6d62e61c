#include "Workload.h"
#include "raw.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/geometry.h>

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
void readPoints(benchmark::State& run, Read read)
{
    const bench::ScriptState state(script);
    pushGlobal(state.get(), "points");
    std::vector<KxGePoint3D> points;
    for (auto _ : run)
        read(state.get(), 1, points);
    bench::require(points.size() == pointCount, "read 1000 points");
}

template<class Write>
void writePoints(benchmark::State& run, Write write)
{
    const bench::ScriptState state("");
    lua_State* L = state.get();
    const std::vector<KxGePoint3D> points(pointCount, KxGePoint3D(1, 2, 3));
    for (auto _ : run) {
        lua_settop(L, 0);
        lua_createtable(L, pointCount, 0);
        write(L, 1, points);
    }
    bench::require(lua_objlen(L, 1) == pointCount, "write 1000 points");
}

template<class Read>
void readMatrix(benchmark::State& run, Read read)
{
    const bench::ScriptState state(script);
    pushGlobal(state.get(), "matrix");
    KxGeMatrix3D matrix;
    for (auto _ : run)
        read(state.get(), 1, matrix);
    bench::require(matrix(3, 3) == 16, "read a matrix");
}

void writeMatrixRaw(benchmark::State& run)
{
    const bench::ScriptState state("");
    lua_State* L = state.get();
    const KxGeMatrix3D matrix;
    for (auto _ : run) {
        lua_settop(L, 0);
        lua_createtable(L, 4, 0);
        raw::writeMatrix(L, 1, matrix);
    }
    bench::require(lua_objlen(L, 1) == 4, "write a matrix, raw");
}

void writeMatrixLibrary(benchmark::State& run)
{
    const bench::ScriptState state("");
    lua_State* L = state.get();
    const KxGeMatrix3D matrix;
    lua_settop(L, 1);
    lua_tinker::table table(L, 1);
    for (auto _ : run) {
        lua_settop(L, 0);
        lua_createtable(L, 4, 0);
        quorlua::setMatrix(table, matrix);
    }
    bench::require(lua_objlen(L, 1) == 4, "write a matrix, library");
}

void readMatrixStack(lua_State* L, int index, KxGeMatrix3D& matrix)
{
    quorlua::getMatrix(L, index, matrix);
}

BENCHMARK_CAPTURE(readPoints, raw, raw::readPoints)->Name("read 1000 points/raw");
BENCHMARK_CAPTURE(readPoints, library, quorlua::getKxGePointArray)->Name("read 1000 points/library");
BENCHMARK_CAPTURE(writePoints, raw, raw::writePoints)->Name("write 1000 points/raw");
BENCHMARK_CAPTURE(writePoints, library, quorlua::setKxGePointArray)->Name("write 1000 points/library");
BENCHMARK_CAPTURE(readMatrix, raw, raw::readMatrix)->Name("read a matrix/raw");
BENCHMARK_CAPTURE(readMatrix, library, readMatrixStack)->Name("read a matrix/library");
BENCHMARK(writeMatrixRaw)->Name("write a matrix/raw");
BENCHMARK(writeMatrixLibrary)->Name("write a matrix/library");

} // namespace
