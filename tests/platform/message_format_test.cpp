#include "../neutral_locale.h"

#include <QuorMsgHandle/Messages.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <locale>
#include <string>
#include <string_view>

namespace {

using kxcom::MsgArg;
using kxcom::printMsg;

const double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

enum Plain { plainSeven = 7 };
enum class Scoped : short { MinusTwo = -2 };

TEST(PrintMsg, TextWithoutArgumentsStandsAsItIs)
{
    for (const char* text : {"", "plain", "100%s", "%d%%", "%", "%n", "%999999999999d", "\xD6\xD0%s"}) {
        EXPECT_EQ(printMsg(text), text);
        EXPECT_EQ(kxcom::formatMessage(text, nullptr, 3), text);
    }
    EXPECT_EQ(printMsg(nullptr), "");
    EXPECT_EQ(printMsg(nullptr, 1), "");
}

TEST(PrintMsg, ConversionsTakeTheArgumentsInOrder)
{
    EXPECT_EQ(printMsg("%s: %d, %s", "a", 2, std::string("c")), "a: 2, c");
    EXPECT_EQ(printMsg("%d%d%d", 1, 2, 3), "123");
}

TEST(PrintMsg, PercentSignsAndWhatIsNoConversionStayWithoutTakingAnArgument)
{
    const struct {
        const char* format;
        const char* text;
    } cases[] = {
        {"%%", "%"},       {"%%s %s", "%s A"}, {"100%", "100%"},   {"100% %s", "100% A"},
        {"%y %s", "%y A"}, {"%n %s", "%n A"},  {"%5", "%5"},       {"%-", "%-"},
        {"%.", "%."},      {"%l", "%l"},       {"%5.2l", "%5.2l"}, {"%1$s %s", "%1$s A"},
        {"%I64", "%I64"},  {"%*", "%*"},       {"", ""},           {"none", "none"},
    };
    for (const auto& [format, text] : cases) {
        EXPECT_EQ(printMsg(format, "A"), text) << format;
    }
}

TEST(PrintMsg, ConversionsWithoutAnArgumentStay)
{
    EXPECT_EQ(printMsg("%s %s %5.2f", 1), "1 %s %5.2f");
    EXPECT_EQ(printMsg("%*d|%s", 5), "%*d|5");
    EXPECT_EQ(printMsg("%*.*f|", 5, 2), "%*.*f|");
}

TEST(PrintMsg, ArgumentsLeftOverAreIgnored)
{
    EXPECT_EQ(printMsg("%s", "a", "b", 3), "a");
    EXPECT_EQ(printMsg("no conversion", "a"), "no conversion");
}

TEST(PrintMsg, ArgumentsAreNeverReadAsFormats)
{
    EXPECT_EQ(printMsg("%s|%s", "%s%d%n%%", "b"), "%s%d%n%%|b");
    EXPECT_EQ(printMsg("%%%s", "s"), "%s");
}

TEST(PrintMsg, TextConversionShowsEveryType)
{
    const int object = 0;
    const struct {
        MsgArg argument;
        std::string text;
    } cases[] = {
        {"text", "text"},
        {"", ""},
        {static_cast<const char*>(nullptr), "(null)"},
        {std::string_view(), ""},
        {std::string_view("abc").substr(1), "bc"},
        {std::string_view("a\0b", 3), std::string("a\0b", 3)},
        {nullptr, "(null)"},
        {static_cast<const void*>(nullptr), "(null)"},
        {reinterpret_cast<const void*>(std::uintptr_t{0x1F0}), "0x1f0"},
        {0, "0"},
        {SHRT_MIN, "-32768"},
        {INT_MIN, "-2147483648"},
        {LLONG_MIN, "-9223372036854775808"},
        {LLONG_MAX, "9223372036854775807"},
        {ULLONG_MAX, "18446744073709551615"},
        {static_cast<signed char>(-1), "-1"},
        {static_cast<unsigned char>(200), "200"},
        {'c', "c"},
        {true, "true"},
        {false, "false"},
        {plainSeven, "7"},
        {Scoped::MinusTwo, "-2"},
        {0.1, "0.1"},
        {2.0, "2"},
        {-0.0, "-0"},
        {1e300, "1e+300"},
        {5e-324, "5e-324"},
        {0.1f, "0.10000000149011612"},
        {2.5L, "2.5"},
        {infinity, "inf"},
        {-infinity, "-inf"},
        {nan, "nan"},
        {-nan, "nan"},
    };
    for (const auto& [argument, text] : cases)
        EXPECT_EQ(printMsg("%s", argument), text);
    EXPECT_NE(printMsg("%s", &object).find("0x"), std::string::npos);
}

TEST(PrintMsg, NumberConversionsShowWhatIsNoNumberPlainly)
{
    for (const char* format :
         {"%d", "%i", "%u", "%x", "%f", "%g", "%e", "%a", "%c", "%p", "%05d", "%.9f", "%+d"}) {
        EXPECT_EQ(printMsg(format, "a text"), "a text") << format;
        EXPECT_EQ(printMsg(format, static_cast<const char*>(nullptr)), "(null)") << format;
    }
    EXPECT_EQ(printMsg("%8d|%-8d|", "text", "text"), "    text|text    |");
}

TEST(PrintMsg, IntegerConversionsOfDoubles)
{
    const struct {
        const char* format;
        double value;
        const char* text;
    } cases[] = {
        {"%d", 3.0, "3"},
        {"%d", -3.0, "-3"},
        {"%d", -0.0, "0"},
        {"%d", 2.5, "2.5"},
        {"%x", 255.0, "ff"},
        {"%05d", 7.0, "00007"},
        {"%d", 1e300, "1e+300"},
        {"%d", infinity, "inf"},
        {"%d", nan, "nan"},
        {"%d", 0x1p63, "9223372036854775808"},
        {"%d", -0x1p63, "-9223372036854775808"},
        {"%d", 0x1p64, "18446744073709551616"},
        {"%c", 65.0, "65"},
        {"%x", 0x1p63, "8000000000000000"},
        {"%x", 0x1p64, "18446744073709551616"},
    };
    for (const auto& [format, value, text] : cases)
        EXPECT_EQ(printMsg(format, value), text) << format;
}

TEST(PrintMsg, OtherTypesUnderNumberLetters)
{
    EXPECT_EQ(printMsg("%d %d %f", true, 'A', true), "1 65 1.000000");
    EXPECT_EQ(printMsg("%f %g", 3, -4LL), "3.000000 -4");
    EXPECT_EQ(printMsg("%f", ULLONG_MAX), "18446744073709551616.000000");
    EXPECT_EQ(printMsg("%u", -5), "-5");
    EXPECT_EQ(printMsg("%c%c%c", 'a', 98, 255), "ab\xFF");
    EXPECT_EQ(printMsg("%c %c", 256, -1), "256 -1");
    EXPECT_EQ(printMsg("%3c|%-3c|", 'a', 'b'), "  a|b  |");
    EXPECT_EQ(printMsg("%p %p", 255, nullptr), "0xff 0x0");
    EXPECT_EQ(printMsg("%x %X", static_cast<const void*>(nullptr),
                       reinterpret_cast<const void*>(std::uintptr_t{171})),
              "0 AB");
}

TEST(PrintMsg, HexadecimalOfNegativeNumbersHasTheTypesOwnWidth)
{
    EXPECT_EQ(printMsg("%x", static_cast<signed char>(-1)), "ff");
    EXPECT_EQ(printMsg("%x", static_cast<short>(-1)), "ffff");
    EXPECT_EQ(printMsg("%x", -1), "ffffffff");
    EXPECT_EQ(printMsg("%x", -1LL), "ffffffffffffffff");
    EXPECT_EQ(printMsg("%o", LLONG_MIN), "1000000000000000000000");
}

TEST(PrintMsg, PrecisionCutsTexts)
{
    EXPECT_EQ(printMsg("%.3s|%.0s|%.99999999999s|", "abcdef", "abc", "abc"), "abc||abc|");
    EXPECT_EQ(printMsg("%6.2s|%-6.2s|", "abc", "abc"), "    ab|ab    |");
    EXPECT_EQ(printMsg("%.1s", 123), "123");
}

TEST(PrintMsg, StarsTakeIntegers)
{
    EXPECT_EQ(printMsg("%*d|", 4, 7), "   7|");
    EXPECT_EQ(printMsg("%*d|", -4, 7), "7   |");
    EXPECT_EQ(printMsg("%.*f", 2, 1.005), "1.00");
    EXPECT_EQ(printMsg("%.*f", -2, 1.5), "1.500000");
    EXPECT_EQ(printMsg("%*.*s|", 5, 2, "abc"), "   ab|");
    EXPECT_EQ(printMsg("%*d|", "no number", 7), "7|");
    EXPECT_EQ(printMsg("%*d|", 2.5, 7), "7|");
}

TEST(PrintMsg, HostileSizesAreBounded)
{
    EXPECT_EQ(printMsg("%999999999999999999999d", 1), std::string(4095, ' ') + "1");
    EXPECT_EQ(printMsg("%-2147483648s|", "a"), "a" + std::string(4095, ' ') + "|");
    EXPECT_EQ(printMsg("%.2147483647d", 1), std::string(4095, '0') + "1");
    EXPECT_EQ(printMsg("%.99999f", 0.5), "0.5" + std::string(4095, '0'));
    EXPECT_EQ(printMsg("%.99999f", DBL_MAX).size(), 309u + 1 + 4096);
    EXPECT_EQ(printMsg("%.99999e", 1.0), "1." + std::string(4096, '0') + "e+00");
    EXPECT_EQ(printMsg("%.99999g", 0.5), "0.5");
    EXPECT_EQ(printMsg("%*d", INT_MIN, 1), "1" + std::string(4095, ' '));
    EXPECT_EQ(printMsg("%*d", LLONG_MIN, 1), "1" + std::string(4095, ' '));
    EXPECT_EQ(printMsg("%.*d", ULLONG_MAX, 1), std::string(4095, '0') + "1");
    EXPECT_EQ(printMsg("%.99999a", 1.0), "0x1." + std::string(4096, '0') + "p+0");
}

TEST(PrintMsg, TextsOfAnyLengthArriveWhole)
{
    const std::string text(1'000'000, 't');
    EXPECT_EQ(printMsg("<%s>", text), "<" + text + ">");
    EXPECT_EQ(printMsg((text + "%s").c_str(), 1), text + "1");
}

std::string byLibrary(const char* format, auto value)
{
    char buffer[1000];
    const int length = std::snprintf(buffer, sizeof(buffer), format, value);
    return std::string(buffer, static_cast<std::size_t>(length));
}

TEST(PrintMsg, SuitingArgumentsLookAsInTheCLibrary)
{
    const NeutralLocale neutral;
    for (const char* flags : {"", "-", "+", " ", "0", "#", "-0", "+0", " 0", "#0", "+ ", "-#"}) {
        for (const char* size : {"", "1", "12", ".0", ".1", ".12", "12.5", "3.9"}) {
            const std::string begin = std::string("%") + flags + size;
            for (const char letter : std::string_view("diuoxX")) {
                const std::string format = begin + letter;
#if defined(__MINGW32__)
                // Its library drops the zero that '#' is there for.
                if (letter == 'o' && begin.find('#') != std::string::npos && begin.ends_with(".0")) continue;
#endif
                for (const int value : {0, 1, 8, 255, 123456, INT_MAX}) {
                    if (letter == 'u' &&
                        std::string_view(flags).find_first_of("+ ") != std::string_view::npos)
                        continue;
                    EXPECT_EQ(printMsg(format.c_str(), value), byLibrary(format.c_str(), value)) << format;
                }
                if (letter == 'u') continue;
                for (const int value : {-1, -255, INT_MIN}) {
                    EXPECT_EQ(printMsg(format.c_str(), value), byLibrary(format.c_str(), value)) << format;
                }
            }
            if (std::string_view(flags).find('#') != std::string_view::npos) continue;
            for (const char letter : std::string_view("fFeEgG")) {
                const std::string format = begin + letter;
                for (const double value : {0.0, -0.0, 1.0, -1.5, 0.1, 123456789.125, 1e22, 1e-7, -1e100,
                                           DBL_MIN, infinity, -infinity, nan}) {
                    EXPECT_EQ(printMsg(format.c_str(), value), byLibrary(format.c_str(), value)) << format;
                }
            }
        }
    }
    for (const char* format : {"%a", "%A", "%.3a", "%20a", "%020a", "%+a"}) {
        for (const double value : {1.0, -0.5, 3.75, 1e300, infinity}) {
            EXPECT_EQ(printMsg(format, value), byLibrary(format, value)) << format;
        }
    }
}

TEST(PrintMsg, LengthModifiersAreAcceptedAndMeanNothing)
{
    for (const char* modifier : {"h", "hh", "l", "ll", "j", "z", "t", "q", "w", "I", "I32", "I64", "L"}) {
        EXPECT_EQ(printMsg((std::string("%") + modifier + "d").c_str(), LLONG_MIN), "-9223372036854775808")
            << modifier;
        EXPECT_EQ(printMsg((std::string("%5") + modifier + "s").c_str(), "abc"), "  abc") << modifier;
    }
    EXPECT_EQ(printMsg("%Lf %lf", 1.5, 2.5), "1.500000 2.500000");
    EXPECT_EQ(printMsg("%'d", 1234567), "1234567");
}

/// A locale in which every number would look different.
class CommaPoint : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(PrintMsg, GlobalLocaleChangesNothing)
{
    const std::string environments = std::setlocale(LC_ALL, nullptr);
    const std::locale before = std::locale::global(std::locale(std::locale(), new CommaPoint));
    const std::string text = printMsg("%f %d %s %g", 1234.5, 1234567, 1234.5, 0.5);
    std::locale::global(before);
    // A global locale that has a name is the C library's, too: here it was "C".
    std::setlocale(LC_ALL, environments.c_str());
    EXPECT_EQ(text, "1234.500000 1234567 1234.5 0.5");
}

TEST(PrintMsg, EveryByteSurvives)
{
    std::string bytes;
    for (int i = 1; i < 256; ++i) {
        if (i != '%') bytes += static_cast<char>(i);
    }
    EXPECT_EQ(printMsg((bytes + "%s").c_str(), bytes), bytes + bytes);
}

TEST(PrintMsg, AnyShortFormatIsHarmless)
{
    const std::string_view alphabet = "%*.-059dfsclx $I";
    std::string format(5, ' ');
    std::size_t shown = 0;
    for (std::size_t code = 0; code < alphabet.size() * alphabet.size() * alphabet.size() * alphabet.size();
         ++code) {
        std::size_t rest = code;
        format[0] = '%';
        for (std::size_t i = 1; i < format.size(); ++i, rest /= alphabet.size())
            format[i] = alphabet[rest % alphabet.size()];
        const std::string text = printMsg(format.c_str(), -3, "%s", 2.5);
        if (!text.empty()) ++shown;
        ASSERT_LE(text.size(), 3u * 4096) << format;
    }
    EXPECT_GT(shown, 65'000u);
}

} // namespace
