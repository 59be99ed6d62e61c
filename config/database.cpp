// Databases: their keys, the seed of their numbers, and the engine.

#include "Answer.h"
#include "Guard.h"
#include "Values.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/luacall.h>
#include <string>

namespace quorconfig {

const char* getProject_general(const char* scriptFunc, const char* defaultFile, QuorAuth::Module module,
                               const char* arg)
{
    if (!scriptFunc || !*scriptFunc) return from(AnswerOrigin::None, nullptr);
    const char* name = kxcom::getModuleName(module);
    if (!name || !*name) return from(AnswerOrigin::Fallback, defaultFile);
    const char* answer = askProject<const char*>(scriptFunc, name, arg);
    if (isUsable(answer)) return from(AnswerOrigin::Script, answer);
    if (isNullPermitted()) return from(AnswerOrigin::None, nullptr);
    quorlua::values::withoutThrowing([scriptFunc, name] {
        const char* format = quorlua::messages::translated(quorlua::messages::configuration);
        kxcom::errorMsg(kxcom::printMsg(format, scriptFunc, name).c_str());
        return true;
    });
    return from(AnswerOrigin::Fallback, defaultFile);
}

const char* getProjectStan_dbkey(QuorAuth::Module module)
{
    return getProject_general("getProjectStan_dbkey", "quorStandard.sqlite", module, nullptr);
}

const char* getProjectSpec_dbkey(QuorAuth::Module module, const char*)
{
    return getProject_general("getProjectSpec_dbkey", "projectSpec.quor", module, nullptr);
}

const char* getProjectAttr_dbkey(QuorAuth::Module module)
{
    return getProject_general("getProjectAttr_dbkey", "projectAttr.quor", module, nullptr);
}

const char* getProjectSupport_dbkey(QuorAuth::Module module)
{
    return getProject_general("getProjectSupport_dbkey", "projectSupport.quor", module, nullptr);
}

const char* getProjectGlib_dbkey(QuorAuth::Module module)
{
    return getProject_general("getProjectGlib_dbkey", "projectGlib.quor", module, nullptr);
}

const char* getProjectSyscommon_dbkey(QuorAuth::Module module)
{
    return getProject_general("getProjectSyscommon_dbkey", "sysCommon.quor", module, nullptr);
}

const char* getProjectSysname_dbkey(QuorAuth::Module module)
{
    return getProject_general("getProjectSysname_dbkey", "sysNaming.quor", module, nullptr);
}

const char* getProjectStanpart_dbkey(QuorAuth::Module module)
{
    return getProject_general("getProjectStanpart_dbkey", "projectStanpart.quor", module, nullptr);
}

bool getProjectDbSeed(const char* dbName, QuorAuth::Module module, short& seed)
{
    if (!dbName) return from(AnswerOrigin::None, false);
    lua_State* L = projectState();
    if (!L) return from(AnswerOrigin::None, false);
    const char* name = kxcom::getModuleName(module);
    const Question question;
    if (question.isTooDeep(L, "getProjectDbSeed")) return from(AnswerOrigin::None, false);
    int answer = -1;
    bool answered = false;
    // In a frame of its own: one that a script has filled with arguments would make the call raise.
    quorlua::guard::run(L, [dbName, name, &answer, &answered](lua_State* frame) {
        answered = quorlua::callLuaFunc(frame, "getProjectDbSeed", "ss>i", dbName, name, &answer);
        return 0;
    });
    if (!answered || answer < 0) return from(AnswerOrigin::None, false);
    seed = static_cast<short>(answer & 0xFFFF);
    return from(AnswerOrigin::Script, true);
}

const char* escape_dbkey(const char* key)
{
    const char* answer = callConfigFunc<const char*>(getSysConfigLua(), "escape_dbkey", key);
    return isUsable(answer) ? from(AnswerOrigin::Script, answer) : from(AnswerOrigin::Argument, key);
}

bool set_escape_dbengine(KxDb::DbType type)
{
    constexpr const char* function = "set_project_dbengine";
    lua_State* L = getSysConfigLua();
    const bool answer = callConfigFunc<bool>(L, function, static_cast<int>(type));
    const bool isThere = isDefined(L, function);
    return from(isThere || answer ? AnswerOrigin::Script : AnswerOrigin::None, answer);
}

} // namespace quorconfig
