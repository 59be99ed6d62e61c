#pragma once

#include <BaseObj/KVParams.h>
#include <BaseObj/quor_binary.h>
#include <KxGeBasic/KxGeMatrix3D.h>
#include <KxGeBasic/KxGePoint3D.h>
#include <KxGeBasic/paramt.h>
#include <QuorScriptor/Export.h>
#include <QuorScriptor/GlibCallbacks.h>
#include <QuorScriptor/GlibStatus.h>
#include <lua.hpp>
#include <string>
#include <utility>
#include <vector>

class QuorPrimary;
namespace lua_tinker {
class table;
}

/// One bit of a scriptor's flag word. The library stores the word and reads none of its bits.
enum ScriptorStatus : int {
    ScriptorBit1 = 1,
    ScriptorBit2 = 2,
    ScriptorBit3 = 4,
    ScriptorBit4 = 8,
};

/// A point that a component offers to be joined at: its number and its place.
using Keypoint = std::pair<short, KxGePoint3D>;

/// Runs one graphic-library script: owns a Lua state, loads a script file or buffer into it, writes the
/// component's parameters into the script's tables and calls the script's segments by name.
///
/// Failures are statuses; nothing here throws or raises a Lua error, whatever the script does. A null name
/// names nothing, and a scriptor without a state has no tables. Every operation leaves the height of the Lua
/// stack as it was, except the result-leaving segment calls. Primitives that a call appends belong to the
/// caller (`delete`).
///
/// One thread uses a scriptor at a time, and every thread but one has a script context of its own
/// (ScriptContext.h). Loading and segment calls also use the calling thread's script context (see
/// ScriptContext.h), so `setFunction` and `setGlibTextstyle` are called on the thread that calls the segment.
class QUORSCRIPTOR_API QuorGlibScriptor {
public:
    /// Makes the state (`initLua`).
    QuorGlibScriptor();
    /// Closes the state and frees the file name.
    ~QuorGlibScriptor();

    QuorGlibScriptor(const QuorGlibScriptor&) = delete;
    /// Copies the members as they are: both objects then name one state and one file name, nothing of the
    /// target is released, and the host may destroy only one of the two.
    QuorGlibScriptor& operator=(const QuorGlibScriptor& other);

    // The state and its libraries

    /// Makes the state anew: everything the old one held is gone, parameters, functor and text style globals
    /// included. When memory does not suffice there is no state afterwards. While a function runs in the
    /// state it stays as it is: a native function that a script calls cannot take the ground from under it.
    void initLua();
    /// Opens a list of functions as a library of that name in this state.
    void addLib(const char* name, const luaL_Reg* list) const;
    /// Puts one native function into the global table of that name, which is made when it is not there.
    void addLibFuncLua(const char* table, const char* name, lua_CFunction function);
    /// Replaces the module search path by the installation's "bin" folder alone.
    void setPackagePath();
    /// The state, null when there is none. With `clear`, everything above the bottom value is cut off the
    /// stack.
    lua_State* getLua(bool clear);

    // Loading

    /// Loads and runs a script file. The file loaded before is run again only when its time moved by five
    /// seconds or more (Ok otherwise), in a new state if `recreate`; another file always runs in the state as
    /// it is, over what the first one defined. InvalidArgument: null path. FileNotExamined: no such file.
    /// ScriptFailed: it could not be read, compiled or run; the state keeps what a partial run defined. So it
    /// is, too, when a function that runs in the state asks for a new one. A file that could not be run again
    /// because there is no state counts as changed from then on, and its time is 0.
    Quor::GlibStatus loadFile(const char* file, bool recreate);
    /// Runs a script or precompiled chunk from memory; `timeStamp` (seconds) plays the part of the file's
    /// time. InvalidArgument: no data. BufferRefused: a file is loaded. ScriptFailed: it could not be run,
    /// and the state is gone until the next `initLua`, unless a function runs in it.
    Quor::GlibStatus loadBuffer(const quor_binary& buffer, long long timeStamp, bool recreate);
    /// Runs the loaded file again. Bit 1: in a new state; bit 2: only when its time moved by five seconds or
    /// more. ScriptFailed also when no file is loaded.
    Quor::GlibStatus reloadLua(int bits);
    /// The time of the loaded file in seconds, or the stamp of the buffer.
    long long get_mtime() const;
    /// The path of the loaded file, null before the first; stays valid for the life of the process once
    /// another file took its place, else for the life of the scriptor.
    const char* getFileName() const;
    /// The object told after each successful load; not owned, may be null.
    void setLoadFileCallbk(FunctionRightAfterLoadFile* callback);
    FunctionRightAfterLoadFile* getLoadFileCallbk() const;
    /// Replaces the whole flag word.
    void setFlag(int flags);
    /// Whether the flag word has that bit.
    bool checkFlag(ScriptorStatus bit) const;

    // Parameters. A table that the script has not made is never made here: false.

