#include "ConfigState.h"

#include "Context.h"
#include "GlobalTable.h"
#include "Modules.h"
#include "Values.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorCommon/quorsys.h>
#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <QuorScriptor/configstate.h>
#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace quorconfig {
namespace {

namespace guard = quorlua::guard;

/// One script's state: none until the first load.
struct ConfigSlot {
    std::unique_ptr<QuorGlibScriptor> scriptor;
    /// The file last loaded, or tried, as it was given.
    std::string fileName;

    lua_State* state() const { return scriptor ? scriptor->getLua(false) : nullptr; }
};

/// Set when the library's end begins. A state that is closed runs what its script left for the end, and that
/// may ask again, through functions that the host gave it: nobody is answered then.
constinit bool isEnding = false;

/// The states of one of the two scripts. Those of threads are destroyed first.
class ThreadConfigHolder {
public:
    ThreadConfigHolder()
    {
        // What a script leaves for the end may reach these as well: so they must be made before, and outlive,
        // every state here.
        quorlua::currentContext();
        quorlua::registeredModules();
    }
    ~ThreadConfigHolder() { isEnding = true; }
    ThreadConfigHolder(const ThreadConfigHolder&) = delete;
    ThreadConfigHolder& operator=(const ThreadConfigHolder&) = delete;

    ConfigSlot& ofThisThread()
    {
        if (threadSlots_.empty()) return defaultSlot_;
        const auto own = threadSlots_.find(quorsys::currentThreadId());
        return own == threadSlots_.end() ? defaultSlot_ : own->second;
    }

    void add(unsigned int threadId) { threadSlots_.try_emplace(threadId); }
    /// The slot leaves the map before its state is closed, which may ask for this thread's once more.
    void remove(unsigned int threadId) { threadSlots_.extract(threadId); }

private:
    ConfigSlot defaultSlot_;
    std::map<unsigned int, ConfigSlot> threadSlots_;
};

enum class Folder { RunTimeBin, InstallationBin };

std::string projectFile = "quorModuleSystem.lua";
const std::string systemFile = "mirtSystemConfig.lua";
ThreadConfigHolder projectConfig;
ThreadConfigHolder systemConfig;
std::atomic<bool> nullPermitted{false};

/// Beyond what a script asks on purpose, and well within the stack of a small thread.
constexpr int mostQuestions = 100;
constinit thread_local int questionsOnTheirWay = 0;

bool isSameIgnoringCase(std::string_view one, std::string_view other)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [lower](char a, char b) { return lower(a) == lower(b); });
}

void showMessage(const char* text)
{
    kxcom::errorMsg(text);
}

/// Puts a host function into the script's table "kxcom", where that is a table or can be made one.
template<class Function>
void bindInKxcom(lua_State* L, const char* name, Function* function)
{
    guard::run(L, [name, function](lua_State* frame) {
        quorlua::setInGlobalTable(frame, "kxcom", name, [function](lua_State* state) {
            lua_tinker::push_function(state, function);
        });
        return 0;
    });
}

void bindHostFunctions(lua_State* L)
{
    guard::run(L, [](lua_State* frame) {
        lua_tinker::def(frame, "_ALERT", showMessage);
        return 0;
    });
    bindInKxcom(L, "errorMsg", showMessage);
    bindInKxcom(L, "quorPath", QuorSystem::quorEnv);
    bindInKxcom(L, "projectPath", QuorSystem::getCurrentProjPath);
}

/// Runs the file in the slot's state, which is made first where there is none. False when it fails, and also
/// when memory runs out; a scriptor that was left without a state then makes way for another the next time.
bool load(ConfigSlot& slot, const std::string& fileName, Folder folder)
{
    return quorlua::values::withoutThrowing([&] {
        if (!slot.state()) slot.scriptor = std::make_unique<QuorGlibScriptor>();
        if (!slot.state()) return false;
        bindHostFunctions(slot.state());
        slot.fileName = fileName; // before the load: one that fails is not tried again by this name
        const std::string path = folder == Folder::RunTimeBin
                                     ? QuorSystem::getBinRuntimeFullName(fileName.c_str())
                                     : QuorSystem::getFullQuorName("bin", fileName.c_str());
        return slot.scriptor->loadFile(path.c_str(), false) == Quor::GlibStatus::Ok;
    });
}

