// The reader of compiled catalogues.

#include "../../quor/Catalogue.h"
#include "CommandRun.h"
#include "MoFile.h"
#include "TestSystem.h"

#include <cerrno>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace {

using quor::Catalogue;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class CatalogueFile : public testing::Test {
protected:
    Catalogue read(const std::string& bytes) { return quor::readCatalogue(scratch_.write("a.mo", bytes)); }

    /// What reading says, behind the path; "(read)" when it is content.
    std::string complaint(const std::string& path)
    {
        try {
            quor::readCatalogue(path);
        } catch (const std::runtime_error& error) {
            const std::string text = error.what();
            EXPECT_EQ(text.substr(0, path.size() + 2), path + ": ");
            return text.substr(path.size() + 2);
        }
        return "(read)";
    }
    std::string complaintOf(const std::string& bytes) { return complaint(scratch_.write("a.mo", bytes)); }

    const ScratchFolder scratch_;
};

TEST_F(CatalogueFile, HoldsTextsInEitherOrderOfBytes)
{
    for (const bool bigEndian : {false, true}) {
        const Catalogue catalogue =
            read(moFile({moHead, {"\n阀", "\nvalve"}, {"闸 %s", "gate %s"}}, bigEndian));
        EXPECT_THAT(catalogue, ElementsAre(Pair("\n阀", "\nvalve"), Pair("闸 %s", "gate %s"))) << bigEndian;
    }
}

TEST_F(CatalogueFile, HoldsWhatMsgfmtCompiles)
{
    for (const char* form : {"little", "big", "no-hash"}) {
        const std::string path = std::string(QUOR_TEST_CATALOGUES) + "/" + form + ".mo";
        EXPECT_THAT(quor::readCatalogue(path), ElementsAre(Pair("图", "picture"))) << form;
    }
}

TEST_F(CatalogueFile, WithNothingButItsHeadIsEmpty)
{
    EXPECT_THAT(read(moFile({moHead})), IsEmpty());
}

TEST_F(CatalogueFile, GivesOfPluralFormsTheFirst)
{
    const std::string forms("valve\0valves", 12);
    const std::string translations("one\0many", 8);
    EXPECT_THAT(read(moFile({moHead, {forms, translations}})), ElementsAre(Pair("valve", "one")));
}

TEST_F(CatalogueFile, LeavesOutWhatHasNoTranslation)
{
    EXPECT_THAT(read(moFile({moHead, {"a", ""}, {"b", std::string("\0x", 2)}, {"c", "d"}})),
                ElementsAre(Pair("c", "d")));
}

TEST_F(CatalogueFile, TakesUtf8HoweverItIsSpelled)
{
    for (const char* set : {"UTF-8", "utf-8", "utf8", "UTF8"}) {
        const std::string head = std::string("Language: en\nContent-Type: text/plain; charset=") + set;
        EXPECT_EQ(complaintOf(moFile({{"", head}})), "(read)") << set;
        EXPECT_EQ(complaintOf(moFile({{"", head + "\nX: y\n"}})), "(read)") << set;
    }
}

