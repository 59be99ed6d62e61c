#include "Workload.h"
#include "raw.h"

#include <QuorScriptor/QuorGlibScriptor.h>

namespace {

void newStateRaw(benchmark::State& run)
{
    for (auto _ : run)
        raw::makeState();
}

void newStateLibrary(benchmark::State& run)
{
    for (auto _ : run) {
        QuorGlibScriptor scriptor;
        bench::require(scriptor.getLua(false) != nullptr, "new state, library");
    }
}

BENCHMARK(newStateRaw)->Name("new state/raw");
BENCHMARK(newStateLibrary)->Name("new state/library");

} // namespace
