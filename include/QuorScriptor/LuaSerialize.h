#pragma once

#include <QuorScriptor/Export.h>

struct lua_State;

namespace quorlua {

/// Turns a Lua table into text and back, by the functions "serializeTable" and "unSerializeTable" of the
/// installation's script "bin\serialObject.lua". One Lua state for the whole process, made at first use and
/// kept to its end; one thread uses it at a time. Results pile up on its stack until `clear`.
///
/// Nothing here raises a Lua error or throws. An error of the script is reported by the binding layer, and
/// so is a function that the script does not define. There is no state for what runs while the script is
/// loaded, nor once the process has begun to end.
class QUORSCRIPTOR_API LuaSerialize {
public:
    /// Makes the state and runs the script, unless that succeeded before. Like every load it resets the
    /// calling thread's script context.
    static void init();

    /// The state, ready; null when the script cannot be run. Push here what `serial` is to write, and read
    /// here what `unSerial` made.
    static lua_State* getLua();

    /// The text of the value at an absolute index of the state's stack; an index that holds nothing counts
    /// as nil. The script's result stays on that stack, a number as its text, and the text is valid until the
    /// stack is cleared. Null when that result, nil after an error, has no text; null, with nothing left,
    /// when there is no state or the stack is full. [-0, +(0|1), -]
    static const char* serial(int index);

    /// Makes the value of a text and leaves it on the stack; true, with nil there after an error. False, with
    /// nothing left, for a null or empty text, and when there is no state or the stack is full. [-0, +(0|1),
    /// -]
    static bool unSerial(const char* text);

    /// Cuts the state's stack down to its bottom value.
    static void clear();

private:
    static bool m_init;
};

} // namespace quorlua
