// The text styles of a scene: what texts measure, against fonts whose numbers are known.

#include "FontFile.h"
#include "SceneRun.h"
#include "TestSystem.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string_view>

#include <ft2build.h>
#include FT_FREETYPE_H

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int notdef = 444;

/// A capital is 700 of the font's units high.
FontFile latin()
{
    FontFile font;
    font.notdefAdvance = notdef;
    font.characters = {{U' ', 250}, {U'A', 610}, {U'H', 735}, {U'V', 605}, {U'a', 500}, {U'\u9600', 1000}};
    font.pairs = {{U'A', U'V', -70}, {U'V', U'A', -60}, {U'V', U'\u9600', 35}};
    // With the glyph of missing characters, which no length is to follow.
    font.pairs.push_back({U'A', U'?', -99});
    font.pairs.push_back({U'?', U'V', -98});
    return font;
}

/// A capital is 500 units high, and all letters are alike.
FontFile wide()
{
    FontFile font;
    font.notdefAdvance = 100;
    font.characters = {{U'A', 900}, {U'H', 900}, {U'V', 900}};
    font.capitalHeight = 500;
    return font;
}

class SceneText : public testing::Test {
protected:
    SceneText()
    {
        run_.folder().write("latin.ttf", latin().bytes());
        run_.folder().write("fonts/wide.ttf", wide().bytes());
    }

    /// The answers of the current style `style` to what the expression asks it.
    std::vector<double> ask(const std::string& expression, const std::string& scene = styles) const
    {
        return run_.numbers(scene, "(function() local style = glib.getCurrentTxtstyle() return " +
                                       expression + " end)()");
    }

    /// How many units of the font "latin" a text is long, given as Lua writes it; heights are 700 there.
    double units(const std::string& text) const
    {
        const auto lengths = ask("style:getlen_h(" + text + ", 700)");
        return lengths.size() == 1 ? lengths[0] : NAN;
    }

    static constexpr const char* styles = R"({"textStyle": "MAIN", "textStyles": {
        "MAIN": {"font": "latin.ttf", "height": 3.5},
        "NARROW": {"font": "latin.ttf", "height": 7, "factor": 0.8},
        "宽": {"font": "fonts/wide.ttf", "height": 10}}})";

    const SceneRun run_;
};

TEST_F(SceneText, LengthIsThatOfTheAdvances)
{
    EXPECT_DOUBLE_EQ(units("'H'"), 735);
    EXPECT_DOUBLE_EQ(units("'HaA'"), 735 + 500 + 610);
    EXPECT_DOUBLE_EQ(units("'a a'"), 500 + 250 + 500);
    EXPECT_DOUBLE_EQ(units("''"), 0);
    EXPECT_DOUBLE_EQ(units("('H'):rep(10000)"), 7350000);
}

TEST_F(SceneText, PairsOfTheFontMoveTogether)
{
    EXPECT_DOUBLE_EQ(units("'AV'"), 610 + 605 - 70);
    EXPECT_DOUBLE_EQ(units("'AVA'"), 610 + 605 + 610 - 70 - 60);
    EXPECT_DOUBLE_EQ(units("'A V'"), 610 + 250 + 605);
}

TEST_F(SceneText, ChineseTextIsReadAsGbk)
{
    // U+9600 is B7 A7 in GBK.
    EXPECT_DOUBLE_EQ(units("'\\183\\167'"), 1000);
    EXPECT_DOUBLE_EQ(units("'V\\183\\167A'"), 605 + 35 + 1000 + 610);
    EXPECT_DOUBLE_EQ(units("'\xB7\xA7\xB7\xA7'"), 2000);
}

TEST_F(SceneText, CharactersThatTheFontLacksAreItsNotdef)
{
    EXPECT_DOUBLE_EQ(units("'B'"), notdef);
    EXPECT_DOUBLE_EQ(units("'A\\213\\162V'"), 610 + notdef + 605);
    EXPECT_DOUBLE_EQ(units("'\\n\\t'"), 2 * notdef);
}

