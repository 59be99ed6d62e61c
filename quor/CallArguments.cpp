#include "CallArguments.h"

#include "ArgumentText.h"
#include "CharacterSet.h"
#include "Failure.h"
#include "ParameterValue.h"
#include "Terminal.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <algorithm>
#include <charconv>
#include <limits>

namespace quor {
namespace {

constexpr std::string_view pointForm = "a point, three numbers, is";
constexpr std::string_view idForm = "an id, a whole number of 64 bits or its digits as a text, is";
constexpr std::string_view vertexForm = "a vertex [kind,start width,end width,bulge,[x,y,z]] is";

std::string placeOf(std::size_t i, char letter)
{
    return fmt::format("ARG {} ({})", i + 1, letter);
}

[[noreturn]] void fail(const std::string& place, const std::string& text, std::string_view expected)
{
    throw Failure(WrongUsage, fmt::format("{} {}: {} is expected, and this is none", place, text, expected));
}

bool startsJson(std::string_view text)
{
    return text.starts_with('[') || text.starts_with('{');
}

/// The value of a text in JSON, and its owner.
class JsonText {
public:
    JsonText(const std::string& text, const std::string& place)
        : json_(readJsonText(terminal::utf8From(text, place), place)), root_(json_, place)
    {
    }
    JsonText(const JsonText&) = delete;
    JsonText& operator=(const JsonText&) = delete;

    const JsonNode& root() const { return root_; }

private:
    nlohmann::json json_;
    JsonNode root_;
};

template<class Integer>
Integer readInteger(const std::string& text, const std::string& place, std::string_view expected)
{
    std::string_view digits = text;
    if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
    Integer number = 0;
    const char* end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, number);
    if (error != std::errc() || rest != end) fail(place, text, expected);
    return number;
}

/// The words that stand for what is no number.
bool readWord(std::string_view word, double& number)
{
    using Limits = std::numeric_limits<double>;
    if (word != "Infinity" && word != "-Infinity" && word != "NaN") return false;
    number = word == "NaN"        ? Limits::quiet_NaN()
             : word == "Infinity" ? Limits::infinity()
                                  : -Limits::infinity();
    return true;
}

double readDouble(const std::string& text, const std::string& place)
{
    double number = 0;
    if (readWord(text, number)) return number;
    const NumberReading reading = readNumber(text, number);
    if (reading == NumberReading::TooLarge) fail(place, text, "a number of usual size");
    if (reading == NumberReading::NoNumber) fail(place, text, "a number");
    return number;
}

bool readBoolean(const std::string& text, const std::string& place)
{
    if (text != "true" && text != "false") fail(place, text, "true or false");
    return text == "true";
}

std::string readBytes(const std::string& text, const std::string& place)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        unsigned byte = 0;
        const char* end = text.data() + i + 2;
        if (i + 2 > text.size() || std::from_chars(text.data() + i, end, byte, 16).ptr != end)
            fail(place, text, "a text of hexadecimal digits, two for each byte,");
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

double numberOf(const JsonNode& node)
{
    double number = 0;
    if (node.isText() && readWord(node.text(), number)) return number;
    return node.number();
}

QuorPoint pointOf(const JsonNode& node)
{
    const auto elements = node.elements(3, pointForm);
    return {numberOf(elements[0]), numberOf(elements[1]), numberOf(elements[2])};
}

KxDbObjectId idOf(const JsonNode& node)
{
    using Limits = std::numeric_limits<long long>;
    if (!node.isText()) return KxDbObjectId(node.integer(Limits::min(), Limits::max(), idForm));
    const std::string text = node.text();
    long long id = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, id);
    if (error != std::errc() || rest != end) node.fail(idForm);
    return KxDbObjectId(id);
}

std::string textOf(const JsonNode& node)
{
    node.text();
    return luaValueOf(node).text;
}

QuorPolyDesc vertexOf(const JsonNode& node)
{
    using Limits = std::numeric_limits<int>;
    const auto elements = node.elements(5, vertexForm);
    QuorPolyDesc vertex;
    vertex.kind = static_cast<int>(
        elements[0].integer(Limits::min(), Limits::max(), "a kind, a whole number of 32 bits, is"));
    vertex.startWidth = numberOf(elements[1]);
    vertex.endWidth = numberOf(elements[2]);
    vertex.bulge = numberOf(elements[3]);
    const auto [x, y, z] = pointOf(elements[4]);
    vertex.point.set(x, y, z);
    return vertex;
}

/// An array whose elements `read` reads.
template<class Read>
auto listOf(const JsonNode& node, std::string_view expected, Read read)
{
    std::vector<decltype(read(node))> list;
    for (const JsonNode& element : node.elements(expected))
        list.push_back(read(element));
    return list;
}

