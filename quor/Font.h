#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

using FT_Library = struct FT_LibraryRec_*;
using FT_Face = struct FT_FaceRec_*;

namespace quor {

/// Why a font is of no use, in bytes for the terminal.
class FontError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The measures of a font's characters: those of its outlines, in the font's own units, never fitted to the
/// dots of a screen. For one thread at a time.
class Font {
public:
    /// Opens a face of the font in a file. Throws `FontError` when that is none, has no outlines, no map from
    /// Unicode, or no capital H, by which its height is known.
    Font(const std::string& path, long face);
    ~Font();
    Font(const Font&) = delete;
    Font& operator=(const Font&) = delete;

    /// The height of the capital letter H; above 0.
    double capHeight() const { return capHeight_; }

    /// The length of a line of text: what each character moves the pen on, and what pairs of them are moved
    /// together by the font's table "kern". A character that the font lacks, and every code behind Unicode,
    /// counts as its glyph 0, ".notdef", with no pairs.
    double widthOf(std::u32string_view characters) const noexcept;

private:
    void open(const std::string& path, long face);
    void close() noexcept;
    void measureCapital();

    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
    double capHeight_ = 0;
};

} // namespace quor
