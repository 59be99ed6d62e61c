#pragma once

#include <benchmark/benchmark.h>
#include <lua.hpp>
#include <span>

/// The benchmark's workloads. Each is done in several ways: "raw", careful hand-written C API code with the
/// same contract, "limit", the same by every legal trick, and the library's own public operations. The
/// reports divide the others by the first.
namespace bench {

class Laps;

/// One way to do a workload, with its goals against raw; 0 where there is none.
struct Way {
    const char* name;
    /// Prepares, does the workload by `Laps::repeat`, and makes sure that it was done.
    void (*run)(Laps& laps);
    double mostTime;
    double mostInstructions;
    /// What instructions are held to where their goal is not reached; 0 where it is.
    double heldTo = 0;
};

struct Workload {
    const char* name;
    /// How often it is done when instructions are counted.
    int laps;
    /// The first is raw.
    std::span<const Way> ways;
};

/// All of them, in the order of the reports.
std::span<const Workload> workloads();

/// Whole roads of a host, and what grows with their size: counted as well, and compared with nothing.
std::span<const Workload> roads();

/// Prints what a record costs by their number and by how many threads parse them.
int measureScaling();

/// How often a workload is done: as Google Benchmark wants it, or a given number of times while callgrind
/// counts.
class Laps {
public:
    explicit Laps(benchmark::State& state) : state_(&state) {}
    /// Counts under the name of the workload and its way.
    Laps(const Workload& workload, const Way& way) : workload_(&workload), way_(&way) {}

    template<class Work>
    void repeat(Work work)
    {
        if (state_) {
            for (auto _ : *state_)
                work();
            return;
        }
        // What only the first times cost is not what is asked for.
        for (int lap = 0; lap <= workload_->laps / 10; ++lap)
            work();
        startCounting();
        for (int lap = 0; lap < workload_->laps; ++lap)
            work();
        stopCounting();
    }

private:
    static void startCounting();
    void stopCounting() const;

    benchmark::State* state_ = nullptr;
    const Workload* workload_ = nullptr;
    const Way* way_ = nullptr;
};

/// A Lua state with the standard libraries and the binding layer, with a script run in it.
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

} // namespace bench
