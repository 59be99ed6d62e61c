#include "Font.h"

#include "Terminal.h"

#include <filesystem>
#include <fmt/format.h>

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_ADVANCES_H

namespace quor {
namespace {

constexpr char32_t behindUnicode = 0x110000;
constexpr FT_UInt notdef = 0;

double advanceOf(FT_Face face, FT_UInt glyph) noexcept
{
    FT_Fixed advance = 0;
    if (FT_Get_Advance(face, glyph, FT_LOAD_NO_SCALE, &advance) != 0 && glyph != notdef)
        FT_Get_Advance(face, notdef, FT_LOAD_NO_SCALE, &advance);
    return static_cast<double>(advance);
}

} // namespace

Font::Font(const std::string& path, long face)
{
    try {
        open(path, face);
        measureCapital();
    } catch (const FontError&) {
        close();
        throw;
    }
}

Font::~Font()
{
    close();
}

void Font::close() noexcept
{
    if (face_) FT_Done_Face(face_);
    if (library_) FT_Done_FreeType(library_);
}

void Font::open(const std::string& path, long face)
{
    std::error_code error;
    const auto type = std::filesystem::status(system::pathOf(path), error).type();
    if (type == std::filesystem::file_type::not_found) throw FontError("there is no such file");
    // Opening a pipe would wait for whoever writes into it.
    if (type != std::filesystem::file_type::regular)
        throw FontError("a regular file is expected; this is none");
    if (FT_Init_FreeType(&library_) != 0) throw FontError("FreeType does not start");
    constexpr FT_Long onlyCount = -1;
    const std::string name = terminal::systemName(path, path);
    if (FT_New_Face(library_, name.c_str(), onlyCount, &face_) != 0)
        throw FontError("the file is no font, or cannot be read");
    const FT_Long faces = face_->num_faces;
    FT_Done_Face(face_);
    face_ = nullptr;
    if (face >= faces)
        throw FontError(fmt::format("it has {} faces, counted from 0, and none {}", faces, face));
    if (FT_New_Face(library_, name.c_str(), face, &face_) != 0) throw FontError("the font is broken");
    if (!FT_IS_SCALABLE(face_))
        throw FontError("a font of outlines is expected; this has pictures of one size");
    if (FT_Select_Charmap(face_, FT_ENCODING_UNICODE) != 0)
        throw FontError("a font that knows Unicode is expected; this does not");
}

void Font::measureCapital()
{
    const FT_UInt glyph = FT_Get_Char_Index(face_, U'H');
    if (glyph != notdef && FT_Load_Glyph(face_, glyph, FT_LOAD_NO_SCALE) == 0)
        capHeight_ = static_cast<double>(face_->glyph->metrics.horiBearingY);
    if (capHeight_ <= 0)
        throw FontError(
            "a font with the letter H is expected, whose height is that of the text; this has none");
}

double Font::widthOf(std::u32string_view characters) const noexcept
{
    const bool hasPairs = FT_HAS_KERNING(face_);
    double width = 0;
    FT_UInt before = notdef;
    for (const char32_t character : characters) {
        const FT_UInt glyph = character < behindUnicode ? FT_Get_Char_Index(face_, character) : notdef;
        width += advanceOf(face_, glyph);
        FT_Vector pair{};
        if (hasPairs && before != notdef && glyph != notdef &&
            FT_Get_Kerning(face_, before, glyph, FT_KERNING_UNSCALED, &pair) == 0)
            width += static_cast<double>(pair.x);
        before = glyph;
    }
    return width;
}

} // namespace quor
