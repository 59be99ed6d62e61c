#pragma once

#include <QuorMsgHandle/Export.h>

/// The last error: a code and a text, one pair per thread. Nothing here throws.
namespace kxcom {

/// Records an error in place of the thread's previous one. The text is copied; null counts as "". When there
/// is no memory for the copy, the code stands and the text is "".
QUORMSGHANDLE_API void setQuorLastError(int code, const char* text);

/// The code last set on the calling thread; 0 when none was, or after clearing.
QUORMSGHANDLE_API int getQuorLastErrorCode();

/// The text last set on the calling thread; "" when none was. Never null. It is valid until the thread sets
/// or clears its last error, or ends.
QUORMSGHANDLE_API const char* getQuorLastErrorText();

/// Forgets the calling thread's last error.
QUORMSGHANDLE_API void clearQuorLastError();

} // namespace kxcom
