#include <QuorMsgHandle/LastError.h>

#include <exception>
#include <string>
#include <utility>

namespace kxcom {
namespace {

struct LastError {
    int code = 0;
    std::string text;
};

LastError& lastError()
{
    thread_local LastError error;
    return error;
}

} // namespace

void setQuorLastError(int code, const char* text)
{
    LastError& error = lastError();
    error.code = code;
    try {
        // A copy first: the text may be the one that is being replaced.
        std::string copy(text == nullptr ? "" : text);
        error.text = std::move(copy);
    } catch (const std::exception&) {
        error.text.clear();
    }
}

int getQuorLastErrorCode()
{
    return lastError().code;
}

const char* getQuorLastErrorText()
{
    return lastError().text.c_str();
}

void clearQuorLastError()
{
    lastError().code = 0;
    lastError().text.clear();
}

} // namespace kxcom
