#pragma once

#include "../Primitives.h"
#include "../lua_text.h"
#include "../system.h"

#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <vector>

/// The UTF-8 form of a text in the host's code page; what is not GBK fails the test.
inline std::string utf8(const std::string& gbk)
{
    const std::optional<std::string> text = sys::utf8FromGbk(gbk);
    EXPECT_TRUE(text) << "not GBK";
    return text.value_or("");
}

/// The bytes of a chunk, as a scriptor takes them. The text must outlive the record.
inline quor_binary bufferOf(std::string& bytes)
{
    return {static_cast<int>(bytes.size()), bytes.data()};
}

/// A text style that answers by what it is asked.
class StyleOfTest final : public GlibTextStyle {
public:
    double height() const override { return 2.5; }
    double getlen(const char* text) const override { return static_cast<double>(std::string(text).size()); }
    double getlen_h(const char* text, double height) const override { return getlen(text) * height; }
    void setstyle(const char* name) override { name_ = name; }
    double getfactor() const override { return 0.75; }

    std::string name_;
};

/// A folder for the scripts of one test.
class ScriptFolder {
public:
    ScriptFolder() : folder_(sys::makeFolder("quor-scriptor")) {}
    ~ScriptFolder() { std::filesystem::remove_all(folder_); }
    ScriptFolder(const ScriptFolder&) = delete;
    ScriptFolder& operator=(const ScriptFolder&) = delete;

    std::string path(const std::string& name = "") const { return sys::join(folder_, name); }
    std::string write(const std::string& name, const std::string& bytes) const
    {
        // The folders alone: a name may be no text.
        std::filesystem::create_directories(folder_ / name.substr(0, name.rfind('/') + 1));
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    /// Writes a script that was last changed at a given time.
    std::string write(const std::string& name, const std::string& bytes, long long seconds) const
    {
        write(name, bytes);
        setTime(name, seconds);
        return path(name);
    }
    void setTime(const std::string& name, long long seconds, long nanoseconds = 0) const
    {
        ASSERT_TRUE(sys::setFileTime(path(name), seconds, nanoseconds));
    }

private:
    std::filesystem::path folder_;
};

/// Counts the loads that it is told of.
class LoadCounter final : public FunctionRightAfterLoadFile {
public:
    void loaded(lua_State* L) override
    {
        ++count;
        state = L;
    }

    int count = 0;
    lua_State* state = nullptr;
};

/// A scriptor whose "_ALERT" notes what it is given, and whose "textOf" gives texts of values. Whatever a
/// test does, the stack ends as high as it began.
class Scriptor : public testing::Test {
protected:
    Scriptor()
    {
        noteAlerts();
        lua_register(state(), "textOf", luatext::textOf);
        kxcom::clearQuorLastError();
    }
    void TearDown() override
    {
        if (state()) {
            EXPECT_EQ(height(), 1) << "something besides the \"glib\" table is on the stack";
        }
        setQuorGetText_callbk(nullptr);
        kxcom::clearQuorLastError();
    }

    lua_State* state() { return scriptor.getLua(false); }
    int height() { return lua_gettop(state()); }

    void noteAlerts()
    {
        lua_pushlightuserdata(state(), &alerts);
        lua_pushcclosure(state(), note, 1);
        lua_setglobal(state(), "_ALERT");
    }

    /// Runs an operation that must leave the stack as it found it, and gives its result.
    template<class Operation>
    auto kept(Operation operation)
    {
        const int before = height();
        const auto result = operation();
        EXPECT_EQ(height(), before);
        return result;
    }

    /// Runs a chunk; its results stay on the stack. Any error fails the test.
    void run(const std::string& chunk, int results = 0)
    {
        lua_State* L = state();
        ASSERT_EQ(luaL_loadbuffer(L, chunk.data(), chunk.size(), "test"), 0) << lua_tostring(L, -1);
        ASSERT_EQ(lua_pcall(L, 0, results, 0), 0) << lua_tostring(L, -1);
    }

    /// What an expression gives, by `textOf`.
    std::string shown(const std::string& expression) { return luatext::shown(state(), expression); }

    /// Takes the scriptor's state away, as a buffer that does not run does.
    void loseState()
    {
        std::string bad = "error('lost')";
        ASSERT_EQ(scriptor.loadBuffer(bufferOf(bad), 1000, false), Quor::ScriptFailed);
        ASSERT_EQ(scriptor.getLua(false), nullptr);
        alerts.clear();
    }

    /// From here on every unknown global that is read or written raises an error.
    void makeGlobalsStrict()
    {
        run("setmetatable(_G, {__index = function(_, name) error('read of ' .. tostring(name)) end,"
            " __newindex = function(_, name) error('write of ' .. tostring(name)) end})");
    }

    /// Pushes records and parses them, past the scriptor: attributes among them stay set on this thread.
    void draw(const std::string& records, Primitives& drawn)
    {
        run("return " + records, 1);
        EXPECT_EQ(quorlua::parse_primary_byidx(state(), -1, drawn), Quor::Ok);
        lua_pop(state(), 1);
    }

    /// The colour that this thread stamps on what it draws.
    int currentColour()
    {
        Primitives drawn;
        draw("{{16, {0, 0, 0}, {1, 0, 0}}}", drawn);
        return drawn.size() == 1 ? drawn[0]->getColor() : -1;
    }

    QuorGlibScriptor scriptor;
    std::vector<std::string> alerts;

private:
    static int note(lua_State* L)
    {
        std::size_t length = 0;
        const char* text = lua_tolstring(L, 1, &length);
        auto* list = static_cast<std::vector<std::string>*>(lua_touserdata(L, lua_upvalueindex(1)));
        list->emplace_back(text ? text : "", length);
        return 0;
    }
};
