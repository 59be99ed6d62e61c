#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace quor::charset {

/// Turns texts of one character set into another, of which one is UTF-8, by the system's means:
/// posix/Converter.cpp and windows/Converter.cpp.
class Converter {
public:
    Converter(const char* to, const char* from);
    ~Converter();
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    /// Whether both sets are known.
    bool isOpen() const { return sets_ != nullptr; }

    /// Converts up to the first byte that is refused, and takes what was converted off `from`.
    void convert(std::string_view& from, std::string& to) const;

private:
    struct Sets;
    std::unique_ptr<const Sets> sets_;
};

} // namespace quor::charset
