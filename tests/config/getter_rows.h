#pragma once

#include "config_fixture.h"

#include <optional>

/// What a getter takes for an answer.
enum class Takes { Text, EmptyToo, Anything };

/// What a getter gives without an answer.
enum class Gives { Null, Installation, Project, ProjectFolder, Skey, BareName, TheName };

/// What the message of a getter says of the module.
enum class Says { Nothing, Function, Module, Number };

/// A getter of a text, as the host sees it.
struct Getter {
    using Ask = std::function<const char*(QuorAuth::Module module, const char* name)>;
    using AskByText = std::function<const char*(const char* module, const char* name)>;

    std::string name;
    std::string function; ///< of the script
    /// What the script gets: m the module's name, n the name asked with, f "a file", 0 nil, 7 the number 7.
    std::string arguments;
    Ask ask;
    AskByText askByText; ///< the same with the module as a text; not every getter has it
    Takes takes = Takes::Text;
    Says says = Says::Nothing;
    std::string messageFunction; ///< the function that the message names
    Gives gives = Gives::Null;
    std::string file;
    bool mayBeMissing = false; ///< the function; nothing is reported then

    Getter(const char* getter, const char* scriptFunction, const char* itsArguments, Ask asking)
        : name(getter), function(scriptFunction), arguments(itsArguments), ask(std::move(asking))
    {
    }
    Getter& taking(Takes answers)
    {
        takes = answers;
        return *this;
    }
    Getter& saying(Says what, const char* functionNamed)
    {
        says = what;
        messageFunction = functionNamed;
        return *this;
    }
    Getter& giving(Gives what, const char* fileName = "")
    {
        gives = what;
        file = fileName;
        return *this;
    }
    Getter& optional()
    {
        mayBeMissing = true;
        return *this;
    }

    bool isOfSystemScript() const { return function == "escape_dbkey"; }
    bool hasMessage() const { return says != Says::Nothing; }

    /// The message as it is read.
    std::string message(const std::string& module, int number) const
    {
        const std::string text = complaint + messageFunction;
        if (says == Says::Module) return text + ": " + module;
        return says == Says::Number ? text + ": " + std::to_string(number) : text;
    }

    std::optional<std::string> fallback(const char* nameAsked) const
    {
        switch (gives) {
        case Gives::Null:
            break;
        case Gives::Installation:
            return QuorSystem::quorEnv() + sys::inSystemForm("/" + file);
        case Gives::Project:
            return QuorSystem::getCurrentProjPath() + sys::inSystemForm("/" + file);
        case Gives::ProjectFolder:
            return QuorSystem::getCurrentProjPath();
        case Gives::Skey:
            return QuorSystem::getCurrentProjPath() + sys::inSystemForm(std::string("/skey/") + nameAsked);
        case Gives::BareName:
            return file;
        case Gives::TheName:
            return nameAsked;
        }
        return std::nullopt;
    }

    quorconfig::AnswerOrigin fallbackOrigin() const
    {
        using quorconfig::AnswerOrigin;
        if (gives == Gives::Null) return AnswerOrigin::None;
        return gives == Gives::TheName ? AnswerOrigin::Argument : AnswerOrigin::Fallback;
    }
};

/// Getters with a text and a module overload, a message that names the module, and a fallback.
inline Getter reporting(const char* name, const char* function, const char* (*byText)(const char*),
                        const char* (*byModule)(QuorAuth::Module), Gives gives, const char* file)
{
    Getter getter(name, function, "m",
                  [byModule](QuorAuth::Module module, const char*) { return byModule(module); });
    getter.askByText = [byText](const char* module, const char*) { return byText(module); };
    return getter.saying(Says::Module, function).giving(gives, file);
}

inline Getter reporting(const char* name, const char* function,
                        const char* (*byText)(const char*, const char*),
                        const char* (*byModule)(QuorAuth::Module, const char*), Gives gives, const char* file)
{
    Getter getter(name, function, "mn", byModule);
    getter.askByText = byText;
    return getter.saying(Says::Module, function).giving(gives, file);
}

inline Getter databaseKey(const char* name, const char* (*ask)(QuorAuth::Module), const char* file)
{
    return Getter(name, name, "m0", [ask](QuorAuth::Module module, const char*) { return ask(module); })
        .saying(Says::Module, name)
        .giving(Gives::BareName, file);
}

inline Getter optional(const char* name, const char* (*ask)(QuorAuth::Module), Gives gives, const char* file)
{
    return Getter(name, name, "m", [ask](QuorAuth::Module module, const char*) { return ask(module); })
        .optional()
        .giving(gives, file);
}

