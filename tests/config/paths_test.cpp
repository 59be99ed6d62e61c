#include "config_fixture.h"

namespace {

using QuorAuth::Module;
using quorconfig::AnswerOrigin;
using quorconfig::getProjectTemplatePath;
using quorconfig::lastAnswerOrigin;
using testing::ElementsAre;
using testing::IsEmpty;

class Paths : public Config {};

TEST_F(Paths, OfTemplatesAreTheAnswerAndWhatIsBelowIt)
{
    EXPECT_TRUE(loadProject("answer = 'C:\\\\templates' function getProjectTemplate() return answer end"));
    struct {
        const char* sub;
        const char* path;
    } const cases[] = {
        {nullptr, "C:\\templates"},
        {"", "C:\\templates\\"},
        {"sub", "C:\\templates\\sub"},
        {"\\sub", "C:\\templates\\sub"},
        {"\\", "C:\\templates\\"},
        {"\\\\sub", "C:\\templates\\\\sub"},
        {"/sub", "C:\\templates\\/sub"},
        {"sub\\", "C:\\templates\\sub\\"},
        {"\xC5\x5C", "C:\\templates\\\xC5\x5C"},
    };
    for (const auto& given : cases) {
        EXPECT_STREQ(getProjectTemplatePath(pipe, given.sub), given.path);
        EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Script);
    }
}

TEST_F(Paths, OfTemplatesKeepAnEmptyAnswer)
{
    EXPECT_TRUE(loadProject("function getProjectTemplate() return '' end"));
    EXPECT_STREQ(getProjectTemplatePath(pipe, nullptr), "");
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Script);
    EXPECT_STREQ(getProjectTemplatePath(pipe, ""), "\\");
    EXPECT_STREQ(getProjectTemplatePath(pipe, "sub"), "\\sub");
    EXPECT_STREQ(getProjectTemplatePath(pipe, "\\sub"), "\\sub");
}

TEST_F(Paths, OfTemplatesWithoutAnAnswerLieInTheProject)
{
    const std::string project = folder.path("project");
    struct {
        const char* function;
        const char* report;
    } const cases[] = {{"function() end", nullptr},
                       {"function() return 5 end", nullptr},
                       {"nil", "attempt to call global `getProjectTemplate' (not a function)"},
                       {"function() error('broken', 0) end", "broken"}};
    for (const auto& given : cases) {
        takeFreshSlots();
        EXPECT_TRUE(loadProject("getProjectTemplate = " + std::string(given.function)));
        for (const bool permitsNull : {false, true}) {
            quorconfig::permitNullReturn(permitsNull);
            EXPECT_EQ(textOr(getProjectTemplatePath(pipe, nullptr)), project);
            EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Fallback);
            if (given.report) {
                EXPECT_THAT(messages(), ElementsAre(given.report));
            }
            EXPECT_EQ(textOr(getProjectTemplatePath(pipe, "sub")), project + "\\sub");
            messages();
        }
    }
}

TEST_F(Paths, OfTemplatesAreThoseOfTheCurrentModuleWithoutOne)
{
    EXPECT_TRUE(loadProject("function getProjectTemplate(...) return select('#', ...) .. ':' .. (...) end"));
    EXPECT_STREQ(getProjectTemplatePath("sub"), "1:\\sub") << "there is no current module";
    kxcom::setCurrentModule(Module::Hvac);
    EXPECT_STREQ(getProjectTemplatePath("sub"), "1:HVAC\\sub");
    EXPECT_STREQ(getProjectTemplatePath(static_cast<const char*>(nullptr)), "1:HVAC");
    kxcom::setCurrentModule(static_cast<Module>(77));
    EXPECT_STREQ(getProjectTemplatePath("\\sub"), "1:\\sub");
}

