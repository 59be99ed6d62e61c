#include <QuorMsgHandle/QuorMsgHandle.h>
#include <cstdio>

// A message service of its own making, written against the interface headers alone. It can be told from the
// reference's by the "own: " before whatever it keeps or shows. Conversions take their arguments in plain
// form.

namespace {

struct LastError {
    int code = 0;
    std::string text;
};

thread_local LastError lastError;
QuorTextTranslator translator = nullptr;
kxcom::MessageSink sink = nullptr;
void* sinkUser = nullptr;

std::string plain(const kxcom::MsgArg& argument)
{
    using Kind = kxcom::MsgArg::Kind;
    switch (argument.kind()) {
    case Kind::Text:
        return std::string(argument.text());
    case Kind::Signed:
        return std::to_string(static_cast<long long>(argument.whole()));
    case Kind::Unsigned:
    case Kind::Boolean:
        return std::to_string(argument.whole());
    case Kind::Character:
        return std::string(1, static_cast<char>(argument.whole()));
    case Kind::Real:
        return std::to_string(argument.real());
    case Kind::NullText:
        return "(null)";
    case Kind::Pointer:
        break;
    }
    return "(pointer)";
}

void show(const std::string& text)
{
    if (sink)
        sink(text.c_str(), sinkUser);
    else
        std::fprintf(stderr, "own: %s\n", text.c_str());
}

} // namespace

const char* quorGetText_callbk(const char* text)
{
    if (!text) return "";
    const char* translation = translator ? translator(text) : nullptr;
    return translation ? translation : text;
}

void setQuorGetText_callbk(QuorTextTranslator translate)
{
    translator = translate;
}

namespace kxcom {

std::string formatMessage(const char* format, const MsgArg* arguments, std::size_t count)
{
    std::string text = format ? format : "";
    for (std::size_t i = 0, place = text.find('%'); i < count && place != std::string::npos; ++i) {
        const std::size_t letter = text.find_first_not_of("-+ #0123456789.", place + 1);
        if (letter == std::string::npos) break;
        const std::string value = plain(arguments[i]);
        text.replace(place, letter + 1 - place, value);
        place = text.find('%', place + value.size());
    }
    return text;
}

std::string printMsg(const char* format)
{
    return format ? format : "";
}

void showMessage(const char* text, const MsgArg* arguments, std::size_t count)
{
    if (text) show(formatMessage(text, arguments, count));
}

void errorMsg(const char* text)
{
    if (text) show(text);
}

void setMessageSink(MessageSink newSink, void* user)
{
    sink = newSink;
    sinkUser = user;
}

void setQuorLastError(int code, const char* text)
{
    lastError = {code, std::string("own: ") + (text ? text : "")};
}

int getQuorLastErrorCode()
{
    return lastError.code;
}

const char* getQuorLastErrorText()
{
    return lastError.text.c_str();
}

void clearQuorLastError()
{
    lastError = {};
}

// This host measures with tools of its own, so its timers stand still.
void quorDebugTimeBegin(short) {}

void quorDebugTimeEnd(short) {}

void quorDebugTimeEnable(bool) {}

unsigned long long quorDebugTimeCount(short)
{
    return 0;
}

double quorDebugTimeTotal(short)
{
    return 0;
}

void quorDebugTimeReset() {}

} // namespace kxcom
