#include "Untrusted.h"

#include "SystemPath.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace quorlua {
namespace {

namespace fs = std::filesystem;

constexpr const char* textChunk = "a precompiled chunk is refused";

/// What of a library stays, or goes.
constexpr const char* ofSystem[] = {"clock", "date", "difftime", "time"};
constexpr const char* ofPackage[] = {"config", "loaded", "loaders", "path", "preload", "seeall"};
/// `newproxy` makes values with finalizers, which no time limit ends.
constexpr const char* goneGlobals[] = {"newproxy"};

/// [-0, +(1|2), m]: the function, or nil and a message as `load` has them.
int loadText(lua_State* L, const char* bytes, std::size_t size, const char* name)
{
    if (size > 0 && bytes[0] == LUA_SIGNATURE[0]) {
        lua_pushnil(L);
        lua_pushstring(L, textChunk);
        return 2;
    }
    // Behind a byte order mark or a first line that is skipped, the engines take none themselves.
    const int status = luaL_loadbuffer(L, bytes, size, name);
    if (status == 0) return 1;
    lua_pushnil(L);
    lua_insert(L, -2);
    return 2;
}

/// `loadstring(text [, name])`. [-0, +(1|2), e]
int loadString(lua_State* L)
{
    std::size_t size = 0;
    const char* text = luaL_checklstring(L, 1, &size);
    return loadText(L, text, size, luaL_optstring(L, 2, text));
}

/// `load(function [, name])`: the pieces are gathered first. [-0, +(1|2), e]
int load(lua_State* L)
{
    luaL_checktype(L, 1, LUA_TFUNCTION);
    const char* name = luaL_optstring(L, 2, "=(load)");
    lua_settop(L, 2);
    luaL_Buffer text;
    lua_newtable(L);
    int pieces = 0;
    for (;;) {
        lua_pushvalue(L, 1);
        if (lua_pcall(L, 0, 1, 0) != 0) {
            lua_pushnil(L);
            lua_insert(L, -2);
            return 2;
        }
        if (lua_isnil(L, -1)) break;
        if (lua_isstring(L, -1) == 0) {
            lua_pushnil(L);
            lua_pushliteral(L, "reader function must return a string");
            return 2;
        }
        if (lua_objlen(L, -1) == 0) break;
        lua_rawseti(L, 3, ++pieces);
    }
    luaL_buffinit(L, &text);
    for (int i = 1; i <= pieces; ++i) {
        lua_rawgeti(L, 3, i);
        luaL_addvalue(&text);
    }
    luaL_pushresult(&text);
    std::size_t size = 0;
    const char* bytes = lua_tolstring(L, -1, &size);
    return loadText(L, bytes, size, name);
}

bool isBelow(const fs::path& file, const char* folder)
{
    std::error_code error;
    const fs::path root = fs::canonical(systemPath(folder), error);
    if (error) return false;
    const fs::path relative = file.lexically_relative(root);
    return !relative.empty() && *relative.begin() != "..";
}

/// A file's bytes, when it lies in the installation or in the project, wherever links lead.
bool readConfined(const char* path, std::string& bytes)
{
    std::error_code error;
    const fs::path file = fs::canonical(systemPath(path), error);
    if (error || !fs::is_regular_file(file, error)) return false;
    if (!isBelow(file, QuorSystem::quorEnv()) && !isBelow(file, QuorSystem::getCurrentProjPath()))
        return false;
    std::ifstream opened(file, std::ios::binary);
    if (!opened) return false;
    bytes.assign(std::istreambuf_iterator<char>(opened), {});
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
    // The line's end stays, so that lines keep their numbers.
    if (!bytes.empty() && bytes[0] == '#') bytes.erase(0, bytes.find('\n'));
    return !opened.bad();
}

/// Pushes the bytes of a file; false, with nothing pushed, when it may not be read. [-0, +(0|1), m]
bool pushConfined(lua_State* L, const char* path)
{
    // No object of the C++ library may be in a frame that an error crosses: the first pass is for the length.
    static constexpr auto read = [](const char* from, char* to, std::size_t room) -> long long {
        try {
            std::string bytes;
            if (!readConfined(from, bytes)) return -1;
            if (to) bytes.copy(to, room);
            return static_cast<long long>(bytes.size());
        } catch (const std::exception&) {
            return -1;
        }
    };
    const long long size = read(path, nullptr, 0);
    if (size < 0) return false;
    auto* block = static_cast<char*>(lua_newuserdata(L, static_cast<std::size_t>(size) + 1));
    const long long again = read(path, block, static_cast<std::size_t>(size));
    if (again < 0 || again > size) {
        lua_pop(L, 1);
        return false;
    }
    lua_pushlstring(L, block, static_cast<std::size_t>(again));
    lua_remove(L, -2);
    return true;
}

/// Loads a file; on failure nil and a message. [-0, +(1|2), e]
int loadConfined(lua_State* L, const char* path)
{
    if (!pushConfined(L, path)) {
        lua_pushnil(L);
        lua_pushfstring(L, "cannot open %s: no file of the installation or the project", path);
        return 2;
    }
    std::size_t size = 0;
    const char* bytes = lua_tolstring(L, -1, &size);
    return loadText(L, bytes, size, lua_pushfstring(L, "@%s", path));
}

/// `loadfile(path)`. [-0, +(1|2), e]
int loadFile(lua_State* L)
{
    return loadConfined(L, luaL_checkstring(L, 1));
}

/// `dofile(path)`. [-0, +n, e]
int doFile(lua_State* L)
{
    const char* path = luaL_checkstring(L, 1);
    lua_settop(L, 1);
    if (loadConfined(L, path) != 1) return lua_error(L);
    const int before = lua_gettop(L) - 1;
    lua_call(L, 0, LUA_MULTRET);
    return lua_gettop(L) - before;
}

/// What `require` asks for a module's function: the patterns of "package.path", in the confined folders.
/// [-0, +1, e]
int findModule(lua_State* L)
{
    const char* name = luaL_checkstring(L, 1);
    const char* file = luaL_gsub(L, name, ".", LUA_DIRSEP);
    lua_getfield(L, LUA_GLOBALSINDEX, "package");
    lua_pushliteral(L, "path");
    if (lua_istable(L, -2))
        lua_rawget(L, -2);
    else
        lua_pushnil(L);
    const char* patterns = lua_tostring(L, -1);
    if (!patterns) return luaL_error(L, "'package.path' must be a string");
    lua_pushliteral(L, "");
    while (*patterns != '\0') {
        const char* end = std::strchr(patterns, ';');
        const std::size_t length = end ? static_cast<std::size_t>(end - patterns) : std::strlen(patterns);
        lua_pushlstring(L, patterns, length);
        const char* path = luaL_gsub(L, lua_tostring(L, -1), "?", file);
        const int top = lua_gettop(L);
        if (pushConfined(L, path)) {
            std::size_t size = 0;
            const char* bytes = lua_tolstring(L, -1, &size);
            if (loadText(L, bytes, size, lua_pushfstring(L, "@%s", path)) == 1) return 1;
            return luaL_error(L, "error loading module '%s' from file '%s':\n\t%s", name, path,
                              lua_tostring(L, -1));
        }
        lua_settop(L, top);
        lua_pushfstring(L, "\n\tno file '%s' of the installation or the project", path);
        lua_replace(L, top - 1);
        lua_settop(L, top - 1);
        lua_concat(L, 2);
        patterns += length + (end ? 1 : 0);
    }
    return 1;
}

bool isAmong(std::string_view name, const char* const* begin, const char* const* end)
{
    for (; begin != end; ++begin)
        if (name == *begin) return true;
    return false;
}

/// Takes everything out of a global table that is not in the list. [-0, +0, e]
template<std::size_t count>
void keepOnly(lua_State* L, const char* table, const char* const (&names)[count])
{
    lua_getglobal(L, table);
    const int own = lua_gettop(L);
    for (lua_pushnil(L); lua_next(L, own) != 0;) {
        lua_pop(L, 1);
        if (lua_type(L, -1) == LUA_TSTRING && isAmong(lua_tostring(L, -1), names, names + count)) continue;
        lua_pushvalue(L, -1);
        lua_pushnil(L);
        lua_rawset(L, own); // a field that is there may be cleared within a traversal
    }
    lua_pop(L, 1);
}

void open(lua_State* L, const char* name, lua_CFunction library)
{
    lua_pushcfunction(L, library);
    lua_pushstring(L, name);
    lua_call(L, 1, 0);
}

constexpr luaL_Reg replaced[] = {{"load", load},
                                 {"loadstring", loadString},
                                 {"loadfile", loadFile},
                                 {"dofile", doFile},
                                 {nullptr, nullptr}};

} // namespace

