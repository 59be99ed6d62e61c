#include <QuorScriptor/version.h>
#include <gmock/gmock.h>
#include <string>

namespace {

TEST(Version, OfTheLibraryIsThatOfItsHeaders)
{
    EXPECT_STREQ(Quor::version(), QUORSCRIPTOR_VERSION);
    EXPECT_EQ(Quor::versionNumber(), QUORSCRIPTOR_VERSION_NUMBER);
}

TEST(Version, TextAndNumberAreMadeOfTheThreeNumbers)
{
    EXPECT_EQ(QUORSCRIPTOR_VERSION, std::to_string(QUORSCRIPTOR_VERSION_MAJOR) + "." +
                                        std::to_string(QUORSCRIPTOR_VERSION_MINOR) + "." +
                                        std::to_string(QUORSCRIPTOR_VERSION_PATCH));
    EXPECT_EQ(QUORSCRIPTOR_VERSION_NUMBER, QUORSCRIPTOR_VERSION_MAJOR * 10000 +
                                               QUORSCRIPTOR_VERSION_MINOR * 100 + QUORSCRIPTOR_VERSION_PATCH);
    // Else two versions would have one number.
    EXPECT_LT(QUORSCRIPTOR_VERSION_MINOR, 100);
    EXPECT_LT(QUORSCRIPTOR_VERSION_PATCH, 100);
}

TEST(Version, OfTheBuildIsThatOfTheHeaders)
{
    EXPECT_STREQ(QUORSCRIPTOR_VERSION, QUOR_PROJECT_VERSION);
}

TEST(Version, LibrariesAreNamedAfterTheMajorNumberWhereNamesTellIt)
{
#if !defined(QUOR_LIBRARY_SONAMES)
    GTEST_SKIP() << "names tell no version here";
#else
    const std::string sonames = QUOR_LIBRARY_SONAMES;
    for (const char* library : {"KxGeBasic", "BaseObj", "QuorCommon", "QuorMsgHandle", "QuorPureScriptor",
                                "QuorPrimary", "QuorScriptor"})
        EXPECT_THAT(sonames, testing::HasSubstr(" lib" + std::string(library) + ".so." +
                                                std::to_string(QUORSCRIPTOR_VERSION_MAJOR) + " "));
#endif
}

} // namespace