void callWhenGiven(lua_State* L, const char* function, const char* argument)
{
    if (argument) callConfigFunc<void>(L, function, argument);
}

} // namespace

lua_State* getConfigLua(const char* configFile, const char* initArg, const char* userVersion,
                        const char* designDbModule)
{
    if (isEnding) return nullptr;
    ConfigSlot& slot = projectConfig.ofThisThread();
    const bool isNamed = configFile && *configFile;
    if (lua_State* L = slot.state(); L && (!isNamed || isSameIgnoringCase(slot.fileName, configFile)))
        return L;

    const bool named = quorlua::values::withoutThrowing([&] {
        if (isNamed) projectFile = configFile;
        return true;
    });
    if (!named || !load(slot, projectFile, Folder::RunTimeBin)) return nullptr;

    lua_State* L = slot.state();
    callWhenGiven(L, "initConfig", initArg);
    callWhenGiven(L, "setUserVersion", userVersion);
    callWhenGiven(L, "setDesignDbModule", designDbModule);
    return L;
}

lua_State* getSysConfigLua()
{
    if (isEnding) return nullptr;
    ConfigSlot& slot = systemConfig.ofThisThread();
    if (lua_State* L = slot.state()) return L;
    if (!load(slot, systemFile, Folder::InstallationBin)) return nullptr;
    lua_State* L = slot.state();
    callConfigFunc<void>(L, "initConfig");
    return L;
}

Question::Question()
{
    ++questionsOnTheirWay;
}

Question::~Question()
{
    --questionsOnTheirWay;
}

bool Question::isTooDeep(lua_State* L, const char* function) const
{
    if (questionsOnTheirWay <= mostQuestions) return false;
    lua_tinker::print_error(L, "stack overflow: `%s' is asked while too many questions are being answered",
                            function);
    return true;
}

bool known::push(lua_State* L, const char* text)
{
    if (text) return guard::pushKnownText(L, text);
    lua_pushnil(L);
    return true;
}

bool known::push(lua_State* L, int number)
{
    lua_pushnumber(L, number);
    return true;
}

void known::remember(lua_State* L, const char* text)
{
    if (text) guard::pushText(L, text);
}

bool known::call(lua_State* L, int arguments)
{
    const int handler = lua_gettop(L) - arguments - 1;
    const int status = lua_pcall(L, arguments, 1, handler);
    // The handler was not asked when memory or the processor's stack has run out.
    if (status != 0 && status != LUA_ERRRUN) {
        lua_pushvalue(L, handler);
        lua_pushvalue(L, -2);
        if (lua_pcall(L, 1, 0, 0) != 0) lua_pop(L, 1);
    }
    return status == 0;
}

bool isNullPermitted()
{
    return nullPermitted.load(std::memory_order_relaxed);
}

bool initConfig(const char* configFile, const char* initArg, const char* userVersion,
                const char* designDbModule)
{
    return getConfigLua(configFile, initArg, userVersion, designDbModule) != nullptr;
}

bool initSysConfig()
{
    return getSysConfigLua() != nullptr;
}

void allocThreadConfig(unsigned int threadId)
{
    if (isEnding) return;
    quorlua::values::withoutThrowing([threadId] {
        systemConfig.add(threadId);
        projectConfig.add(threadId);
        return true;
    });
}

void freeThreadConfig(unsigned int threadId)
{
    if (isEnding) return;
    systemConfig.remove(threadId);
    projectConfig.remove(threadId);
}

void permitNullReturn(bool permit)
{
    nullPermitted.store(permit, std::memory_order_relaxed);
}

TempPermitNull::TempPermitNull()
{
    permitNullReturn(true);
}

TempPermitNull::~TempPermitNull()
{
    permitNullReturn(false);
}

TempPermitNull& TempPermitNull::operator=(const TempPermitNull& other) = default;

} // namespace quorconfig
