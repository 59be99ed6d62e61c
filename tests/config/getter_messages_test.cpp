#include "getter_rows.h"

namespace {

using QuorAuth::Module;
using quorconfig::getProjectSpec;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The sentence up to the function's name, byte for byte.
const std::string complaintBytes =
    "\xCF\xB5\xCD\xB3\xC5\xE4\xD6\xC3\xB3\xF6\xB4\xED\xA3\xAC\xC7\xEB\xC1\xAA\xCF\xB5"
    "\xBF\xAA\xB7\xA2\xC9\xCC\xA3\xAC";

std::vector<std::string> translated;

const char* noteAndKeep(const char* text)
{
    translated.emplace_back(text);
    return text;
}

class GetterMessages : public Config {
protected:
    GetterMessages()
    {
        translated.clear();
        EXPECT_TRUE(
            loadProject("function empty() return '' end getProjectSpec = empty getProject = empty "
                        "getProjectPath = empty getProjectSkey_r = empty key = empty getProjectUser = nil"));
    }
};

TEST_F(GetterMessages, AreChineseTextsInGbk)
{
    for (const Getter& getter : allGetters()) {
        if (!getter.hasMessage()) continue;
        shown.clear();
        getter.ask(pipe, "n");
        ASSERT_FALSE(shown.empty()) << getter.name;
        std::string bytes = complaintBytes + getter.messageFunction;
        if (getter.says == Says::Module) bytes += ": PIPE";
        if (getter.says == Says::Number) bytes += ": 2";
        EXPECT_EQ(shown.back(), bytes) << getter.name;
        EXPECT_EQ(utf8(shown.back()), getter.message("PIPE", 2)) << getter.name;
    }
}

TEST_F(GetterMessages, AreTranslatedBeforeTheyAreFilled)
{
    setQuorGetText_callbk(noteAndKeep);
    for (const Getter& getter : allGetters()) {
        if (!getter.hasMessage()) continue;
        translated.clear();
        getter.ask(pipe, "n");
        std::string text = complaintBytes + getter.messageFunction;
        if (getter.says != Says::Function) text += ": %s";
        if (getter.gives == Gives::BareName) text = complaintBytes + "%s: %s";
        EXPECT_THAT(translated, ElementsAre(text)) << getter.name;
    }
    translated.clear();
    for (const Getter& getter : allGetters())
        if (!getter.hasMessage()) getter.ask(pipe, "n");
    EXPECT_THAT(translated, IsEmpty());
    quorconfig::permitNullReturn(true);
    for (const Getter& getter : allGetters())
        getter.ask(pipe, "n");
    EXPECT_THAT(translated, IsEmpty()) << "nothing is looked up that is not shown";
}

TEST_F(GetterMessages, AreShownAsTheyAreTranslated)
{
    setQuorGetText_callbk([](const char*) { return "[%s] of the configuration"; });
    getProjectSpec(pipe, "n");
    EXPECT_THAT(messages(), ElementsAre("[PIPE] of the configuration"));
    quorconfig::getProjectPath(Module::Iso, "p", "f");
    EXPECT_THAT(messages(), ElementsAre("[5] of the configuration"));
    quorconfig::getProject_general("key", "d", pipe, nullptr);
    EXPECT_THAT(messages(), ElementsAre("[key] of the configuration"));
    setQuorGetText_callbk([](const char*) { return "no place for anything"; });
    getProjectSpec(pipe, "n");
    quorconfig::getProject_general("key", "d", pipe, nullptr);
    EXPECT_THAT(messages(), ElementsAre("no place for anything", "no place for anything"));
}

TEST_F(GetterMessages, TakeNoTextForAFormat)
{
    getProjectSpec("%s%d%n", "n");
    EXPECT_THAT(messages(), ElementsAre(complaint + "getProjectSpec: %s%d%n"));
    EXPECT_STREQ(quorconfig::getProject_general("100%d", "d", pipe, nullptr), "d");
    EXPECT_THAT(messages(), ElementsAre(noFunction("100%d"), complaint + "100%d: PIPE"));
}

TEST_F(GetterMessages, NameTheModuleAsItIsGiven)
{
    struct {
        const char* module;
        const char* named;
    } const texts[] = {{"any module", "any module"}, {"", ""}, {nullptr, "(null)"}, {"\xC5\xE4", "配"}};
    for (const auto& text : texts) {
        getProjectSpec(text.module, "n");
        EXPECT_THAT(messages(), ElementsAre(complaint + "getProjectSpec: " + text.named));
    }
    getProjectSpec(Module::None, "n");
    EXPECT_THAT(messages(), ElementsAre(complaint + "getProjectSpec: "));
    getProjectSpec(static_cast<Module>(77), "n");
    EXPECT_THAT(messages(), ElementsAre(complaint + "getProjectSpec: "));
}

TEST_F(GetterMessages, NameTheModulesNumberWhereTheyDo)
{
    for (const int number : {0, 2, 77, -1, 2147483647}) {
        const Module module = static_cast<Module>(number);
        quorconfig::getProjectSkeyPath_r(module, "n");
        quorconfig::getProjectPath(module, "p", "f");
        EXPECT_THAT(messages(), ElementsAre(complaint + "getProjectSkey: " + std::to_string(number),
                                            complaint + "getProjectPath: " + std::to_string(number)));
    }
}

TEST_F(GetterMessages, FollowTheReportsOfTheBindingLayer)
{
    EXPECT_STREQ(quorconfig::getProjectUserDbPath(), QuorSystem::getCurrentProjPath());
    EXPECT_THAT(messages(), ElementsAre(noFunction("getProjectUser"), complaint + "getProjectUser"));
    write("raising.lua", "function getProjectUser() error('broken', 0) end");
    EXPECT_TRUE(quorconfig::initConfig("raising.lua", nullptr, nullptr, nullptr));
    quorconfig::getProjectUserDbPath();
    EXPECT_THAT(messages(), ElementsAre("broken", complaint + "getProjectUser"));
}

TEST_F(GetterMessages, AreNotWhatTheScriptMakesOfAlert)
{
    write("quiet.lua", "_ALERT = probe.note kxcom.errorMsg = probe.note");
    EXPECT_TRUE(quorconfig::initConfig("quiet.lua", nullptr, nullptr, nullptr));
    quorconfig::getProjectUserDbPath();
    EXPECT_THAT(Probe::notes, ElementsAre(noFunction("getProjectUser")));
    EXPECT_THAT(messages(), ElementsAre(complaint + "getProjectUser"));
}

TEST_F(GetterMessages, HoldALongModuleWhole)
{
    const std::string module(5000, 'm');
    getProjectSpec(module.c_str(), "n");
    EXPECT_THAT(messages(), ElementsAre(complaint + "getProjectSpec: " + module));
}

} // namespace
