#pragma once

#include "../lua_text.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/LuaSerialize.h>
#include <gmock/gmock.h>
#include <string>
#include <vector>

/// The serializer with the sample's script. Its state is one for the whole program: a test finds the script's
/// functions as they are written, the stack at its bottom, and "_ALERT" noting the first line of what it is
/// given, which is the message without the traceback.
class Serializer : public testing::Test {
protected:
    Serializer()
    {
        QuorSystem::setInstallationFolder(QUOR_SOURCE_DIR "/sample/installation");
        alerts.clear();
        L = quorlua::LuaSerialize::getLua();
    }
    ~Serializer() override { QuorSystem::setInstallationFolder(nullptr); }

    void SetUp() override
    {
        ASSERT_NE(L, nullptr);
        quorlua::LuaSerialize::clear();
        lua_pushnil(L);
        lua_setmetatable(L, LUA_GLOBALSINDEX);
        ASSERT_EQ(lua_tinker::dofile(L, QUOR_SOURCE_DIR "/sample/installation/bin/serialObject.lua"), 0);
        lua_register(L, "_ALERT", note);
        lua_register(L, "textOf", luatext::textOf);
    }
    void TearDown() override { quorlua::LuaSerialize::clear(); }

    /// Runs a chunk; its results stay on the stack. Any error fails the test.
    void run(const std::string& chunk, int results = 0)
    {
        ASSERT_EQ(luaL_loadbuffer(L, chunk.data(), chunk.size(), "test"), 0) << lua_tostring(L, -1);
        ASSERT_EQ(lua_pcall(L, 0, results, 0), 0) << lua_tostring(L, -1);
    }

    /// Pushes the value of an expression; its index.
    int push(const std::string& expression)
    {
        run("return " + expression, 1);
        return lua_gettop(L);
    }

    /// What an expression gives, by `textOf`.
    std::string shown(const std::string& expression) { return luatext::shown(L, expression); }

    /// The serializer's text of the value on top of the stack, which stays as it was.
    std::string written()
    {
        const int top = lua_gettop(L);
        const char* text = quorlua::LuaSerialize::serial(top);
        std::string copy = text ? text : "(null)";
        EXPECT_EQ(lua_gettop(L), top + 1);
        lua_settop(L, top);
        return copy;
    }

    /// The serializer's text of an expression.
    std::string written(const std::string& expression)
    {
        push(expression);
        std::string text = written();
        lua_pop(L, 1);
        return text;
    }

    /// Leaves what the serializer makes of a text on top of the stack, and reads it as the global "read".
    void read(const std::string& text)
    {
        const int top = lua_gettop(L);
        EXPECT_TRUE(quorlua::LuaSerialize::unSerial(text.c_str()));
        EXPECT_EQ(lua_gettop(L), top + 1);
        lua_pushvalue(L, -1);
        lua_setglobal(L, "read");
    }

    /// The text that all texts of the sample's script begin with.
    static std::string headed(const std::string& text) { return "quor-table 1 " + text; }

    static inline std::vector<std::string> alerts;
    lua_State* L = nullptr;

private:
    static int note(lua_State* state)
    {
        const std::string message = lua_tostring(state, 1) ? lua_tostring(state, 1) : "";
        alerts.push_back(message.substr(0, message.find('\n')));
        return 0;
    }
};
