#pragma once

#include <string>

namespace quor {

/// The letters of a call that is asked for on the command line.
struct CallFormat {
    std::string arguments; ///< the letters before '>'
    std::string results;   ///< the letters behind it

    /// As the library takes it.
    std::string text() const { return arguments + ">" + results; }
};

/// Splits a FORMAT. A `Failure` (wrong usage) names the letter that cannot be: one that is no letter on its
/// side, or whose argument no command line can give, or one of more than a call may have.
CallFormat readCallFormat(const std::string& format);

/// What the letters mean and how their ARGs are written, for the help.
std::string helpOfLetters();

} // namespace quor
