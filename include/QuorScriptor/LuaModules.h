#pragma once

#include <QuorScriptor/Export.h>
#include <lua.hpp>
#include <map>
#include <string>
#include <vector>

namespace quorlua {

/// Named lists of native functions that every new scriptor state opens as libraries. Not synchronised: lists
/// are added before scriptors are made on several threads.
class QUORSCRIPTOR_API LuaLRegHelper {
public:
    using Map = std::map<std::string, const luaL_Reg*>;

    /// Empty, also where memory runs out: what it needs is then made with the first list.
    LuaLRegHelper();
    /// Frees the merged arrays. Of the names in them only the first of each array is freed; the others stay
    /// allocated, because a state may still hold pointers to them.
    ~LuaLRegHelper();

    LuaLRegHelper(const LuaLRegHelper&) = delete;
    /// Copies the members as they are: both then share the containers, and the host may destroy only one of
    /// the two.
    LuaLRegHelper& operator=(const LuaLRegHelper& other);

    /// Adds a list, ended by an entry without name and function, under a module's name. The first list of a
    /// name is kept by pointer and must outlive the registry; a later one is merged behind it into a new
    /// array (of each the entries up to the first without a name or function, at most 10000), so that its
    /// functions win. A null or empty name or a null list is ignored.
    void addLuaRegFunc(const char* name, const luaL_Reg* list);
    /// The lists by name.
    Map& get_reg() { return *lists_; }

private:
    Map* lists_;
    std::vector<luaL_Reg*>* merged_;
};

/// Adds a list to the process's own registry: it is opened in every state that a scriptor makes from then on.
QUORSCRIPTOR_API void addRegLuaModule(const char* name, const luaL_Reg* list);

/// The "glib" library's list: 13 functions and the end mark. It lives as long as the library is loaded.
QUORSCRIPTOR_API const luaL_Reg* getGlibRegFuncForLua();

} // namespace quorlua
