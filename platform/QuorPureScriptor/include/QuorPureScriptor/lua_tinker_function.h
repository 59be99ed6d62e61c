#pragma once

#include <QuorPureScriptor/Export.h>
#include <QuorPureScriptor/lua_tinker_value.h>
#include <cstddef>
#include <exception>
#include <lua.hpp>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

/// Host functions that scripts call, and script functions that the host calls.
namespace lua_tinker {
namespace detail {

/// Whether the value at an index is exactly of the Lua type that `T` stands for. [-0, +0, -]
template<class T>
bool accepts(lua_State* L, int index)
{
    const int type = lua_type(L, index);
    if constexpr (std::is_same_v<T, bool>)
        return type == LUA_TBOOLEAN;
    else if constexpr (is_text<T>)
        return type == LUA_TSTRING;
    else if constexpr (std::is_same_v<T, table>)
        return type == LUA_TTABLE;
    else if constexpr (is_object<T>)
        return read<T>(L, index) != nullptr;
    else if constexpr (is_wide_integer<T>)
        return type == LUA_TNUMBER || is_int64(L, index);
    else
        return type == LUA_TNUMBER;
}

/// Turns a number into its text where it stands, where a text is read: scripts give either for a text, as the
/// interpreter's own functions let them. [-0, +0, m]
QUORPURESCRIPTOR_API void textualize(lua_State* L, int index);

/// `accepts` for an argument of a native function, which may be a number where a text is read. [-0, +0, m]
template<class T>
bool accepts_argument(lua_State* L, int index)
{
    if constexpr (is_text<T>) textualize(L, index);
    return accepts<T>(L, index);
}

/// Reports a host exception that a script's call met.
QUORPURESCRIPTOR_API void report_exception(lua_State* L, const char* what) noexcept;

/// Runs host code that touches no Lua state unprotected; an exception is reported. Whether it came to its
/// end.
template<class Work>
bool run_host(lua_State* L, Work work)
{
    try {
        work();
        return true;
    } catch (const std::exception& failure) {
        report_exception(L, failure.what());
        return false;
    }
}

/// What a result lives in until it is pushed.
template<class R>
using result_box = std::optional<std::decay_t<std::conditional_t<std::is_void_v<R>, bool, R>>>;

/// Reads the arguments from stack index `First` on, calls, and keeps the result. No Lua error passes through
/// here, so texts may be held. False when an exception came out.
template<int First, class R, class... A, class Call, std::size_t... I>
bool invoke(lua_State* L, Call call, result_box<R>& result, std::index_sequence<I...>)
{
    return run_host(L, [&] {
        std::tuple<std::decay_t<A>...> values{read<std::decay_t<A>>(L, First + static_cast<int>(I))...};
        if constexpr (std::is_void_v<R>)
            call(std::forward<A>(std::get<I>(values))...);
        else
            result.emplace(call(std::forward<A>(std::get<I>(values))...));
    });
}

template<class T>
int push_boxed(lua_State* L)
{
    push(L, *static_cast<const T*>(lua_touserdata(L, 1)));
    return 1;
}

/// Calls and pushes the result; the number of results. A result that owns memory is pushed in a protected
/// call, so that it does not leak when Lua's memory runs out.
template<int First, class R, class... A, class Call>
int call_host(lua_State* L, Call call)
{
    constexpr auto indices = std::index_sequence_for<A...>();
    using V = std::decay_t<R>;
    if constexpr (std::is_void_v<R>) {
        result_box<R> none;
        invoke<First, R, A...>(L, call, none, indices);
        return 0;
    } else if constexpr (std::is_trivially_destructible_v<V>) {
        result_box<R> result;
        if (!invoke<First, R, A...>(L, call, result, indices)) return 0;
        push(L, *result);
        return 1;
    } else {
        lua_pushcfunction(L, push_boxed<V>);
        result_box<R> result;
        if (!invoke<First, R, A...>(L, call, result, indices)) return 0;
        lua_pushlightuserdata(L, &*result);
        return lua_pcall(L, 1, 1, 0) == 0 ? 1 : 0;
    }
}

template<class R, class... A>
struct host_function {
    using pointer = R (*)(A...);

