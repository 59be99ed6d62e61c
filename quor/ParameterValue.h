#pragma once

#include <BaseObj/KVParams.h>
#include <string>
#include <vector>

namespace quor {

/// The character set of an argument: that of the terminal, or UTF-8 where it comes from a file.
enum class ArgumentSet { Terminal, Utf8 };

/// Reads NAME=VALUE arguments as parameters for a script. A value has the type of the record of its name in
/// `known`, what the script holds: number, boolean, point or text. Where that is none, it is the first that
/// fits of: number, true or false, three numbers parted by commas, text. Keys and texts become GBK.
///
/// A number is decimal and finite, as in -12.5 or 1e-3, and stands for all of its argument; blanks may stand
/// around the numbers of a point. Throws `Failure` (wrong usage) for anything else.
std::vector<KVParams> readParameters(const std::vector<std::string>& arguments,
                                     const std::vector<KVParams>& known,
                                     ArgumentSet set = ArgumentSet::Terminal);

/// Throws as `readParameters` does for an argument that no script could make right.
void checkParameters(const std::vector<std::string>& arguments, ArgumentSet set = ArgumentSet::Terminal);

/// Reads one NAME=VALUE whose type nobody knows: the first that fits, as above. `place` names it in messages.
KVParams readParameter(const std::string& text, const std::string& place);

/// The factor of lengths: a number above 0. `place` names the option.
double readFactor(const std::string& argument, const std::string& place);

} // namespace quor
