#pragma once

#include <QuorMsgHandle/Export.h>

/// Timers for finding what is slow, by slot. Slots 0 to 63 exist; any other number is ignored and reads 0.
/// Each thread has its own timers, made at its first call; where memory does not suffice for them, and once
/// the thread has begun to end, all slots are ignored and read 0. Calls are always counted; the clock is read
/// only while timing is switched on, since a pair of calls stands on paths of some tens of nanoseconds.
/// Nothing here throws.
namespace kxcom {

/// Opens and closes a measurement. Within one slot they nest, and only the outermost pair counts. A closing
/// call without its opening one is ignored; an opening call whose closing one never comes keeps the slot
/// open, and nothing of it is counted until `quorDebugTimeReset`.
QUORMSGHANDLE_API void quorDebugTimeBegin(short slot);
QUORMSGHANDLE_API void quorDebugTimeEnd(short slot);

/// Switches the clock on or off for all threads; off at start. An outermost pair is timed when the clock was
/// on at its beginning.
QUORMSGHANDLE_API void quorDebugTimeEnable(bool on);

/// How many outermost pairs the calling thread has closed, and how long the timed ones took together, in
/// seconds.
QUORMSGHANDLE_API unsigned long long quorDebugTimeCount(short slot);
QUORMSGHANDLE_API double quorDebugTimeTotal(short slot);

/// Sets all timers of the calling thread back to the start; what was open is no longer.
QUORMSGHANDLE_API void quorDebugTimeReset();

} // namespace kxcom
