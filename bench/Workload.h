#pragma once

#include <benchmark/benchmark.h>
#include <lua.hpp>
#include <string>

/// Workloads are registered in pairs: "NAME/raw", careful hand-written C API code with the same contract, and
/// "NAME/WAY", the library's own operation. The report divides the second by the first.
namespace bench {

/// A Lua state of the library's own making, with a script run in it.
class ScriptState {
public:
    explicit ScriptState(const char* script);
    ~ScriptState();
    ScriptState(const ScriptState&) = delete;
    ScriptState& operator=(const ScriptState&) = delete;

    lua_State* get() const { return L_; }

private:
    lua_State* L_;
};

/// Ends the program with a message when a workload does not do what it is measured for.
void require(bool held, const char* what);

/// The goals, as time against raw; 0 where there is none.
struct Goal {
    const char* workload;
    const char* way;
    double time;
};
inline constexpr Goal goals[] = {
    {"call ss>i", "variadic", 1.15},         {"call ss>i", "checked", 1.08},
    {"call p>ipp", "variadic", 1.04},        {"call p>ipp", "checked", 1.04},
    {"read 1000 points", "library", 0.70},   {"write 1000 points", "library", 1.02},
    {"read a matrix", "library", 0.72},      {"write a matrix", "library", 1.02},
    {"parse 1000 records", "library", 0.70}, {"new state", "library", 1.02},
};

} // namespace bench
