#include "ConfigArguments.h"

#include "Failure.h"
#include "Terminal.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <iterator>

namespace quor {
namespace {

struct OptionRow {
    GetterOption option;
    const char* flag;
    const char* form;
    const char* meaning;
};

constexpr OptionRow optionRows[] = {
    {GetterOption::Module, "--module", "NAME", "The module, as PIPE"},
    {GetterOption::Name, "--name", "TEXT", "The name of what is asked for"},
    {GetterOption::Part, "--part", "TEXT", "The part of the project in which a file lies"},
    {GetterOption::File, "--file", "TEXT", "The file's name"},
    {GetterOption::Sub, "--sub", "TEXT", "What is put behind the path"},
    {GetterOption::Given, "--given", "TEXT", "A name that the caller has already, and then gets back"},
    {GetterOption::Kind, "--kind", "N", "The kind of object, a whole number"},
    {GetterOption::DbName, "--db-name", "TEXT", "The database's name"},
    {GetterOption::Key, "--key", "TEXT", "The database's key"},
    {GetterOption::Engine, "--engine", "sqlite|odbc", "The database engine"},
    {GetterOption::Function, "--function", "NAME", "The script's function, for getProject_general"},
    {GetterOption::DefaultFile, "--default-file", "TEXT", "What that gives without an answer"},
    {GetterOption::Arg, "--arg", "TEXT", "What it gives the function beside the module"},
};

const OptionRow& rowOf(GetterOption option)
{
    return *std::find_if(std::begin(optionRows), std::end(optionRows),
                         [option](const OptionRow& row) { return row.option == option; });
}

[[noreturn]] void refuse(GetterOption option, const std::string& value, const std::string& reason)
{
    throw Failure(WrongUsage, fmt::format("{} {}: {}", rowOf(option).flag, value, reason));
}

QuorAuth::Module moduleOf(const std::string& name)
{
    QuorAuth::Module module = QuorAuth::Module::None;
    if (kxcom::findModule(name.c_str(), module)) return module;
    std::vector<std::string> names;
    for (const QuorAuth::Module known : QuorAuth::allModules)
        names.emplace_back(kxcom::getModuleName(known));
    refuse(GetterOption::Module, name, fmt::format("one of these is expected: {}", fmt::join(names, ", ")));
}

int kindOf(const std::string& text)
{
    int kind = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, kind);
    if (error != std::errc() || stop != end)
        refuse(GetterOption::Kind, text, "a whole number of 32 bits is expected");
    return kind;
}

KxDb::DbType engineOf(const std::string& name)
{
    if (name == "sqlite") return KxDb::DbType::Sqlite;
    if (name == "odbc") return KxDb::DbType::Odbc;
    refuse(GetterOption::Engine, name, "sqlite or odbc is expected");
}

} // namespace

std::string written(GetterOption option)
{
    const OptionRow& row = rowOf(option);
    return fmt::format("{} {}", row.flag, row.form);
}

std::string keyOf(GetterOption option)
{
    return rowOf(option).flag + std::string_view("--").size();
}

void addGetterOptions(CLI::App& command, GivenOptions& given)
{
    for (const OptionRow& row : optionRows) {
        const GetterOption option = row.option;
        command
            .add_option_function<std::string>(
                row.flag, [option, &given](const std::string& value) { given[option] = value; }, row.meaning)
            ->type_name(row.form)
            ->take_last();
    }
}

GetterArguments::GetterArguments(const GivenOptions& given)
{
    for (const auto& [option, value] : given) {
        if (option == GetterOption::Module) module_ = moduleOf(value);
        if (option == GetterOption::Kind) kind_ = kindOf(value);
        if (option == GetterOption::Engine) engine_ = engineOf(value);
        texts_[option] = terminal::gbkFrom(value, fmt::format("{} {}", rowOf(option).flag, value));
    }
}

const char* GetterArguments::text(GetterOption option) const
{
    const auto found = texts_.find(option);
    return found == texts_.end() ? nullptr : found->second.c_str();
}

GetterArguments GetterArguments::of(QuorAuth::Module module) const
{
    GetterArguments other = *this;
    other.module_ = module;
    other.texts_[GetterOption::Module] = kxcom::getModuleName(module);
    return other;
}

} // namespace quor
