#pragma once

#include <BaseObj/KxDb.h>
#include <CLI/CLI.hpp>
#include <QuorCommon/QuorAuth.h>
#include <map>
#include <string>
#include <vector>

namespace quor {

/// What a getter can be asked with, each an option of the command.
enum class GetterOption {
    Module,
    Name,
    Part,
    File,
    Sub,
    Given,
    Kind,
    DbName,
    Key,
    Engine,
    Function,
    DefaultFile,
    Arg,
};

/// An option as people write it, as in "--name TEXT".
std::string written(GetterOption option);
/// An option's name without its dashes.
std::string keyOf(GetterOption option);

/// The values that were given, as arguments of the command.
using GivenOptions = std::map<GetterOption, std::string>;

/// Adds all options; those that are used stand in `given` when the command line was read.
void addGetterOptions(CLI::App& command, GivenOptions& given);

/// The values that were given, as the getters take them. Texts are in GBK.
class GetterArguments {
public:
    /// Nothing was given.
    GetterArguments() = default;
    /// Throws a `Failure` (wrong usage) for a value that is not of its option's form.
    explicit GetterArguments(const GivenOptions& given);

    bool has(GetterOption option) const { return texts_.contains(option); }
    /// Null for an option that was not given. Valid as long as this object.
    const char* text(GetterOption option) const;

    QuorAuth::Module module() const { return module_; }
    int kind() const { return kind_; }
    KxDb::DbType engine() const { return engine_; }

    /// The same for another module.
    GetterArguments of(QuorAuth::Module module) const;

private:
    std::map<GetterOption, std::string> texts_;
    QuorAuth::Module module_ = QuorAuth::Module::None;
    int kind_ = 0;
    KxDb::DbType engine_ = KxDb::DbType::Sqlite;
};

} // namespace quor