std::vector<QuorPolyDesc> polylineOf(const JsonNode& node)
{
    return listOf(node, "a polyline, an array of vertices, is", vertexOf);
}

/// A value that a script can hold under a name.
KVValue valueOf(const JsonNode& node)
{
    if (node.isNumber()) return KVValue::ofDouble(node.number());
    if (node.isBoolean()) return KVValue::ofBool(node.boolean());
    if (node.isText()) return KVValue::ofString(textOf(node));
    if (!node.isArray()) node.fail("a number, a text, true, false or a point is");
    return KVValue::ofPoint(pointOf(node));
}

enum class Notes { Taken, Refused };

KVParams recordOf(const JsonNode& node, Notes notes)
{
    const auto members = node.members({"key", "note", "value"});
    KVParams record;
    record.key = textOf(node.member("key", "a text is"));
    record.value = valueOf(node.member("value", "a number, a text, true, false or a point is"));
    for (const auto& [name, member] : members) {
        if (name == "note") record.note = textOf(member);
        if (notes == Notes::Refused && !record.note.empty())
            member.fail("an empty note, since this letter passes none, is");
    }
    return record;
}

std::vector<KVParams> recordsOf(const JsonNode& node, Notes notes)
{
    constexpr std::string_view form = "a list of parameters, an object or an array of records, is";
    if (node.isArray())
        return listOf(node, form, [notes](const JsonNode& one) { return recordOf(one, notes); });
    if (!node.isObject()) node.fail(form);
    std::vector<KVParams> records;
    for (const auto& [name, member] : node.members()) {
        KVParams record;
        if (!charset::gbkFromUtf8(name, record.key))
            throw Failure(WrongUsage, member.place() + ": a name that GBK can write is expected");
        record.value = valueOf(member);
        records.push_back(std::move(record));
    }
    return records;
}

/// JSON, or NAME=VALUE parted by semicolons.
std::vector<KVParams> readRecords(const std::string& text, const std::string& place, Notes notes)
{
    if (startsJson(text)) return recordsOf(JsonText(text, place).root(), notes);
    std::vector<KVParams> records;
    for (std::size_t first = 0; first < text.size();) {
        const std::size_t end = std::min(text.find(';', first), text.size());
        const std::string record = text.substr(first, end - first);
        records.push_back(readParameter(record, fmt::format("{} {}", place, record)));
        first = end + 1;
    }
    return records;
}

std::vector<KVData> dataOf(const std::vector<KVParams>& records)
{
    std::vector<KVData> data;
    data.reserve(records.size());
    for (const KVParams& record : records)
        data.push_back({record.key, record.value});
    return data;
}

} // namespace

KxGePoint3D readPointArgument(const std::string& text, const std::string& place)
{
    QuorPoint point;
    if (startsJson(text))
        point = pointOf(JsonText(text, place).root());
    else if (!readPoint(text, point))
        fail(place, text, "a point x,y,z");
    return {point.x, point.y, point.z};
}

KxGeMatrix3D readMatrixArgument(const std::string& text, const std::string& place)
{
    constexpr std::string_view form = "a matrix, four rows of four numbers, is";
    KxGeMatrix3D matrix;
    if (startsJson(text)) {
        const JsonText json(text, place);
        int row = 0;
        for (const JsonNode& line : json.root().elements(4, form)) {
            const auto numbers = line.elements(4, "a row, four numbers, is");
            matrix.setRow(row++, numberOf(numbers[0]), numberOf(numbers[1]), numberOf(numbers[2]),
                          numberOf(numbers[3]));
        }
        return matrix;
    }
    constexpr int count = 16;
    double numbers[count];
    if (!readNumbers(text, numbers, count)) fail(place, text, "a matrix, 16 numbers parted by commas,");
    for (int row = 0; row < 4; ++row)
        matrix.setRow(row, numbers[4 * row], numbers[4 * row + 1], numbers[4 * row + 2],
                      numbers[4 * row + 3]);
    return matrix;
}

LuaValue readTableArgument(const std::string& text, const std::string& place)
{
    const JsonText json(text, place);
    if (!json.root().isArray() && !json.root().isObject())
        json.root().fail("a table, an array or an object, is");
    return luaValueOf(json.root());
}

CallArguments::CallArguments(const std::string& letters, const std::vector<std::string>& texts)
    : items_(letters.size())
{
    if (texts.size() != letters.size())
        throw Failure(WrongUsage,
                      fmt::format("ARG: {} expected, one for each letter before '>'; {} there",
                                  letters.size() == 1 ? "1 is" : fmt::format("{} are", letters.size()),
                                  texts.size() == 1 ? "1 is" : fmt::format("{} are", texts.size())));
    for (std::size_t i = 0; i < letters.size(); ++i)
        read(i, letters[i], texts[i]);
}

