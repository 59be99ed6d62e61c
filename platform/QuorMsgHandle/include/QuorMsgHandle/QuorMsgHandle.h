#pragma once

/// The message service: translation, messages to the user, the last error, and timers for finding what is
/// slow.

#include <QuorMsgHandle/DebugTime.h>
#include <QuorMsgHandle/LastError.h>
#include <QuorMsgHandle/Messages.h>
#include <QuorMsgHandle/MsgArg.h>
