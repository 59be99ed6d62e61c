#include "limit.h"
#include "raw.h"
#include "ways.h"

#include <QuorScriptor/luacall.h>

namespace bench::ways {
namespace {

constexpr const char* script = R"(
    local answer = {1, 2, 3}
    function getStatus(a, b) return 7 end
    function exchange(p) return 0, p, answer end
)";

template<class Call>
void measureStatus(Laps& laps, lua_State* L, const char* what, Call call)
{
    int status = 0;
    laps.repeat([&] { call(L, status); });
    require(status == 7, what);
}

const KxGePoint3D in(4, 5, 6);

template<class Call>
void measureExchange(Laps& laps, lua_State* L, const char* what, Call call)
{
    int status = 1;
    KxGePoint3D first, second;
    laps.repeat([&] { call(L, status, first, second); });
    require(status == 0 && first == in && second == KxGePoint3D(1, 2, 3), what);
}

} // namespace

void callStatusRaw(Laps& laps)
{
    const ScriptState state(script);
    const int handler = raw::keepHandler(state.get());
    measureStatus(laps, state.get(), "call ss>i, raw", [handler](lua_State* L, int& status) {
        raw::callStatus(L, handler, "getStatus", "PIPE", "DN50", status);
    });
}

void callStatusLimit(Laps& laps)
{
    const ScriptState state(script);
    limit::keepHandlerAndName(state.get(), "getStatus");
    measureStatus(laps, state.get(), "call ss>i, limit",
                  [](lua_State* L, int& status) { limit::callStatus(L, "PIPE", "DN50", status); });
}

void callStatusVariadic(Laps& laps)
{
    const ScriptState state(script);
    measureStatus(laps, state.get(), "call ss>i, variadic", [](lua_State* L, int& status) {
        quorlua::callLuaFunc(L, "getStatus", "ss>i", "PIPE", "DN50", &status);
    });
}

void callStatusChecked(Laps& laps)
{
    const ScriptState state(script);
    measureStatus(laps, state.get(), "call ss>i, checked", [](lua_State* L, int& status) {
        quorlua::callLua<"ss>i">(L, "getStatus", "PIPE", "DN50", &status);
    });
}

void callExchangeRaw(Laps& laps)
{
    const ScriptState state(script);
    const int handler = raw::keepHandler(state.get());
    measureExchange(laps, state.get(), "call p>ipp, raw",
                    [handler](lua_State* L, int& status, KxGePoint3D& first, KxGePoint3D& second) {
                        raw::callExchange(L, handler, "exchange", in, status, first, second);
                    });
}

void callExchangeLimit(Laps& laps)
{
    const ScriptState state(script);
    limit::keepHandlerAndName(state.get(), "exchange");
    measureExchange(laps, state.get(), "call p>ipp, limit",
                    [](lua_State* L, int& status, KxGePoint3D& first, KxGePoint3D& second) {
                        limit::callExchange(L, in, status, first, second);
                    });
}

void callExchangeVariadic(Laps& laps)
{
    const ScriptState state(script);
    measureExchange(laps, state.get(), "call p>ipp, variadic",
                    [](lua_State* L, int& status, KxGePoint3D& first, KxGePoint3D& second) {
                        quorlua::callLuaFunc(L, "exchange", "p>ipp", &in, &status, &first, &second);
                    });
}

void callExchangeChecked(Laps& laps)
{
    const ScriptState state(script);
    measureExchange(laps, state.get(), "call p>ipp, checked",
                    [](lua_State* L, int& status, KxGePoint3D& first, KxGePoint3D& second) {
                        quorlua::callLua<"p>ipp">(L, "exchange", in, &status, &first, &second);
                    });
}

} // namespace bench::ways
