#pragma once

#include <KxGeBasic/KxGePoint3D.h>
#include <string_view>

namespace quor {

enum class NumberReading { Number, NoNumber, TooLarge };

/// Reads a finite decimal number, as in -12.5 or 1e-3, that is all of the text, whatever the locale.
/// Otherwise `number` is as it was or means nothing.
NumberReading readNumber(std::string_view text, double& number);

/// Reads numbers parted by commas; blanks may stand around each. False unless there are exactly `count`.
bool readNumbers(std::string_view text, double* numbers, int count);

/// Reads x,y,z.
bool readPoint(std::string_view text, QuorPoint& point);

} // namespace quor
