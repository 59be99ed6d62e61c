#include "Guard.h"
#include "Limits.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/LuaSerialize.h>
#include <QuorScriptor/QuorGlibScriptorHelper.h>
#include <memory>
#include <new>

namespace quorlua {
namespace {

constexpr const char* scriptFile = "bin\\serialObject.lua";

/// What a call pushes into the serializer's own frame: the message handler and the argument.
constexpr int callSlots = 2;

/// The owner of the serializer's state; null until the script has run.
constinit QuorGlibScriptorHelper* helper = nullptr;

/// Set while the script is loaded, and again when the process ends. What a script calls then may come back
/// here, through functions that the host gave it: there is no state for it.
constinit bool isAway = false;

/// Closes the state at the end of the process.
struct End {
    End() = default;
    ~End()
    {
        isAway = true;
        const std::unique_ptr<QuorGlibScriptorHelper> last(helper);
        helper = nullptr;
    }
    End(const End&) = delete;
    End& operator=(const End&) = delete;
};

/// Calls a function of the script with a text or, when that is null, with the value on top, which is popped.
/// Its one result, nil when it failed; a global that is no function is reported and is the result itself.
/// With `isTextWanted`, a result that is a number becomes its text. The caller has reserved room. [-(0|1),
/// +1, -]
void callScript(lua_State* L, const char* function, const char* text, bool isTextWanted)
{
    const limits::Operation operation(L);
    const int arguments = text ? 0 : 1;
    const int handler = lua_gettop(L) + 1 - arguments;
    bool isMissing = false;
    bool ran = false;
    if (guard::pushHandler(L)) {
        lua_insert(L, handler);
        ran = guard::run(L, arguments, handler, [=, &isMissing](lua_State* frame) {
            guard::pushGlobal(frame, function);
            isMissing = !lua_isfunction(frame, -1);
            if (!isMissing) {
                if (text)
                    lua_pushstring(frame, text);
                else
                    lua_pushvalue(frame, 1);
                lua_call(frame, 1, 1);
            }
            if (isTextWanted) lua_tolstring(frame, -1, nullptr);
            return 1;
        });
        lua_remove(L, handler);
    } else {
        lua_pop(L, arguments);
    }
    if (!ran) lua_pushnil(L);
    if (isMissing) lua_tinker::print_error(L, "attempt to call global `%s' (not a function)", function);
}

} // namespace

bool LuaSerialize::m_init = false;

void LuaSerialize::init()
{
    if (m_init || isAway) return;
    std::unique_ptr<QuorGlibScriptorHelper> made(new (std::nothrow) QuorGlibScriptorHelper);
    isAway = true;
    const bool isLoaded = made && made->init(QuorSystem::getFullQuorName(scriptFile), nullptr);
    isAway = false;
    if (!isLoaded) return;
    helper = made.release();
    m_init = true;
    // Not before the script has run: whatever of the library its finalizers reach for was made by then, and
    // so outlives it.
    static const End end; // GCOVR_EXCL_BR_LINE: the compiler asks whether it is there; one state is made once
}

lua_State* LuaSerialize::getLua()
{
    init();
    return helper ? helper->getL() : nullptr;
}

const char* LuaSerialize::serial(int index)
{
    lua_State* L = getLua();
    if (!L || !guard::reserve(L, callSlots)) return nullptr;
    if (guard::isSlot(L, index))
        lua_pushvalue(L, index);
    else
        lua_pushnil(L);
    callScript(L, "serializeTable", nullptr, true);
    return lua_tostring(L, -1);
}

bool LuaSerialize::unSerial(const char* text)
{
    if (!text || !*text) return false;
    lua_State* L = getLua();
    if (!L || !guard::reserve(L, callSlots)) return false;
    callScript(L, "unSerializeTable", text, false);
    return true;
}

void LuaSerialize::clear()
{
    if (lua_State* L = getLua()) lua_settop(L, 1);
}

} // namespace quorlua
