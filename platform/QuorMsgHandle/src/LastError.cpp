#include <QuorMsgHandle/LastError.h>

#include "../../private/PerThread.h"

#include <exception>
#include <string>
#include <utility>

namespace kxcom {
namespace {

constinit thread_local int lastCode = 0;

struct LastText {
    std::string text;
};

} // namespace

void setQuorLastError(int code, const char* text)
{
    lastCode = code;
    auto* last = platform::perThread<LastText>();
    if (last == nullptr) return;
    try {
        // A copy first: the text may be the one that is being replaced.
        std::string copy(text == nullptr ? "" : text);
        last->text = std::move(copy);
    } catch (const std::exception&) {
        last->text.clear();
    }
}

int getQuorLastErrorCode()
{
    return lastCode;
}

const char* getQuorLastErrorText()
{
    const auto* last = platform::perThread<LastText>();
    return last == nullptr ? "" : last->text.c_str();
}

void clearQuorLastError()
{
    lastCode = 0;
    if (auto* last = platform::perThread<LastText>()) last->text.clear();
}

} // namespace kxcom
