#include "getter_rows.h"

namespace {

using quorconfig::AnswerOrigin;
using testing::IsEmpty;

/// What a script has for a getter's function, and what becomes of it.
struct Case {
    const char* value; ///< of the global
    bool isFunction;
    /// What a call gives, or else the value itself; null for anything but a text.
    const char* answer;
    const char* report; ///< of the binding layer; null for none, "" for that of a global that is no function
};

constexpr const char* noFunctionReport = "";

constexpr Case cases[] = {
    {"function() return 'the answer' end", true, "the answer", nullptr},
    {"function() return ' ' end", true, " ", nullptr},
    {"function() return '5' end", true, "5", nullptr},
    {"function() return '100%s\\\\x' end", true, "100%s\\x", nullptr},
    {"function() return 'first', 'second' end", true, "first", nullptr},
    {"function() return 'before\\0behind' end", true, "before", nullptr},
    {"function() return '' end", true, "", nullptr},
    {"function() return '\\0behind' end", true, "", nullptr},
    {"function() return nil end", true, nullptr, nullptr},
    {"function() end", true, nullptr, nullptr},
    {"function() return nil, 'second' end", true, nullptr, nullptr},
    {"function() return 5 end", true, nullptr, nullptr},
    {"function() return true end", true, nullptr, nullptr},
    {"function() return false end", true, nullptr, nullptr},
    {"function() return {'text'} end", true, nullptr, nullptr},
    {"function() return print end", true, nullptr, nullptr},
    {"function() return int64('5') end", true, nullptr, nullptr},
    {"function() return setmetatable({}, {__tostring = function() return 'text' end}) end", true, nullptr,
     nullptr},
    {"function() return coroutine.create(function() end) end", true, nullptr, nullptr},
    {"function() error('broken', 0) end", true, nullptr, "broken"},
    {"function() error('100%s', 0) end", true, nullptr, "100%s"},
    {"function() error({}) end", true, nullptr, "(error object is a table value)"},
    {"function() error() end", true, nullptr, "(error object is a nil value)"},
    {"nil", false, nullptr, noFunctionReport},
    {"false", false, nullptr, noFunctionReport},
    {"5", false, nullptr, noFunctionReport},
    {"'its own text'", false, "its own text", noFunctionReport},
    {"''", false, "", noFunctionReport},
    {"{}", false, nullptr, noFunctionReport},
    {"setmetatable({}, {__call = function() return 'called' end})", false, nullptr, noFunctionReport},
    {"newproxy()", false, nullptr, noFunctionReport},
};

/// What a question ends in.
struct Outcome {
    std::optional<std::string> text;
    AnswerOrigin origin = AnswerOrigin::None;
    std::vector<std::string> messages;

    friend bool operator==(const Outcome&, const Outcome&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome)
    {
        out << outcome.text.value_or("(null)") << ", origin " << static_cast<int>(outcome.origin);
        for (const std::string& message : outcome.messages)
            out << "\n  message: " << message;
        return out;
    }
};

bool isTaken(Takes takes, const char* answer)
{
    if (takes == Takes::Anything) return true;
    return answer && (takes == Takes::EmptyToo || *answer);
}

Outcome expected(const Getter& getter, const Case& given, bool permitsNull, const std::string& module,
                 int number, const char* name)
{
    Outcome outcome;
    const char* answer = given.answer;
    if (getter.mayBeMissing && !given.isFunction)
        answer = nullptr;
    else if (given.report)
        outcome.messages.push_back(*given.report ? given.report : noFunction(getter.function));
    if (isTaken(getter.takes, answer)) {
        if (answer) outcome.text = answer;
        outcome.origin = answer ? AnswerOrigin::Script : AnswerOrigin::None;
        return outcome;
    }
    if (getter.hasMessage()) {
        if (permitsNull) return outcome;
        outcome.messages.push_back(getter.message(module, number));
    }
    outcome.text = getter.fallback(name);
    outcome.origin = getter.fallbackOrigin();
    return outcome;
}

class Getters : public Config {
protected:
    /// Gives every getter's function this value, in fresh states.
    void define(const char* value)
    {
        takeFreshSlots();
        shown.clear();
        std::string project;
        std::string system = "function initConfig() end ";
        for (const Getter& getter : getters)
            (getter.isOfSystemScript() ? system : project) += getter.function + " = " + value + "\n";
        ASSERT_TRUE(loadProject(project));
        ASSERT_TRUE(loadSystem(system));
        ASSERT_THAT(messages(), IsEmpty());
    }

