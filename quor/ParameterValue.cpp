#include "ParameterValue.h"

#include "Failure.h"
#include "Terminal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

namespace quor {
namespace {

enum class Reading { Number, NoNumber, TooLarge };

Reading readNumber(std::string_view text, double& number)
{
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::invalid_argument || rest != end) return Reading::NoNumber;
    if (error == std::errc::result_out_of_range) return Reading::TooLarge;
    // The words "inf" and "nan" are read as numbers, too.
    return std::isfinite(number) ? Reading::Number : Reading::NoNumber;
}

std::string_view withoutBlanks(std::string_view text)
{
    while (text.starts_with(' '))
        text.remove_prefix(1);
    while (text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

bool readPoint(std::string_view text, QuorPoint& point)
{
    const std::size_t first = text.find(',');
    const std::size_t second = first == std::string_view::npos ? first : text.find(',', first + 1);
    if (second == std::string_view::npos) return false;
    const std::string_view parts[] = {text.substr(0, first), text.substr(first + 1, second - first - 1),
                                      text.substr(second + 1)};
    double* const coordinates[] = {&point.x, &point.y, &point.z};
    for (int i = 0; i < 3; ++i) {
        if (readNumber(withoutBlanks(parts[i]), *coordinates[i]) != Reading::Number) return false;
    }
    return true;
}

class Argument {
public:
    explicit Argument(const std::string& argument) : argument_(argument), equals_(argument.find('='))
    {
        if (equals_ == std::string::npos || equals_ == 0) fail("NAME=VALUE", "of that form");
    }

    std::string key() const
    {
        return terminal::gbkFrom(argument_.substr(0, equals_), place() + " (the name)");
    }
    KVValue value(KVTag wanted) const;

private:
    std::string_view text() const { return std::string_view(argument_).substr(equals_ + 1); }
    std::string place() const { return "--set " + argument_; }
    [[noreturn]] void fail(const char* expected, const char* fact) const
    {
        throw Failure(WrongUsage,
                      fmt::format("{}: {} is expected, and this is not {}", place(), expected, fact));
    }

    KVValue number() const;
    KVValue boolean() const;
    KVValue point() const;
    KVValue guessed() const;
    KVValue words() const { return KVValue::ofString(terminal::gbkFrom(text(), place())); }

    const std::string& argument_;
    std::size_t equals_;
};

KVValue Argument::number() const
{
    double number = 0;
    const Reading reading = readNumber(text(), number);
    if (reading == Reading::TooLarge) fail("a number of usual size", "one");
    if (reading == Reading::NoNumber) fail("a number, as the script has there,", "one");
    return KVValue::ofDouble(number);
}

KVValue Argument::boolean() const
{
    if (text() != "true" && text() != "false") fail("true or false, as the script has there,", "one of them");
    return KVValue::ofBool(text() == "true");
}

KVValue Argument::point() const
{
    QuorPoint point;
    if (!readPoint(text(), point)) fail("a point x,y,z, as the script has there,", "one");
    return KVValue::ofPoint(point);
}

KVValue Argument::guessed() const
{
    double number = 0;
    QuorPoint point;
    if (readNumber(text(), number) != Reading::NoNumber) return this->number();
    if (text() == "true" || text() == "false") return boolean();
    if (readPoint(text(), point)) return KVValue::ofPoint(point);
    return words();
}

KVValue Argument::value(KVTag wanted) const
{
    switch (wanted) {
    case KVTag::Double:
        return number();
    case KVTag::Bool:
        return boolean();
    case KVTag::Point:
        return point();
    case KVTag::String:
        return words();
    default:
        return guessed();
    }
}

} // namespace

void checkParameters(const std::vector<std::string>& arguments)
{
    for (const std::string& argument : arguments)
        static_cast<void>(Argument(argument).key());
}

std::vector<KVParams> readParameters(const std::vector<std::string>& arguments,
                                     const std::vector<KVParams>& known)
{
    std::vector<KVParams> records;
    for (const std::string& text : arguments) {
        const Argument argument(text);
        KVParams record;
        record.key = argument.key();
        const auto held = std::find_if(known.begin(), known.end(),
                                       [&record](const KVParams& one) { return one.key == record.key; });
        record.value = argument.value(held == known.end() ? KVTag::None : held->value.tag());
        records.push_back(std::move(record));
    }
    return records;
}

double readFactor(const std::string& argument, const std::string& place)
{
    double factor = 0;
    if (readNumber(argument, factor) != Reading::Number || factor <= 0)
        throw Failure(WrongUsage, fmt::format("{} {}: a number above 0 is expected", place, argument));
    return factor;
}

} // namespace quor