TEST_F(SceneText, BytesThatAreNoGbkAreNotdefEach)
{
    EXPECT_DOUBLE_EQ(units("'\\255'"), notdef);
    EXPECT_DOUBLE_EQ(units("'A\\255\\254V'"), 610 + 2 * notdef + 605);
    EXPECT_DOUBLE_EQ(units("'H\\129'"), 735 + notdef);
    EXPECT_DOUBLE_EQ(units("'\\183 A'"), notdef + 250 + 610) << "half a character";
    EXPECT_DOUBLE_EQ(units("'\\128H'"), notdef + 735);
}

TEST_F(SceneText, FontThatHasACharacterForStrayBytesDoesNotGetThem)
{
    FontFile font = latin();
    font.characters.push_back({U'\uF7FF', 5000});
    font.characters.push_back({0x110000, 5000});
    run_.folder().write("latin.ttf", font.bytes());
    EXPECT_DOUBLE_EQ(units("'\\255'"), notdef);
}

TEST_F(SceneText, TextEndsAtTheCharacterZero)
{
    EXPECT_DOUBLE_EQ(units("'A\\0H'"), 610);
}

TEST_F(SceneText, LengthFollowsHeightAndFactor)
{
    const auto answers = ask("style:height(), style:getfactor(), style:getlen('H'), style:getlen_h('H', 14), "
                             "style:getlen_h('H', 0), style:getlen_h('H', -7)");
    ASSERT_EQ(answers.size(), 6u);
    EXPECT_EQ(answers[0], 3.5);
    EXPECT_EQ(answers[1], 1);
    EXPECT_DOUBLE_EQ(answers[2], 735 / 700.0 * 3.5);
    EXPECT_DOUBLE_EQ(answers[3], 735 / 700.0 * 14);
    EXPECT_EQ(answers[4], 0);
    EXPECT_DOUBLE_EQ(answers[5], -735 / 700.0 * 7);
    EXPECT_THAT(ask("(function() style:setstyle('NARROW') return style:height(), style:getfactor(), "
                    "style:getlen('H'), style:getlen_h('AV', 700) end)()"),
                ElementsAre(7, 0.8, testing::DoubleEq(735 / 700.0 * 7 * 0.8), testing::DoubleEq(1145 * 0.8)));
}

TEST_F(SceneText, HeightIsThatOfTheFontsCapital)
{
    EXPECT_THAT(
        ask("(function() style:setstyle('\\191\\237') return style:height(), style:getlen('AV') end)()"),
        ElementsAre(10, testing::DoubleEq(1800 / 500.0 * 10)));
}

TEST_F(SceneText, StyleThatWasSetHoldsForTheNextQuestions)
{
    EXPECT_THAT(
        ask("(function() style:setstyle('NARROW') return glib.getCurrentTxtstyle():height(), style:height() "
            "end)()"),
        ElementsAre(7, 7));
    EXPECT_THAT(
        ask("(function() style:setstyle('NARROW') style:setstyle('MAIN') return style:height() end)()"),
        ElementsAre(3.5));
}

TEST_F(SceneText, UnknownStyleChangesNothingAndIsToldOnce)
{
    const CommandRun drawn = run_.draw(styles, R"(
local style = glib.getCurrentTxtstyle()
style:setstyle("NARROW")
for _ = 1, 3 do
    style:setstyle("none") style:setstyle("\191\237x") style:setstyle("")
end
return {{26, {style:height(), 0, 0}, 1}})");
    EXPECT_EQ(drawn.exitCode, 0);
    EXPECT_THAT(drawn.output, HasSubstr("\"args\":[[7,0,0],1]"));
    const std::string head = run_.scenePath() + ": the script asks for the text style \"";
    const std::string end = "\", which is not there; \"NARROW\" stays\n";
    EXPECT_EQ(drawn.errors, head + "none" + end + head + "宽x" + end + head + end);
}

TEST_F(SceneText, UnknownStylesAreToldUpToAHundredAndBriefly)
{
    const CommandRun drawn = run_.draw(styles, R"(
local style = glib.getCurrentTxtstyle()
for i = 1, 300 do style:setstyle(i .. ("q"):rep(10000)) end
return {})");
    EXPECT_EQ(drawn.exitCode, 0);
    EXPECT_EQ(std::count(drawn.errors.begin(), drawn.errors.end(), '\n'), 100);
    EXPECT_LT(drawn.errors.size(), 100U * 1000U);
}