    /// Writes the cut list into "param"."cut", unscaled; null removes it.
    bool setParams(const geolib::paramt* cuts);
    /// Writes 23 numbers as "param"."P1" to "P23" and removes "cut". Lengths are multiplied by the factor:
    /// every parameter is one unless the script's "skey" table declares it a quantity or an angle.
    bool setParams(const double* values, double factor);
    /// Sets one field of a global table, unscaled.
    bool setDoubleParam(const char* table, const char* key, double value);
    /// Writes named parameters into "param"; only values of the tag 2 that are lengths are scaled.
    bool setKeyValues(const std::vector<KVParams>& records, double factor);
    /// Writes named parameters into a global table, unscaled.
    bool setParam(const char* table, const std::vector<KVParams>& records);
    /// Empties a global table.
    bool clearParam(const char* table);
    /// "glb"."factor": the unit factor of the call.
    bool setConstFactor(double factor);
    /// "glb"."objectid": the id of the object being drawn.
    bool setObjectId(long long id) const;
    /// `getParams_note` on "param".
    Quor::GlibStatus getParams(std::vector<KVParams>& records);
    /// Appends the entries of a table of {note, value} arrays. InvalidArgument: no name. TableMissing.
    /// ScriptFailed: an entry of another shape, or more than 1 GiB of records and texts; what was read before
    /// it stays appended.
    Quor::GlibStatus getParams_note(const char* table, std::vector<KVParams>& records);
    /// Appends the key/value pairs of a table. TableMissing.
    Quor::GlibStatus getParams_std(const char* table, std::vector<KVParams>& records);

    // Segments. NoState; SegmentMissing; ScriptFailed with the last error 2003 when the segment raised an
    // error.

    /// Calls a segment for its effects.
    Quor::GlibStatus callSeg(const char* segment);
    /// Asks for {boolean, text} in the answer's field "needxdir". ScriptFailed when it has another shape; the
    /// number is written as soon as it is read.
    Quor::GlibStatus callSeg(const char* segment, int& needxdir, std::string& text);
    /// Asks for key points; an answer that is no table gives none and Ok.
    Quor::GlibStatus callSeg(const char* segment, std::vector<Keypoint>& keypoints);
    /// Asks for primitives: `parsePrimary` of the answer.
    Quor::GlibStatus callSeg(const char* segment, std::vector<QuorPrimary*>& primitives);
    Quor::GlibStatus callSeg3D(const char* segment, std::vector<QuorPrimary*>& primitives);
    /// The key points of the segment "keypoint".
    Quor::GlibStatus getKeypoints(std::vector<Keypoint>& keypoints);

    // Result-leaving calls: on Ok the segment's one result is on top of the stack (one value more than
    // before), for the readers below; the caller pops it. Otherwise the stack is as it was.

    Quor::GlibStatus callSeg(const char* segment, const std::vector<KVParams>& parameters);
    Quor::GlibStatus callSeg(const char* segment, const std::vector<KVParams>& parameters,
                             const GlibTextStyle& style);
    Quor::GlibStatus callSeg(const char* segment, const std::vector<KVParams>& parameters,
                             const KxGeMatrix3D& matrix);
    Quor::GlibStatus callSeg(const char* segment, const GlibTextStyle& style);
    Quor::GlibStatus callSeg(const char* segment, const lua_tinker::table& argument);
    Quor::GlibStatus callSeg(const char* segment, const lua_tinker::table& argument,
                             const GlibTextStyle& style);

    // Readers of the value on top of the stack, which stays there

    /// Clears the vector, then appends the table's primitives. ScriptFailed with the last error 2007: no
    /// table.
    Quor::GlibStatus parsePrimary(std::vector<QuorPrimary*>& primitives);
    /// Appends the table's primitives and leaves the script context as it is. InvalidArgument: no state or no
    /// table.
    Quor::GlibStatus justParsePrimary(std::vector<QuorPrimary*>& primitives);
    /// Clears the vector, then reads the key points of the table at an index, counted from the top when below
    /// 1. ScriptFailed: no state or no table.
    Quor::GlibStatus parseKeypoint(std::vector<Keypoint>& keypoints, int index);
    /// ScriptFailed, the output untouched, when the value is of another type.
    Quor::GlibStatus parseRtn(bool& answer);
    Quor::GlibStatus parseRtn(int& answer);

    /// The script's smart-line type, "glb"."smrtlntype". InvalidArgument: no state. ValueMissing.
    Quor::GlibStatus getSmrtlnType(std::string& type);
    /// Exchanges two points and parameters with the script's "quorgetparam_ui". The second point and the
    /// parameters are replaced by what the script returns, whatever its status, the first only when that is
    /// 0. A result of another type replaces nothing.
    Quor::CadReturn exeLuaUI(KxGePoint3D& first, KxGePoint3D& second, std::vector<KVParams>& parameters);
    /// Makes the host's answers available to the script, on this thread; null takes them away.
    void setFunction(const GlibScriptFunctor* functor);
    /// Makes a text style available to the script, on this thread; null takes it away.
    void setGlibTextstyle(const GlibTextStyle* style);

private:
    void luaClear();
    bool isMetreUnit(const char* parameter);
    void setCallParam(const std::vector<KVParams>& parameters);
    void setCallParam(const GlibTextStyle& style);
    void setCallParam(const KxGeMatrix3D& matrix);

    // Hosts rely on the order and the types of these fields.
    lua_State* state_ = nullptr;
    int baseTop_ = 0;
    char* fileName_ = nullptr;
    long long modificationTime_ = 0;
    Quor::GlibStatus lastStatus_ = Quor::GlibStatus::Ok;
    const GlibScriptFunctor* functor_ = nullptr;
    FunctionRightAfterLoadFile* loadFileCallback_ = nullptr;
    int flags_ = 0;
};
