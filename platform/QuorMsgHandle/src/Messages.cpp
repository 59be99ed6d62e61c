#include <QuorMsgHandle/Messages.h>

#include <atomic>
#include <cstdio>
#include <exception>

namespace {

std::atomic<QuorTextTranslator> translator{nullptr};

/// The whole line in one write, so that lines of several threads do not mix.
void writeToStandardError(const char* text, void*)
{
    try {
        std::string line(text);
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), stderr);
    } catch (const std::exception&) {
        std::fputs(text, stderr);
        std::fputc('\n', stderr);
    }
}

struct Sink {
    kxcom::MessageSink show = writeToStandardError;
    void* user = nullptr;
};

constinit Sink sink;

} // namespace

const char* quorGetText_callbk(const char* text)
{
    if (text == nullptr) return "";
    const QuorTextTranslator translate = translator.load(std::memory_order_acquire);
    const char* translated = translate == nullptr ? nullptr : translate(text);
    return translated == nullptr ? text : translated;
}

void setQuorGetText_callbk(QuorTextTranslator translate)
{
    translator.store(translate, std::memory_order_release);
}

namespace kxcom {

void showMessage(const char* text, const MsgArg* arguments, std::size_t count)
{
    if (text == nullptr) return;
    std::string formatted;
    if (arguments != nullptr && count != 0) {
        try {
            formatted = formatMessage(text, arguments, count);
            text = formatted.c_str();
        } catch (const std::exception&) {
            // The text as it stands says more than nothing.
        }
    }
    sink.show(text, sink.user);
}

void errorMsg(const char* text)
{
    showMessage(text, nullptr, 0);
}

std::string printMsg(const char* format)
{
    return formatMessage(format, nullptr, 0);
}

void setMessageSink(MessageSink show, void* user)
{
    sink = show == nullptr ? Sink() : Sink{show, user};
}

} // namespace kxcom
