#include "SceneFile.h"

#include "CharacterSet.h"
#include "Failure.h"
#include "JsonFile.h"
#include "Terminal.h"

#include <charconv>
#include <filesystem>
#include <fmt/format.h>
#include <limits>
#include <string_view>

namespace quor {
namespace {

constexpr std::string_view matrixForm = "a matrix, four rows of four numbers, is";
constexpr std::string_view pointForm = "a point, three numbers, is";
constexpr std::string_view directionForm = "a direction, three numbers that are not all 0, is";
constexpr std::string_view idForm = "an id, a whole number of 64 bits or its digits as a text, is";
constexpr std::string_view numbersForm =
    "written as in \"1,-2\": whole numbers, parted by commas, without blanks and leading zeros";

/// A whole number in the one way of writing it, so that no two keys mean the same.
template<class Integer>
bool readInteger(std::string_view text, Integer& number)
{
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end) return false;
    char digits[24];
    const auto written = std::to_chars(digits, digits + sizeof digits, number);
    return text == std::string_view(digits, static_cast<std::size_t>(written.ptr - digits));
}

/// The numbers of a key as "1,2"; false unless there are exactly `count` that fit.
template<class Integer, std::size_t count>
bool readKey(std::string_view key, std::array<Integer, count>& numbers)
{
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t comma = key.find(',');
        if ((comma == std::string_view::npos) != (i + 1 == count)) return false;
        if (!readInteger(key.substr(0, comma), numbers[i])) return false;
        key.remove_prefix(comma == std::string_view::npos ? key.size() : comma + 1);
    }
    return true;
}

[[noreturn]] void failKey(const JsonNode& node, std::string_view expected)
{
    throw Failure(WrongUsage,
                  fmt::format("{}: a key of {} is expected, {}", node.place(), expected, numbersForm));
}

constexpr const char* twoOf16Bits = "two numbers from 0 to 65535";
constexpr const char* threeOf16Bits = "three numbers from 0 to 65535";
constexpr const char* twoOrFourOf16Bits = "two or four numbers from 0 to 65535";
constexpr const char* oneOf32Bits = "one number from -2147483648 to 2147483647";
constexpr const char* twoOf32Bits = "two numbers from -2147483648 to 2147483647, or \"default\",";

std::array<double, 3> readThree(const JsonNode& node, std::string_view expected)
{
    const auto elements = node.elements(3, expected);
    return {elements[0].number(), elements[1].number(), elements[2].number()};
}

KxGePoint3D readPoint(const JsonNode& node)
{
    const auto [x, y, z] = readThree(node, pointForm);
    return {x, y, z};
}

KxGeVector3D readDirection(const JsonNode& node)
{
    const auto [x, y, z] = readThree(node, directionForm);
    if (x == 0 && y == 0 && z == 0)
        throw Failure(WrongUsage,
                      fmt::format("{}: {} expected; [0, 0, 0] is there", node.place(), directionForm));
    return {x, y, z};
}

KxGeMatrix3D readMatrix(const JsonNode& node)
{
    KxGeMatrix3D matrix;
    int row = 0;
    for (const JsonNode& line : node.elements(4, matrixForm)) {
        const auto numbers = line.elements(4, "a row, four numbers, is");
        matrix.setRow(row++, numbers[0].number(), numbers[1].number(), numbers[2].number(),
                      numbers[3].number());
    }
    return matrix;
}

void readNormalMatrices(const JsonNode& section, Scene& scene)
{
    for (const auto& [key, node] : section.members()) {
        HostNumbers<2> two{};
        HostNumbers<4> four{};
        if (readKey(key, two))
            scene.normalMatrices[two] = readMatrix(node);
        else if (readKey(key, four))
            scene.normalMatricesOfFour[four] = readMatrix(node);
        else
            failKey(node, twoOrFourOf16Bits);
    }
}

void readArcMatrices(const JsonNode& section, Scene& scene)
{
    for (const auto& [key, node] : section.members()) {
        HostNumbers<3> numbers{};
        if (!readKey(key, numbers)) failKey(node, threeOf16Bits);
        scene.arcMatrices[numbers] = readMatrix(node);
    }
}

void readReferenceMatrices(const JsonNode& section, Scene& scene)
{
    for (const auto& [key, node] : section.members()) {
        std::array<int, 2> numbers{};
        if (key == "default")
            scene.defaultReferenceMatrix = readMatrix(node);
        else if (readKey(key, numbers))
            scene.referenceMatrices[numbers] = readMatrix(node);
        else
            failKey(node, twoOf32Bits);
    }
}

