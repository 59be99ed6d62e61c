#include "JsonFile.h"

#include "Failure.h"
#include "Terminal.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>

namespace quor {
namespace {

using Json = nlohmann::json;

/// Far more than any file of the command needs; what is deeper is no such file.
constexpr std::size_t mostLevels = 32;

std::string withKey(const std::string& path, const std::string& key)
{
    if (!isWord(key)) return path + "[" + Json(key).dump() + "]";
    return path.empty() ? key : path + "." + key;
}

std::string withIndex(const std::string& path, std::size_t index)
{
    return fmt::format("{}[{}]", path, index);
}

std::string placeIn(const std::string& file, const std::string& path)
{
    return path.empty() ? file : file + ": " + terminal::fromUtf8(path);
}

/// Builds the value, which the parser of the JSON library would do as well, but says nothing of keys that
/// stand twice and not where a number is too large.
class Builder final : public nlohmann::json_sax<Json> {
public:
    /// `isLine`: the text is one line, which `file` names.
    Builder(std::string file, std::string_view text, bool isLine = false)
        : file_(std::move(file)), text_(text), isLine_(isLine)
    {
    }

    Json take() { return std::move(root_); }

    bool null() override { return put(nullptr); }
    bool boolean(bool value) override { return put(value); }
    bool number_integer(number_integer_t value) override { return put(value); }
    bool number_unsigned(number_unsigned_t value) override { return put(value); }
    bool number_float(number_float_t value, const string_t&) override { return put(value); }
    bool string(string_t& value) override { return put(std::move(value)); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& value) override
    {
        if (open_.back()->contains(value))
            throw Failure(WrongUsage, placeIn(file_, withKey(path(), value)) + ": the key stands here twice");
        keys_.back() = value;
        return true;
    }

    bool parse_error(std::size_t position, const std::string& token,
                     const nlohmann::detail::exception& error) override
    {
        constexpr int numberOutOfRange = 406;
        const std::string_view before = text_.substr(0, position == 0 ? 0 : position - 1);
        const auto line = static_cast<std::size_t>(1 + std::count(before.begin(), before.end(), '\n'));
        const auto column = before.size() - (before.rfind('\n') + 1) + 1;
        const bool isNumber = error.id == numberOutOfRange;
        throw Failure(WrongUsage,
                      fmt::format("{}, column {}: {}", isLine_ ? file_ : placeOfLine(file_, line), column,
                                  isNumber ? "a number of usual size is expected; there is " + token
                                           : terminal::fromUtf8(reasonOf(error.what()))));
    }

private:
    /// The library's words behind their head, a code and the position once more.
    static std::string reasonOf(std::string_view what)
    {
        for (const std::string_view head : {"] ", ": "})
            what.remove_prefix(std::min(what.find(head), what.size() - head.size()) + head.size());
        return std::string(what);
    }

    Json& place(Json value)
    {
        if (open_.empty()) return root_ = std::move(value);
        Json& parent = *open_.back();
        if (parent.is_object()) return parent[keys_.back()] = std::move(value);
        parent.push_back(std::move(value));
        return parent.back();
    }

    bool put(Json value)
    {
        place(std::move(value));
        return true;
    }

    /// An element is complete before its array grows, so the addresses of those that are open stay.
    bool open(Json value)
    {
        if (open_.size() == mostLevels)
            throw Failure(WrongUsage, fmt::format("{}: it is nested deeper than {} levels",
                                                  placeIn(file_, path()), mostLevels));
        open_.push_back(&place(std::move(value)));
        keys_.emplace_back();
        return true;
    }

    bool close()
    {
        open_.pop_back();
        keys_.pop_back();
        return true;
    }

    std::string path() const
    {
        std::string path;
        for (std::size_t i = 0; i + 1 < open_.size(); ++i)
            path = open_[i]->is_object() ? withKey(path, keys_[i]) : withIndex(path, open_[i]->size() - 1);
        return path;
    }

    std::string file_;
    std::string_view text_;
    bool isLine_;
    Json root_;
    std::vector<Json*> open_;
    std::vector<std::string> keys_; ///< of each open object, the key in work
};

std::string whatIsThere(const Json& value)
{
    constexpr std::size_t longestText = 60;
    switch (value.type()) {
    case Json::value_t::object:
        return "an object";
    case Json::value_t::array:
        return fmt::format("an array of {}", value.size());
    case Json::value_t::string:
        if (value.get_ref<const std::string&>().size() > longestText) return "a long text";
        return "the text " + value.dump();
    default:
        return value.dump();
    }
}

} // namespace

bool isWord(std::string_view key)
{
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; };
    const auto isLetterOrDigit = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); };
    return !key.empty() && isLetter(key.front()) && std::all_of(key.begin(), key.end(), isLetterOrDigit);
}

