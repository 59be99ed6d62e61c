#include "GlobalTable.h"
#include "KeptBlocks.h"
#include "Limits.h"
#include "Modules.h"
#include "Safeguards.h"
#include "StateTrust.h"
#include "Untrusted.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

namespace {

namespace guard = quorlua::guard;

constexpr int pathSize = 255;

/// The module search paths of a new state, resolved before any Lua work.
struct SearchPaths {
    /// Both patterns of the installation: added together they make one text less.
    std::string installation;
    std::string platformScripts;
    std::string platformBinaries;

    SearchPaths()
    {
        char bin[pathSize] = "";
        char utils[pathSize] = "";
        QuorSystem::getFullQuorName("bin\\?.lua", bin, pathSize);
        QuorSystem::getFullQuorName("bin\\utils\\?.lua", utils, pathSize);
        installation = bin;
        if (*bin && *utils) installation += ';';
        installation += utils;
        const std::string platform = QuorSystem::quorFullPlatformPath();
        platformScripts = platform + "\\?.lua";
        platformBinaries = platform + "\\?.dll";
    }
};

void registerTextStyle(lua_State* L)
{
    lua_tinker::class_add<GlibTextStyle>(L, "GlibTextStyle");
    lua_tinker::class_def<GlibTextStyle>(L, "height", &GlibTextStyle::height);
    lua_tinker::class_def<GlibTextStyle>(L, "getlen", &GlibTextStyle::getlen);
    lua_tinker::class_def<GlibTextStyle>(L, "getlen_h", &GlibTextStyle::getlen_h);
    lua_tinker::class_def<GlibTextStyle>(L, "setstyle", &GlibTextStyle::setstyle);
    lua_tinker::class_def<GlibTextStyle>(L, "getfactor", &GlibTextStyle::getfactor);
}

void openLibraries(lua_State* L)
{
    if (quorlua::limits::isUntrusted(L))
        quorlua::openUntrustedLibraries(L);
    else
        luaL_openlibs(L);
    quorlua::installSafeguards(L);
    if (quorlua::limits::hasTimeLimit(L)) quorlua::keepHook(L);
    if (quorlua::limits::hasTimeLimit(L) || quorlua::limits::hasMemoryLimit(L)) quorlua::keepInterpreted(L);
}

/// Leaves the "glib" table as the one result: it stays the stack's bottom value. The collector stays stopped
/// until the state is complete: before, there is next to nothing for it to collect.
int openBuiltIns(lua_State* L, const SearchPaths& paths)
{
    lua_gc(L, LUA_GCSTOP, 0);
    openLibraries(L);
    luaL_register(L, "glib", quorlua::getGlibRegFuncForLua());
    const int glib = lua_gettop(L);
    if (!paths.installation.empty()) quorlua::addPath(L, paths.installation.c_str());
    quorlua::addPath(L, paths.platformScripts.c_str());
    if (!quorlua::limits::isUntrusted(L)) quorlua::addCPath(L, paths.platformBinaries.c_str());
    registerTextStyle(L);
    lua_settop(L, glib);
    return 1;
}

lua_CFunction findFunction(const luaL_Reg* list, const char* name)
{
    for (; list->name; ++list)
        if (std::strcmp(list->name, name) == 0) return list->func;
    return nullptr;
}

/// The status of lua_pcall.
int openModule(lua_State* L, const char* name, const luaL_Reg* list)
{
    return guard::statusOf(L, [name, list](lua_State* frame) {
        luaL_register(frame, name, list);
        return 0;
    });
}

int getLuaFile(lua_State* L)
{
    const auto* scriptor = static_cast<const QuorGlibScriptor*>(lua_touserdata(L, lua_upvalueindex(1)));
    lua_pushstring(L, scriptor->getFileName());
    return 1;
}

} // namespace

QuorGlibScriptor::QuorGlibScriptor()
{
    initLua();
}

QuorGlibScriptor::~QuorGlibScriptor()
{
    if (state_) quorlua::limits::closeState(state_);
    state_ = nullptr;
    if (!quorlua::kept::holds(fileName_)) std::free(fileName_);
}

QuorGlibScriptor& QuorGlibScriptor::operator=(const QuorGlibScriptor& other) = default;

void QuorGlibScriptor::initLua()
{
    if (quorlua::isRunning(state_)) return;
    if (state_) quorlua::closeForGood(state_, baseTop_);
    const bool untrusted = baseTop_ == quorlua::untrustedBefore;
    state_ = luaL_newstate();
    if (!state_) return;
    if (!quorlua::limits::limitNewState(state_, untrusted)) {
        lua_close(state_);
        state_ = nullptr;
        return;
    }
    bool complete = false;
    try {
        const SearchPaths paths;
        complete = guard::run(state_, [&paths](lua_State* frame) { return openBuiltIns(frame, paths); });
        baseTop_ = lua_gettop(state_);
        const quorlua::LuaLRegHelper::Map modules = quorlua::registeredModules();
        for (const auto& [name, list] : modules) {
            // A name that is taken by something else leaves that module out, and no other.
            if (openModule(state_, name.c_str(), list) == LUA_ERRMEM) complete = false;
            const lua_CFunction alert = name == "acadui" ? findFunction(list, "printf") : nullptr;
            if (!alert) continue;
            complete = complete && guard::run(state_, [alert](lua_State* frame) {
                           lua_pushcfunction(frame, alert);
                           lua_setglobal(frame, "_ALERT");
                           return 0;
                       });
        }
        complete = complete && guard::run(state_, [this](lua_State* frame) {
                       lua_pushlightuserdata(frame, this);
                       lua_pushcclosure(frame, getLuaFile, 1);
                       lua_setglobal(frame, "mirt_get_luafile");
                       quorlua::guardCallbacks(frame);
                       lua_tinker::init(frame);
                       return 0;
                   });
    } catch (const std::exception&) {
        complete = false;
    }
    if (complete) {
        // Out here, where this raises nothing: at the end of guarded work the collector would take a step at
        // once.
        lua_gc(state_, LUA_GCRESTART, 0);
        return;
    }
    // Half a state is of no use to a script.
    quorlua::closeForGood(state_, baseTop_);
}

void QuorGlibScriptor::addLib(const char* name, const luaL_Reg* list) const
{
    if (state_ && name && list) openModule(state_, name, list);
}

void QuorGlibScriptor::addLibFuncLua(const char* table, const char* name, lua_CFunction function)
{
    if (!state_ || !table || !name || !function) return;
    guard::run(state_, [table, name, function](lua_State* frame) {
        quorlua::setInGlobalTable(frame, table, name,
                                  [function](lua_State* state) { lua_pushcfunction(state, function); });
        return 0;
    });
}

void QuorGlibScriptor::setPackagePath()
{
    char path[pathSize] = "";
    if (!state_ || !QuorSystem::getFullQuorName("bin\\?.lua", path, pathSize)) return;
    guard::run(state_, [&path](lua_State* frame) {
        guard::pushGlobal(frame, "package");
        const bool made = !lua_istable(frame, -1);
        if (made) lua_newtable(frame);
        lua_pushstring(frame, path);
        lua_setfield(frame, -2, "path");
        if (made) lua_setglobal(frame, "package");
        return 0;
    });
}

lua_State* QuorGlibScriptor::getLua(bool clear)
{
    if (clear && state_ && lua_gettop(state_) > 1) lua_settop(state_, 1);
    return state_;
}

void QuorGlibScriptor::luaClear()
{
    if (state_) lua_settop(state_, baseTop_);
}
