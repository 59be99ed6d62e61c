#pragma once

#include <string>
#include <vector>

/// A TrueType font made for a test, so that what its texts measure is known from the numbers given here and
/// from no program. All of them are in the font's units, of which 1000 are an em. Glyph 0 is ".notdef".
struct FontFile {
    struct Character {
        char32_t code;
        int advance;
    };
    struct Pair {
        char32_t left;
        char32_t right;
        int together;
    };

    int notdefAdvance = 500;
    /// Ascending by their codes; "H" is a box, the others have no outline.
    std::vector<Character> characters;
    int capitalHeight = 700;
    std::vector<Pair> pairs;
    /// The map is one of symbols, and not from Unicode.
    bool isSymbols = false;

    std::string bytes() const;
};
