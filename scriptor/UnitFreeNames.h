#pragma once

#include <functional>
#include <lua.hpp>
#include <string>
#include <string_view>
#include <unordered_set>

namespace quorlua {

/// The parameters that a script declares to be no lengths: the values of "skey"."quantumUnit" and
/// "skey"."angleUnit", read once so that many parameters cost no more than their number. Every other
/// parameter is a length. Construction throws only when memory runs out.
class UnitFreeNames {
public:
    /// Reads the declaration of a state; none for a null state. [-0, +0, -]
    explicit UnitFreeNames(lua_State* L);

    bool isLength(std::string_view parameter) const { return names_.find(parameter) == names_.end(); }
    double scaled(std::string_view parameter, double value, double factor) const
    {
        return isLength(parameter) ? value * factor : value;
    }

private:
    void collect(lua_State* L, const char* list);

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
    };

    std::unordered_set<std::string, Hash, std::equal_to<>> names_;
};

} // namespace quorlua