TEST_F(Paths, OfTemplatesMayStandBelowTheResultBefore)
{
    EXPECT_TRUE(loadProject(
        "function getProjectTemplate() return 'a long folder name, longer than a short text' end"));
    const std::string once = "a long folder name, longer than a short text";
    const char* path = getProjectTemplatePath(pipe, nullptr);
    for (std::string expected = once; expected.size() < 1000;) {
        expected = once + "\\" + expected;
        path = getProjectTemplatePath(pipe, path);
        EXPECT_EQ(path, expected);
    }
    path = getProjectTemplatePath(pipe, "x");
    EXPECT_EQ(textOr(getProjectTemplatePath(pipe, path + once.size())), once + "\\x") << "a part of it";
}

TEST_F(Paths, OfTemplatesAreInOneTextOfTheProcess)
{
    EXPECT_TRUE(loadProject("function getProjectTemplate(m) return m end"));
    kxcom::setCurrentModule(Module::Iso);
    const char* first = getProjectTemplatePath(pipe, nullptr);
    EXPECT_STREQ(first, "PIPE");
    // Short texts stay where they are.
    onThread([](unsigned int id) {
        quorconfig::allocThreadConfig(id);
        EXPECT_STREQ(getProjectTemplatePath(nullptr), "ISO");
        quorconfig::freeThreadConfig(id);
    });
    EXPECT_STREQ(first, "ISO");
}

TEST_F(Paths, OfTheUserDatabaseMayBeEmpty)
{
    EXPECT_TRUE(
        loadProject("function getProjectUser(...) return select('#', ...) == 0 and '' or 'arguments' end"));
    EXPECT_STREQ(quorconfig::getProjectUserDbPath(), "");
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Script);
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(Paths, OfSkeyFilesAreInTheirFolder)
{
    EXPECT_TRUE(
        loadProject("function getProjectSkey() return '' end function getProjectSkey_r() return '' end"));
    struct {
        const char* name;
        const char* path;
    } const cases[] = {{"valve", "skey/valve"},
                       {"a\\b", "skey/a/b"},
                       {"\\valve", "skey/valve"},
                       {"", "skey"},
                       {nullptr, "skey"}};
    for (const auto& given : cases) {
        EXPECT_EQ(textOr(quorconfig::getProjectSkeyPath(pipe, given.name)), inProjectFolder(given.path));
        EXPECT_EQ(textOr(quorconfig::getProjectSkeyPath("m", given.name)), inProjectFolder(given.path));
        EXPECT_EQ(quorconfig::getProjectSkeyPath_r(pipe, given.name), nullptr);
        EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::None);
    }
}

TEST_F(Paths, OfProjectFilesAreThoseOfTheFileName)
{
    EXPECT_TRUE(loadProject("function getProjectPath() return '' end"));
    EXPECT_EQ(textOr(quorconfig::getProjectPath(pipe, "part", "a\\file.txt")), inProjectFolder("a/file.txt"));
    EXPECT_EQ(textOr(quorconfig::getProjectPath(pipe, nullptr, nullptr)),
              textOr(QuorSystem::getCurrentProjPath()));
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Fallback);
    const quorconfig::TempPermitNull permit;
    EXPECT_EQ(quorconfig::getProjectPath(pipe, "part", "file.txt"), nullptr);
}

TEST_F(Paths, FallBackWhereTheProjectIsAtThatMoment)
{
    EXPECT_TRUE(loadProject("function getProjectSpec() probe.again() return '' end"));
    Probe::again = [] {
        QuorSystem::setProjectFolder("/moved");
        return "";
    };
    EXPECT_EQ(textOr(quorconfig::getProjectSpec(pipe, "n")), sys::pathOf("/moved/projectSpec.quor"));
    Probe::again = [] {
        for (int i = 0; i < 20; ++i)
            QuorSystem::getProjectFileFullPath("another path");
        return "";
    };
    EXPECT_EQ(textOr(quorconfig::getProjectSpec(pipe, "n")), sys::pathOf("/moved/projectSpec.quor"));
}

} // namespace
