#include "config_fixture.h"

namespace {

using quorconfig::AnswerOrigin;
using quorconfig::getDigitalFile;
using quorconfig::getProjDatabaseClass;
using quorconfig::getQuorInt2Str;
using quorconfig::getQuorInt2Str_key;
using quorconfig::isDigitalStan;
using quorconfig::isPropertyClass_full;
using quorconfig::lastAnswerOrigin;
using testing::ElementsAre;
using testing::IsEmpty;

/// Functions that a script may leave out.
class OptionalFunctions : public Config {
protected:
    /// None of them ever shows a message of its own.
    void TearDown() override { EXPECT_THAT(messages(), IsEmpty()); }
};

TEST_F(OptionalFunctions, AreNotMissed)
{
    EXPECT_TRUE(loadProject(""));
    for (const bool permitsNull : {false, true}) {
        quorconfig::permitNullReturn(permitsNull);
        EXPECT_EQ(getQuorInt2Str(pipe), installed("sys/quorInt2Str.lua"));
        EXPECT_STREQ(getQuorInt2Str_key(pipe), "sys:quorint2str");
        EXPECT_EQ(getProjDatabaseClass(pipe, nullptr), installed("sys/projDatabaseClass.lua"));
        EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Fallback);
        EXPECT_EQ(getDigitalFile(pipe, "name"), nullptr);
        EXPECT_EQ(isDigitalStan(pipe), nullptr);
        EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::None);
        EXPECT_FALSE(isPropertyClass_full(pipe));
        EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::None);
    }
}

TEST_F(OptionalFunctions, AreNotAskedForAClassThatIsGiven)
{
    EXPECT_TRUE(
        loadProject("function getProjDatabaseClass(m) probe.note('asked') return 'class of ' .. m end"));
    const std::string given = "given";
    EXPECT_EQ(getProjDatabaseClass(pipe, given.c_str()), given.c_str()) << "the same pointer";
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Argument);
    EXPECT_THAT(Probe::notes, IsEmpty());
    EXPECT_STREQ(getProjDatabaseClass(pipe, ""), "class of PIPE");
    EXPECT_STREQ(getProjDatabaseClass(pipe, nullptr), "class of PIPE");
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Script);
}

TEST_F(OptionalFunctions, AreNotAskedForAFileWithoutAName)
{
    EXPECT_TRUE(loadProject("function getDigitalFile(m, n) probe.note('asked') return 'file' end"));
    EXPECT_EQ(getDigitalFile(pipe, nullptr), nullptr);
    EXPECT_EQ(getDigitalFile(pipe, ""), nullptr);
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::None);
    EXPECT_THAT(Probe::notes, IsEmpty());
    EXPECT_STREQ(getDigitalFile(pipe, "n"), "file");
    EXPECT_THAT(Probe::notes, ElementsAre("asked"));
}

TEST_F(OptionalFunctions, MayAnswerWithAnEmptyTextWhetherAStandardIsDigital)
{
    EXPECT_TRUE(loadProject("function isDigitalStan() return '' end"));
    EXPECT_STREQ(isDigitalStan(pipe), "");
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Script);
}

TEST_F(OptionalFunctions, AnswerTrueOrFalse)
{
    struct {
        const char* value;
        bool answer;
        AnswerOrigin origin;
    } const cases[] = {
        {"function(m) return m == 'PIPE' end", true, AnswerOrigin::Script},
        {"function(...) return select('#', ...) ~= 1 end", false, AnswerOrigin::Script},
        {"function() return false end", false, AnswerOrigin::Script},
        {"function() end", false, AnswerOrigin::Script},
        {"function() return 0 end", true, AnswerOrigin::Script},
        {"function() return 'no' end", true, AnswerOrigin::Script},
        {"true", false, AnswerOrigin::None},
        {"5", false, AnswerOrigin::None},
        {"{}", false, AnswerOrigin::None},
    };
    for (const auto& given : cases) {
        takeFreshSlots();
        EXPECT_TRUE(loadProject("isPropertyClass_full = " + std::string(given.value)));
        EXPECT_EQ(isPropertyClass_full(pipe), given.answer) << given.value;
        EXPECT_EQ(lastAnswerOrigin(), given.origin) << given.value;
    }
}

TEST_F(OptionalFunctions, ThatFailAreReportedByTheBindingLayerAlone)
{
    EXPECT_TRUE(
        loadProject("function fail() error('broken', 0) end getQuorInt2Str = fail getQuorInt2Str_key = fail "
                    "getProjDatabaseClass = fail getDigitalFile = fail isDigitalStan = fail "
                    "isPropertyClass_full = fail"));
    EXPECT_EQ(getQuorInt2Str(pipe), installed("sys/quorInt2Str.lua"));
    EXPECT_STREQ(getQuorInt2Str_key(pipe), "sys:quorint2str");
    EXPECT_EQ(getProjDatabaseClass(pipe, ""), installed("sys/projDatabaseClass.lua"));
    EXPECT_EQ(getDigitalFile(pipe, "n"), nullptr);
    EXPECT_EQ(isDigitalStan(pipe), nullptr);
    EXPECT_FALSE(isPropertyClass_full(pipe));
    EXPECT_EQ(messages(), std::vector<std::string>(6, "broken"));
}

TEST_F(OptionalFunctions, DoNotChangeTheKeyOfIntegerTexts)
{
    EXPECT_TRUE(loadProject("function getQuorInt2Str_key(m) return m == 'PIPE' and 'own key' or '' end"));
    EXPECT_STREQ(getQuorInt2Str_key(pipe), "own key");
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Script);
    EXPECT_STREQ(getQuorInt2Str_key(QuorAuth::Module::Iso), "sys:quorint2str");
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Fallback);
}

TEST_F(OptionalFunctions, LeaveTheInstallationsFilesUnderAGuard)
{
    EXPECT_TRUE(loadProject(""));
    const quorconfig::TempPermitNull permit;
    EXPECT_EQ(getQuorInt2Str(pipe), installed("sys/quorInt2Str.lua"));
}

} // namespace
