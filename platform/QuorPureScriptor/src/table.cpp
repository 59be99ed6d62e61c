#include "Protected.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <new>

namespace lua_tinker {

table::table(lua_State* L)
{
    if (!L) return;
    lua_newtable(L);
    refer(L, -1);
}

table::table(lua_State* L, int index)
{
    refer(L, index);
}

table::table(lua_State* L, const char* globalName)
{
    if (!L || !globalName) return;
    lua_getglobal(L, globalName);
    if (!lua_istable(L, -1)) {
        lua_pop(L, 1);
        lua_newtable(L);
        lua_pushvalue(L, -1);
        lua_setglobal(L, globalName);
    }
    refer(L, -1);
}

table& table::operator=(const table& other)
{
    // Counted first, and kept aside: the other may be this handle itself.
    table_obj* object = other.object_;
    if (object) ++object->handles;
    release();
    object_ = object;
    return *this;
}

table& table::operator=(table&& other) noexcept
{
    if (this != &other) {
        release();
        object_ = other.object_;
        other.object_ = nullptr;
    }
    return *this;
}

void table::assign(lua_State* L, int index)
{
    release();
    refer(L, index);
}

table table::from(table_obj* object)
{
    table made;
    if (object) ++object->handles;
    made.object_ = object;
    return made;
}

bool table::valid() const
{
    if (!object_ || (object_->index > 0 && object_->index > lua_gettop(object_->state))) return false;
    return lua_type(object_->state, object_->index) == LUA_TTABLE;
}

void table::release()
{
    if (object_ && --object_->handles == 0) delete object_;
    object_ = nullptr;
}

void table::refer(lua_State* L, int index)
{
    object_ = L ? new (std::nothrow) table_obj{L, detail::absolute(L, index), 1} : nullptr;
}

bool table::push_entry(int key) const
{
    if (!valid()) return false;
    lua_rawgeti(state(), index(), key);
    return true;
}

bool table::push_entry(const char* key) const
{
    if (!key || !valid()) return false;
    lua_getfield(state(), index(), key);
    return true;
}

void detail::push_table(lua_State* L, const table& value)
{
    const int index = value.index();
    if (value.state() == L && (index < 0 || (index > 0 && index <= lua_gettop(L))))
        lua_pushvalue(L, index);
    else
        lua_pushnil(L);
}

} // namespace lua_tinker
