#pragma once

#include "LuaValue.h"

#include <KxGeBasic/KxGeMatrix3D.h>
#include <QuorScriptor/GlibCallbacks.h>
#include <QuorScriptor/luacall.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quor {

/// The arguments of a call by format, read from their texts. Every failure is a `Failure` (wrong usage) that
/// names the argument, what is expected and what is there.
class CallArguments {
public:
    /// A text for every letter, each written as `helpOfLetters` says.
    CallArguments(const std::string& letters, const std::vector<std::string>& texts);
    ~CallArguments();
    CallArguments(const CallArguments&) = delete;
    CallArguments& operator=(const CallArguments&) = delete;

    /// Adds what the call takes from elsewhere, once, before the call: the host's text style, null without
    /// one; and the tables, which are pushed and stay on the stack. [-0, +tables, -]
    void addTextStyle(const GlibTextStyle* style);
    void addTables(lua_State* L);

    /// One for every letter; they live as long as this does.
    const std::vector<quorlua::CallItem>& items() const { return items_; }

private:
    void read(std::size_t i, char letter, const std::string& text);
    template<class T>
    void keep(std::size_t i, T value);
    void keepBytes(std::size_t i, std::string bytes);

    std::vector<quorlua::CallItem> items_;
    std::vector<std::shared_ptr<const void>> kept_;
    std::vector<std::pair<std::size_t, LuaValue>> tables_;
    std::vector<std::size_t> styles_;
};

// The forms that other options take as well. `place` names the argument in messages.

KxGePoint3D readPointArgument(const std::string& text, const std::string& place);
KxGeMatrix3D readMatrixArgument(const std::string& text, const std::string& place);
LuaValue readTableArgument(const std::string& text, const std::string& place);

} // namespace quor
