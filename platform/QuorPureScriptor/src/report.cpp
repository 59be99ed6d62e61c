#include "NeutralLocale.h"
#include "Protected.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace lua_tinker {
namespace {

struct Free {
    void operator()(char* block) const { std::free(block); }
};
using Block = std::unique_ptr<char, Free>;

Block allocate(std::size_t size)
{
    return Block(static_cast<char*>(std::malloc(size)));
}

// A state, all its coroutines included, is known by its registry.
const void* identity(lua_State* L)
{
    return lua_topointer(L, LUA_REGISTRYINDEX);
}

// The states whose "_ALERT" runs on this thread, innermost first. One that prints would call itself without
// end.
class Alerting {
public:
    explicit Alerting(lua_State* L) : state_(identity(L)), outer_(innermost_) { innermost_ = this; }
    ~Alerting() { innermost_ = outer_; }
    Alerting(const Alerting&) = delete;
    Alerting& operator=(const Alerting&) = delete;

    static bool isRunning(lua_State* L)
    {
        const void* state = identity(L);
        for (const Alerting* at = innermost_; at; at = at->outer_) {
            if (at->state_ == state) return true;
        }
        return false;
    }

private:
    static thread_local const Alerting* innermost_;
    const void* state_;
    const Alerting* outer_;
};

thread_local const Alerting* Alerting::innermost_ = nullptr;

constinit thread_local unsigned long long errors = 0;

void printToStandardError(const char* text, std::size_t length, void*)
{
    std::fwrite(text, 1, length, stderr);
    std::fputc('\n', stderr);
}

constinit error_outlet outlet = printToStandardError;
constinit void* outletUser = nullptr;

struct Message {
    const char* text;
    std::size_t length;
    bool shown;
};

int alert(lua_State* L)
{
    auto* message = static_cast<Message*>(lua_touserdata(L, 1));
    lua_pushliteral(L, "_ALERT");
    lua_rawget(L, LUA_GLOBALSINDEX);
    if (!lua_isfunction(L, -1)) return 0;
    lua_pushlstring(L, message->text, message->length);
    lua_call(L, 1, 0);
    message->shown = true;
    return 0;
}

bool showInState(lua_State* L, const char* text, std::size_t length)
{
    if (!L || Alerting::isRunning(L)) return false;
    const Alerting running(L);
    Message message{text, length, false};
    if (lua_cpcall(L, alert, &message) != 0) lua_pop(L, 1);
    return message.shown;
}

// Text of bounded length, cut where it ends. No destructor: a Lua error may pass it.
class Writer {
public:
    Writer& text(const char* bytes, std::size_t length)
    {
        const std::size_t room = sizeof bytes_ - length_;
        const std::size_t count = length < room ? length : room;
        std::memcpy(bytes_ + length_, bytes, count);
        length_ += count;
        return *this;
    }
    Writer& text(const char* words) { return text(words, std::strlen(words)); }
    Writer& number(int value)
    {
        char digits[16];
        return text(digits, static_cast<std::size_t>(
                                std::to_chars(digits, digits + sizeof digits, value).ptr - digits));
    }