/// All getters of texts.
inline std::vector<Getter> allGetters()
{
    using namespace quorconfig;
    using QuorAuth::Module;
    constexpr Gives installation = Gives::Installation;
    constexpr Gives project = Gives::Project;
    // clang-format off
    return {
        reporting("getModelingXml", "getModelingXml", getModelingXml, getModelingXml, installation, "sys/modeling.xml"),
        reporting("getModelingXml_meta", "getModelingXml_meta", getModelingXml_meta, getModelingXml_meta, installation, "sys/modeling.xml"),
        reporting("getPropertyClass", "getPropertyClass", getPropertyClass, getPropertyClass, installation, "sys/propertyClass.xml"),
        reporting("getProjectStan", "getProjectStan", getProjectStan, getProjectStan, project, "quorStandard.sqlite"),
        reporting("getProjectSpec", "getProjectSpec", getProjectSpec, getProjectSpec, project, "projectSpec.quor"),
        reporting("getProjectAttr", "getProjectAttr", getProjectAttr, getProjectAttr, project, "projectAttr.quor"),
        reporting("getProjectSupport", "getProjectSupport", getProjectSupport, getProjectSupport, project, "projectSupport.quor"),
        reporting("getProjectGlib", "getProjectGlib", getProjectGlib, getProjectGlib, project, "projectGlib.quor"),
        reporting("getProjectSyscommon", "getProjectSyscommon", getProjectSyscommon, getProjectSyscommon, project, "sysCommon.quor"),
        reporting("getProjectSysname", "getProjectSysname", getProjectSysname, getProjectSysname, project, "sysNaming.quor"),
        reporting("getProjectInsert", "getProjectSysInsert", getProjectInsert, getProjectInsert, Gives::Null, ""),
        reporting("getProjectTooltip", "getProjectTooltip", getProjectTooltip, getProjectTooltip, project, "sys/quorToolTip.lua"),
        reporting("getProjectSkeyPath", "getProjectSkey", getProjectSkeyPath, getProjectSkeyPath, Gives::Skey, ""),
        reporting("getProjectStanpart", "getProjectStanpart", getProjectStanpart, getProjectStanpart, project, "projectStanpart.quor"),

        Getter("getProject_general", "ownFunction", "mn",
               [](Module m, const char* n) { return getProject_general("ownFunction", "own.file", m, n); })
            .saying(Says::Module, "ownFunction").giving(Gives::BareName, "own.file"),
        databaseKey("getProjectStan_dbkey", getProjectStan_dbkey, "quorStandard.sqlite"),
        databaseKey("getProjectSpec_dbkey", [](Module m) { return getProjectSpec_dbkey(m, "ignored"); }, "projectSpec.quor"),
        databaseKey("getProjectAttr_dbkey", getProjectAttr_dbkey, "projectAttr.quor"),
        databaseKey("getProjectSupport_dbkey", getProjectSupport_dbkey, "projectSupport.quor"),
        databaseKey("getProjectGlib_dbkey", getProjectGlib_dbkey, "projectGlib.quor"),
        databaseKey("getProjectSyscommon_dbkey", getProjectSyscommon_dbkey, "sysCommon.quor"),
        databaseKey("getProjectSysname_dbkey", getProjectSysname_dbkey, "sysNaming.quor"),
        databaseKey("getProjectStanpart_dbkey", getProjectStanpart_dbkey, "projectStanpart.quor"),

        Getter("getProjectSkeyPath_r", "getProjectSkey_r", "mn", getProjectSkeyPath_r)
            .saying(Says::Number, "getProjectSkey"),
        Getter("getProjectPath", "getProjectPath", "mnf", [](Module m, const char* n) { return getProjectPath(m, n, "a file"); })
            .saying(Says::Number, "getProjectPath").giving(project, "a file"),
        Getter("getProjectUserDbPath", "getProjectUser", "", [](Module, const char*) { return getProjectUserDbPath(); })
            .taking(Takes::EmptyToo).saying(Says::Function, "getProjectUser").giving(Gives::ProjectFolder),
        Getter("getProjectTemplatePath", "getProjectTemplate", "m",
               [](Module m, const char*) { return getProjectTemplatePath(m, nullptr); })
            .taking(Takes::EmptyToo).giving(Gives::ProjectFolder),
        Getter("getObjectSkeyBasicPath", "getObjectSkeyBasicPath", "7",
               [](Module, const char*) { return getObjectSkeyBasicPath(7); })
            .taking(Takes::Anything),

        optional("getQuorInt2Str", getQuorInt2Str, installation, "sys/quorInt2Str.lua"),
        optional("getQuorInt2Str_key", getQuorInt2Str_key, Gives::BareName, "sys:quorint2str"),
        optional("getProjDatabaseClass", [](Module m) { return getProjDatabaseClass(m, nullptr); }, installation, "sys/projDatabaseClass.lua"),
        Getter("getDigitalFile", "getDigitalFile", "mn", getDigitalFile).optional(),
        optional("isDigitalStan", isDigitalStan, Gives::Null, "").taking(Takes::Anything),

        Getter("escape_dbkey", "escape_dbkey", "n", [](Module, const char* n) { return escape_dbkey(n); })
            .giving(Gives::TheName),
    };
    // clang-format on
}
