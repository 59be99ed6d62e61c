#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What each system has in its own way: posix/System.cpp and windows/System.cpp.
///
/// The command's own texts, arguments and what people read alike, are in one character set: the terminal's,
/// or on Windows, where arguments come as UTF-16, UTF-8.
namespace quor::system {

/// Where texts for people are written.
enum class Stream { Output, Errors, File };

/// The names of character sets as charset:: takes them.
struct CharacterSets {
    std::string own;
    /// Of the file names that the library and `fopen` take.
    std::string fileNames;
    std::string output;
    std::string errors;
    std::string file;
};

/// To be asked while nothing else runs. The process is afterwards in the locale "C".
CharacterSets readCharacterSets();

/// The program's arguments, its name first, from what `main` was given.
std::vector<std::string> arguments(int count, char** given);

/// A variable of the environment.
std::optional<std::string> environment(const char* variable);

/// The running program's file.
std::filesystem::path programFile();

/// Lets standard output and standard error take bytes as they are.
void makeStreamsBinary();

/// Whether a person sees standard error as it is written.
bool isErrorsTerminal();

/// From now on nothing can be read from standard input.
void emptyInput();

/// Whether letters of either case are the same in file names.
extern const bool ignoresCase;

/// A path from one of the command's own texts, and such a text from a path.
inline std::filesystem::path pathOf(std::string_view text)
{
    // As char8_t they are the system's own bytes, or on Windows UTF-8, whatever the locale.
    return std::u8string(text.begin(), text.end());
}
inline std::string textOf(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

/// What parts the names in a path.
extern const char* const separators;

} // namespace quor::system
