// CPU time per record, by their number and by how many threads parse them at once, each in a state of its
// own.

#include "Workload.h"

#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

namespace bench {
namespace {

double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// The least nanoseconds for a record of several passes.
double parseNanoseconds(int records)
{
    constexpr int recordsInAll = 3000000;
    const std::string script = "list = {} for i = 1, " + std::to_string(records) +
                               " do list[i] = {2, {0, 0, i}, {0, 0, i + 1}, 25} end";
    const ScriptState state(script.c_str());
    lua_getglobal(state.get(), "list");
    double least = 1e9;
    for (int done = 0; done < recordsInAll; done += records) {
        const double start = threadSeconds();
        std::vector<QuorPrimary*> primitives;
        static_cast<void>(quorlua::parse_primary_byidx(state.get(), 1, primitives));
        for (const QuorPrimary* primitive : primitives)
            delete primitive;
        least = std::min(least, (threadSeconds() - start) * 1e9 / records);
    }
    return least;
}

} // namespace

int measureScaling()
{
    std::printf("%10s %18s %18s %18s\n", "records", "one thread, ns", "two threads, ns", "two / one");
    for (const int records : {1000, 10000, 100000, 1000000}) {
        const double one = parseNanoseconds(records);
        double both[2] = {};
        std::thread other([&] { both[1] = parseNanoseconds(records); });
        both[0] = parseNanoseconds(records);
        other.join();
        const double two = std::max(both[0], both[1]);
        std::printf("%10d %18.1f %18.1f %18.2f\n", records, one, two, two / one);
    }
    return 0;
}

} // namespace bench
