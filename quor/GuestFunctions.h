#pragma once

namespace quor {

/// Puts into every Lua state that is made from now on, those of the configuration included, what a guest has:
/// `print` goes to standard error in the terminal's character set, and `os.exit` is an error. Once for the
/// whole process.
void registerGuestFunctions();

} // namespace quor
