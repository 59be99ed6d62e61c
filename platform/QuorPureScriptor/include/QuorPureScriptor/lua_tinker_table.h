#pragma once

#include <QuorPureScriptor/Export.h>
#include <lua.hpp>

namespace lua_tinker {

/// What a table handle points to: the state and the absolute index of a stack slot, and how many handles
/// share it. It lives as long as a handle does. Only `table` makes and changes one.
struct table_obj {
    lua_State* state;
    int index;
    int handles;
};

/// The state of a counted object; null for a null pointer. For code that was given `table::handle()` only.
inline lua_State* state_of(const table_obj* object)
{
    return object ? object->state : nullptr;
}

/// The absolute stack index of a counted object; 0 for a null pointer.
inline int index_of(const table_obj* object)
{
    return object ? object->index : 0;
}

/// A handle on a table that lies in a slot of a Lua stack. Handles are counted and one pointer wide; copying,
/// assigning and destroying them counts and never touches the Lua stack, so a handle says nothing about how
/// long its slot lives: that is the business of whoever keeps the stack's height. Counting is not atomic: a
/// handle belongs to the thread that uses its state.
///
/// A handle is no plain value: it must not live in a frame that a Lua error can cross. When memory for the
/// counted object runs out, the handle refers to nothing.
class QUORPURESCRIPTOR_API table {
public:
    /// Refers to nothing.
    table() = default;
    /// Pushes a new table and refers to its slot; to nothing for a null state. [-0, +1, m]
    explicit table(lua_State* L);
    /// Refers to the slot at `index`, which is counted from the top when below 1. Whatever lies there. [-0,
    /// +0, -]
    table(lua_State* L, int index);
    /// Pushes the global of that name and refers to its slot. A global that is no table is replaced by a new
    /// one first. A null state or name refers to nothing and pushes nothing. [-0, +1, e]
    table(lua_State* L, const char* globalName);

    table(const table& other) : object_(other.object_)
    {
        if (object_) ++object_->handles;
    }
    table(table&& other) noexcept : object_(other.object_) { other.object_ = nullptr; }
    table& operator=(const table& other);
    table& operator=(table&& other) noexcept;
    ~table() { release(); }

    /// Points this handle, and none of those that shared its old slot, at the slot at `index`. [-0, +0, -]
    void assign(lua_State* L, int index);

    /// The counted object, null when the handle refers to nothing. It stays valid as long as some handle
    /// holds it.
    table_obj* handle() const { return object_; }
    /// A handle that shares a counted object; one that refers to nothing for null.
    static table from(table_obj* object);

    /// The state that the slot belongs to; null when the handle refers to nothing.
    lua_State* state() const { return state_of(object_); }
    /// The absolute index of the slot; 0 when the handle refers to nothing.
    int index() const { return index_of(object_); }
    /// Whether the slot lies within the stack and holds a table. [-0, +0, -]
    bool valid() const;

    /// Stores a value at an integer key, past metamethods; nothing when the handle is not valid. `T` is any
    /// type that `push` takes. [-0, +0, m]
    template<class T>
    void set(int key, const T& value);
    /// Stores a value in a field, through metamethods; nothing for a null name. [-0, +0, e]
    template<class T>
    void set(const char* key, const T& value);

    /// The value at an integer key, past metamethods, as `read<T>` gives it; that of nil when the handle is
    /// not valid. A text lives as long as the table holds it. `get<table>` alone leaves the value on the
    /// stack, where the handle that it returns refers to it: [-0, +0, -], for tables [-0, +1, -]
    template<class T>
    T get(int key) const;
    /// The value of a field, through metamethods; otherwise as above. [-0, +0, e], for tables [-0, +1, e]
    template<class T>
    T get(const char* key) const;

private:
    void release();
    void refer(lua_State* L, int index);
    bool push_entry(int key) const;
    bool push_entry(const char* key) const;

    table_obj* object_ = nullptr;
};

static_assert(sizeof(table) == sizeof(void*), "a handle travels where a pointer does");

} // namespace lua_tinker

// The bodies of the templates stand there, beside the `push` and `read` that they need.
#include <QuorPureScriptor/lua_tinker_value.h>
