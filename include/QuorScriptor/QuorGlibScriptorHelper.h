#pragma once

#include <QuorScriptor/Export.h>

struct lua_State;
class QuorGlibScriptor;

/// Makes a scriptor, wires a message function into it and loads a file, in one step. Owns the scriptor.
class QUORSCRIPTOR_API QuorGlibScriptorHelper {
public:
    /// Shows one NUL-terminated text in the host's code page.
    using MessageFunction = void (*)(const char* text);

    QuorGlibScriptorHelper() = default;
    ~QuorGlibScriptorHelper();

    QuorGlibScriptorHelper(const QuorGlibScriptorHelper&) = delete;
    /// Copies the pointer as it is: both then name one scriptor, and the host may destroy only one of the
    /// two.
    QuorGlibScriptorHelper& operator=(const QuorGlibScriptorHelper& other);

    /// Loads a script file into the owned scriptor, which is made on the first call. A message function that
    /// is not null becomes the script's "_ALERT" and "kxcom"."errorMsg". Returns false, and owns no scriptor
    /// afterwards, when the file cannot be loaded.
    bool init(const char* file, MessageFunction message);
    /// The scriptor's state, null when there is no scriptor or it has none.
    lua_State* getL() const;
    /// The scriptor, null when there is none; stays owned here.
    QuorGlibScriptor* getScriptor() const;

private:
    QuorGlibScriptor* scriptor_ = nullptr;
};
