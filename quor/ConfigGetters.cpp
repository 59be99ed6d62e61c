#include "ConfigGetters.h"

#include "Failure.h"

#include <QuorScriptor/getters.h>
#include <algorithm>
#include <fmt/format.h>
#include <string_view>
#include <utility>

namespace quor {
namespace {

using QuorAuth::Module;
using Option = GetterOption;
using Arguments = GetterArguments;

GetterValue valueOf(const char* text)
{
    if (!text) return {};
    return std::string(text);
}

Getter ofModule(const char* name, const char* (*get)(Module), GetterText text)
{
    const auto ask = [get](const Arguments& given) { return valueOf(get(given.module())); };
    return {name, ConfigScript::Project, text, {Option::Module}, {}, ask};
}

Getter path(const char* name, const char* (*get)(Module))
{
    return ofModule(name, get, GetterText::Path);
}

Getter path(const char* name, const char* (*get)(Module, const char*))
{
    const auto ask = [get](const Arguments& given) {
        return valueOf(get(given.module(), given.text(Option::Name)));
    };
    return {name, ConfigScript::Project, GetterText::Path, {Option::Module, Option::Name}, {}, ask};
}

Getter word(const char* name, const char* (*get)(Module))
{
    return ofModule(name, get, GetterText::Other);
}

std::vector<Getter> makeGetters()
{
    using namespace quorconfig;
    using enum GetterText;
    constexpr ConfigScript project = ConfigScript::Project;
    constexpr ConfigScript system = ConfigScript::System;
    return {
        path("getModelingXml", getModelingXml),
        path("getModelingXml_meta", getModelingXml_meta),
        path("getPropertyClass", getPropertyClass),
        {"isPropertyClass_full",
         project,
         Other,
         {Option::Module},
         {},
         [](const Arguments& given) { return isPropertyClass_full(given.module()); }},
        path("getProjectStan", getProjectStan),
        path("getProjectSpec", getProjectSpec),
        path("getProjectAttr", getProjectAttr),
        path("getProjectSupport", getProjectSupport),
        path("getProjectGlib", getProjectGlib),
        path("getProjectSyscommon", getProjectSyscommon),
        path("getProjectSysname", getProjectSysname),
        path("getProjectInsert", getProjectInsert),
        path("getProjectTooltip", getProjectTooltip),
        path("getProjectSkeyPath", getProjectSkeyPath),
        path("getProjectSkeyPath_r", getProjectSkeyPath_r),
        path("getProjectStanpart", getProjectStanpart),
        {"getProjectPath",
         project,
         Path,
         {Option::Module, Option::Part, Option::File},
         {},
         [](const Arguments& given) {
             return valueOf(
                 getProjectPath(given.module(), given.text(Option::Part), given.text(Option::File)));
         }},
        {"getProjectTemplatePath",
         project,
         Path,
         {},
         {Option::Module, Option::Sub},
         [](const Arguments& given) {
             const char* sub = given.text(Option::Sub);
             return valueOf(given.has(Option::Module) ? getProjectTemplatePath(given.module(), sub)
                                                      : getProjectTemplatePath(sub));
         }},
        path("getQuorInt2Str", getQuorInt2Str),
        word("getQuorInt2Str_key", getQuorInt2Str_key),
        {"getProjDatabaseClass",
         project,
         Path,
         {Option::Module},
         {Option::Given},
         [](const Arguments& given) {
             return valueOf(getProjDatabaseClass(given.module(), given.text(Option::Given)));
         }},
        path("getDigitalFile", getDigitalFile),
        word("isDigitalStan", isDigitalStan),
        word("getProjectStan_dbkey", getProjectStan_dbkey),
        {"getProjectSpec_dbkey",
         project,
         Other,
         {Option::Module},
         {Option::Name},
         [](const Arguments& given) {
             return valueOf(getProjectSpec_dbkey(given.module(), given.text(Option::Name)));
         }},
        word("getProjectAttr_dbkey", getProjectAttr_dbkey),
        word("getProjectSupport_dbkey", getProjectSupport_dbkey),
        word("getProjectGlib_dbkey", getProjectGlib_dbkey),
        word("getProjectSyscommon_dbkey", getProjectSyscommon_dbkey),
        word("getProjectSysname_dbkey", getProjectSysname_dbkey),
        word("getProjectStanpart_dbkey", getProjectStanpart_dbkey),
        {"getProject_general",
         project,
         Other,
         {Option::Module, Option::Function, Option::DefaultFile},
         {Option::Arg},
         [](const Arguments& given) {
             return valueOf(getProject_general(given.text(Option::Function), given.text(Option::DefaultFile),
                                               given.module(), given.text(Option::Arg)));
         }},
        {"getProjectDbSeed",
         project,
         Other,
         {Option::Module, Option::DbName},
         {},
         [](const Arguments& given) -> GetterValue {
             short seed = 0;
             if (!getProjectDbSeed(given.text(Option::DbName), given.module(), seed)) return {};
             return int{seed};
         }},
        {"getProjectUserDbPath",
         project,
         Path,
         {},
         {},
         [](const Arguments&) { return valueOf(getProjectUserDbPath()); }},
        {"getObjectSkeyBasicPath",
         project,
         Path,
         {Option::Kind},
         {},
         [](const Arguments& given) { return valueOf(getObjectSkeyBasicPath(given.kind())); }},
        {"set_escape_dbengine",
         system,
         Other,
         {Option::Engine},
         {},
         [](const Arguments& given) { return set_escape_dbengine(given.engine()); }},
        {"escape_dbkey",
         system,
         Other,
         {Option::Key},
         {},
         [](const Arguments& given) { return valueOf(escape_dbkey(given.text(Option::Key))); }},
    };
}

/// "getProjectSpec" is also called "projectSpec" and "ProjectSpec".
bool isCalled(const Getter& getter, std::string_view name)
{
    constexpr std::string_view verb = "get";
    if (getter.name == name) return true;
    if (!getter.name.starts_with(verb) || name.empty()) return false;
    const std::string_view rest = std::string_view(getter.name).substr(verb.size());
    const char initial = rest.front();
    const bool sameInitial = name.front() == initial || name.front() == initial - 'A' + 'a';
    return sameInitial && name.substr(1) == rest.substr(1);
}

bool isIn(const std::vector<Option>& options, Option option)
{
    return std::find(options.begin(), options.end(), option) != options.end();
}

/// What a getter takes: "--module NAME [--sub TEXT]".
std::string optionsOf(const Getter& getter)
{
    std::vector<std::string> list;
    for (const Option option : getter.needs)
        list.push_back(written(option));
    for (const Option option : getter.mayTake)
        list.push_back(fmt::format("[{}]", written(option)));
    return fmt::format("{}", fmt::join(list, " "));
}

std::string whatItTakes(const Getter& getter)
{
    const std::string options = optionsOf(getter);
    return options.empty() ? "it takes no option of its own" : "it takes " + options;
}

} // namespace

bool Getter::takes(GetterOption option) const
{
    return isIn(needs, option) || isIn(mayTake, option);
}

const std::vector<Getter>& allGetters()
{
    static const std::vector<Getter> getters = makeGetters();
    return getters;
}

const Getter& findGetter(const std::string& name)
{
    for (const Getter& getter : allGetters()) {
        if (isCalled(getter, name)) return getter;
    }
    std::string list;
    for (const Getter& getter : allGetters())
        list += "\n  " + getter.name;
    throw Failure(WrongUsage, fmt::format("{}: there is no such getter; one of these, with or without its "
                                          "\"get\", is expected:{}",
                                          name, list));
}

std::string listOfGetters()
{
    std::string list;
    for (const Getter& getter : allGetters()) {
        const std::string options = optionsOf(getter);
        list += options.empty() ? fmt::format("  {}\n", getter.name)
                                : fmt::format("  {:25} {}\n", getter.name, options);
    }
    return list;
}

void checkOptions(const Getter& getter, const GivenOptions& given)
{
    for (const Option option : getter.needs) {
        if (!given.contains(option))
            throw Failure(WrongUsage, fmt::format("{}: {} is expected; {}", getter.name, written(option),
                                                  whatItTakes(getter)));
    }
    for (const auto& [option, value] : given) {
        if (!getter.takes(option))
            throw Failure(WrongUsage, fmt::format("{}: {} is not for this getter; {}", getter.name,
                                                  written(option), whatItTakes(getter)));
    }
}

} // namespace quor
