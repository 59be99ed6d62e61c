// Serializer text: whatever is read is written as a text that reads back as the same; a value likewise.

#include "Drawn.h"
#include "Limits.h"
#include "Shapes.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/LuaSerialize.h>
#include <optional>
#include <string_view>

using quorlua::LuaSerialize;

namespace {

constexpr long mostInstructions = 2000000;
constexpr std::size_t mostBytes = 64 << 20;

lua_State* makeState()
{
    QuorSystem::setInstallationFolder(QUOR_SOURCE_DIR "/sample/installation");
    lua_tinker::set_error_outlet(fuzz::silence, nullptr);
    return LuaSerialize::getLua();
}

/// The text of the value on top; none when it cannot be written.
std::optional<std::string> written(lua_State* L)
{
    const int top = lua_gettop(L);
    const char* text = LuaSerialize::serial(top);
    fuzz::require(lua_gettop(L) == top + 1, "writing leaves one value");
    if (!text) return std::nullopt;
    return std::string(text, lua_objlen(L, -1));
}

/// Pushes what a text says; nil when it says nothing.
void read(lua_State* L, const std::string& text)
{
    const int top = lua_gettop(L);
    const bool done = LuaSerialize::unSerial(text.c_str());
    fuzz::require(done == (*text.c_str() != '\0'), "only an empty text is refused");
    fuzz::require(lua_gettop(L) == top + (done ? 1 : 0), "reading leaves one value");
    if (!done) lua_pushnil(L);
}

/// Whether the text can come in another order the next time: keys that are tables do, and ids of one value.
bool isInNoOrder(const std::string& text)
{
    for (std::size_t at = text.find('='); at != std::string::npos; at = text.find('=', at + 1)) {
        std::size_t key = at;
        while (key > 0 && (text[key - 1] == '-' || (text[key - 1] >= '0' && text[key - 1] <= '9')))
            --key;
        if (key > 0 && std::string_view("}#*").find(text[key - 1]) != std::string_view::npos) return true;
    }
    return false;
}

} // namespace

const char fuzz::target[] = "serializer";

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static lua_State* const L = makeState();
    fuzz::require(L != nullptr, "the serializer has its script");
    LuaSerialize::clear();
    fuzz::Input input(data, size);
    const bool isText = input.byte() != 'v';
    if (!isText) fuzz::pushValue(L, input);

    const fuzz::Limited limited(L, mostInstructions, mostBytes);
    if (isText) read(L, input.rest());
    // A text reads as no nil; so nil is what the script refused.
    if (isText && lua_isnil(L, -1)) return 0;
    const std::optional<std::string> text = written(L);
    fuzz::require(text || !isText, "what was read can be written");
    if (!text) return 0;
    read(L, *text);
    fuzz::require(!lua_isnil(L, -1), "what was written can be read");
    const std::optional<std::string> again = written(L);
    fuzz::require(again && again->size() == text->size(), "a text that was read is as long again");
    fuzz::require(again == text || isInNoOrder(*text),
                  "what was written, read and written again is the same text");
    return 0;
}
