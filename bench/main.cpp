#include "Workload.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
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

#if defined(LUAJIT_VERSION)
constexpr bool hasGoals = false;
#else
constexpr bool hasGoals = true;
#endif

/// What one lap cost, by "WORKLOAD/WAY".
using Costs = std::map<std::string, double>;

std::string nameOf(const Workload& workload, const Way& way)
{
    return std::string(workload.name) + "/" + way.name;
}

double costOf(const Costs& costs, const Workload& workload, const Way& way)
{
    const auto found = costs.find(nameOf(workload, way));
    return found == costs.end() ? 0.0 : found->second;
}

/// How many ways reached their goal, are held to less meanwhile, and cost more than they may.
struct Met {
    int met = 0;
    int held = 0;
    int missed = 0;
};

/// One row for each way besides raw.
Met printTable(const Costs& costs, const char* unit, double Way::*goal, double Way::*meanwhile = nullptr)
{
    Met result;
    std::printf("%-20s %-10s %14s %14s %8s %8s\n", "workload", "way", (std::string("raw ") + unit).c_str(),
                unit, "ratio", "goal");
    for (const Workload& workload : workloads()) {
        const double base = costOf(costs, workload, workload.ways.front());
        for (const Way& way : workload.ways.subspan(1)) {
            const double own = costOf(costs, workload, way);
            if (base <= 0.0 || own <= 0.0) continue;
            std::printf("%-20s %-10s %14.1f %14.1f %8.3f ", workload.name, way.name, base, own, own / base);
            if (!hasGoals || way.*goal <= 0.0) {
                std::printf("%8s\n", "-");
                continue;
            }
            const double held = meanwhile ? way.*meanwhile : 0.0;
            std::printf("%8.2f", way.*goal);
            if (own <= base * (way.*goal)) {
                ++result.met;
                std::printf("%s\n", held > 0.0 ? "  reached: to be held to it" : "");
            } else if (own <= base * held) {
                ++result.held;
                std::printf("  missed, held to %.2f\n", held);
            } else {
                ++result.missed;
                std::printf("  missed\n");
            }
        }
    }
    return result;
}

/// Collects the median CPU time of every way.
class Medians : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                nanoseconds[run.run_name.function_name] = run.GetAdjustedCPUTime();
    }

    Costs nanoseconds;
};

int measureTimes(int argc, char** argv)
{
    for (const Workload& workload : workloads())
        for (const Way& way : workload.ways)
            benchmark::RegisterBenchmark(nameOf(workload, way).c_str(), [&way](benchmark::State& state) {
                Laps laps(state);
                way.run(laps);
            });
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
    Medians medians;
    benchmark::RunSpecifiedBenchmarks(&medians);
    printTable(medians.nanoseconds, "ns", &Way::mostTime);
    return 0;
}

/// A line "LAPS WORKLOAD/WAY" each.
int list(std::span<const Workload> list)
{
    for (const Workload& workload : list)
        for (const Way& way : workload.ways)
            std::printf("%d %s\n", workload.laps, nameOf(workload, way).c_str());
    return 0;
}

/// Does one way for callgrind to count: in a process of its own, because the blocks that others have left
/// behind change what the allocator does.
int countInstructions(const std::string& name)
{
    for (const std::span<const Workload> list : {workloads(), roads()})
        for (const Workload& workload : list)
            for (const Way& way : workload.ways)
                if (nameOf(workload, way) == name) {
                    Laps laps(workload, way);
                    way.run(laps);
                    return 0;
                }
    require(false, name.c_str());
    return 1;
}

/// Reads lines "COUNT WORKLOAD/WAY" and tells which goals are met.
int reportInstructions()
{
    Costs counts;
    char line[256];
    while (std::fgets(line, sizeof line, stdin)) {
        char* name = nullptr;
        const double count = std::strtod(line, &name);
        name += std::strspn(name, " ");
        name[std::strcspn(name, "\n")] = '\0';
        counts[name] = count;
    }
    for (const Workload& workload : workloads())
        for (const Way& way : workload.ways)
            if (const auto found = counts.find(nameOf(workload, way)); found != counts.end())
                found->second /= workload.laps;
    const Met result = printTable(counts, "instr", &Way::mostInstructions, &Way::heldTo);
    std::printf("%d goals reached, %d not yet\n", result.met, result.held + result.missed);
    std::printf("%d passed, %d failed\n", result.met + result.held, result.missed);
    return result.missed == 0 && (result.met > 0 || !hasGoals) ? 0 : 1;
}

} // namespace
} // namespace bench

int main(int argc, char** argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "--list") return bench::list(bench::workloads());
    if (mode == "--roads") return bench::list(bench::roads());
    if (mode == "--scaling") return bench::measureScaling();
    if (mode == "--count") return bench::countInstructions(argc > 2 ? argv[2] : "");
    if (mode == "--report") return bench::reportInstructions();
    return bench::measureTimes(argc, argv);
}