    template<class Ask>
    Outcome outcomeOf(Ask ask)
    {
        Outcome outcome;
        const char* text = ask();
        if (text) outcome.text = text;
        outcome.origin = quorconfig::lastAnswerOrigin();
        outcome.messages = messages();
        return outcome;
    }

    const std::vector<Getter> getters = allGetters();
    static constexpr const char* name = "a name";
};

TEST_F(Getters, GiveTheAnswerOrWhatIsLeftWithoutOne)
{
    for (const Case& given : cases) {
        define(given.value);
        for (const bool permitsNull : {false, true}) {
            quorconfig::permitNullReturn(permitsNull);
            for (const Getter& getter : getters)
                EXPECT_EQ(outcomeOf([&] { return getter.ask(pipe, name); }),
                          expected(getter, given, permitsNull, "PIPE", 2, name))
                    << getter.name << " = " << given.value << (permitsNull ? ", null permitted" : "");
        }
    }
}

TEST_F(Getters, TakeTheModuleAsATextToo)
{
    for (const Case& given : cases) {
        define(given.value);
        for (const bool permitsNull : {false, true}) {
            quorconfig::permitNullReturn(permitsNull);
            for (const Getter& getter : getters) {
                if (!getter.askByText) continue;
                EXPECT_EQ(outcomeOf([&] { return getter.askByText("any module", name); }),
                          expected(getter, given, permitsNull, "any module", 0, name))
                    << getter.name << " = " << given.value << (permitsNull ? ", null permitted" : "");
            }
        }
    }
}

TEST_F(Getters, ThatTakeAModuleAsATextAreFourteen)
{
    int count = 0;
    for (const Getter& getter : getters)
        if (getter.askByText) ++count;
    EXPECT_EQ(count, 14);
    EXPECT_EQ(getters.size(), 14u + 8 + 1 + 5 + 5 + 1);
}

TEST_F(Getters, GiveTheStatesOwnTextUncopied)
{
    define("function() return 'kept as a constant' end");
    for (const Getter& getter : getters) {
        if (getter.name == "getProjectTemplatePath") continue;
        const char* once = getter.ask(pipe, name);
        EXPECT_EQ(getter.ask(pipe, name), once) << getter.name;
        EXPECT_STREQ(once, "kept as a constant") << getter.name;
    }
}

TEST_F(Getters, GiveBareNamesThatStayForEver)
{
    define("nil");
    for (const Getter& getter : getters) {
        if (getter.gives != Gives::BareName || getter.name == "getQuorInt2Str_key") continue;
        const char* once = getter.ask(pipe, name);
        define("nil");
        EXPECT_EQ(getter.ask(pipe, name), once) << getter.name;
        EXPECT_EQ(once, getter.file);
    }
}

TEST_F(Getters, CountFunctionsHiddenByStrictGlobalsAsMissing)
{
    const std::string strict = "setmetatable(_G, {__index = function() error('strict') end})";
    EXPECT_TRUE(loadProject(strict));
    EXPECT_TRUE(loadSystem("function initConfig() end escape_dbkey = nil " + strict));
    messages();
    const Case missing{"nil", false, nullptr, noFunctionReport};
    for (const Getter& getter : getters)
        EXPECT_EQ(outcomeOf([&] { return getter.ask(pipe, name); }),
                  expected(getter, missing, false, "PIPE", 2, name))
            << getter.name;
}

TEST_F(Getters, FindFunctionsThroughAMetatableOfTheGlobals)
{
    EXPECT_TRUE(
        loadProject("setmetatable(_G, {__index = function(_, name) return function() return name end end})"));
    for (const Getter& getter : getters) {
        if (getter.isOfSystemScript()) continue;
        EXPECT_EQ(textOr(getter.ask(pipe, name)), getter.function);
    }
    EXPECT_THAT(messages(), IsEmpty());
}

} // namespace
