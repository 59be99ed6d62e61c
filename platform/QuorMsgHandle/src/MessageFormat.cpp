#include <QuorMsgHandle/Messages.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// Where a format asks for what its argument is not, the argument is shown in its plain form: a message that
// reaches the user with an odd number in it is better than one that does not.

namespace kxcom {
namespace {

constexpr int sizeLimit = 4096;
// Far beyond any text's length when read as the precision of a text.
constexpr int readLimit = 1'000'000'000;

struct Conversion {
    bool left = false;
    bool plus = false;
    bool space = false;
    bool zero = false;
    bool alternate = false;
    bool starWidth = false;
    bool starPrecision = false;
    int width = 0;
    int precision = -1; ///< -1: none given
    char letter = 's';
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isOneOf(char c, std::string_view set)
{
    return set.find(c) != std::string_view::npos;
}

/// A cursor over the format that answers NUL at its end.
class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {}

    char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
    void advance() { ++at_; }
    std::size_t position() const { return at_; }

    bool take(std::string_view expected)
    {
        if (!text_.substr(std::min(at_, text_.size())).starts_with(expected)) return false;
        at_ += expected.size();
        return true;
    }

    int number()
    {
        int value = 0;
        for (; isDigit(peek()); advance()) {
            value = value < readLimit / 10 ? value * 10 + (peek() - '0') : readLimit;
        }
        return value;
    }

private:
    std::string_view text_;
    std::size_t at_ = 0;
};

/// Reads the conversion at the beginning of `text`, which is a '%'. Gives its length, 0 when it is none.
std::size_t readConversion(std::string_view text, Conversion& conversion)
{
    Reader reader(text);
    reader.advance();
    for (; isOneOf(reader.peek(), "-+ 0#'"); reader.advance()) {
        switch (reader.peek()) {
        case '-':
            conversion.left = true;
            break;
        case '+':
            conversion.plus = true;
            break;
        case ' ':
            conversion.space = true;
            break;
        case '0':
            conversion.zero = true;
            break;
        case '#':
            conversion.alternate = true;
            break;
        default:
            break;
        }
    }
    if (reader.take("*")) {
        conversion.starWidth = true;
    } else {
        conversion.width = reader.number();
    }
    if (reader.take(".")) {
        if (reader.take("*")) {
            conversion.starPrecision = true;
        } else {
            conversion.precision = reader.number();
        }
    }
    if (!reader.take("I64") && !reader.take("I32")) {
        while (isOneOf(reader.peek(), "hljztLqwI"))
            reader.advance();
    }
    conversion.letter = reader.peek();
    if (conversion.letter == '\0' || !isOneOf(conversion.letter, "diuoxXfFeEgGaAcsp")) return 0;
    return reader.position() + 1;
}

/// Writes sign or base prefix, zeros and body within the width.
void emit(std::string& out, const Conversion& conversion, std::string_view prefix, std::size_t zeros,
          std::string_view body, bool zeroFill)
{
    const std::size_t width = static_cast<std::size_t>(std::min(conversion.width, sizeLimit));
    const std::size_t length = prefix.size() + zeros + body.size();
    std::size_t fill = width > length ? width - length : 0;
    if (zeroFill && !conversion.left) {
        zeros += fill;
        fill = 0;
    }
    if (!conversion.left) out.append(fill, ' ');
    out.append(prefix);
    out.append(zeros, '0');
    out.append(body);
    if (conversion.left) out.append(fill, ' ');
}

void emitText(std::string& out, const Conversion& conversion, std::string_view text)
{
    emit(out, conversion, {}, 0, text, false);
}

char signOf(const Conversion& conversion, bool negative)
{
    if (negative) return '-';
    if (conversion.plus) return '+';
    return conversion.space ? ' ' : '\0';
}

void toUpper(char* begin, char* end)
{
    std::transform(begin, end, begin,
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
}

struct Integer {
    bool negative = false;
    std::uint64_t magnitude = 0;
    std::size_t bytes = 8;
};

/// The argument as an integer; false when it is none: a text, a number with a fraction or beyond 64 bits.
bool asInteger(const MsgArg& argument, Integer& integer)
{
    switch (argument.kind()) {
    case MsgArg::Kind::Signed:
        integer.negative = static_cast<std::int64_t>(argument.whole()) < 0;
        integer.magnitude = integer.negative ? 0 - argument.whole() : argument.whole();
        integer.bytes = argument.bytes();
        return true;
    case MsgArg::Kind::Unsigned:
    case MsgArg::Kind::Boolean:
    case MsgArg::Kind::Character:
        integer.magnitude = argument.whole();
        return true;
    case MsgArg::Kind::Pointer:
        integer.magnitude = reinterpret_cast<std::uintptr_t>(argument.pointer());
        return true;
    case MsgArg::Kind::Real: {
        const double value = argument.real();
        // NaN fails the first comparison.
        if (!(value >= -0x1p63 && value < 0x1p64) || std::trunc(value) != value) return false;
        integer.negative = value < 0;
        integer.magnitude = static_cast<std::uint64_t>(std::fabs(value));
        return true;
    }
    case MsgArg::Kind::Text:
    case MsgArg::Kind::NullText:
        break;
    }
    return false;
}

bool asReal(const MsgArg& argument, double& value)
{
    if (argument.kind() == MsgArg::Kind::Real) {
        value = argument.real();
        return true;
    }
    Integer integer;
    if (!asInteger(argument, integer)) return false;
    value = static_cast<double>(integer.magnitude);
    if (integer.negative) value = -value;
    return true;
}

void emitInteger(std::string& out, const Conversion& conversion, Integer integer)
{
    const char letter = conversion.letter;
    const bool hexadecimal = isOneOf(letter, "xXp");
    const int base = hexadecimal ? 16 : letter == 'o' ? 8 : 10;
    if (base != 10 && integer.negative) {
        integer.magnitude = 0 - integer.magnitude;
        if (integer.bytes < 8) integer.magnitude &= (std::uint64_t{1} << (8 * integer.bytes)) - 1;
        integer.negative = false;
    }
    char digits[24];
    char* end = digits;
    if (integer.magnitude != 0 || conversion.precision != 0) {
        end = std::to_chars(digits, digits + sizeof(digits), integer.magnitude, base).ptr;
    }
    if (letter == 'X') toUpper(digits, end);
    const std::string_view body(digits, static_cast<std::size_t>(end - digits));

    const std::size_t wanted = static_cast<std::size_t>(std::clamp(conversion.precision, 0, sizeLimit));
    std::size_t zeros = wanted > body.size() ? wanted - body.size() : 0;
    std::string_view prefix;
    char sign = '\0';
    if (letter == 'p' || (conversion.alternate && hexadecimal && integer.magnitude != 0)) {
        prefix = letter == 'X' ? "0X" : "0x";
    } else if (conversion.alternate && base == 8 && zeros == 0 && !body.starts_with('0')) {
        zeros = 1;
    } else if (base == 10) {
        sign = letter == 'u' ? (integer.negative ? '-' : '\0') : signOf(conversion, integer.negative);
        if (sign != '\0') prefix = std::string_view(&sign, 1);
    }
    emit(out, conversion, prefix, zeros, body, conversion.zero && conversion.precision < 0);
}

void emitReal(std::string& out, const Conversion& conversion, double value)
{
    const bool upper = isOneOf(conversion.letter, "FEGA");
    // The largest double has 309 digits before the point.
    char buffer[sizeLimit + 400];
    char* end = buffer;
    char* const last = buffer + sizeof(buffer);
    const double magnitude = std::fabs(value);
    const bool finite = std::isfinite(value);
    char prefix[3];
    std::size_t prefixSize = 0;
    if (const char sign = signOf(conversion, std::signbit(value) && !std::isnan(value)); sign != '\0') {
        prefix[prefixSize++] = sign;
    }
    if (!finite) {
        end = std::to_chars(buffer, last, magnitude).ptr;
    } else {
        const int given = std::min(conversion.precision, sizeLimit);
        const int precision = given < 0 ? 6 : given;
        switch (conversion.letter) {
        case 'f':
        case 'F':
            end = std::to_chars(buffer, last, magnitude, std::chars_format::fixed, precision).ptr;
            break;
        case 'e':
        case 'E':
            end = std::to_chars(buffer, last, magnitude, std::chars_format::scientific, precision).ptr;
            break;
        case 'g':
        case 'G':
            end = std::to_chars(buffer, last, magnitude, std::chars_format::general, precision).ptr;
            break;
        default:
            prefix[prefixSize++] = '0';
            prefix[prefixSize++] = upper ? 'X' : 'x';
            end = given < 0 ? std::to_chars(buffer, last, magnitude, std::chars_format::hex).ptr
                            : std::to_chars(buffer, last, magnitude, std::chars_format::hex, given).ptr;
            break;
        }
    }
    if (upper) toUpper(buffer, end);
    emit(out, conversion, std::string_view(prefix, prefixSize), 0,
         std::string_view(buffer, static_cast<std::size_t>(end - buffer)), conversion.zero && finite);
}

/// Shows an argument by its own type; only the width counts.
void emitPlain(std::string& out, const Conversion& conversion, const MsgArg& argument)
{
    Conversion plain;
    plain.left = conversion.left;
    plain.width = conversion.width;
    Integer integer;
    switch (argument.kind()) {
    case MsgArg::Kind::Text:
        emitText(out, plain, argument.text());
        break;
    case MsgArg::Kind::NullText:
        emitText(out, plain, "(null)");
        break;
    case MsgArg::Kind::Boolean:
        emitText(out, plain, argument.whole() != 0 ? "true" : "false");
        break;
    case MsgArg::Kind::Character: {
        const char c = static_cast<char>(argument.whole());
        emitText(out, plain, std::string_view(&c, 1));
        break;
    }
    case MsgArg::Kind::Signed:
    case MsgArg::Kind::Unsigned:
        plain.letter = 'd';
        asInteger(argument, integer);
        emitInteger(out, plain, integer);
        break;
    case MsgArg::Kind::Pointer:
        if (argument.pointer() == nullptr) {
            emitText(out, plain, "(null)");
        } else {
            plain.letter = 'p';
            asInteger(argument, integer);
            emitInteger(out, plain, integer);
        }
        break;
    case MsgArg::Kind::Real: {
        char buffer[32];
        const double value = std::isnan(argument.real()) ? std::fabs(argument.real()) : argument.real();
        char* end = std::to_chars(buffer, buffer + sizeof(buffer), value).ptr;
        emitText(out, plain, std::string_view(buffer, static_cast<std::size_t>(end - buffer)));
        break;
    }
    }
}

void emitArgument(std::string& out, const Conversion& conversion, const MsgArg& argument)
{
    Integer integer;
    double real = 0.0;
    switch (conversion.letter) {
    case 's':
        if (argument.kind() == MsgArg::Kind::Text && conversion.precision >= 0) {
            emitText(out, conversion,
                     argument.text().substr(0, static_cast<std::size_t>(conversion.precision)));
            return;
        }
        break;
    case 'c':
        if (argument.kind() == MsgArg::Kind::Signed || argument.kind() == MsgArg::Kind::Unsigned) {
            asInteger(argument, integer);
            if (!integer.negative && integer.magnitude <= 255) {
                const char c = static_cast<char>(integer.magnitude);
                emitText(out, conversion, std::string_view(&c, 1));
                return;
            }
        }
        break;
    case 'p':
        if (argument.kind() != MsgArg::Kind::Real && asInteger(argument, integer)) {
            emitInteger(out, conversion, integer);
            return;
        }
        break;
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
        if (asInteger(argument, integer)) {
            emitInteger(out, conversion, integer);
            return;
        }
        break;
    default:
        if (asReal(argument, real)) {
            emitReal(out, conversion, real);
            return;
        }
        break;
    }
    emitPlain(out, conversion, argument);
}

/// An argument as a width or precision; 0 when it is no integer.
int asSize(const MsgArg& argument)
{
    Integer integer;
    if (!asInteger(argument, integer)) return 0;
    const int size = static_cast<int>(std::min(integer.magnitude, std::uint64_t{readLimit}));
    return integer.negative ? -size : size;
}

} // namespace

std::string formatMessage(const char* format, const MsgArg* arguments, std::size_t count)
{
    if (format == nullptr) return {};
    if (arguments == nullptr || count == 0) return format;
    std::string out;
    const MsgArg* next = arguments;
    const MsgArg* const end = arguments + count;
    for (std::string_view rest(format); !rest.empty();) {
        const std::size_t percent = rest.find('%');
        out.append(rest.substr(0, percent));
        if (percent == std::string_view::npos) break;
        rest.remove_prefix(percent);
        if (rest.starts_with("%%")) {
            out += '%';
            rest.remove_prefix(2);
            continue;
        }
        Conversion conversion;
        const std::size_t length = readConversion(rest, conversion);
        if (length == 0) {
            out += '%';
            rest.remove_prefix(1);
            continue;
        }
        const int needed = 1 + (conversion.starWidth ? 1 : 0) + (conversion.starPrecision ? 1 : 0);
        if (end - next < needed) {
            out.append(rest.substr(0, length));
        } else {
            if (conversion.starWidth) {
                const int width = asSize(*next++);
                conversion.left = conversion.left || width < 0;
                conversion.width = std::abs(width);
            }
            if (conversion.starPrecision) conversion.precision = std::max(asSize(*next++), -1);
            emitArgument(out, conversion, *next++);
        }
        rest.remove_prefix(length);
    }
    return out;
}

} // namespace kxcom
