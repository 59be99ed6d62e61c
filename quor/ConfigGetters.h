#pragma once

#include "ConfigArguments.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <variant>
#include <vector>

namespace quor {

/// A getter's result, copied; texts in GBK, or a path as the getter gave it. `monostate` is null.
using GetterValue = std::variant<std::monostate, std::string, bool, int>;

/// The script that a getter asks.
enum class ConfigScript { Project, System };

/// What a getter's text is.
enum class GetterText { Path, Other };

/// One of the library's configuration getters.
struct Getter {
    std::string name; ///< as it is exported
    ConfigScript script = ConfigScript::Project;
    GetterText text = GetterText::Other;
    std::vector<GetterOption> needs;
    std::vector<GetterOption> mayTake;
    std::function<GetterValue(const GetterArguments& arguments)> ask;

    bool takes(GetterOption option) const;
};

/// Every getter, in the order in which a table shows them.
const std::vector<Getter>& allGetters();

/// The getter of a name, which may lack its "get". A `Failure` (wrong usage) when there is none.
const Getter& findGetter(const std::string& name);

/// A line for each getter, with what it takes.
std::string listOfGetters();

/// Throws a `Failure` (wrong usage) unless what was given is what the getter takes.
void checkOptions(const Getter& getter, const GivenOptions& given);

} // namespace quor
