#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quor {

/// Whether a key is a name that places show without quotes: ASCII letters, digits and underscores.
bool isWord(std::string_view key);

/// Reads a file that holds one value in JSON. Refused are also what JSON leaves to the reader: a key that
/// stands twice in an object, and a number too large for a double. Every failure is a `Failure` (wrong usage)
/// that names the file, and the line and column, or the place, where reading ended.
nlohmann::json readJsonFile(const std::string& path);

/// The same for a text in UTF-8, which the failures call `name`, in bytes for the terminal.
nlohmann::json readJsonText(std::string_view text, const std::string& name);

/// The same for a line of a file, counted from 1, of which the failures also name the line.
nlohmann::json readJsonLine(std::string_view line, const std::string& file, std::size_t number);
/// The line in the words of the failures.
std::string placeOfLine(const std::string& file, std::size_t number);

/// All of a regular file. Throws `Failure` (wrong usage) that names it.
std::string readTextFile(const std::string& path);

/// A value of a JSON file and its place there, as `points["3"][0]`, by which the failures name it. The JSON
/// must outlive it. Each reader throws a `Failure` (wrong usage) when something else is there.
class JsonNode {
public:
    /// The value that the file is. `file` is how messages name the file, in bytes for the terminal.
    JsonNode(const nlohmann::json& value, std::string file);

    /// FILE: PLACE, in bytes for the terminal.
    std::string place() const;
    /// Says that `expected`, in UTF-8 and with its verb ("a text is"), is expected, and what is there.
    [[noreturn]] void fail(std::string_view expected) const;

    double number(std::string_view expected = "a number is") const;
    long long integer(long long least, long long most, std::string_view expected) const;
    bool boolean() const;
    /// In UTF-8, without the character 0.
    std::string text(std::string_view expected = "a text is") const;
    bool isText() const { return value_->is_string(); }
    bool isNumber() const { return value_->is_number(); }
    bool isBoolean() const { return value_->is_boolean(); }
    bool isArray() const { return value_->is_array(); }
    bool isObject() const { return value_->is_object(); }

    /// The elements of an array of any length.
    std::vector<JsonNode> elements(std::string_view expected) const;
    /// The elements of an array of so many.
    std::vector<JsonNode> elements(std::size_t count, std::string_view expected) const;
    /// The members of an object, ordered by their keys.
    std::vector<std::pair<std::string, JsonNode>> members() const;
    /// The same, of an object that has no other keys than these.
    std::vector<std::pair<std::string, JsonNode>>
    members(std::initializer_list<std::string_view> known) const;
    /// The member of that key, which must be there.
    JsonNode member(std::string_view key, std::string_view expected) const;

private:
    JsonNode(const nlohmann::json& value, std::string file, std::string path);

    const nlohmann::json* value_;
    std::string file_;
    std::string path_;
};

} // namespace quor