    const char* data() const { return bytes_; }
    std::size_t length() const { return length_; }

private:
    char bytes_[4096];
    std::size_t length_ = 0;
};

constexpr int outerFrames = 10;
constexpr int innerFrames = 12;
constexpr std::size_t longestName = 60;

// One past the last level of the call stack.
int depth(lua_State* L)
{
    lua_Debug frame;
    int known = 0;
    int beyond = 1;
    while (lua_getstack(L, beyond, &frame)) {
        known = beyond;
        beyond *= 2;
    }
    while (beyond - known > 1) {
        const int middle = known + (beyond - known) / 2;
        (lua_getstack(L, middle, &frame) ? known : beyond) = middle;
    }
    return beyond;
}

void writeFrame(lua_State* L, int level, Writer& out)
{
    lua_Debug frame;
    if (!lua_getstack(L, level, &frame) || !lua_getinfo(L, "Sln", &frame)) return;
    out.text("\n\t").text(frame.short_src).text(":");
    if (frame.currentline > 0) out.number(frame.currentline).text(":");
    if (frame.name && *frame.namewhat) {
        const std::size_t length = std::strlen(frame.name);
        out.text(" in function '").text(frame.name, length < longestName ? length : longestName).text("'");
    } else if (*frame.what == 'm') {
        out.text(" in main chunk");
    } else if (*frame.what == 'L') {
        out.text(" in function <").text(frame.short_src).text(":").number(frame.linedefined).text(">");
    } else {
        out.text(" ?");
    }
}

void writeTraceback(lua_State* L, Writer& out)
{
    const int end = depth(L);
    const int first = 1;
    if (end <= first) return;
    out.text("\nstack traceback:");
    const bool whole = end - first <= innerFrames + outerFrames;
    for (int level = first; level < end; ++level) {
        if (!whole && level == first + innerFrames) {
            level = end - outerFrames;
            out.text("\n\t...");
        }
        writeFrame(L, level, out);
    }
}

// As std::vsnprintf, but numbers have a point in every locale.
int formatPlainly(char* out, std::size_t size, const char* format, va_list arguments)
{
    const detail::NeutralLocale neutral;
    return std::vsnprintf(out, size, format, arguments);
}

} // namespace

void print_error_text(lua_State* L, const char* text, std::size_t length)
{
    if (!text) return;
    if (!showInState(L, text, length)) outlet(text, length, outletUser);
}

void set_error_outlet(error_outlet newOutlet, void* user)
{
    outlet = newOutlet ? newOutlet : printToStandardError;
    outletUser = user;
}

unsigned long long error_count()
{
    return errors;
}

namespace detail {

void countError()
{
    ++errors;
}

} // namespace detail

void print_error(lua_State* L, const char* format, ...)
{
    if (!format) return;
    char local[1024];
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int formatted = formatPlainly(local, sizeof local, format, arguments);
    va_end(arguments);
    const std::size_t length = formatted < 0 ? 0 : static_cast<std::size_t>(formatted);
    if (formatted < 0) {
        // A conversion failed; the words around it still tell something.
        print_error_text(L, format, std::strlen(format));
    } else if (length < sizeof local) {
        print_error_text(L, local, length);
    } else if (const Block block = allocate(length + 1)) {
        formatPlainly(block.get(), length + 1, format, again);
        print_error_text(L, block.get(), length);
    } else {
        print_error_text(L, local, sizeof local - 1);
    }
    va_end(again);
}

int on_error(lua_State* L)
{
    if (!L) return 0;
    detail::countError();
    lua_settop(L, 1);
    char described[64];
    const char* text = described;
    std::size_t length = 0;
    switch (lua_type(L, 1)) {
    case LUA_TSTRING:
        text = lua_tolstring(L, 1, &length);
        break;
    case LUA_TNUMBER: {
        // Not lua_tolstring, which would turn the error value itself into a string.
        char digits[32];
        length = quorlua::numberText(lua_tonumber(L, 1), digits);
        std::memcpy(described, digits, length);
        break;
    }
    default:
        length = static_cast<std::size_t>(
            std::snprintf(described, sizeof described, "(error object is a %s value)", luaL_typename(L, 1)));
    }
    Writer trace;
    writeTraceback(L, trace);
    if (const Block block = allocate(length + trace.length())) {
        std::memcpy(block.get(), text, length);
        std::memcpy(block.get() + length, trace.data(), trace.length());
        print_error_text(L, block.get(), length + trace.length());
    } else {
        print_error_text(L, text, length);
    }
    return 1;
}

void detail::report_exception(lua_State* L, const char* what) noexcept
{
    print_error(L, "a host function failed: %s", what ? what : "unknown exception");
}

} // namespace lua_tinker
