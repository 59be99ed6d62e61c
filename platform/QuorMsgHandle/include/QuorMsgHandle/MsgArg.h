#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

namespace kxcom {

/// One argument of a message, of whatever type. It refers to its text and does not own it: it is made for the
/// call and lives no longer. Every number is kept whole; a `long double` becomes the nearest `double`.
class MsgArg {
public:
    enum class Kind : unsigned char { Signed, Unsigned, Real, Boolean, Character, Text, NullText, Pointer };

    template<class T>
    requires std::integral<T> MsgArg(T value) : bytes_(sizeof(T))
    {
        if constexpr (std::same_as<T, bool>) {
            kind_ = Kind::Boolean;
            value_.whole = value ? 1 : 0;
        } else if constexpr (std::same_as<T, char>) {
            kind_ = Kind::Character;
            value_.whole = static_cast<unsigned char>(value);
        } else if constexpr (std::is_signed_v<T>) {
            kind_ = Kind::Signed;
            value_.whole = static_cast<unsigned long long>(static_cast<long long>(value));
        } else {
            kind_ = Kind::Unsigned;
            value_.whole = value;
        }
    }

    template<class T>
    requires std::floating_point<T> MsgArg(T value) : kind_(Kind::Real)
    {
        value_.real = static_cast<double>(value);
    }

    /// An enumerator is its number.
    template<class T>
    requires std::is_enum_v<T> MsgArg(T value) : MsgArg(static_cast<std::underlying_type_t<T>>(value)) {}

    MsgArg(const char* text) : kind_(text == nullptr ? Kind::NullText : Kind::Text)
    {
        value_.text = text;
        size_ = text == nullptr ? 0 : std::char_traits<char>::length(text);
    }

    MsgArg(std::string_view text) : kind_(Kind::Text), size_(text.size()) { value_.text = text.data(); }
    /// A template, so that nothing is converted to a text that would be gone before it is read.
    template<class Traits, class Allocator>
    MsgArg(const std::basic_string<char, Traits, Allocator>& text)
        : MsgArg(std::string_view(text.data(), text.size()))
    {
    }
    MsgArg(const void* pointer) : kind_(Kind::Pointer) { value_.pointer = pointer; }
    MsgArg(std::nullptr_t) : MsgArg(static_cast<const void*>(nullptr)) {}

    Kind kind() const { return kind_; }
    /// The size of the integer type that was given, in bytes.
    std::size_t bytes() const { return bytes_; }
    /// `Signed` (as two's complement of 64 bits), `Unsigned`, `Boolean` (0 or 1), `Character` (0 to 255).
    unsigned long long whole() const { return value_.whole; }
    double real() const { return value_.real; }
    std::string_view text() const
    {
        return size_ == 0 ? std::string_view() : std::string_view(value_.text, size_);
    }
    const void* pointer() const { return value_.pointer; }

private:
    union Value {
        unsigned long long whole = 0;
        double real;
        const char* text;
        const void* pointer;
    };

    Kind kind_;
    unsigned char bytes_ = 0;
    std::size_t size_ = 0;
    Value value_;
};

static_assert(std::is_trivially_copyable_v<MsgArg>);

} // namespace kxcom