TEST_F(SceneText, StyleOutlivesTheCollectorsOfTheScript)
{
    const CommandRun drawn = run_.draw(styles, R"(
style = glib.getCurrentTxtstyle()
last = newproxy(true)
local kept = style
getmetatable(last).__gc = function() io.stderr:write(kept:getlen("H") > 3 and "long\n" or "short\n") end
return {})");
    EXPECT_EQ(drawn.exitCode, 0);
    EXPECT_EQ(drawn.errors, "long\n");
}

/// What FreeType itself says of the characters of a face, in units of the font.
class Face {
public:
    explicit Face(int number)
    {
        FT_Init_FreeType(&library_);
        failed_ = FT_New_Face(library_, path, number, &face_) != 0;
    }
    ~Face() { FT_Done_FreeType(library_); }
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;

    bool isThere() const { return !failed_; }
    double advance(FT_ULong code)
    {
        return load(code) ? static_cast<double>(face_->glyph->metrics.horiAdvance) : NAN;
    }
    double top(FT_ULong code)
    {
        return load(code) ? static_cast<double>(face_->glyph->metrics.horiBearingY) : NAN;
    }

    static constexpr const char* path = QUOR_ROOT_DRIVE "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc";

private:
    bool load(FT_ULong code)
    {
        return FT_Load_Glyph(face_, FT_Get_Char_Index(face_, code), FT_LOAD_NO_SCALE) == 0;
    }

    FT_Library library_ = nullptr;
    FT_Face face_ = nullptr;
    bool failed_ = false;
};

TEST_F(SceneText, FacesOfARealFontMeasureAsItsNumbersSay)
{
    std::vector<double> lengths;
    for (const int number : {0, 1}) {
        Face face(number);
        ASSERT_TRUE(face.isThere()) << Face::path << " (package fonts-wqy-microhei)";
        double units = 0;
        for (const char32_t code : std::u32string_view(U"DN50 H阀门"))
            units += face.advance(code);
        units += face.advance(0); // of the stray byte, glyph 0
        const std::string scene = R"({"textStyle": "A", "textStyles": {"A": {"font": ")" +
                                  std::string(Face::path) + R"(", "face": )" + std::to_string(number) +
                                  R"(, "height": 5, "factor": 0.7}}})";
        const auto answers = ask("style:getlen('DN50 H\\183\\167\\195\\197\\255')", scene);
        ASSERT_EQ(answers.size(), 1u);
        EXPECT_NEAR(answers[0], units / face.top(U'H') * 5 * 0.7, 1e-9) << number;
        lengths.push_back(answers[0]);
    }
    EXPECT_NE(lengths[0], lengths[1]) << "one face has letters of one width";
}