TEST_F(CatalogueFile, InAnotherFormIsRefused)
{
    const std::string good = moFile({moHead, {"ab", "cd"}});
    const auto withWord = [&good](std::size_t index, std::size_t value) {
        return std::string(good).replace(4 * index, 4, moWord(value));
    };
    const std::size_t size = good.size();
    const std::string tooShort = "the file is too short";
    const std::string otherwise = "the file begins otherwise";
    const std::string table = "a table reaches beyond the file's end";
    const std::string text = "a text reaches beyond the file's end";
    const std::string noSet = "it does not say that its character set is UTF-8";
    const struct {
        const char* what;
        std::string bytes;
        std::string found;
    } cases[] = {
        {"empty", "", tooShort},
        {"shorter than its head", good.substr(0, 19), tooShort},
        {"text", "msgid \"\"\nmsgstr \"Content-Type: text/plain\"\n", otherwise},
        {"magic number in a mixed order", withWord(0, 0x0412DE95), otherwise},
        {"later form", withWord(1, 0x20000), "the file is of a later form"},
        {"one text more than there is room for", withWord(2, (size - 28) / 8 + 1), table},
        {"any number of texts", withWord(2, 0xFFFFFFFF), table},
        {"texts' table behind the end", withWord(3, size + 1), table},
        {"texts' table at the end", withWord(3, size), table},
        {"translations' table far away", withWord(4, 0xFFFFFFFF), table},
        {"text too long", withWord(9, size), text},
        {"text longer than anything", withWord(9, 0xFFFFFFFF), text},
        {"text behind the end", withWord(10, size), text},
        {"text far away", withWord(10, 0xFFFFFFFF), text},
        {"translation too long", withWord(13, 0xFFFFFFF0), text},
        {"text without an end", withWord(9, 1), "a text is not ended by a NUL"},
        {"no entries", moFile({}), noSet},
        {"no head", moFile({{"ab", "cd"}}), noSet},
        {"head without a set", moFile({{"", "Language: en\n"}, {"ab", "cd"}}), noSet},
        {"head with an empty set", moFile({{"", "charset=\n"}}), noSet},
        {"another set", moFile({{"", "charset=GBK\n"}}), "its character set is not UTF-8"},
        {"no such set", moFile({{"", "charset=CHARSET\n"}}), "its character set is not UTF-8"},
    };
    ASSERT_EQ(complaintOf(good), "(read)");
    for (const auto& [what, bytes, found] : cases)
        EXPECT_EQ(complaintOf(bytes), "a compiled catalogue of messages is expected; " + found) << what;
}

TEST_F(CatalogueFile, WhoseTextsAreTheSamePlaceManyTimesOverIsRefused)
{
    MoTexts texts = {moHead};
    for (int i = 0; i < 1000; ++i)
        texts.emplace_back("text " + std::to_string(i), "x");
    texts.emplace_back("zz", std::string(20000, 'x'));
    std::string bytes = moFile(texts);
    const std::size_t translations = 28 + 8 * texts.size();
    const std::string longest = bytes.substr(translations + 8 * 1001, 8);
    for (std::size_t i = 1; i <= 1000; ++i)
        bytes.replace(translations + 8 * i, 8, longest);
    EXPECT_EQ(complaintOf(bytes),
              "a compiled catalogue of messages is expected; its texts lie upon each other");
}

TEST_F(CatalogueFile, CutAnywhereIsRefused)
{
    const std::string bytes = moFile({moHead, {"one", "1"}, {"two", "2"}});
    ASSERT_EQ(complaintOf(bytes), "(read)");
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_NE(complaintOf(bytes.substr(0, size)), "(read)") << size;
}

TEST_F(CatalogueFile, WithAnyByteChangedIsReadOrRefused)
{
    const std::string bytes = moFile({moHead, {"one", "1"}, {"two", "2"}});
    int read = 0;
    int refused = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        for (const int change : {0x01, 0x80, 0xFF}) {
            std::string changed = bytes;
            changed[at] = static_cast<char>(changed[at] ^ change);
            ++(complaintOf(changed) == "(read)" ? read : refused);
        }
    }
    EXPECT_GT(read, 0);
    EXPECT_GT(refused, 0);
}

TEST_F(CatalogueFile, ThatIsNoFileIsRefusedAndBlocksNothing)
{
    const testsystem::Pipe pipe(scratch_, "pipe.mo");
    EXPECT_EQ(complaint(pipe.path()),
              std::string("cannot be read: ") +
                  (testsystem::isWindows ? "No such file or directory" : "not a regular file"));
    EXPECT_EQ(complaint(scratch_.path("")), "cannot be read: not a regular file");
    EXPECT_EQ(complaint(scratch_.path("none.mo")), std::string("cannot be read: ") + std::strerror(ENOENT));
    EXPECT_EQ(complaint(scratch_.write("file", "") + "/a.mo"),
              std::string("cannot be read: ") + std::strerror(testsystem::isWindows ? ENOENT : ENOTDIR));
}

} // namespace
