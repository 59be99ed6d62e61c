// The getters with rules of their own, and those whose function the script may leave out.

#include "Answer.h"
#include "Values.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <string>

namespace quorconfig {
namespace {

namespace messages = quorlua::messages;

constexpr const char* integerTextsKey = "sys:quorint2str";

/// Asks a function that the script may leave out: nothing is reported then.
template<class... Arguments>
const char* askIfDefined(const char* function, Arguments... arguments)
{
    lua_State* L = projectState();
    if (!isDefined(L, function)) return nullptr;
    return callConfigFunc<const char*>(L, function, arguments...);
}

/// The fallback is made after the question: the path service keeps its texts for a few calls only, and a
/// script may make them.
template<class Fallback>
const char* askIfDefinedOr(const char* function, QuorAuth::Module module, Fallback fallback)
{
    const char* answer = askIfDefined(function, kxcom::getModuleName(module));
    return isUsable(answer) ? from(AnswerOrigin::Script, answer) : from(AnswerOrigin::Fallback, fallback());
}

} // namespace

const char* getProjectSkeyPath_r(QuorAuth::Module module, const char* name)
{
    const char* answer = askProject<const char*>("getProjectSkey_r", kxcom::getModuleName(module), name);
    if (isUsable(answer)) return from(AnswerOrigin::Script, answer);
    // The message names the other function, which administrators know.
    complain(messages::configurationOf<"getProjectSkey">.text(), module);
    return from(AnswerOrigin::None, nullptr);
}

const char* getProjectPath(QuorAuth::Module module, const char* part, const char* fileName)
{
    const char* answer =
        askProject<const char*>("getProjectPath", kxcom::getModuleName(module), part, fileName);
    if (isUsable(answer)) return from(AnswerOrigin::Script, answer);
    if (!complain(messages::configurationOf<"getProjectPath">.text(), module))
        return from(AnswerOrigin::None, nullptr);
    return from(AnswerOrigin::Fallback, QuorSystem::getProjectFileFullPath(fileName));
}

const char* getProjectUserDbPath()
{
    if (const char* answer = askProject<const char*>("getProjectUser"))
        return from(AnswerOrigin::Script, answer);
    if (!complain(messages::configurationOfUser.text())) return from(AnswerOrigin::None, nullptr);
    return from(AnswerOrigin::Fallback, QuorSystem::getCurrentProjPath());
}

const char* getProjectTemplatePath(QuorAuth::Module module, const char* sub)
{
    const char* answer = askProject<const char*>("getProjectTemplate", kxcom::getModuleName(module));
    const char* kept = nullptr;
    quorlua::values::withoutThrowing([&] {
        // Never destroyed: the host may hold the text while the process ends.
        static std::string& buffer = *new std::string;
        std::string path = answer ? answer : QuorSystem::getCurrentProjPath();
        if (sub) {
            if (*sub != '\\') path += '\\';
            path += sub;
        }
        buffer.swap(path); // `sub` may be what the buffer held
        kept = buffer.c_str();
        return true;
    });
    return from(answer ? AnswerOrigin::Script : AnswerOrigin::Fallback, kept);
}

const char* getProjectTemplatePath(const char* sub)
{
    return getProjectTemplatePath(kxcom::getCurrentModule(), sub);
}

const char* getObjectSkeyBasicPath(int kind)
{
    return from(AnswerOrigin::Script, askProject<const char*>("getObjectSkeyBasicPath", kind));
}

const char* getQuorInt2Str(QuorAuth::Module module)
{
    return askIfDefinedOr("getQuorInt2Str", module,
                          [] { return QuorSystem::getFullQuorName("sys\\quorInt2Str.lua"); });
}

const char* getQuorInt2Str_key(QuorAuth::Module module)
{
    const char* key = integerTextsKey;
    quorlua::values::withoutThrowing([&key] {
        // Never destroyed: the host may hold the text while the process ends.
        static std::string& buffer = *new std::string;
        buffer = integerTextsKey;
        key = buffer.c_str();
        return true;
    });
    return askIfDefinedOr("getQuorInt2Str_key", module, [key] { return key; });
}

const char* getProjDatabaseClass(QuorAuth::Module module, const char* given)
{
    if (isUsable(given)) return from(AnswerOrigin::Argument, given);
    return askIfDefinedOr("getProjDatabaseClass", module,
                          [] { return QuorSystem::getFullQuorName("sys\\projDatabaseClass.lua"); });
}

const char* getDigitalFile(QuorAuth::Module module, const char* name)
{
    if (!isUsable(name)) return from(AnswerOrigin::None, nullptr);
    const char* answer = askIfDefined("getDigitalFile", kxcom::getModuleName(module), name);
    return from(AnswerOrigin::Script, isUsable(answer) ? answer : nullptr);
}

const char* isDigitalStan(QuorAuth::Module module)
{
    return from(AnswerOrigin::Script, askIfDefined("isDigitalStan", kxcom::getModuleName(module)));
}

bool isPropertyClass_full(QuorAuth::Module module)
{
    constexpr const char* function = "isPropertyClass_full";
    lua_State* L = projectState();
    if (!isDefined(L, function)) return from(AnswerOrigin::None, false);
    return from(AnswerOrigin::Script, callConfigFunc<bool>(L, function, kxcom::getModuleName(module)));
}

} // namespace quorconfig
