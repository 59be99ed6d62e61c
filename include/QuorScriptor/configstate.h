#pragma once

#include <QuorScriptor/Export.h>

/// The states that run the two configuration scripts. The project script, "quorModuleSystem.lua" unless
/// `initConfig` names another, lies in the run-time "bin" folder; the system script, "mirtSystemConfig.lua",
/// in the installation's. Each has a default state and one for every thread that was given its own; a
/// thread's first question loads the script into its state.
///
/// Threads. There are no locks. A thread without states of its own shares the default ones with all others
/// like it, so at most one such thread may ask at a time. `allocThreadConfig` and `freeThreadConfig` run
/// while no other thread is in here. The project script's name and the permit-null switch are one for the
/// whole process.
///
/// The states are closed when the library is unloaded. What a script leaves to be run then finds no state any
/// more: a getter that it reaches has no answer.
namespace quorconfig {

/// Makes the calling thread's project script ready; true when there is a state to ask afterwards. Each text
/// may be null; an empty `configFile` counts as null.
///
/// A thread that has a state keeps it, and nothing is run, when no file is named or the one that it holds,
/// letter case aside. Otherwise a file named becomes the process's project script; the script is loaded, into
/// the state that is there, if any, so that what an earlier script defined stays; then those of
/// "initConfig"(`initArg`), "setUserVersion"(`userVersion`) and "setDesignDbModule"(`designDbModule`) are
/// called whose argument is not null. Errors in these are reported by the binding layer and change nothing
/// else.
///
/// A script that cannot be loaded, or fails half-way, makes this false; the state stays with what the script
/// defined, and later calls use it as it stands, those that name the same file again included. As with every
/// script, the file that was run last is run again, under whatever name, only when its time of change has
/// moved by 5 seconds or more; else it counts as loaded.
QUORSCRIPTOR_API bool initConfig(const char* configFile, const char* initArg, const char* userVersion,
                                 const char* designDbModule);

/// Makes the calling thread's system script ready, where it has no state yet, and calls its "initConfig";
/// true when there is a state to ask afterwards. A failure is as that of `initConfig`.
QUORSCRIPTOR_API bool initSysConfig();

/// Gives a thread states of its own, empty at first; a thread that has them keeps them. The id is the
/// operating system's, as `quorsys::currentThreadId` gives it. When memory runs out the thread goes on with
/// the default states.
QUORSCRIPTOR_API void allocThreadConfig(unsigned int threadId);

/// Closes a thread's own states; ids without any are ignored. Texts that they answered end here. Not to be
/// called from a configuration script that runs in one of them.
QUORSCRIPTOR_API void freeThreadConfig(unsigned int threadId);

/// Whether getters that find no answer give null at once (true), or show a message and give their fallback
/// (false, as at start).
QUORSCRIPTOR_API void permitNullReturn(bool permit);

/// Switches `permitNullReturn` on for as long as it lives, and off at its end, whatever it was before.
class QUORSCRIPTOR_API TempPermitNull {
public:
    TempPermitNull();
    ~TempPermitNull();
    TempPermitNull(const TempPermitNull&) = delete;
    /// Changes nothing.
    TempPermitNull& operator=(const TempPermitNull& other);
};

} // namespace quorconfig
