#include "ConfigReport.h"

#include "AnsweredPath.h"
#include "CharacterSet.h"
#include "Terminal.h"
#include "ValueJson.h"

#include <QuorCommon/QuorSystem.h>
#include <algorithm>
#include <fmt/format.h>
#include <string_view>

namespace quor {
namespace {

using quorconfig::AnswerOrigin;

const char* nameOf(AnswerOrigin origin)
{
    switch (origin) {
    case AnswerOrigin::Script:
        return "script";
    case AnswerOrigin::Fallback:
        return "fallback";
    case AnswerOrigin::Argument:
        return "argument";
    case AnswerOrigin::None:
        break;
    }
    return "none";
}

const char* fileOf(const ConfigAnswer& answer)
{
    if (!answer.isThere) return nullptr;
    return *answer.isThere ? "exists" : "missing";
}

std::string utf8Of(const ConfigAnswer& answer, const std::string& text)
{
    return answer.getter->text == GetterText::Path ? utf8FromAnsweredPath(text) : charset::utf8FromGbk(text);
}

Json valueJson(const ConfigAnswer& answer)
{
    if (const auto* text = std::get_if<std::string>(&answer.value)) return utf8Of(answer, *text);
    if (const auto* flag = std::get_if<bool>(&answer.value)) return *flag;
    if (const auto* number = std::get_if<int>(&answer.value)) return *number;
    return nullptr;
}

Json argumentsJson(const ConfigAnswer& answer)
{
    Json object = Json::object();
    for (const auto& options : {answer.getter->needs, answer.getter->mayTake}) {
        for (const GetterOption option : options) {
            if (answer.arguments.has(option))
                object.emplace(keyOf(option), charset::utf8FromGbk(answer.arguments.text(option)));
        }
    }
    return object;
}

std::string utf8FromSystemName(const char* name)
{
    return terminal::utf8From(terminal::fromSystemName(name));
}

Json messagesJson(const std::vector<std::string>& messages)
{
    Json array = Json::array();
    for (const std::string& message : messages)
        array.push_back(terminal::utf8FromMessage(message));
    return array;
}

/// On one line, whatever is in it.
std::string withoutControls(std::string_view utf8)
{
    std::string line;
    for (const char byte : utf8) {
        const auto code = static_cast<unsigned char>(byte);
        if (code < 0x20 || code == 0x7F)
            line += fmt::format("\\x{:02X}", code);
        else
            line += byte;
    }
    return line;
}

/// The answer in a table: null is "-", an empty text is "".
std::string cellOf(const ConfigAnswer& answer)
{
    const Json value = valueJson(answer);
    if (value.is_null()) return "-";
    if (!value.is_string()) return value.dump();
    const auto& text = value.get_ref<const std::string&>();
    return text.empty() ? "\"\"" : withoutControls(text);
}

const char* moduleOf(const ConfigAnswer& answer)
{
    const char* module = nullptr;
    if (answer.getter->takes(GetterOption::Module)) module = answer.arguments.text(GetterOption::Module);
    return module ? module : "-";
}

/// Every line of a message, set in.
std::string indented(std::string_view message)
{
    std::string lines;
    while (!message.empty()) {
        const std::size_t end = std::min(message.find('\n'), message.size());
        if (end != 0) lines += fmt::format("    {}\n", message.substr(0, end));
        message.remove_prefix(std::min(end + 1, message.size()));
    }
    return lines;
}

} // namespace

std::string lineOf(const ConfigAnswer& answer)
{
    const Json value = valueJson(answer);
    if (value.is_null()) return {};
    const std::string text = value.is_string() ? withoutControls(value.get<std::string>()) : value.dump();
    return text + "\n";
}

std::string provenanceOf(const ConfigAnswer& answer)
{
    std::string words = fmt::format("{}: {}", answer.getter->name, nameOf(answer.origin));
    if (answer.isThere) words += *answer.isThere ? "; the path exists" : "; nothing is at the path";
    return words;
}

std::string jsonOf(const ConfigAnswer& answer)
{
    Json object;
    object.emplace("getter", answer.getter->name);
    object.emplace("arguments", argumentsJson(answer));
    object.emplace("answer", valueJson(answer));
    object.emplace("from", nameOf(answer.origin));
    const char* file = fileOf(answer);
    object.emplace("file", file ? Json(file) : Json());
    object.emplace("raised", answer.raised);
    object.emplace("messages", messagesJson(answer.messages));
    return object.dump();
}

std::string tableOf(const ConfigSession& session, const std::vector<ConfigAnswer>& answers)
{
    std::string table = fmt::format(
        "installation   {}\nproject        {}\nproject script {}\nsystem script  {}\n\n",
        utf8FromSystemName(QuorSystem::quorEnv()), utf8FromSystemName(QuorSystem::getCurrentProjPath()),
        terminal::utf8From(session.pathOf(ConfigScript::Project)),
        terminal::utf8From(session.pathOf(ConfigScript::System)));
    std::size_t moduleWidth = std::string_view("module").size();
    std::size_t nameWidth = std::string_view("getter").size();
    for (const ConfigAnswer& answer : answers) {
        moduleWidth = std::max(moduleWidth, std::string_view(moduleOf(answer)).size());
        nameWidth = std::max(nameWidth, answer.getter->name.size());
    }
    const auto row = [&](std::string_view module, std::string_view name, std::string_view from,
                         std::string_view file, std::string_view answer) {
        table += fmt::format("{:{}}  {:{}}  {:8}  {:7}  {}\n", module, moduleWidth, name, nameWidth, from,
                             file, answer);
    };
    row("module", "getter", "from", "file", "answer");
    for (const ConfigAnswer& answer : answers) {
        const char* file = fileOf(answer);
        row(moduleOf(answer), answer.getter->name, nameOf(answer.origin), file ? file : "-", cellOf(answer));
        for (const std::string& message : answer.messages)
            table += indented(terminal::utf8FromMessage(message));
    }
    return table;
}

std::string jsonOf(const ConfigSession& session, const std::vector<ConfigAnswer>& answers, bool permitsNull)
{
    Json head;
    head.emplace("installation", utf8FromSystemName(QuorSystem::quorEnv()));
    head.emplace("project", utf8FromSystemName(QuorSystem::getCurrentProjPath()));
    head.emplace("projectScript", terminal::utf8From(session.pathOf(ConfigScript::Project)));
    head.emplace("systemScript", terminal::utf8From(session.pathOf(ConfigScript::System)));
    head.emplace("permitNull", permitsNull);
    head.emplace("messages", messagesJson(session.setUpMessages()));
    std::string json = head.dump();
    json.pop_back();
    json += ",\n\"answers\":[";
    const char* before = "\n";
    for (const ConfigAnswer& answer : answers) {
        json += before + jsonOf(answer);
        before = ",\n";
    }
    return json + "]}\n";
}

std::string summaryOf(const std::vector<ConfigAnswer>& answers)
{
    const auto count = [&answers](auto condition) {
        return std::count_if(answers.begin(), answers.end(), condition);
    };
    const auto from = [&count](AnswerOrigin origin) {
        return count([origin](const ConfigAnswer& answer) { return answer.origin == origin; });
    };
    return fmt::format(
        "{} answers: {} from scripts, {} fallbacks, {} arguments, {} none; {} paths lead nowhere; "
        "{} with messages",
        answers.size(), from(AnswerOrigin::Script), from(AnswerOrigin::Fallback),
        from(AnswerOrigin::Argument), from(AnswerOrigin::None),
        count([](const ConfigAnswer& answer) { return answer.isThere && !*answer.isThere; }),
        count([](const ConfigAnswer& answer) { return !answer.messages.empty(); }));
}

} // namespace quor
