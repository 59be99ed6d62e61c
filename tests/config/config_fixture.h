#pragma once

#include "../scriptor/scriptor_fixture.h"

#include <QuorCommon/QuorCommon.h>
#include <functional>
#include <thread>

/// What the tests' scripts find as the module "probe".
struct Probe {
    /// Texts given to probe.note, in order.
    static inline std::vector<std::string> notes;
    /// The states of the fixture's thread in which probe.here was called.
    static inline std::vector<lua_State*> states;
    static inline unsigned int thread = 0;
    /// What probe.again runs; the script gets the text.
    static inline std::function<const char*()> again;

    /// Puts the module into every state that is made from now on.
    static void add()
    {
        static const luaL_Reg functions[] = {
            {"note", note}, {"here", here}, {"again", runAgain}, {nullptr, nullptr}};
        static const bool added = (quorlua::addRegLuaModule("probe", functions), true);
        ASSERT_TRUE(added);
    }

private:
    static int note(lua_State* L)
    {
        const char* text = lua_tostring(L, 1);
        notes.emplace_back(text ? text : "(no text)");
        return 0;
    }
    static int here(lua_State* L)
    {
        if (quorsys::currentThreadId() == thread) states.push_back(L);
        return 0;
    }
    static int runAgain(lua_State* L)
    {
        lua_pushstring(L, again ? again() : nullptr);
        return 1;
    }
};

/// The message of all getters up to the script function's name, as it is read.
inline const std::string complaint = "系统配置出错，请联系开发商，";

/// What the binding layer says of a function that is none.
inline std::string noFunction(const std::string& name)
{
    return "attempt to call global `" + name + "' (not a function)";
}

inline std::string textOr(const char* text, const char* otherwise = "(null)")
{
    return text ? text : otherwise;
}

/// An installation and a project of its own, and states of its own for the thread of the test. The project
/// script's name is the default one. Whatever a test does, the stacks of its states end as high as they
/// began.
class Config : public testing::Test {
protected:
    static constexpr const char* projectScript = "quorModuleSystem.lua";
    static constexpr const char* systemScript = "mirtSystemConfig.lua";
    static constexpr QuorAuth::Module pipe = QuorAuth::Module::Pipe;

    Config()
    {
        Probe::add();
        Probe::thread = thread;
        Probe::notes.clear();
        QuorSystem::setInstallationFolder(folder.path("installation").c_str());
        QuorSystem::setProjectFolder(folder.path("project").c_str());
        kxcom::setMessageSink(show, &shown);
        // The name is the process's: an earlier test may have left another.
        quorconfig::allocThreadConfig(thread);
        quorconfig::initConfig(projectScript, nullptr, nullptr, nullptr);
        takeFreshSlots();
        shown.clear();
    }
    ~Config() override
    {
        freeSlots();
        Probe::again = nullptr;
        quorconfig::permitNullReturn(false);
        setQuorGetText_callbk(nullptr);
        kxcom::setMessageSink(nullptr, nullptr);
        kxcom::setCurrentModule(QuorAuth::Module::None);
        QuorSystem::setProjectFolder(nullptr);
        QuorSystem::setInstallationFolder(nullptr);
    }
    Config(const Config&) = delete;
    Config& operator=(const Config&) = delete;

    /// From here on the thread shares the default states.
    void freeSlots()
    {
        for (lua_State* L : Probe::states)
            EXPECT_EQ(lua_gettop(L), 1) << "something besides the \"glib\" table is on the stack";
        Probe::states.clear();
        quorconfig::freeThreadConfig(thread);
    }
    void takeFreshSlots()
    {
        freeSlots();
        quorconfig::allocThreadConfig(thread);
    }

    /// Writes a script into the "bin" folder. `shownBy` can look into its state.
    void write(const std::string& name, const std::string& script) const
    {
        folder.write("installation/bin/" + name, prelude() + script);
    }
    /// As `write`, for a script that was last changed at a given time.
    void write(const std::string& name, const std::string& script, long seconds) const
    {
        write(name, script);
        folder.setTime("installation/bin/" + name, seconds);
    }
    static std::string prelude()
    {
        return "probe.here() function eval(_, code) return '=' .. tostring(assert(loadstring('return ' .. "
               "code))()) end function escape_dbkey(code) return eval(nil, code) end ";
    }

    /// Loads a script into the thread's project state.
    bool loadProject(const std::string& script) const
    {
        write(projectScript, script);
        return quorconfig::initConfig(projectScript, nullptr, nullptr, nullptr);
    }
    bool loadSystem(const std::string& script) const
    {
        write(systemScript, script);
        return quorconfig::initSysConfig();
    }

    /// Loads a script into the default project state, which the thread shares from here on.
    void useDefaultSlot(const std::string& script)
    {
        // The state is the process's: a name that it has held before would not be loaded.
        static int uses = 0;
        const std::string name = "default" + std::to_string(++uses) + ".lua";
        freeSlots();
        write(name, script);
        ASSERT_TRUE(quorconfig::initConfig(name.c_str(), nullptr, nullptr, nullptr));
    }

    /// What an expression gives in the thread's project state, or system state.
    static std::string inProject(const char* expression)
    {
        const std::string text = textOr(quorconfig::getProject_general("eval", "=?", pipe, expression));
        return text.substr(1);
    }
    static std::string inSystem(const char* expression)
    {
        const std::string text = textOr(quorconfig::escape_dbkey(expression));
        return text.starts_with('=') ? text.substr(1) : "?";
    }

    /// The messages shown so far, as they are read, without tracebacks; then none.
    std::vector<std::string> messages()
    {
        std::vector<std::string> read;
        for (const std::string& bytes : shown)
            read.push_back(utf8(bytes.substr(0, bytes.find("\nstack traceback"))));
        shown.clear();
        return read;
    }

    static std::string installed(const std::string& name)
    {
        return QuorSystem::quorEnv() + sys::inSystemForm("/" + name);
    }
    static std::string inProjectFolder(const std::string& name)
    {
        return QuorSystem::getCurrentProjPath() + sys::inSystemForm("/" + name);
    }

    /// Runs work on another thread while this one waits.
    static void onThread(const std::function<void(unsigned int id)>& work)
    {
        std::thread other([&] { work(quorsys::currentThreadId()); });
        other.join();
    }

    ScriptFolder folder;
    const unsigned int thread = quorsys::currentThreadId();
    /// Bytes, as they were shown.
    std::vector<std::string> shown;

private:
    static void show(const char* text, void* list)
    {
        static_cast<std::vector<std::string>*>(list)->emplace_back(text);
    }
};
