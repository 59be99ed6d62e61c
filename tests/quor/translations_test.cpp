// The catalogues in po/, as they have been compiled, against the messages that the library holds.

#include "../../quor/Catalogue.h"
#include "../../quor/CharacterSet.h"
#include "CommandRun.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>
#include <set>

namespace {

namespace fs = std::filesystem;
using quor::Catalogue;
using Texts = std::set<std::string>;

const std::string sourceFolder = QUOR_SOURCE_DIR "/po/";

/// What begins the messages that are made of a text and the name of a script's function.
const std::string joinedBegin = "系统配置出错，请联系开发商，";
const std::string joinedEnd = ": %s";

std::string gbk(const std::string& utf8)
{
    std::string bytes;
    EXPECT_TRUE(quor::charset::gbkFromUtf8(utf8, bytes)) << utf8;
    return bytes;
}

std::string libraryBytes()
{
    return readFile(QUOR_LIBRARY_FILE);
}

/// The texts that messages/Messages.h writes out.
Texts writtenTexts()
{
    const std::string header = readFile(QUOR_SOURCE_DIR "/messages/Messages.h");
    const std::regex literal("U\"([^\"]*)\"");
    Texts texts;
    for (std::sregex_iterator match(header.begin(), header.end(), literal), end; match != end; ++match) {
        const std::string text = std::regex_replace((*match)[1].str(), std::regex("\\\\n"), "\n");
        EXPECT_EQ(text.find('\\'), std::string::npos) << "an escape that this test does not know: " << text;
        texts.insert(text);
    }
    return texts;
}

/// The texts of the built library that begin as the joined ones do.
Texts joinedTexts()
{
    const std::string library = libraryBytes();
    const std::string begin = gbk(joinedBegin);
    Texts texts;
    for (std::size_t at = library.find(begin); at != std::string::npos; at = library.find(begin, at + 1))
        texts.insert(quor::charset::utf8FromGbk(library.c_str() + at));
    return texts;
}

Texts libraryTexts()
{
    Texts texts = writtenTexts();
    EXPECT_EQ(texts.erase(joinedBegin) + texts.erase(joinedEnd), 2u)
        << "the parts of the joined messages have changed";
    texts.merge(joinedTexts());
    return texts;
}

Texts keysOf(const Catalogue& catalogue)
{
    Texts keys;
    for (const auto& [text, translation] : catalogue)
        keys.insert(text);
    return keys;
}

std::vector<std::string> conversionsIn(const std::string& text)
{
    const std::regex conversion("%[-+ #0-9.*']*[A-Za-z%]?");
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), conversion), end; match != end; ++match)
        found.push_back(match->str());
    return found;
}

std::vector<std::string> languages()
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(sourceFolder)) {
        if (entry.path().extension() == ".po") names.push_back(entry.path().stem().string());
    }
    return names;
}

Catalogue compiled(const std::string& language)
{
    const fs::path prefix = fs::path(quorCommand()).parent_path().parent_path();
    return quor::readCatalogue((prefix / "share/locale" / language / "LC_MESSAGES/QuorScriptor.mo").string());
}

TEST(LibrarysMessages, AreFoundByThisTest)
{
    const Texts texts = libraryTexts();
    for (const char* text :
         {"图形库调用出错：%s", "\n布尔运算参数应该为4个，目前为: %d", "系统配置出错，请联系开发商，%s: %s",
          "系统配置出错，请联系开发商，getProjectUser", "系统配置出错，请联系开发商，getProjectSpec: %s"})
        EXPECT_EQ(texts.count(text), 1u) << text;
}

TEST(LibrarysMessages, AreAllInTheTemplateForTranslators)
{
    EXPECT_EQ(keysOf(quor::readCatalogue(QUOR_TEST_CATALOGUES "/template.mo")), libraryTexts());
}

TEST(Translations, ArePresentForEveryMessageAndForNothingElse)
{
    ASSERT_THAT(languages(), testing::Contains("en"));
    for (const std::string& language : languages())
        EXPECT_EQ(keysOf(compiled(language)), libraryTexts()) << language;
}

TEST(Translations, AreOfTextsAsTheLibrarysBytesHaveThem)
{
    const std::string library = libraryBytes();
    for (const auto& [text, translation] : compiled("en"))
        EXPECT_NE(library.find(gbk(text) + '\0'), std::string::npos) << text;
}

TEST(Translations, TakeTheSameArgumentsInTheSameOrder)
{
    for (const std::string& language : languages()) {
        for (const auto& [text, translation] : compiled(language))
            EXPECT_EQ(conversionsIn(translation), conversionsIn(text)) << language << ": " << translation;
    }
}

TEST(Translations, BeginWithALineFeedWhereTheTextDoesAndHaveNoOther)
{
    for (const std::string& language : languages()) {
        for (const auto& [text, translation] : compiled(language)) {
            EXPECT_EQ(translation.starts_with('\n'), text.starts_with('\n')) << language << ": " << text;
            EXPECT_EQ(translation.find('\n', 1), std::string::npos) << language << ": " << translation;
        }
    }
}

TEST(Translations, CanBeWrittenInGbk)
{
    for (const std::string& language : languages()) {
        for (const auto& [text, translation] : compiled(language)) {
            std::string bytes;
            EXPECT_TRUE(quor::charset::gbkFromUtf8(translation, bytes)) << language << ": " << translation;
        }
    }
}

TEST(Translations, IntoEnglishAreAscii)
{
    for (const auto& [text, translation] : compiled("en")) {
        for (const char byte : translation)
            EXPECT_LT(static_cast<unsigned char>(byte), 0x80) << translation;
    }
}

TEST(Translations, IntoEnglishAreAllDifferent)
{
    Texts seen;
    for (const auto& [text, translation] : compiled("en"))
        EXPECT_TRUE(seen.insert(translation).second) << translation;
}

} // namespace
