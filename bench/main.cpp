#include "Workload.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <vector>

namespace bench {

ScriptState::ScriptState(const char* script) : L_(luaL_newstate())
{
    luaL_openlibs(L_);
    lua_tinker::init(L_);
    require(luaL_dostring(L_, script) == 0, script);
    lua_settop(L_, 0);
}

ScriptState::~ScriptState()
{
    lua_close(L_);
}

void require(bool held, const char* what)
{
    if (held) return;
    std::fprintf(stderr, "quor_bench: a workload does not do its work: %s\n", what);
    std::exit(1);
}

namespace {

/// Collects the median CPU time of every benchmark.
class Medians : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                nanoseconds_[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }
    double of(const std::string& workload, const std::string& way) const
    {
        const auto found = nanoseconds_.find(workload + "/" + way);
        return found == nanoseconds_.end() ? 0.0 : found->second;
    }

private:
    std::map<std::string, double> nanoseconds_;
};

void printTable(const Medians& medians)
{
    std::printf("%-20s %-10s %12s %12s %8s %8s\n", "workload", "way", "raw ns", "ns", "ratio", "goal");
    for (const Goal& goal : goals) {
        const double base = medians.of(goal.workload, "raw");
        const double own = medians.of(goal.workload, goal.way);
        if (base <= 0.0 || own <= 0.0) continue;
        std::printf("%-20s %-10s %12.1f %12.1f %8.2f %8.2f\n", goal.workload, goal.way, base, own, own / base,
                    goal.time);
    }
}

} // namespace
} // namespace bench

int main(int argc, char** argv)
{
    // Repetitions of all workloads are mixed at random, so that a slow minute of the machine slows them all.
    std::vector<char*> arguments(argv, argv + argc);
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::string repetitions = "--benchmark_repetitions=9";
    std::string shortRuns = "--benchmark_min_time=0.05";
    for (std::string* option : {&interleaved, &repetitions, &shortRuns})
        arguments.insert(arguments.begin() + 1, option->data());
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
    bench::Medians medians;
    benchmark::RunSpecifiedBenchmarks(&medians);
    bench::printTable(medians);
    return 0;
}
