// A host that has another Lua than the library's: in the program itself, or in a library that it loads. Both
// run scripts in turn, and neither may notice the other.
//
// another_lua [--apart] [--lua FILE] [--drawing FILE]
//   --apart    the two engines are of different kinds, and each must stay with its own
//   --lua      loads that library and uses its Lua, instead of the one that the program was linked with
//   --drawing  loads that module and draws with it; a program without this is linked with the library

#include "drawing.h"

#include <cstdio>
#include <cstring>
#include <lua.hpp>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

using Draw = decltype(drawOnce);

#if defined(_WIN32)
// Names are looked up in the DLL that they are imported from: nothing can come in between.
void* load(const char* file)
{
    return reinterpret_cast<void*>(LoadLibraryA(file));
}
void* find(void* library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
#else
// Without RTLD_DEEPBIND a library's own calls of lua_... would go to the first Lua that the program has.
void* load(const char* file)
{
    void* library = dlopen(file, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
    if (!library) std::fprintf(stderr, "%s\n", dlerror());
    return library;
}
void* find(void* library, const char* name)
{
    return dlsym(library, name);
}
#endif

/// The function of that name in a library, the program's own where there is none.
template<class F>
F* pick(void* library, const char* name, F* own)
{
    return library ? reinterpret_cast<F*>(find(library, name)) : own;
}

/// The program's use of its Lua.
class OtherLua {
public:
    explicit OtherLua(void* library)
        : loadString_(pick(library, "luaL_loadstring", &luaL_loadstring)),
          call_(pick(library, "lua_pcall", &lua_pcall)),
          toText_(pick(library, "lua_tolstring", &lua_tolstring)),
          setTop_(pick(library, "lua_settop", &lua_settop)), close_(pick(library, "lua_close", &lua_close)),
          state_(pick(library, "luaL_newstate", &luaL_newstate)())
    {
        pick(library, "luaL_openlibs", &luaL_openlibs)(state_);
    }
    ~OtherLua() { close_(state_); }
    OtherLua(const OtherLua&) = delete;
    OtherLua& operator=(const OtherLua&) = delete;

    /// What a chunk returns, or its error.
    std::string run(const char* chunk)
    {
        if (loadString_(state_, chunk) == 0) call_(state_, 0, 1, 0);
        const char* text = toText_(state_, -1, nullptr);
        std::string result = text ? text : "";
        setTop_(state_, 0);
        return result;
    }

private:
    decltype(&luaL_loadstring) loadString_;
    decltype(&lua_pcall) call_;
    decltype(&lua_tolstring) toText_;
    decltype(&lua_settop) setTop_;
    decltype(&lua_close) close_;
    lua_State* state_;
};

int fail(int round, const char* what, const std::string& seen)
{
    std::fprintf(stderr, "round %d: %s: %s\n", round, what, seen.c_str());
    return 1;
}

} // namespace

int main(int count, char** arguments)
{
    bool apart = false;
    void* library = nullptr;
#if defined(QUOR_DRAWING_LINKED)
    Draw* draw = &drawOnce;
#else
    Draw* draw = nullptr;
#endif
    for (int i = 1; i < count; ++i) {
        const std::string option = arguments[i];
        if (option == "--apart") {
            apart = true;
        } else if (option == "--lua" && i + 1 < count) {
            library = load(arguments[++i]);
            if (!library) return fail(0, "no library", arguments[i]);
        } else if (option == "--drawing" && i + 1 < count) {
            void* module = load(arguments[++i]);
            if (module) draw = reinterpret_cast<Draw*>(find(module, "drawOnce"));
        }
    }
    if (!draw) return fail(0, "nothing to draw with", "");

    OtherLua other(library);
    for (int round = 1; round <= 3; ++round) {
        const std::string seen =
            other.run("rounds = (rounds or 0) + 1\n"
                      "local parts = {}\n"
                      "for part in string.gmatch('a,b,c', '[^,]+') do parts[#parts + 1] = part end\n"
                      "return rounds .. table.concat(parts)");
        if (seen != std::to_string(round) + "abc") return fail(round, "the program's script", seen);
        char kind[16] = "";
        if (draw(kind) != 100 * round) return fail(round, "the library's scripts", "failed");
        const std::string otherKind = other.run("return _VERSION .. type(jit)");
        if (apart && otherKind == kind) return fail(round, "both engines are", kind);
    }
    std::puts("both ran their scripts");
    return 0;
}
