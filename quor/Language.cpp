#include "Language.h"

#include "Catalogue.h"
#include "CharacterSet.h"
#include "Failure.h"
#include "System.h"
#include "Terminal.h"

#include <QuorMsgHandle/QuorMsgHandle.h>
#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <set>
#include <string_view>
#include <vector>

// GNU gettext's own functions are not used: they give no translation in the locale "C", which this process
// keeps, and where no locale is installed there is no other.

namespace quor::language {
namespace {

namespace fs = std::filesystem;

/// The language in which the messages are written; it needs no catalogue.
constexpr const char* original = "zh";

using Names = std::set<std::string, std::less<>>;

fs::path localeFolder()
{
    return system::programFile().parent_path().parent_path() / "share" / "locale";
}

fs::path cataloguePath(const std::string& language)
{
    return localeFolder() / system::pathOf(language) / "LC_MESSAGES" / "QuorScriptor.mo";
}

Names languagesThere()
{
    Names names = {original};
    std::error_code error;
    for (fs::directory_iterator entry(localeFolder(), error), end; !error && entry != end;
         entry.increment(error)) {
        std::string name = system::textOf(entry->path().filename());
        std::error_code ignored;
        if (fs::exists(cataloguePath(name), ignored)) names.insert(std::move(name));
    }
    return names;
}

std::string environment(const char* variable)
{
    return system::environment(variable).value_or("");
}

/// A locale's name in its parts, as in "zh_CN.GBK@stroke"; the character set says nothing about the language.
struct LocaleName {
    std::string language;
    std::string withCountry;
    std::string modifier; ///< with its "@"

    explicit LocaleName(std::string_view name)
    {
        modifier = name.substr(std::min(name.find('@'), name.size()));
        withCountry = name.substr(0, name.find_first_of(".@"));
        language = withCountry.substr(0, withCountry.find('_'));
    }

    /// Whether texts are to stay as the program has them.
    bool isPlain() const { return withCountry == "C" || withCountry == "POSIX"; }
};

/// The one of the languages that are there which suits a locale best; empty when none does.
std::string bestFor(const LocaleName& locale, const Names& there)
{
    for (const std::string& modifier : {locale.modifier, std::string()}) {
        for (const std::string& base : {locale.withCountry, locale.language}) {
            std::string name = base + modifier;
            if (there.contains(name)) return name;
        }
    }
    return {};
}

/// The locales that the environment asks for, the best one first; none when texts are to stay as they are.
std::vector<LocaleName> localesAskedFor()
{
    std::string locale;
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        locale = environment(variable);
        if (!locale.empty()) break;
    }
    if (locale.empty() || LocaleName(locale).isPlain()) return {};
    const std::string languages = environment("LANGUAGE");
    std::string_view list = languages.empty() ? locale : languages;

    std::vector<LocaleName> locales;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(':'), list.size());
        locales.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return locales;
}

std::string languageOfEnvironment()
{
    const std::vector<LocaleName> locales = localesAskedFor();
    if (locales.empty()) return original;
    const Names there = languagesThere();
    for (const LocaleName& locale : locales) {
        if (locale.isPlain()) break;
        std::string language = bestFor(locale, there);
        if (!language.empty()) return language;
    }
    return original;
}

void checkIsThere(const std::string& language)
{
    const Names there = languagesThere();
    if (there.contains(language)) return;
    throw Failure(WrongUsage,
                  fmt::format("--language {}: one of these is expected: {}\nlooked for catalogues in:\n  {}",
                              language, fmt::join(there, ", "), system::textOf(localeFolder())));
}

/// Messages and their translations, in GBK.
using Table = std::map<std::string, std::string, std::less<>>;

/// Kept to the end of the process, since whoever asked for a translation may hold it as long.
const Table* translations = nullptr;

const char* translate(const char* text)
{
    const auto found = translations->find(std::string_view(text));
    return found == translations->end() ? text : found->second.c_str();
}

/// What GBK cannot write is left out, and stays in Chinese.
std::unique_ptr<const Table> tableOf(const Catalogue& catalogue)
{
    auto table = std::make_unique<Table>();
    for (const auto& [text, translation] : catalogue) {
        std::string key;
        std::string value;
        if (charset::gbkFromUtf8(text, key) && charset::gbkFromUtf8(translation, value))
            table->emplace(std::move(key), std::move(value));
    }
    return table;
}

void install(const std::string& language)
{
    try {
        translations = tableOf(readCatalogue(system::textOf(cataloguePath(language)))).release();
    } catch (const std::exception& error) {
        terminal::say("quor: messages stay in Chinese: {}", error.what());
        return;
    }
    setQuorGetText_callbk(translate);
}

} // namespace

void addOption(CLI::App& program, std::optional<std::string>& wanted)
{
    program
        .add_option_function<std::string>(
            "--language", [&wanted](const std::string& language) { wanted = language; },
            "The language of messages: zh, Chinese, or one with a catalogue, such as en; default that of the "
            "environment, else zh")
        ->type_name("LANGUAGE")
        ->take_last();
    for (CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
        addOption(*command, wanted);
}

void choose(const std::optional<std::string>& wanted)
{
    if (wanted) checkIsThere(*wanted);
    const std::string language = wanted ? *wanted : languageOfEnvironment();
    if (language != original) install(language);
}

} // namespace quor::language
