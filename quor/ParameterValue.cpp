#include "ParameterValue.h"

#include "ArgumentText.h"
#include "Failure.h"
#include "Terminal.h"

#include <algorithm>
#include <string_view>

namespace quor {
namespace {

class Argument {
public:
    Argument(const std::string& argument, std::string place, ArgumentSet set = ArgumentSet::Terminal)
        : argument_(argument), place_(std::move(place)), set_(set), equals_(argument.find('='))
    {
        if (equals_ == std::string::npos || equals_ == 0) fail("NAME=VALUE", "of that form");
    }

    std::string key() const
    {
        return gbkOf(std::string_view(argument_).substr(0, equals_), place_ + " (the name)");
    }
    KVValue value(KVTag wanted) const;

private:
    std::string_view text() const { return std::string_view(argument_).substr(equals_ + 1); }
    [[noreturn]] void fail(const char* expected, const char* fact) const
    {
        throw Failure(WrongUsage,
                      fmt::format("{}: {} is expected, and this is not {}", place_, expected, fact));
    }

    std::string gbkOf(std::string_view bytes, const std::string& place) const
    {
        return set_ == ArgumentSet::Utf8 ? terminal::gbkFromUtf8(bytes, place)
                                         : terminal::gbkFrom(bytes, place);
    }

    KVValue number() const;
    KVValue boolean() const;
    KVValue point() const;
    KVValue guessed() const;
    KVValue words() const { return KVValue::ofString(gbkOf(text(), place_)); }

    const std::string& argument_;
    std::string place_;
    ArgumentSet set_;
    std::size_t equals_;
};

KVValue Argument::number() const
{
    double number = 0;
    const NumberReading reading = readNumber(text(), number);
    if (reading == NumberReading::TooLarge) fail("a number of usual size", "one");
    if (reading == NumberReading::NoNumber) fail("a number, as the script has there,", "one");
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
    if (readNumber(text(), number) != NumberReading::NoNumber) return this->number();
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

std::string placeOf(const std::string& argument, ArgumentSet set)
{
    return "--set " + (set == ArgumentSet::Utf8 ? terminal::fromUtf8(argument) : argument);
}

} // namespace

void checkParameters(const std::vector<std::string>& arguments, ArgumentSet set)
{
    for (const std::string& argument : arguments)
        static_cast<void>(Argument(argument, placeOf(argument, set), set).key());
}

std::vector<KVParams> readParameters(const std::vector<std::string>& arguments,
                                     const std::vector<KVParams>& known, ArgumentSet set)
{
    std::vector<KVParams> records;
    for (const std::string& text : arguments) {
        const Argument argument(text, placeOf(text, set), set);
        KVParams record;
        record.key = argument.key();
        const auto held = std::find_if(known.begin(), known.end(),
                                       [&record](const KVParams& one) { return one.key == record.key; });
        record.value = argument.value(held == known.end() ? KVTag::None : held->value.tag());
        records.push_back(std::move(record));
    }
    return records;
}

KVParams readParameter(const std::string& text, const std::string& place)
{
    const Argument argument(text, place);
    return {argument.key(), "", argument.value(KVTag::None)};
}

double readFactor(const std::string& argument, const std::string& place)
{
    double factor = 0;
    if (readNumber(argument, factor) != NumberReading::Number || factor <= 0)
        throw Failure(WrongUsage, fmt::format("{} {}: a number above 0 is expected", place, argument));
    return factor;
}

} // namespace quor
