#include "ArgumentText.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>

namespace quor {
namespace {

std::string_view withoutBlanks(std::string_view text)
{
    while (text.starts_with(' '))
        text.remove_prefix(1);
    while (text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

} // namespace

NumberReading readNumber(std::string_view text, double& number)
{
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::invalid_argument || rest != end) return NumberReading::NoNumber;
    // Out of range is also what is too small to tell from 0. The command's locale is "C".
    if (error == std::errc::result_out_of_range) {
        number = std::strtod(std::string(text).c_str(), nullptr);
        if (!std::isfinite(number)) return NumberReading::TooLarge;
    }
    // The words "inf" and "nan" are read as numbers, too.
    return std::isfinite(number) ? NumberReading::Number : NumberReading::NoNumber;
}

bool readNumbers(std::string_view text, double* numbers, int count)
{
    for (int i = 0; i < count; ++i) {
        const std::size_t comma = text.find(',');
        if ((comma == std::string_view::npos) != (i + 1 == count)) return false;
        if (readNumber(withoutBlanks(text.substr(0, comma)), numbers[i]) != NumberReading::Number)
            return false;
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    return true;
}

bool readPoint(std::string_view text, QuorPoint& point)
{
    double numbers[3];
    if (!readNumbers(text, numbers, 3)) return false;
    point = {numbers[0], numbers[1], numbers[2]};
    return true;
}

} // namespace quor
