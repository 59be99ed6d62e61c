#pragma once

namespace Quor {

/// What an operation of a scriptor answers. The numbers are fixed; a host may store them as integers.
enum [[nodiscard]] GlibStatus : int{
    Ok = 0, ///< done, or nothing was to do
    FileNotExamined =
        1, ///< the script file's status cannot be queried: missing, or behind something that is no folder
    NoState = 3,          ///< the scriptor has no Lua state
    ScriptFailed = 4,     ///< the script raised an error, or its answer has the wrong shape
    ValueMissing = 8,     ///< a value of the "glb" table is not there
    SegmentMissing = 10,  ///< the script has no global of the segment's name
    InvalidArgument = 11, ///< a null name, an empty buffer; in `getSmrtlnType` also: no Lua state
    TableMissing = 12,    ///< the parameter table is not there
    BufferRefused = 14,   ///< a scriptor that holds a file takes no buffer
};

/// What the user-interface exchange answers: one of these two, or else the script's own integer, where 0
/// means that the input was accepted.
enum [[nodiscard]] CadReturn : int{
    Accepted = 0,
    StateMissing = 2, ///< the scriptor has no Lua state
    CallFailed = 5,   ///< the function is missing or failed, or its status cannot be read
};

} // namespace Quor