std::string readTextFile(const std::string& path)
{
    std::error_code error;
    const auto type = std::filesystem::status(system::pathOf(path), error).type();
    const char* there = type == std::filesystem::file_type::not_found   ? "there is none"
                        : type == std::filesystem::file_type::directory ? "a folder is there"
                                                                        : "this is none";
    // Opening a pipe would wait for whoever writes into it.
    if (type != std::filesystem::file_type::regular)
        throw Failure(WrongUsage, fmt::format("{}: a regular file is expected; {}", path, there));
    std::ifstream file(system::pathOf(path), std::ios::binary);
    if (!file) throw Failure(WrongUsage, fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));
    return {std::istreambuf_iterator<char>(file), {}};
}

Json readJsonFile(const std::string& path)
{
    return readJsonText(readTextFile(path), path);
}

Json readJsonText(std::string_view text, const std::string& name)
{
    Builder builder(name, text);
    Json::sax_parse(text, &builder);
    return builder.take();
}

std::string placeOfLine(const std::string& file, std::size_t number)
{
    return fmt::format("{}: line {}", file, number);
}

Json readJsonLine(std::string_view line, const std::string& file, std::size_t number)
{
    Builder builder(placeOfLine(file, number), line, true);
    Json::sax_parse(line, &builder);
    return builder.take();
}

JsonNode::JsonNode(const Json& value, std::string file) : JsonNode(value, std::move(file), "") {}

JsonNode::JsonNode(const Json& value, std::string file, std::string path)
    : value_(&value), file_(std::move(file)), path_(std::move(path))
{
}

std::string JsonNode::place() const
{
    return placeIn(file_, path_);
}

void JsonNode::fail(std::string_view expected) const
{
    throw Failure(WrongUsage, place() + terminal::fromUtf8(fmt::format(": {} expected; {} is there", expected,
                                                                       whatIsThere(*value_))));
}

double JsonNode::number(std::string_view expected) const
{
    if (!value_->is_number()) fail(expected);
    return value_->get<double>();
}

long long JsonNode::integer(long long least, long long most, std::string_view expected) const
{
    if (!value_->is_number_integer()) fail(expected);
    // Without a sign are those that may not fit.
    if (value_->is_number_unsigned() &&
        value_->get<unsigned long long>() > static_cast<unsigned long long>(most))
        fail(expected);
    const auto value = value_->get<long long>();
    if (value < least || value > most) fail(expected);
    return value;
}

bool JsonNode::boolean() const
{
    if (!value_->is_boolean()) fail("true or false is");
    return value_->get<bool>();
}

std::string JsonNode::text(std::string_view expected) const
{
    if (!value_->is_string()) fail(expected);
    const auto& text = value_->get_ref<const std::string&>();
    if (text.find('\0') != std::string::npos) fail("a text without the character 0 is");
    return text;
}

std::vector<JsonNode> JsonNode::elements(std::string_view expected) const
{
    if (!value_->is_array()) fail(expected);
    std::vector<JsonNode> nodes;
    for (std::size_t i = 0; i < value_->size(); ++i)
        nodes.push_back(JsonNode((*value_)[i], file_, withIndex(path_, i)));
    return nodes;
}

std::vector<JsonNode> JsonNode::elements(std::size_t count, std::string_view expected) const
{
    if (!value_->is_array() || value_->size() != count) fail(expected);
    return elements(expected);
}

std::vector<std::pair<std::string, JsonNode>> JsonNode::members() const
{
    if (!value_->is_object()) fail("an object is");
    std::vector<std::pair<std::string, JsonNode>> nodes;
    for (const auto& [key, value] : value_->items())
        nodes.emplace_back(key, JsonNode(value, file_, withKey(path_, key)));
    return nodes;
}

std::vector<std::pair<std::string, JsonNode>>
JsonNode::members(std::initializer_list<std::string_view> known) const
{
    auto nodes = members();
    for (const auto& [key, node] : nodes) {
        if (std::find(known.begin(), known.end(), key) == known.end())
            throw Failure(WrongUsage, fmt::format("{}: the key is unknown; known here are {}", node.place(),
                                                  fmt::join(known, ", ")));
    }
    return nodes;
}

JsonNode JsonNode::member(std::string_view key, std::string_view expected) const
{
    const std::string name(key);
    const auto found = value_->find(name);
    if (found == value_->end())
        throw Failure(WrongUsage,
                      placeIn(file_, withKey(path_, name)) +
                          terminal::fromUtf8(fmt::format(": {} expected; it is missing", expected)));
    return JsonNode(*found, file_, withKey(path_, name));
}

} // namespace quor
