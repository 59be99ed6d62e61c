#pragma once

#include <QuorCommon/Export.h>

namespace QuorAuth {

/// The product modules on whose behalf a project's resources are asked for. The numbers are shown in messages
/// and never change; a vendor adds modules behind them.
enum class Module : int {
    None = 0, ///< no module; it has no name
    System = 1,
    Pipe = 2,
    Equip = 3,
    Support = 4,
    Iso = 5,
    Struct = 6,
    Hvac = 7,
    Electric = 8,
    Instrument = 9,
};

/// Every module that has a name, in the order of the numbers.
inline constexpr Module allModules[] = {Module::System,  Module::Pipe,     Module::Equip,
                                        Module::Support, Module::Iso,      Module::Struct,
                                        Module::Hvac,    Module::Electric, Module::Instrument};

} // namespace QuorAuth

namespace kxcom {

/// The name under which configuration scripts know a module: "PIPE", "EQUIP" and so on, the enumerator in
/// capitals.
/// "" for `None` and for a number that is no module; never null. The text is a constant. Any thread.
QUORCOMMON_API const char* getModuleName(const QuorAuth::Module& module);

/// Finds the module of a name, in exactly the letters that `getModuleName` gives. False, and `module`
/// untouched, for a null, empty or unknown name. Any thread.
QUORCOMMON_API bool findModule(const char* name, QuorAuth::Module& module);

/// The module that the user works in; `None` until it is set. One for the whole process, read and set by any
/// thread.
QUORCOMMON_API QuorAuth::Module getCurrentModule();

/// Makes a module the current one. A number that is no module is kept as it is.
QUORCOMMON_API void setCurrentModule(QuorAuth::Module module);

} // namespace kxcom
