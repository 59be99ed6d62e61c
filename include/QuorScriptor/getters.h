#pragma once

#include <BaseObj/KxDb.h>
#include <QuorCommon/QuorAuth.h>
#include <QuorScriptor/Export.h>

/// Where a project's resources lie. Each getter calls the function of the configuration script that its line
/// names, with the module's name and the texts that it is given (null arrives as nil), and returns the
/// answer.
///
/// The result belongs to whoever made it: an answer to the script's state, where it may be collected by the
/// next call; a path to the path service; a bare file name to the library, for ever. Copy it at once. A
/// script's function that is missing, where nothing else is said, or that fails is reported by the binding
/// layer and counts as no answer. Nothing throws, and no Lua error leaves.
///
/// They run on the calling thread's state (see configstate.h), after `initConfig` has made it ready; two of
/// them, on that of the system script, after `initSysConfig`.
namespace quorconfig {

/// Without a text in the answer, null or empty: null when null is permitted (`permitNullReturn`); else the
/// message "系统配置出错，请联系开发商，FUNCTION: MODULE" is shown, and the result is the fallback.
///
/// The module is given by name, or by its number, whose name is then used.
///
/// "getModelingXml"; "sys\modeling.xml" in the installation
QUORSCRIPTOR_API const char* getModelingXml(const char* module);
QUORSCRIPTOR_API const char* getModelingXml(QuorAuth::Module module);
/// "getModelingXml_meta"; the same file
QUORSCRIPTOR_API const char* getModelingXml_meta(const char* module);
QUORSCRIPTOR_API const char* getModelingXml_meta(QuorAuth::Module module);
/// "getPropertyClass"; "sys\propertyClass.xml" in the installation
QUORSCRIPTOR_API const char* getPropertyClass(const char* module);
QUORSCRIPTOR_API const char* getPropertyClass(QuorAuth::Module module);
/// "getProjectStan"; "quorStandard.sqlite" in the project
QUORSCRIPTOR_API const char* getProjectStan(const char* module);
QUORSCRIPTOR_API const char* getProjectStan(QuorAuth::Module module);
/// "getProjectSpec"; "projectSpec.quor" in the project
QUORSCRIPTOR_API const char* getProjectSpec(const char* module, const char* name);
QUORSCRIPTOR_API const char* getProjectSpec(QuorAuth::Module module, const char* name);
/// "getProjectAttr"; "projectAttr.quor" in the project
QUORSCRIPTOR_API const char* getProjectAttr(const char* module, const char* name);
QUORSCRIPTOR_API const char* getProjectAttr(QuorAuth::Module module, const char* name);
/// "getProjectSupport"; "projectSupport.quor" in the project
QUORSCRIPTOR_API const char* getProjectSupport(const char* module, const char* name);
QUORSCRIPTOR_API const char* getProjectSupport(QuorAuth::Module module, const char* name);
/// "getProjectGlib"; "projectGlib.quor" in the project
QUORSCRIPTOR_API const char* getProjectGlib(const char* module, const char* name);
QUORSCRIPTOR_API const char* getProjectGlib(QuorAuth::Module module, const char* name);
/// "getProjectSyscommon"; "sysCommon.quor" in the project
QUORSCRIPTOR_API const char* getProjectSyscommon(const char* module, const char* name);
QUORSCRIPTOR_API const char* getProjectSyscommon(QuorAuth::Module module, const char* name);
/// "getProjectSysname"; "sysNaming.quor" in the project
QUORSCRIPTOR_API const char* getProjectSysname(const char* module);
QUORSCRIPTOR_API const char* getProjectSysname(QuorAuth::Module module);
/// "getProjectSysInsert"; no fallback: null
QUORSCRIPTOR_API const char* getProjectInsert(const char* module, const char* name);
QUORSCRIPTOR_API const char* getProjectInsert(QuorAuth::Module module, const char* name);
/// "getProjectTooltip"; "sys\quorToolTip.lua" in the project
QUORSCRIPTOR_API const char* getProjectTooltip(const char* module);
QUORSCRIPTOR_API const char* getProjectTooltip(QuorAuth::Module module);
/// "getProjectSkey"; the name in the project's folder "skey"
QUORSCRIPTOR_API const char* getProjectSkeyPath(const char* module, const char* name);
QUORSCRIPTOR_API const char* getProjectSkeyPath(QuorAuth::Module module, const char* name);
/// "getProjectStanpart"; "projectStanpart.quor" in the project
QUORSCRIPTOR_API const char* getProjectStanpart(const char* module);
QUORSCRIPTOR_API const char* getProjectStanpart(QuorAuth::Module module);

/// A database's key: the answer of `scriptFunc`(module's name, `arg`). For a module without a name the result
/// is `defaultFile` itself, and the script is not asked. Without a text in the answer: null when null is
/// permitted; else the message as above is shown, with the module's name, and the result is `defaultFile`, a
/// bare name and no path. A null or empty `scriptFunc` gives null.
QUORSCRIPTOR_API const char* getProject_general(const char* scriptFunc, const char* defaultFile,
                                                QuorAuth::Module module, const char* arg);
/// `getProject_general` with the script's function of the getter's own name and a null `arg`.
/// "quorStandard.sqlite"
QUORSCRIPTOR_API const char* getProjectStan_dbkey(QuorAuth::Module module);
/// "projectSpec.quor"; the name is ignored
QUORSCRIPTOR_API const char* getProjectSpec_dbkey(QuorAuth::Module module, const char* name);
/// "projectAttr.quor"
QUORSCRIPTOR_API const char* getProjectAttr_dbkey(QuorAuth::Module module);
/// "projectSupport.quor"
QUORSCRIPTOR_API const char* getProjectSupport_dbkey(QuorAuth::Module module);
/// "projectGlib.quor"
QUORSCRIPTOR_API const char* getProjectGlib_dbkey(QuorAuth::Module module);
/// "sysCommon.quor"
QUORSCRIPTOR_API const char* getProjectSyscommon_dbkey(QuorAuth::Module module);
/// "sysNaming.quor"
QUORSCRIPTOR_API const char* getProjectSysname_dbkey(QuorAuth::Module module);
/// "projectStanpart.quor"
QUORSCRIPTOR_API const char* getProjectStanpart_dbkey(QuorAuth::Module module);

/// "getProjectSkey_r". Without a text in the answer: null, after a message that names "getProjectSkey" and
/// the module's number, unless null is permitted.
QUORSCRIPTOR_API const char* getProjectSkeyPath_r(QuorAuth::Module module, const char* name);

/// "getProjectPath"(module, `part`, `fileName`). Without a text in the answer: null when null is permitted;
/// else a message with the module's number is shown, and the result is the path of `fileName` in the project.
QUORSCRIPTOR_API const char* getProjectPath(QuorAuth::Module module, const char* part, const char* fileName);

/// "getProjectUser"(). An empty answer is an answer. Without one: null when null is permitted; else a message
/// is shown, and the result is the project's folder.
QUORSCRIPTOR_API const char* getProjectUserDbPath();

/// "getProjectTemplate"(module), where an empty answer is an answer, else the project's folder; and, unless
/// `sub` is null, `sub` behind it, parted by a backslash that is added where `sub` has none. No message. The
/// text is the process's own: the next call on any thread overwrites it. Null when memory runs out.
QUORSCRIPTOR_API const char* getProjectTemplatePath(QuorAuth::Module module, const char* sub);
/// For `kxcom::getCurrentModule()`.
QUORSCRIPTOR_API const char* getProjectTemplatePath(const char* sub);

/// "getObjectSkeyBasicPath"(`kind`), as it is. No message.
QUORSCRIPTOR_API const char* getObjectSkeyBasicPath(int kind);

// The script may leave out the functions that follow: nothing is reported then, and no message is shown.

/// "getQuorInt2Str"; without a text in the answer, "sys\quorInt2Str.lua" in the installation
QUORSCRIPTOR_API const char* getQuorInt2Str(QuorAuth::Module module);
/// "getQuorInt2Str_key"; without a text in the answer, "sys:quorint2str" in a text that is the process's own
QUORSCRIPTOR_API const char* getQuorInt2Str_key(QuorAuth::Module module);
/// `given` itself, unless it is null or empty; else "getProjDatabaseClass"; without a text in the answer,
/// "sys\projDatabaseClass.lua" in the installation
QUORSCRIPTOR_API const char* getProjDatabaseClass(QuorAuth::Module module, const char* given);
/// "getDigitalFile"; null without a text in the answer, and for a null or empty name
QUORSCRIPTOR_API const char* getDigitalFile(QuorAuth::Module module, const char* name);
/// "isDigitalStan", whose answer is a text; as it is
QUORSCRIPTOR_API const char* isDigitalStan(QuorAuth::Module module);
/// "isPropertyClass_full", true or false; false without an answer
QUORSCRIPTOR_API bool isPropertyClass_full(QuorAuth::Module module);

/// "getProjectDbSeed"(`dbName`, module). True, with the low 16 bits of the answer in `seed`, when that is 0
/// or more as an integer of 32 bits: a number is cut to it, a boolean is 0 or 1, anything else is no answer.
/// Else false, `seed` untouched. A null `dbName` is false at once. A missing function is not reported.
QUORSCRIPTOR_API bool getProjectDbSeed(const char* dbName, QuorAuth::Module module, short& seed);
/// The system script's "escape_dbkey"(`key`); without a text in the answer, `key` itself
QUORSCRIPTOR_API const char* escape_dbkey(const char* key);
/// The system script's "set_project_dbengine"(the engine's number): its answer, true or false
QUORSCRIPTOR_API bool set_escape_dbengine(KxDb::DbType type);

/// Where the result of the calling thread's last getter came from. This library's own addition, for those who
/// look into a configuration.
enum class AnswerOrigin {
    None,     ///< there is none: null, or false where the script has no such function
    Script,   ///< the script's answer
    Fallback, ///< the getter's own
    Argument, ///< what the caller gave
};
QUORSCRIPTOR_API AnswerOrigin lastAnswerOrigin();

} // namespace quorconfig