void openUntrustedLibraries(lua_State* L)
{
    lua_tinker::refuse_precompiled(L);
    open(L, "", luaopen_base);
    open(L, LUA_LOADLIBNAME, luaopen_package);
    open(L, LUA_TABLIBNAME, luaopen_table);
    open(L, LUA_STRLIBNAME, luaopen_string);
    open(L, LUA_MATHLIBNAME, luaopen_math);
    open(L, LUA_OSLIBNAME, luaopen_os);
#if defined(LUAJIT_VERSION)
    open(L, LUA_BITLIBNAME, luaopen_bit);
#endif
    keepOnly(L, LUA_OSLIBNAME, ofSystem);
    keepOnly(L, LUA_LOADLIBNAME, ofPackage);
    for (const char* name : goneGlobals) {
        lua_pushnil(L);
        lua_setglobal(L, name);
    }
    for (const luaL_Reg* entry = replaced; entry->name; ++entry)
        lua_register(L, entry->name, entry->func);

    // The first finds what scripts have put into "package.preload"; native modules are the others' affair.
    lua_getglobal(L, LUA_LOADLIBNAME);
    lua_getfield(L, -1, "loaders");
    for (int i = static_cast<int>(lua_objlen(L, -1)); i > 2; --i) {
        lua_pushnil(L);
        lua_rawseti(L, -2, i);
    }
    lua_pushcfunction(L, findModule);
    lua_rawseti(L, -2, 2);
    lua_pop(L, 1);
    // Nothing of this machine's own folders, which are neither the installation nor the project.
    lua_pushnil(L);
    lua_setfield(L, -2, "path");
    lua_pop(L, 1);
}

} // namespace quorlua
