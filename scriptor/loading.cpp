#include "Context.h"
#include "KeptBlocks.h"
#include "Limits.h"
#include "NativeStack.h"
#include "StateTrust.h"
#include "duplicateText.h"

#include <QuorCommon/quorsys.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>

using Quor::GlibStatus;

namespace {

/// Whether two times, in seconds, lie less than five seconds apart, either way.
bool isUnchanged(long long before, long long now)
{
    const double moved = static_cast<double>(before) - static_cast<double>(now);
    return moved > -5.0 && moved < 5.0;
}

/// A path's text to be kept as a file name: one that was a file name before keeps its block.
char* makeFileName(const char* path)
{
    if (char* known = quorlua::kept::find(path)) return known;
    return quorlua::duplicateText(path);
}

/// Whether a script may run on what is left of the processor's stack; says that it may not past
/// "_ALERT", which would be a call of the script's again.
bool leavesRoomToRun()
{
    if (quorlua::leavesRoom(0)) return true;
    lua_tinker::print_error(nullptr, "C stack overflow");
    return false;
}

/// Runs a buffer; false when it fails.
bool runBuffer(lua_State* L, const quor_binary& buffer)
{
    const quorlua::limits::Operation operation(L);
    return leavesRoomToRun() &&
           lua_tinker::dobuffer(L, buffer.data, static_cast<std::size_t>(buffer.length)) == 0;
}

GlibStatus reportLoaded(lua_State* L, FunctionRightAfterLoadFile* callback)
{
    try {
        if (callback) callback->loaded(L);
    } catch (const std::exception&) {
        // The script is loaded all the same, and nothing of the host's passes through here.
    }
    return GlibStatus::Ok;
}

GlibStatus runFile(lua_State* L, const char* file, FunctionRightAfterLoadFile* callback)
{
    if (!L) return GlibStatus::ScriptFailed;
    {
        const quorlua::limits::Operation operation(L);
        if (!leavesRoomToRun() || lua_tinker::dofile(L, file) != 0) return GlibStatus::ScriptFailed;
    }
    return reportLoaded(L, callback);
}

/// The failure of a file that was loaded and is no longer, since its state is gone: whenever it is asked for
/// again it counts as changed.
GlibStatus failWithoutState(long long& modificationTime)
{
    modificationTime = std::numeric_limits<long long>::min(); // no file's
    return GlibStatus::ScriptFailed;
}

constexpr int recreateBit = 1;
constexpr int skipUnchangedBit = 2;

} // namespace

GlibStatus QuorGlibScriptor::loadFile(const char* file, bool recreate)
{
    if (!file) return lastStatus_ = GlibStatus::InvalidArgument;
    long long time = 0;
    if (!quorsys::fileModificationTime(file, time)) return lastStatus_ = GlibStatus::FileNotExamined;
    quorlua::currentContext().reset();
    if (fileName_ && std::strcmp(fileName_, file) == 0) {
        lastStatus_ = GlibStatus::Ok;
        if (isUnchanged(modificationTime_, time)) return GlibStatus::Ok;
        if (recreate && quorlua::isRunning(state_)) return lastStatus_ = GlibStatus::ScriptFailed;
        if (recreate) initLua();
        if (!state_) return lastStatus_ = failWithoutState(modificationTime_);
    } else {
        char* name = makeFileName(file);
        if (!name) return lastStatus_ = GlibStatus::ScriptFailed;
        // Whoever asked for the name before may still hold it.
        if (!quorlua::kept::keep(fileName_)) {
            if (!quorlua::kept::holds(name)) std::free(name);
            return lastStatus_ = GlibStatus::ScriptFailed;
        }
        fileName_ = name;
    }
    modificationTime_ = time;
    return lastStatus_ = runFile(state_, fileName_, loadFileCallback_);
}

GlibStatus QuorGlibScriptor::reloadLua(int bits)
{
    if (!fileName_) return GlibStatus::ScriptFailed;
    long long time = 0;
    if (!quorsys::fileModificationTime(fileName_, time)) return lastStatus_ = GlibStatus::FileNotExamined;
    quorlua::currentContext().reset();
    if ((bits & skipUnchangedBit) != 0 && isUnchanged(modificationTime_, time)) return GlibStatus::Ok;
    const bool recreate = (bits & recreateBit) != 0;
    if (recreate && quorlua::isRunning(state_)) return lastStatus_ = GlibStatus::ScriptFailed;
    if (recreate) initLua();
    if (!state_) return lastStatus_ = failWithoutState(modificationTime_);
    modificationTime_ = time;
    return lastStatus_ = runFile(state_, fileName_, loadFileCallback_);
}

GlibStatus QuorGlibScriptor::loadBuffer(const quor_binary& buffer, long long timeStamp, bool recreate)
{
    if (!buffer.data || buffer.length <= 0) return GlibStatus::InvalidArgument;
    if (fileName_) return GlibStatus::BufferRefused;
    quorlua::currentContext().reset();
    if (isUnchanged(modificationTime_, timeStamp)) return GlibStatus::Ok;
    if (recreate && quorlua::isRunning(state_)) return lastStatus_ = GlibStatus::ScriptFailed;
    if (recreate) initLua();
    if (!state_) return lastStatus_ = GlibStatus::ScriptFailed;
    if (!runBuffer(state_, buffer)) {
        if (!quorlua::isRunning(state_)) quorlua::closeForGood(state_, baseTop_);
        return lastStatus_ = GlibStatus::ScriptFailed;
    }
    modificationTime_ = timeStamp;
    return lastStatus_ = reportLoaded(state_, loadFileCallback_);
}

long long QuorGlibScriptor::get_mtime() const
{
    return modificationTime_;
}

const char* QuorGlibScriptor::getFileName() const
{
    return fileName_;
}

void QuorGlibScriptor::setLoadFileCallbk(FunctionRightAfterLoadFile* callback)
{
    loadFileCallback_ = callback;
}

FunctionRightAfterLoadFile* QuorGlibScriptor::getLoadFileCallbk() const
{
    return loadFileCallback_;
}

void QuorGlibScriptor::setFlag(int flags)
{
    flags_ = flags;
}

bool QuorGlibScriptor::checkFlag(ScriptorStatus bit) const
{
    return (flags_ & bit) != 0;
}