    template<std::size_t... I>
    static bool has_texts(lua_State* L, std::index_sequence<I...>)
    {
        (void)L;
        return (
            (!is_text<std::decay_t<A>> || accepts_argument<std::decay_t<A>>(L, static_cast<int>(I) + 1)) &&
            ...);
    }

    static int run(lua_State* L)
    {
        const auto function = reinterpret_cast<pointer>(lua_touserdata(L, lua_upvalueindex(1)));
        if (!function || !has_texts(L, std::index_sequence_for<A...>())) return 0;
        return call_host<1, R, A...>(L, function);
    }
};

/// One call of a script function by name, for `run_call`.
struct script_call {
    const char* name;
    /// Pushes the arguments and returns their number; may raise.
    int (*push)(lua_State* L, const void* arguments);
    const void* arguments;
    /// Takes the value at the stack's top; never raises.
    void (*take)(lua_State* L, void* result);
    void* result;
};

/// The protected call behind `call`. [-0, +0, -]
QUORPURESCRIPTOR_API void run_call(lua_State* L, const script_call& call);

/// Stores a global past metamethods: the value on top of the stack. [-1, +0, m]
QUORPURESCRIPTOR_API void set_global(lua_State* L, const char* name);

template<class Tuple>
int push_tuple(lua_State* L, const void* arguments)
{
    return std::apply(
        [L](const auto&... values) {
            (push(L, values), ...);
            return static_cast<int>(sizeof...(values));
        },
        *static_cast<const Tuple*>(arguments));
}

template<class R>
void take_result(lua_State* L, void* result)
{
    run_host(L, [&] { *static_cast<R*>(result) = read<R>(L, -1); });
}

} // namespace detail

/// Pushes a host function for scripts: a native closure whose one upvalue is the function's address. Its
/// arguments are read from position 1 on, its result is pushed. A text argument that is missing or no string
/// makes the call do nothing; other arguments are read as `read` does. The closure raises nothing but Lua's
/// memory error; an exception derived from `std::exception` is reported through `print_error` and the script
/// gets no result. [-0, +1, m]
template<class R, class... A>
void push_function(lua_State* L, R (*function)(A...))
{
    lua_pushlightuserdata(L, reinterpret_cast<void*>(function));
    lua_pushcclosure(L, detail::host_function<R, A...>::run, 1);
}

/// Makes a host function a global of the state, past metamethods; a null state or name does nothing. [-0, +0,
/// m]
template<class R, class... A>
void def(lua_State* L, const char* globalName, R (*function)(A...))
{
    if (!L || !globalName) return;
    push_function(L, function);
    detail::set_global(L, globalName);
}

/// Calls a global function of a script by name, in a protected call whose message handler is `on_error`, and
/// returns its first result as `read<R>` gives it. A failed call gives what reading nil gives. A global that
/// is no function is reported as "attempt to call global `NAME' (not a function)", and its own value is taken
/// as the result; one that cannot be fetched because a metatable on the globals raises counts as nil.
///
/// A text result belongs to the state: it lives until the next call on the state, and after that only as long
/// as something in the script holds that string. Copy it at once. Needs no free stack slot; a null
/// state or name gives what reading nil gives. [-0, +0, -]
template<class R, class... A>
R call(lua_State* L, const char* globalName, A... args)
{
    static_assert(sizeof...(A) <= 8, "room is reserved for eight arguments");
    static_assert(!(std::is_same_v<A, table> || ...),
                  "the slot of a handle is not seen from within the call");
    using Arguments = std::tuple<A...>;
    const Arguments arguments(std::move(args)...);
    detail::script_call task{globalName, detail::push_tuple<Arguments>, &arguments, nullptr, nullptr};
    if constexpr (std::is_void_v<R>) {
        detail::run_call(L, task);
    } else {
        static_assert(!std::is_same_v<R, table>, "the result's slot ends with the call");
        R result{};
        task.take = detail::take_result<R>;
        task.result = &result;
        detail::run_call(L, task);
        return result;
    }
}

} // namespace lua_tinker
