#include "getter_rows.h"

namespace {

using QuorAuth::Module;
using testing::IsEmpty;

/// An argument as the scripts here show it.
std::string shownText(const char* text)
{
    return text ? " string:" + std::string(text) : " nil:nil";
}

std::string expectedArguments(const Getter& getter, const char* module, const char* name)
{
    std::string all = std::to_string(getter.arguments.size());
    for (const char letter : getter.arguments) {
        switch (letter) {
        case 'm':
            all += shownText(module);
            break;
        case 'n':
            all += shownText(name);
            break;
        case 'f':
            all += " string:a file";
            break;
        case '7':
            all += " number:7";
            break;
        default:
            all += " nil:nil";
        }
    }
    return all;
}

class GetterArguments : public Config {
protected:
    GetterArguments()
    {
        const std::string show = R"(
            local function show(...)
                local all = {tostring(select('#', ...))}
                for i = 1, select('#', ...) do
                    local value = select(i, ...)
                    all[i + 1] = type(value) .. ':' .. tostring(value)
                end
                return table.concat(all, ' ')
            end )";
        std::string project = show;
        for (const Getter& getter : getters)
            if (!getter.isOfSystemScript()) project += getter.function + " = show\n";
        EXPECT_TRUE(loadProject(project));
        EXPECT_TRUE(loadSystem(show + "function initConfig() end escape_dbkey = show"));
    }

    const std::vector<Getter> getters = allGetters();
};

TEST_F(GetterArguments, AreTheModulesNameAndTheTextsGiven)
{
    for (const Getter& getter : getters) {
        for (const char* name : {"a name", "100%s", "\xC5\xE4\xD6\xC3\\"}) {
            EXPECT_EQ(textOr(getter.ask(Module::Pipe, name)), expectedArguments(getter, "PIPE", name))
                << getter.name;
            EXPECT_EQ(textOr(getter.ask(Module::Instrument, name)),
                      expectedArguments(getter, "INSTRUMENT", name))
                << getter.name;
        }
    }
}

TEST_F(GetterArguments, AreEmptyTextsWhereTheyAreGivenEmpty)
{
    for (const Getter& getter : getters) {
        if (getter.name == "getDigitalFile") continue; // which does not ask then
        EXPECT_EQ(textOr(getter.ask(pipe, "")), expectedArguments(getter, "PIPE", "")) << getter.name;
    }
}

TEST_F(GetterArguments, AreNilWhereNullIsGiven)
{
    for (const Getter& getter : getters) {
        if (getter.name == "getDigitalFile") continue;
        EXPECT_EQ(textOr(getter.ask(pipe, nullptr)), expectedArguments(getter, "PIPE", nullptr))
            << getter.name;
        if (getter.askByText) {
            EXPECT_EQ(textOr(getter.askByText(nullptr, nullptr)), expectedArguments(getter, nullptr, nullptr))
                << getter.name;
        }
    }
    EXPECT_STREQ(quorconfig::getProjectPath(pipe, nullptr, nullptr), "3 string:PIPE nil:nil nil:nil");
    EXPECT_STREQ(quorconfig::getProjectPath(pipe, "part", nullptr), "3 string:PIPE string:part nil:nil");
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(GetterArguments, HoldTheModulesTextAsItIsGiven)
{
    for (const Getter& getter : getters) {
        if (!getter.askByText) continue;
        for (const char* module : {"any module", "", "pipe"})
            EXPECT_EQ(textOr(getter.askByText(module, "n")), expectedArguments(getter, module, "n"))
                << getter.name;
    }
}

TEST_F(GetterArguments, HoldAnEmptyNameForAModuleWithoutOne)
{
    for (const Getter& getter : getters) {
        for (const Module module : {Module::None, static_cast<Module>(77), static_cast<Module>(-1)}) {
            const std::string answer = textOr(getter.ask(module, "n"));
            if (getter.gives == Gives::BareName && getter.hasMessage()) {
                EXPECT_EQ(answer, getter.file) << getter.name << " does not ask then";
                EXPECT_EQ(quorconfig::lastAnswerOrigin(), quorconfig::AnswerOrigin::Fallback);
            } else {
                EXPECT_EQ(answer, expectedArguments(getter, "", "n")) << getter.name;
            }
        }
    }
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(GetterArguments, OfEveryModuleAreItsName)
{
    for (const Module module : QuorAuth::allModules)
        EXPECT_EQ(textOr(quorconfig::getProjectStan(module)),
                  std::string("1 string:") + kxcom::getModuleName(module));
}

TEST_F(GetterArguments, OfAKindAreAnyInteger)
{
    for (const int kind : {0, -1, 2147483647, -2147483647 - 1})
        EXPECT_EQ(textOr(quorconfig::getObjectSkeyBasicPath(kind)), "1 number:" + std::to_string(kind));
}

TEST_F(GetterArguments, NeverHoldTheIgnoredNameOfASpecKey)
{
    EXPECT_STREQ(quorconfig::getProjectSpec_dbkey(pipe, "ignored"), "2 string:PIPE nil:nil");
    EXPECT_STREQ(quorconfig::getProjectSpec_dbkey(pipe, nullptr), "2 string:PIPE nil:nil");
}

} // namespace
