// The getters that report a script without an answer, as rows.

#include "Answer.h"

#include <QuorCommon/QuorSystem.h>

namespace quorconfig {
namespace {

namespace messages = quorlua::messages;

/// Where a getter's fallback lies.
enum class Place { Nowhere, Installation, Project, ProjectSkeyFolder };

struct ReportingGetter {
    const char* function; ///< of the script
    const char* message;  ///< the module fills its placeholder
    Place place;
    const char* file; ///< null where the name asked for is the file's
};

template<messages::FunctionName function>
consteval ReportingGetter reporting(Place place, const char* file)
{
    return {function.text.data(), messages::configurationOf<function>.text(), place, file};
}

constexpr const char* modelingFile = "\\sys\\modeling.xml";

// clang-format off
constexpr ReportingGetter modelingXml      = reporting<"getModelingXml">(Place::Installation, modelingFile);
/// The same file, although its records are others.
constexpr ReportingGetter modelingXmlMeta  = reporting<"getModelingXml_meta">(Place::Installation, modelingFile);
constexpr ReportingGetter propertyClass    = reporting<"getPropertyClass">(Place::Installation, "\\sys\\propertyClass.xml");
constexpr ReportingGetter projectStan      = reporting<"getProjectStan">(Place::Project, "quorStandard.sqlite");
constexpr ReportingGetter projectSpec      = reporting<"getProjectSpec">(Place::Project, "projectSpec.quor");
constexpr ReportingGetter projectAttr      = reporting<"getProjectAttr">(Place::Project, "projectAttr.quor");
constexpr ReportingGetter projectSupport   = reporting<"getProjectSupport">(Place::Project, "projectSupport.quor");
constexpr ReportingGetter projectGlib      = reporting<"getProjectGlib">(Place::Project, "projectGlib.quor");
constexpr ReportingGetter projectSyscommon = reporting<"getProjectSyscommon">(Place::Project, "sysCommon.quor");
constexpr ReportingGetter projectSysname   = reporting<"getProjectSysname">(Place::Project, "sysNaming.quor");
constexpr ReportingGetter projectInsert    = reporting<"getProjectSysInsert">(Place::Nowhere, nullptr);
constexpr ReportingGetter projectTooltip   = reporting<"getProjectTooltip">(Place::Project, "sys\\quorToolTip.lua");
constexpr ReportingGetter projectSkey      = reporting<"getProjectSkey">(Place::ProjectSkeyFolder, nullptr);
constexpr ReportingGetter projectStanpart  = reporting<"getProjectStanpart">(Place::Project, "projectStanpart.quor");
// clang-format on

const char* fallback(const ReportingGetter& getter, const char* name)
{
    switch (getter.place) {
    case Place::Nowhere:
        break;
    case Place::Installation:
        return QuorSystem::getFullQuorName(getter.file);
    case Place::Project:
        return QuorSystem::getProjectFileFullPath(getter.file);
    case Place::ProjectSkeyFolder:
        return QuorSystem::getProjectFileFullPath("skey", name);
    }
    return nullptr;
}

/// The script's answer as it is usable, else what is left without one.
const char* settled(const ReportingGetter& getter, const char* answer, const char* module, const char* name)
{
    if (isUsable(answer)) return from(AnswerOrigin::Script, answer);
    if (!complain(getter.message, module)) return from(AnswerOrigin::None, nullptr);
    return from(AnswerOrigin::Fallback, fallback(getter, name));
}

const char* ask(const ReportingGetter& getter, const char* module)
{
    return settled(getter, askProject<const char*>(getter.function, module), module, nullptr);
}

const char* ask(const ReportingGetter& getter, const char* module, const char* name)
{
    return settled(getter, askProject<const char*>(getter.function, module, name), module, name);
}

} // namespace

const char* getModelingXml(const char* module)
{
    return ask(modelingXml, module);
}

const char* getModelingXml(QuorAuth::Module module)
{
    return getModelingXml(kxcom::getModuleName(module));
}

const char* getModelingXml_meta(const char* module)
{
    return ask(modelingXmlMeta, module);
}

const char* getModelingXml_meta(QuorAuth::Module module)
{
    return getModelingXml_meta(kxcom::getModuleName(module));
}

const char* getPropertyClass(const char* module)
{
    return ask(propertyClass, module);
}

const char* getPropertyClass(QuorAuth::Module module)
{
    return getPropertyClass(kxcom::getModuleName(module));
}

const char* getProjectStan(const char* module)
{
    return ask(projectStan, module);
}

const char* getProjectStan(QuorAuth::Module module)
{
    return getProjectStan(kxcom::getModuleName(module));
}

const char* getProjectSpec(const char* module, const char* name)
{
    return ask(projectSpec, module, name);
}

const char* getProjectSpec(QuorAuth::Module module, const char* name)
{
    return getProjectSpec(kxcom::getModuleName(module), name);
}

const char* getProjectAttr(const char* module, const char* name)
{
    return ask(projectAttr, module, name);
}

const char* getProjectAttr(QuorAuth::Module module, const char* name)
{
    return getProjectAttr(kxcom::getModuleName(module), name);
}

const char* getProjectSupport(const char* module, const char* name)
{
    return ask(projectSupport, module, name);
}

const char* getProjectSupport(QuorAuth::Module module, const char* name)
{
    return getProjectSupport(kxcom::getModuleName(module), name);
}

const char* getProjectGlib(const char* module, const char* name)
{
    return ask(projectGlib, module, name);
}

const char* getProjectGlib(QuorAuth::Module module, const char* name)
{
    return getProjectGlib(kxcom::getModuleName(module), name);
}

const char* getProjectSyscommon(const char* module, const char* name)
{
    return ask(projectSyscommon, module, name);
}

const char* getProjectSyscommon(QuorAuth::Module module, const char* name)
{
    return getProjectSyscommon(kxcom::getModuleName(module), name);
}

const char* getProjectSysname(const char* module)
{
    return ask(projectSysname, module);
}

const char* getProjectSysname(QuorAuth::Module module)
{
    return getProjectSysname(kxcom::getModuleName(module));
}

const char* getProjectInsert(const char* module, const char* name)
{
    return ask(projectInsert, module, name);
}

const char* getProjectInsert(QuorAuth::Module module, const char* name)
{
    return getProjectInsert(kxcom::getModuleName(module), name);
}

const char* getProjectTooltip(const char* module)
{
    return ask(projectTooltip, module);
}

const char* getProjectTooltip(QuorAuth::Module module)
{
    return getProjectTooltip(kxcom::getModuleName(module));
}

const char* getProjectSkeyPath(const char* module, const char* name)
{
    return ask(projectSkey, module, name);
}

const char* getProjectSkeyPath(QuorAuth::Module module, const char* name)
{
    return getProjectSkeyPath(kxcom::getModuleName(module), name);
}

const char* getProjectStanpart(const char* module)
{
    return ask(projectStanpart, module);
}

const char* getProjectStanpart(QuorAuth::Module module)
{
    return getProjectStanpart(kxcom::getModuleName(module));
}

} // namespace quorconfig