TEST_F(SceneText, FontsThatAreOfNoUse)
{
    FontFile symbols = latin();
    symbols.isSymbols = true;
    run_.folder().write("symbols.ttf", symbols.bytes());
    FontFile flat = latin();
    flat.capitalHeight = 0;
    run_.folder().write("flat.ttf", flat.bytes());
    FontFile small = latin();
    small.characters = {{U'a', 500}};
    run_.folder().write("small.ttf", small.bytes());
    run_.folder().write("torn.ttf", latin().bytes().substr(0, 100));
    run_.folder().write("text.ttf", "no font");
    run_.folder().write("dots.bdf",
                        "STARTFONT 2.1\nFONT -x-y-medium-r-normal--8-80-75-75-c-80-iso10646-1\n"
                        "SIZE 8 75 75\nFONTBOUNDINGBOX 8 8 0 0\nCHARS 1\nSTARTCHAR H\nENCODING 72\n"
                        "SWIDTH 500 0\nDWIDTH 8 0\nBBX 8 1 0 0\nBITMAP\nFF\nENDCHAR\nENDFONT\n");
    const std::string noCapital =
        "a font with the letter H is expected, whose height is that of the text; this has none";
    const struct {
        const char* font;
        int face;
        std::string reason;
    } cases[] = {
        {"missing.ttf", 0, "there is no such file"},
        {"fonts", 0, "a regular file is expected; this is none"},
        {"text.ttf", 0, "the file is no font, or cannot be read"},
        {"torn.ttf", 0, "the file is no font, or cannot be read"},
        {"latin.ttf", 1, "it has 1 faces, counted from 0, and none 1"},
        {"symbols.ttf", 0, "a font that knows Unicode is expected; this does not"},
        {"dots.bdf", 0, "a font of outlines is expected; this has pictures of one size"},
        {"small.ttf", 0, noCapital},
        {"flat.ttf", 0, noCapital},
    };
    // The scene names it from the folder that it lies in.
    const std::string folder = std::filesystem::path(run_.scenePath()).parent_path().string();
    for (const auto& [font, face, reason] : cases) {
        // It is not the current style: every font is looked at.
        const std::string scene =
            R"({"textStyle": "A", "textStyles": {"A": {"font": "latin.ttf", "height": 1},
            "B": {"font": ")" +
            std::string(font) + R"(", "face": )" + std::to_string(face) + R"(, "height": 1}}})";
        const CommandRun drawn = run_.draw(scene, "return {}");
        EXPECT_EQ(drawn.exitCode, 2) << font;
        EXPECT_EQ(drawn.errors, "quor: " + run_.scenePath() + ": textStyles.B: font " + folder +
                                    sys::inSystemForm("/") + font + ": " + reason + "\n");
    }
}

TEST_F(SceneText, FontsPathIsInTheTerminalsCharacterSet)
{
    const std::string scene = R"({"textStyle": "A", "textStyles": {"A": {"font": "阀.ttf", "height": 5}}})";
    run_.folder().write("阀.ttf", latin().bytes());
    EXPECT_EQ(run_.draw(scene, "return {}").exitCode, 0);
    run_.folder().write(testsystem::argumentInGbk("阀", "\xB7\xA7") + ".ttf", wide().bytes());
    const std::string script =
        run_.folder().write("s.lua", "function main() return {{26, "
                                     "{glib.getCurrentTxtstyle():getlen('H'), 0, 0}, 1}} end");
    EXPECT_THAT(runQuor({"draw", script, "--scene", run_.scenePath(), "--format", "text"},
                        {"LOCPATH", "LC_ALL=zh_CN.GBK"})
                    .output,
                StartsWith("0 createQuorPoint((9, 0, 0), 1)"));
}

TEST_F(SceneText, SampleCentresItsNoteByItsRealLength)
{
    const CommandRun drawn = runQuor({"draw", "-q", "control_valve_iso.lua", "--scene", "isometric.json"});
    ASSERT_EQ(drawn.exitCode, 0) << drawn.errors;
    Face face(0);
    ASSERT_TRUE(face.isThere()) << Face::path << " (package fonts-wqy-microhei)";
    const auto length = [&face](std::u32string_view characters, double height) {
        double units = 0;
        for (const char32_t code : characters)
            units += face.advance(code);
        return units / face.top(U'H') * height * 0.7;
    };
    const double tag = length(U"FV-101", 5);
    const double name = length(U"气动调节阀 DN50", 3.5);
    constexpr double middle = 150; // as the scene's reference matrix has it
    std::vector<double> begins;
    bool isUnderlined = false;
    const auto drawing = nlohmann::json::parse(drawn.output);
    for (const auto& primitive : drawing.at("primitives")) {
        const auto& args = primitive.at("args");
        if (primitive.at("factory") == "createQuorText") begins.push_back(args.at(1).at(0).get<double>());
        if (primitive.at("factory") != "createQuorLine") continue;
        const double from = args.at(0).at(0).get<double>();
        const double to = args.at(1).at(0).get<double>();
        isUnderlined |= std::abs(to - from - name) < 1e-9 && std::abs((from + to) / 2 - middle) < 1e-9;
    }
    EXPECT_GT(name, tag);
    EXPECT_THAT(begins, ElementsAre(testing::DoubleNear(middle - tag / 2, 1e-9),
                                    testing::DoubleNear(middle - name / 2, 1e-9)));
    EXPECT_TRUE(isUnderlined);
}

} // namespace
