#pragma once

#include <QuorPureScriptor/Export.h>
#include <QuorPureScriptor/lua_tinker_function.h>
#include <cstring>
#include <lua.hpp>
#include <type_traits>
#include <typeinfo>

/// Host classes whose objects scripts call.
///
/// A script holds an object as a userdata with the host's pointer in it; the host keeps the object, and keeps
/// it alive for as long as a script may call it. Methods are called through the pointer, so an object of a
/// derived host class answers virtual calls itself. A class is known by its C++ type, alike in every shared
/// library of the process, and must be registered in each state. Classes are registered before scripts run:
/// their library stays loaded as long as the state lives.
///
/// A class has a metatable, which scripts cannot reach, and a table of methods, which is also the global
/// named after the class. Constness is not tracked: whoever pushes a const object answers for what its
/// non-const members do to it.
namespace lua_tinker {
namespace detail {

QUORPURESCRIPTOR_API void add_class(lua_State* L, const char* name, const std::type_info& type);

/// Pushes a class's table of methods. False, with nothing pushed, when the class is not registered. [-0,
/// +(0|1), m]
QUORPURESCRIPTOR_API bool push_methods(lua_State* L, const std::type_info& type);

QUORPURESCRIPTOR_API void inherit(lua_State* L, const std::type_info& type, const std::type_info& parent,
                                  void* (*toParent)(void*));

template<class T, class C, class F, class R, class... A>
struct host_method {
    static_assert(std::is_base_of_v<C, T>, "the member function belongs to the class or to a base of it");

    template<std::size_t... I>
    static bool fits(lua_State* L, std::index_sequence<I...>)
    {
        (void)L;
        return (accepts_argument<std::decay_t<A>>(L, static_cast<int>(I) + 2) && ...);
    }

    static int run(lua_State* L)
    {
        T* self = static_cast<T*>(read_object(L, 1, typeid(T)));
        if (!self || !fits(L, std::index_sequence_for<A...>())) return 0;
        F member;
        std::memcpy(&member, lua_touserdata(L, lua_upvalueindex(1)), sizeof member);
        return call_host<2, R, A...>(
            L, [self, member](A... args) -> R { return (self->*member)(std::forward<A>(args)...); });
    }
};

template<class T, class F>
struct method_of;
template<class T, class C, class R, class... A>
struct method_of<T, R (C::*)(A...)> : host_method<T, C, R (C::*)(A...), R, A...> {
};
template<class T, class C, class R, class... A>
struct method_of<T, R (C::*)(A...) const> : host_method<T, C, R (C::*)(A...) const, R, A...> {
};
template<class T, class C, class R, class... A>
struct method_of<T, R (C::*)(A...) noexcept> : host_method<T, C, R (C::*)(A...) noexcept, R, A...> {
};
template<class T, class C, class R, class... A>
struct method_of<T, R (C::*)(A...) const noexcept>
    : host_method<T, C, R (C::*)(A...) const noexcept, R, A...> {
};

} // namespace detail

/// Registers a class under a name: makes its metatable and its table of methods, and stores the latter in the
/// global of that name, past metamethods. A class registered before keeps both under the new name too. [-0,
/// +0, m]
template<class T>
void class_add(lua_State* L, const char* name)
{
    detail::add_class(L, name, typeid(T));
}

/// Adds a member function, const or not, of the class or of a base, to a registered class; does nothing for
/// another class. A script's call reads the arguments from position 2 on and gets the result. When position 1
/// is no object of the class, or an argument is missing or of another Lua type, the call returns nothing and
/// the object is not touched; an exception derived from `std::exception` is reported through `print_error`,
/// and the call returns nothing. [-0, +0, m]
template<class T, class F>
void class_def(lua_State* L, const char* name, F memberFunctionPointer)
{
    static_assert(std::is_member_function_pointer_v<F>);
    if (!L || !name || !memberFunctionPointer || !detail::push_methods(L, typeid(T))) return;
    lua_pushstring(L, name);
    std::memcpy(lua_newuserdata(L, sizeof(F)), &memberFunctionPointer, sizeof(F));
    lua_pushcclosure(L, detail::method_of<T, F>::run, 1);
    lua_rawset(L, -3);
    lua_settop(L, -2);
}

/// Lets objects of `T` answer the methods of `Parent`, and be read as objects of it. Both are registered
/// before, else nothing happens. A class has one such parent; a later call replaces it. [-0, +0, m]
template<class T, class Parent>
void class_inh(lua_State* L)
{
    static_assert(std::is_base_of_v<Parent, T> && !std::is_same_v<Parent, T> &&
                  std::is_convertible_v<T*, Parent*>);
    detail::inherit(L, typeid(T), typeid(Parent),
                    [](void* object) -> void* { return static_cast<Parent*>(static_cast<T*>(object)); });
}

/// Pushes an object by its pointer; nil when the pointer is null or the class is not registered in this
/// state. [-0, +1, m]
template<class T>
void push_object(lua_State* L, T* object)
{
    push(L, object);
}

/// The object at an index as a `T`, also when it was pushed as an object of a class that inherits from `T`;
/// null for every other value. Uses three free stack slots. [-0, +0, -]
template<class T>
T* read_object(lua_State* L, int index)
{
    return read<T*>(L, index);
}

/// Pushes the metatable of the class registered under a name, else nil. [-0, +1, m]
QUORPURESCRIPTOR_API void meta_push(lua_State* L, const char* className);

/// The `__index` of objects: the method of that name of the class, else of its parents, else nil. It raises
/// nothing but Lua's memory error. [-0, +1, m]
QUORPURESCRIPTOR_API int meta_get(lua_State* L);

/// The `__newindex` of objects: reports the attempt through `print_error` and changes nothing. [-0, +0, -]
QUORPURESCRIPTOR_API int meta_set(lua_State* L);

} // namespace lua_tinker
