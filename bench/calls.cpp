#include "Workload.h"
#include "raw.h"

#include <QuorScriptor/luacall.h>

namespace {

constexpr const char* script = R"(
    local answer = {1, 2, 3}
    function getStatus(a, b) return 7 end
    function exchange(p) return 0, p, answer end
)";

void statusRaw(benchmark::State& run)
{
    const bench::ScriptState state(script);
    const int handler = raw::keepHandler(state.get());
    int status = 0;
    for (auto _ : run)
        raw::callStatus(state.get(), handler, "getStatus", "PIPE", "DN50", status);
    bench::require(status == 7, "call ss>i, raw");
}

void statusVariadic(benchmark::State& run)
{
    const bench::ScriptState state(script);
    int status = 0;
    for (auto _ : run)
        quorlua::callLuaFunc(state.get(), "getStatus", "ss>i", "PIPE", "DN50", &status);
    bench::require(status == 7, "call ss>i, variadic");
}

void statusChecked(benchmark::State& run)
{
    const bench::ScriptState state(script);
    int status = 0;
    for (auto _ : run)
        quorlua::callLua<"ss>i">(state.get(), "getStatus", "PIPE", "DN50", &status);
    bench::require(status == 7, "call ss>i, checked");
}

const KxGePoint3D in(4, 5, 6);

void exchangeRaw(benchmark::State& run)
{
    const bench::ScriptState state(script);
    const int handler = raw::keepHandler(state.get());
    int status = 1;
    KxGePoint3D first, second;
    for (auto _ : run)
        raw::callExchange(state.get(), handler, "exchange", in, status, first, second);
    bench::require(status == 0 && first == in, "call p>ipp, raw");
}

void exchangeVariadic(benchmark::State& run)
{
    const bench::ScriptState state(script);
    int status = 1;
    KxGePoint3D first, second;
    for (auto _ : run)
        quorlua::callLuaFunc(state.get(), "exchange", "p>ipp", &in, &status, &first, &second);
    bench::require(status == 0 && first == in, "call p>ipp, variadic");
}

void exchangeChecked(benchmark::State& run)
{
    const bench::ScriptState state(script);
    int status = 1;
    KxGePoint3D first, second;
    for (auto _ : run)
        quorlua::callLua<"p>ipp">(state.get(), "exchange", in, &status, &first, &second);
    bench::require(status == 0 && first == in, "call p>ipp, checked");
}

BENCHMARK(statusRaw)->Name("call ss>i/raw");
BENCHMARK(statusVariadic)->Name("call ss>i/variadic");
BENCHMARK(statusChecked)->Name("call ss>i/checked");
BENCHMARK(exchangeRaw)->Name("call p>ipp/raw");
BENCHMARK(exchangeVariadic)->Name("call p>ipp/variadic");
BENCHMARK(exchangeChecked)->Name("call p>ipp/checked");

} // namespace
