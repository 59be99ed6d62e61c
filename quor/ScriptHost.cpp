#include "ScriptHost.h"

#include "GuestFunctions.h"
#include "Terminal.h"

#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/LuaModules.h>

namespace quor {
namespace {

/// `acadui.printf(text)`, which every state then takes as its "_ALERT" too. [-?, +0, -]
int showText(lua_State* L)
{
    char digits[32] = "";
    std::size_t length = 0;
    const char* text = digits;
    if (lua_type(L, 1) == LUA_TSTRING)
        text = lua_tolstring(L, 1, &length);
    else if (lua_type(L, 1) == LUA_TNUMBER)
        length = quorlua::numberText(lua_tonumber(L, 1), digits);
    else
        return 0;
    terminal::showMessage(std::string_view(text, length));
    return 0;
}

/// Shows a report that no "_ALERT" takes, since the script has replaced it.
void showReport(const char* text, std::size_t length, void*)
{
    terminal::showMessage(std::string_view(text, length));
}

constexpr luaL_Reg messageFunctions[] = {{"printf", showText}, {nullptr, nullptr}};

} // namespace

ScriptHost::ScriptHost(const HostFolders& folders)
{
    setFolders(folders);
    kxcom::setMessageSink(terminal::showMessage, nullptr);
    lua_tinker::set_error_outlet(showReport, nullptr);
    static const bool registered = [] {
        quorlua::addRegLuaModule("acadui", messageFunctions);
        registerGuestFunctions();
        return true;
    }();
    static_cast<void>(registered);
}

ScriptHost::~ScriptHost()
{
    kxcom::setMessageSink(nullptr, nullptr);
    lua_tinker::set_error_outlet(nullptr, nullptr);
}

} // namespace quor