void readMatrices(const JsonNode& section, Scene& scene)
{
    for (const auto& [key, node] : section.members({"default", "normal", "arc", "reference"})) {
        if (key == "default") scene.defaultMatrix = readMatrix(node);
        if (key == "normal") readNormalMatrices(node, scene);
        if (key == "arc") readArcMatrices(node, scene);
        if (key == "reference") readReferenceMatrices(node, scene);
    }
}

void readPoints(const JsonNode& section, Scene& scene)
{
    for (const auto& [key, node] : section.members()) {
        std::array<int, 1> number{};
        if (!readKey(key, number)) failKey(node, oneOf32Bits);
        scene.points[number[0]] = readPoint(node);
    }
}

void readLegs(const JsonNode& section, Scene& scene)
{
    for (const auto& [key, node] : section.members()) {
        HostNumbers<2> numbers{};
        if (!readKey(key, numbers)) failKey(node, twoOf16Bits);
        scene.legs[numbers] = readDirection(node);
    }
}

long long readId(const JsonNode& node)
{
    using Limits = std::numeric_limits<long long>;
    if (!node.isText()) return node.integer(Limits::min(), Limits::max(), idForm);
    long long id = 0;
    if (!readInteger(node.text(), id)) node.fail(idForm);
    return id;
}

void readObject(const JsonNode& section, Scene& scene)
{
    for (const auto& [key, node] : section.members({"id", "pointer"})) {
        if (key == "id") scene.objectId = readId(node);
        if (key == "pointer") scene.hasObjectPointer = node.boolean();
    }
}

double readPositive(const JsonNode& node)
{
    constexpr std::string_view form = "a number above 0 is";
    const double number = node.number(form);
    if (number <= 0) node.fail(form);
    return number;
}

/// The name of a style as scripts write it.
std::string readName(std::string_view utf8, const std::string& place)
{
    std::string name;
    if (utf8.empty() || utf8.find('\0') != std::string_view::npos || !charset::gbkFromUtf8(utf8, name))
        throw Failure(WrongUsage,
                      place + ": a name that GBK can write, not empty and without the character 0, is "
                              "expected");
    return name;
}

std::string readFontPath(const JsonNode& node, const Scene& scene)
{
    constexpr std::string_view form = "the path of a font is";
    const std::string path = node.text(form);
    if (path.empty()) node.fail(form);
    const std::string name = terminal::fromUtf8(path);
    terminal::systemName(name, fmt::format("{}: {}", node.place(), name));
    return system::textOf(system::pathOf(scene.path).parent_path() / system::pathOf(name));
}

SceneStyle readStyle(const JsonNode& section, const Scene& scene)
{
    constexpr long mostFaces = 65536; // what lies above the number of a face is something else to FreeType
    SceneStyle style;
    style.place = section.place();
    const auto members = section.members({"font", "face", "height", "factor"});
    style.font = readFontPath(section.member("font", "the path of a font is"), scene);
    style.height = readPositive(section.member("height", "a number above 0 is"));
    for (const auto& [key, node] : members) {
        if (key == "face")
            style.face = static_cast<long>(
                node.integer(0, mostFaces - 1, "the number of a face, from 0 to 65535, is"));
        if (key == "factor") style.factor = readPositive(node);
    }
    return style;
}

void readStyles(const JsonNode& section, Scene& scene)
{
    for (const auto& [key, node] : section.members()) {
        const std::string name = readName(key, node.place());
        if (!scene.textStyles.emplace(name, readStyle(node, scene)).second)
            throw Failure(WrongUsage, node.place() + ": in GBK this is the name of another style");
    }
}

void readCurrentStyle(const JsonNode& root, Scene& scene)
{
    constexpr std::string_view form = "the name of one of textStyles is";
    const JsonNode node = root.member("textStyle", form);
    scene.textStyle = readName(node.text(form), node.place());
    if (!scene.textStyles.contains(scene.textStyle)) node.fail(form);
}

} // namespace

Scene readScene(const std::string& path)
{
    const nlohmann::json json = readJsonFile(path);
    const JsonNode root(json, path);
    Scene scene;
    scene.path = path;
    bool namesStyle = false;
    for (const auto& [key, node] :
         root.members({"note", "object", "view", "matrices", "points", "legs", "textStyle", "textStyles"})) {
        if (key == "note") static_cast<void>(node.text());
        if (key == "object") readObject(node, scene);
        if (key == "view") scene.view = readDirection(node);
        if (key == "matrices") readMatrices(node, scene);
        if (key == "points") readPoints(node, scene);
        if (key == "legs") readLegs(node, scene);
        if (key == "textStyle") namesStyle = true;
        if (key == "textStyles") readStyles(node, scene);
    }
    if (namesStyle || !scene.textStyles.empty()) readCurrentStyle(root, scene);
    return scene;
}

} // namespace quor
