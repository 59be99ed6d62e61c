#include "FontFile.h"

#include <algorithm>
#include <cstdint>
#include <map>

namespace {

/// Numbers as the format has them, the highest byte first.
class Bytes {
public:
    Bytes& u16(std::int64_t value) { return number(value, 2); }
    Bytes& u32(std::int64_t value) { return number(value, 4); }
    Bytes& zeros(int words)
    {
        for (int i = 0; i < words; ++i)
            u16(0);
        return *this;
    }
    Bytes& text(const std::string& bytes)
    {
        bytes_ += bytes;
        return *this;
    }
    std::string take() { return std::move(bytes_); }

private:
    Bytes& number(std::int64_t value, int size)
    {
        for (int i = size - 1; i >= 0; --i)
            bytes_ += static_cast<char>((value >> (8 * i)) & 0xFF);
        return *this;
    }

    std::string bytes_;
};

std::int64_t glyphOf(const FontFile& font, char32_t code)
{
    const auto found = std::find_if(font.characters.begin(), font.characters.end(),
                                    [code](const auto& character) { return character.code == code; });
    return found == font.characters.end() ? 0 : found - font.characters.begin() + 1;
}

std::string head()
{
    Bytes head;
    head.u32(0x00010000).u32(0x00010000).u32(0).u32(0x5F0F3CF5).u16(0).u16(1000);
    head.zeros(8);                                         // made and changed
    head.u16(0).u16(0).u16(1000).u16(1000);                // the box around all glyphs
    return head.u16(0).u16(6).u16(2).u16(1).u16(0).take(); // addresses of glyphs in 32 bits
}

std::string hhea(std::int64_t glyphs)
{
    Bytes hhea;
    hhea.u32(0x00010000).u16(800).u16(-200).u16(0).u16(1000);
    return hhea.zeros(11).u16(glyphs).take();
}

std::string maxp(std::int64_t glyphs)
{
    Bytes maxp;
    maxp.u32(0x00010000).u16(glyphs).u16(4).u16(1).u16(0).u16(0).u16(2);
    return maxp.zeros(8).take();
}

std::string hmtx(const FontFile& font)
{
    Bytes hmtx;
    hmtx.u16(font.notdefAdvance).u16(0);
    for (const auto& character : font.characters)
        hmtx.u16(character.advance).u16(0);
    return hmtx.take();
}

std::string cmap(const FontFile& font)
{
    const auto count = static_cast<std::int64_t>(font.characters.size());
    Bytes cmap;
    cmap.u16(0).u16(1).u16(3).u16(font.isSymbols ? 0 : 10).u32(12);
    cmap.u16(12).u16(0).u32(16 + 12 * count).u32(0).u32(count);
    for (const auto& character : font.characters)
        cmap.u32(character.code).u32(character.code).u32(glyphOf(font, character.code));
    return cmap.take();
}

std::string boxUpTo(int height)
{
    Bytes glyph;
    glyph.u16(1).u16(0).u16(0).u16(600).u16(height).u16(3).u16(0);
    glyph.text("\1\1\1\1");
    return glyph.u16(0).u16(0).u16(600).u16(0).u16(0).u16(height).u16(0).u16(-height).take();
}

std::string loca(const FontFile& font, std::size_t sizeOfBox)
{
    Bytes loca;
    loca.u32(0).u32(0);
    std::size_t end = 0;
    for (const auto& character : font.characters) {
        if (character.code == U'H') end += sizeOfBox;
        loca.u32(static_cast<std::int64_t>(end));
    }
    return loca.take();
}

std::string kern(const FontFile& font)
{
    const auto count = static_cast<std::int64_t>(font.pairs.size());
    std::map<std::pair<std::int64_t, std::int64_t>, int> pairs;
    for (const auto& pair : font.pairs)
        pairs[{glyphOf(font, pair.left), glyphOf(font, pair.right)}] = pair.together;
    Bytes kern;
    kern.u16(0).u16(1).u16(0).u16(14 + 6 * count).u16(1).u16(count).zeros(3);
    for (const auto& [glyphs, together] : pairs)
        kern.u16(glyphs.first).u16(glyphs.second).u16(together);
    return kern.take();
}

} // namespace

std::string FontFile::bytes() const
{
    const auto glyphs = static_cast<std::int64_t>(characters.size()) + 1;
    const std::string box = boxUpTo(capitalHeight);
    std::map<std::string, std::string> tables = {
        {"cmap", cmap(*this)},  {"glyf", box},         {"head", head()},
        {"hhea", hhea(glyphs)}, {"hmtx", hmtx(*this)}, {"loca", loca(*this, box.size())},
        {"maxp", maxp(glyphs)},
    };
    if (!pairs.empty()) tables["kern"] = kern(*this);

    Bytes file;
    file.u32(0x00010000).u16(static_cast<std::int64_t>(tables.size())).zeros(3);
    std::size_t offset = 12 + 16 * tables.size();
    std::string contents;
    for (auto& [name, table] : tables) {
        file.text(name)
            .u32(0)
            .u32(static_cast<std::int64_t>(offset))
            .u32(static_cast<std::int64_t>(table.size()));
        table.resize((table.size() + 3) / 4 * 4);
        offset += table.size();
        contents += table;
    }
    return file.text(contents).take();
}
