#pragma once

#include "Messages.h"
#include "Values.h"

namespace quorlua {

/// Records a message, translated and then formatted with its arguments, as the thread's last error. When
/// memory runs out it stands there unformatted.
template<class Message, class... Arguments>
void setLastError(int code, const Message& message, const Arguments&... arguments)
{
    const char* text = messages::translated(message);
    const bool formatted = values::withoutThrowing([&] {
        kxcom::setQuorLastError(code, kxcom::printMsg(text, arguments...).c_str());
        return true;
    });
    if (!formatted) kxcom::setQuorLastError(code, text);
}

} // namespace quorlua