CallArguments::~CallArguments() = default;

template<class T>
void CallArguments::keep(std::size_t i, T value)
{
    auto kept = std::make_shared<T>(std::move(value));
    items_[i].address = kept.get();
    kept_.push_back(std::move(kept));
}

void CallArguments::keepBytes(std::size_t i, std::string bytes)
{
    struct Kept {
        std::string bytes;
        quor_binary buffer;
    };
    auto kept = std::make_shared<Kept>();
    kept->bytes = std::move(bytes);
    kept->buffer.length = static_cast<int>(kept->bytes.size());
    kept->buffer.data = kept->bytes.data();
    items_[i].address = &kept->buffer;
    kept_.push_back(std::move(kept));
}

void CallArguments::read(std::size_t i, char letter, const std::string& text)
{
    const std::string place = placeOf(i, letter);
    const auto list = [&](std::string_view expected, auto readElement) {
        return listOf(JsonText(text, place).root(), expected, readElement);
    };
    const auto lists = [&](Notes notes) {
        return list("an array of lists of parameters is",
                    [notes](const JsonNode& one) { return recordsOf(one, notes); });
    };
    switch (letter) {
    case 'i':
        items_[i].integer = readInteger<int>(text, place, "a whole number of 32 bits");
        break;
    case 'd':
        items_[i].number = readDouble(text, place);
        break;
    case 'n':
        items_[i].truth = readBoolean(text, place);
        break;
    case 'I':
        items_[i].integer64 = readInteger<long long>(text, place, "a whole number of 64 bits");
        break;
    case 's':
        keep(i, terminal::gbkFrom(text, place + " " + text));
        items_[i].address = static_cast<const std::string*>(items_[i].address)->c_str();
        break;
    case 'r':
        keep(i, terminal::gbkFrom(text, place + " " + text));
        break;
    case 'y':
        keepBytes(i, readBytes(text, place));
        break;
    case 'o':
        keep(i, KxDbObjectId(readInteger<long long>(text, place, "an id, a whole number of 64 bits,")));
        break;
    case 'p':
        keep(i, readPointArgument(text, place));
        break;
    case 'v': {
        const auto [x, y, z] = readPointArgument(text, place).toQuorPoint();
        keep(i, KxGeVector3D(x, y, z));
        break;
    }
    case 'X':
        keep(i, readMatrixArgument(text, place));
        break;
    case 'P':
        keep(i, list("an array of points is", [](const JsonNode& node) {
                 const auto [x, y, z] = pointOf(node);
                 return KxGePoint3D(x, y, z);
             }));
        break;
    case 'O':
        keep(i, list("an array of ids is", idOf));
        break;
    case 'S':
        keep(i, list("an array of texts is", textOf));
        break;
    case 'g':
        keep(i, polylineOf(JsonText(text, place).root()));
        break;
    case 'l':
        keep(i, list("an array of polylines is", polylineOf));
        break;
    case 'm':
        keep(i, readRecords(text, place, Notes::Refused));
        break;
    case 'M':
    case 'a':
        keep(i, readRecords(text, place, Notes::Taken));
        break;
    case 'B':
        keep(i, lists(Notes::Taken));
        break;
    case 'b':
        keep(i, lists(Notes::Refused));
        break;
    case 'k':
        keep(i, dataOf(readRecords(text, place, Notes::Refused)));
        break;
    case 'x':
        if (text != "scene" && text != "none") fail(place, text, "scene or none");
        if (text == "scene") styles_.push_back(i);
        break;
    default: // 'c' and 't'
        tables_.emplace_back(i, readTableArgument(text, place));
    }
}

void CallArguments::addTextStyle(const GlibTextStyle* style)
{
    for (const std::size_t i : styles_) {
        items_[i].address = style;
        if (style) continue;
        throw Failure(
            WrongUsage,
            fmt::format("{} scene: a --scene with text styles is expected; there is none", placeOf(i, 'x')));
    }
}

void CallArguments::addTables(lua_State* L)
{
    lua_checkstack(L, static_cast<int>(tables_.size()) + LUA_MINSTACK);
    kept_.reserve(kept_.size() + tables_.size());
    for (const auto& [i, table] : tables_) {
        pushLuaValue(L, table);
        auto handle = std::make_shared<lua_tinker::table>(L, -1);
        items_[i].address = handle->handle();
        kept_.push_back(std::move(handle));
    }
}

} // namespace quor
