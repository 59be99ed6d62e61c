#pragma once

#include "primary_state.h"

#include <map>

/// The table that kinds of records are tested by: a row per kind with a well-formed record and what it
/// becomes, and, for each optional field, the same with that field alone.
namespace cases {

/// A field of a record: its type's letter and a Lua expression.
struct Field {
    std::string letter;
    std::string lua;
};

struct Option {
    int field;
    Field value;
    std::string made;
};

struct Kind {
    int code;
    std::vector<Field> required;
    std::string made;
    std::vector<Option> options{};
    int exactLength = 0;
    /// What the factory is given for fields that are missing, by their token in the row.
    std::map<std::string, std::string> defaults{};
};

inline void PrintTo(const Kind& kind, std::ostream* out)
{
    *out << "code " << kind.code;
}

/// How the expression's value is printed.
inline std::string shownAs(const std::string& lua)
{
    static const std::map<std::string, std::string> values = {
        {"a", "(1, 2, 3)"},
        {"b", "(4, 5, 7)"},
        {"c", "(9, 9, 1)"},
        {"x", "(1, 0, 0)"},
        {"y", "(0, 2, 0)"},
        {"z", "(0, 0, 3)"},
        {"line", "[{0, 10, 20, 0.5, (0, 0, 0)}, {1, 0, 0, 0, (4, 5, 6)}]"},
        {"loop", "[{2, 0, 0, 0, (1, 1, 1)}]"},
        {"{loop, line}",
         "[[{2, 0, 0, 0, (1, 1, 1)}], [{0, 10, 20, 0.5, (0, 0, 0)}, {1, 0, 0, 0, (4, 5, 6)}]]"},
        {"{a, b, c}", "[(1, 2, 3), (4, 5, 7), (9, 9, 1)]"},
    };
    const auto found = values.find(lua);
    return found == values.end() ? lua : found->second;
}

/// Values that are none of the letter's type.
inline Texts wrongFor(const std::string& letter)
{
    if (letter == "P" || letter == "V")
        return {"5",
                "'text'",
                "true",
                "print",
                "{}",
                "{1, 2}",
                "{1, '2', 3}",
                "{1, 2, {}}",
                "{[0]=0}",
                "{1, nil, 3}",
                "{x=1, y=2, z=3}",
                "setmetatable({}, {__index={1, 2, 3}})"};
    if (letter == "N" || letter == "I")
        return {"'5'", "true", "{}", "{5}", "print", "coroutine.create(function() end)"};
    if (letter == "S") return {"5", "true", "{}", "{'text'}", "print"};
    if (letter == "B") return {"1", "'true'", "{}", "{true}", "print"};
    if (letter == "PL")
        return {"5",
                "'text'",
                "true",
                "print",
                "{5}",
                "{{}}",
                "{{0}}",
                "{{'0', {1, 2, 3}}}",
                "{{0, {1, 2}}}",
                "{{0, {1, 2, 3}}, 5}"};
    if (letter == "N or V") return {"'5'", "true", "{}", "{1, 2}", "print"};
    if (letter == "I or {P, V}") return {"'5'", "true", "{}", "print"};
    return {"5", "'text'", "true", "print"}; // a table of whatever
}

inline std::vector<Kind> all()
{
    const auto P = [](const char* lua) { return Field{"P", lua}; };
    const auto V = [](const char* lua) { return Field{"V", lua}; };
    const auto N = [](const char* lua) { return Field{"N", lua}; };
    const auto I = [](const char* lua) { return Field{"I", lua}; };
    const auto S = [](const char* lua) { return Field{"S", lua}; };
    const auto B = [](const char* lua) { return Field{"B", lua}; };
    const auto PL = [](const char* lua) { return Field{"PL", lua}; };

    const auto solid = [](const std::string& call) { return call + plainSolid; };
    const auto openSolid = [](const std::string& call) { return call + plainSolid + " gsFlag=2"; };
    const auto drawing = [](const std::string& call) { return call + plainDrawing; };
    const auto dashed = [](const std::string& call) {
        return call + " color=257 thick=0 ltScale=1 lineType=\"DASHED\"";
    };
    const auto scaled = [](const std::string& call) {
        return call + " color=257 thick=0 ltScale=2.5 lineType=null";
    };

    const std::string line = shownAs("line"), loop = shownAs("loop");
    const std::string cylinder = "createQuorGraphy3DCylinder((1, 2, 3), (4, 5, 7), 25, 32, false)";
    const std::string torus =
        "createQuorGraphy3DTorus(100, 10, (1, 2, 3), (4, 5, 7), (9, 9, 1), 1, 32, 32, false, 1)";
    const std::string torus1 =
        "createQuorGraphy3DTorus1(100, 10, (1, 2, 3), (4, 5, 7), (9, 9, 1), 90.5, 20, 20, false, 1)";
    const std::string econe = "createQuorGraphy3DEcone((1, 2, 3), (4, 5, 7), 10, 5, (0, 0, 3), 32, false)";
    const std::string cone = "createQuorGraphy3DConcone((1, 2, 3), (4, 5, 7), 10, 5, 32, false)";
    const std::string straight = "createQuorLine((1, 2, 3), (4, 5, 7))";
    const std::string arc = "createQuorArc((1, 2, 3), 5, 30, -60, (0, 0, 3))";
    const std::string circle = "createQuorCirc((1, 2, 3), 5, (0, 0, 3))";
    const std::string text = "createQuorText(1, (1, 2, 3), \"DN50\", 30)";
    const std::string points = "createQuorLineArr([(1, 2, 3), (4, 5, 7), (9, 9, 1)], true)";
    const std::string ellipse = "createQuorEllipse((1, 2, 3), (0, 0, 3), (1, 0, 0), 0.5, 30, 60)";
    const auto polygon = [&line](const std::string& inner) {
        return "createQuorGraphy3DPolygon((1, 2, 3), (1, 0, 0), (0, 2, 0), (0, 0, 3), 5, " + line + ", " +
               inner + ", 32, false, 1)";
    };
    const auto flat = [&line](const std::string& width) {
        return "createQuorPline2D(" + line + ", " + width + ")";
    };
    const auto revolved = [&line](const std::string& angle) {
        return "createQuorGraphy3DRevolve((1, 2, 3), (0, 0, 3), " + line + ", " + angle + ", 32, false, 1)";
    };
    const auto hatch = [&line](const std::string& inner) {
        return "createQuorHatch(\"ANSI31\", " + line + ", " + inner + ", 0, 1)";
    };

    return {
        {2, {P("a"), P("b"), N("25")}, solid(cylinder), {{5, B("true"), openSolid(cylinder)}}},
        {3,
         {N("1"), N("2"), N("3"), P("a"), V("x"), V("y")},
         solid("createQuorGraphy3DBox(1, 2, 3, (1, 2, 3), (1, 0, 0), (0, 2, 0), false, 1)")},
        {4,
         {N("100"), N("10"), P("a"), P("b"), P("c"), I("1")},
         solid(torus),
         {{8, B("true"), openSolid(torus)}}},
        {5, {P("a"), P("b"), N("10"), N("5"), V("z")}, solid(econe), {{7, B("true"), openSolid(econe)}}},
        {6,
         {P("a"), P("b"), N("10"), V("z")},
         solid("createQuorGraphy3DScylinder((1, 2, 3), (4, 5, 7), 10, (0, 0, 3), 12, false)")},
        {7,
         {N("1"), N("2"), N("3"), P("a"), V("z")},
         solid("createQuorGraphy3DOval(1, 2, 3, (1, 2, 3), (0, 0, 3), 32, 32, false)")},
        {8,
         {P("a"), P("b"), P("c"), I("6")},
         solid("createQuorGraphy3DPrism((1, 2, 3), (4, 5, 7), (9, 9, 1), 6, false)")},
        {9,
         {N("1"), N("2"), N("3"), P("a"), N("4"), N("45")},
         solid("createQuorGraphy3DSaddle(1, 2, 3, (1, 2, 3), 4, 45, 32, (1, 0, 0), (0, 1, 0), false, 1)")},
        {10, {P("a"), N("5")}, solid("createQuorGraphy3DSphere((1, 2, 3), 5, 12, false)")},
        {11,
         {P("a"), V("x"), N("1"), N("2"), P("b"), V("z"), N("3")},
         solid("createQuorGraphy3DSqucir((1, 2, 3), (1, 0, 0), 1, 2, (4, 5, 7), (0, 0, 3), 3, 32, false, 1)"),
         {{9, V("y"),
           solid("createQuorGraphy3DSqucir_1((1, 2, 3), (1, 0, 0), (0, 2, 0), 1, 2, (4, 5, 7), (0, 0, 3), 3, "
                 "32, "
                 "false, 1)")}}},
        {12,
         {N("1"), N("2"), N("3"), N("4"), N("5"), P("a"), V("x"), V("y"), V("z"), N("15")},
         solid("createQuorGraphy3DSqucone(1, 2, 3, 4, 5, (1, 2, 3), (1, 0, 0), (0, 2, 0), (0, 0, 3), 15, "
               "false)")},
        {13,
         {N("1"), N("2"), N("3"), N("4"), P("a"), P("b"), P("c"), I("1")},
         solid("createQuorGraphy3DSqutorus(1, 2, 3, 4, (1, 2, 3), (4, 5, 7), (9, 9, 1), 1, 20, false, 1)")},
        {14,
         {P("a"), P("b"), P("c"), N("5")},
         solid("createQuorGraphy3DWedge((1, 2, 3), (4, 5, 7), (9, 9, 1), 5, false, 1)")},
        {15, {P("a"), P("b"), N("10"), N("5")}, solid(cone), {{6, B("true"), openSolid(cone)}}},
        {16,
         {P("a"), P("b")},
         drawing(straight),
         {{4, S("\"DASHED\""), dashed(straight)}, {5, N("2.5"), scaled(straight)}}},
        {17,
         {P("a"), N("5"), N("30"), N("-60"), V("z")},
         drawing(arc),
         {{7, S("\"DASHED\""), dashed(arc)}, {8, N("2.5"), scaled(arc)}}},
        {18,
         {P("a"), N("5"), V("z")},
         drawing(circle),
         {{5, S("\"DASHED\""), dashed(circle)}, {6, N("2.5"), scaled(circle)}}},
        {19,
         {I("1"), P("a"), S("\"DN50\""), {"N or V", "30"}},
         drawing(text),
         {{6, N("2"), drawing(text) + " scale=2"},
          {7, N("3.5"), drawing(text) + " height=3.5"},
          {8, V("y"), drawing(text) + " normal=(0, 2, 0)"},
          {9, I("4"), drawing(text) + " txtFlag=4"}}},
        {20,
         {N("1"), N("2"), N("3"), P("a"), V("x"), V("y")},
         solid("createQuorGraphy3DBox1(1, 2, 3, (1, 2, 3), (1, 0, 0), (0, 2, 0), false, 1)")},
        {21,
         {P("a"), P("b"), P("c"), I("6")},
         solid("createQuorGraphy3DPrism1((1, 2, 3), (4, 5, 7), (9, 9, 1), 6, false)")},
        {22,
         {N("100"), N("10"), P("a"), P("b"), P("c"), N("90.5")},
         solid(torus1),
         {{8, B("true"), openSolid(torus1)}}},
        {23,
         {N("1"), N("2"), N("3"), N("4"), P("a"), P("b"), V("z"), N("90.5")},
         solid(
             "createQuorGraphy3DSqutorus1(1, 2, 3, 4, (1, 2, 3), (4, 5, 7), (0, 0, 3), 90.5, 20, false, 1)")},
        {24,
         {P("a"), V("x"), V("y"), V("z"), N("5"), PL("line")},
         solid(polygon("[]")),
         {{8, {"table of PL", "{loop, line}"}, solid(polygon("[" + loop + ", " + line + "]"))},
          {8, {"table of PL", "{}"}, solid(polygon("[]"))}},
         0,
         {{"inner", "[]"}}},
        {25,
         {PL("line")},
         drawing(flat("0")),
         {{3, N("0.5"), drawing(flat("0.5"))},
          {4, S("\"DASHED\""), dashed(flat("0"))},
          {5, N("2.5"), scaled(flat("0"))}},
         0,
         {{"N3", "0"}}},
        {26, {P("a"), I("7")}, drawing("createQuorPoint((1, 2, 3), 7)"), {}, 3},
        {27,
         {{"table of P", "{a, b, c}"}},
         drawing(points),
         {{3, B("false"), drawing(points)},
          {4, S("\"DASHED\""), dashed(points)},
          {5, N("2.5"), scaled(points)},
          {5, N("0"), drawing(points)},
          {5, N("-1"), drawing(points)}}},
        {28,
         {S("\"ANSI31\""), PL("line")},
         drawing(hatch("[]")),
         {{4, PL("loop"), drawing(hatch(loop))}},
         0,
         {{"PL4", "[]"}, {"angle", "0"}, {"scale", "1"}}},
        {29, {PL("line")}, solid("createQuorGraphy3DPline(" + line + ")")},
        {30,
         {P("a"), V("z"), PL("line")},
         solid(revolved("360")),
         {{5, N("90"), solid(revolved("90"))}},
         0,
         {{"N5", "360"}}},
        {31,
         {P("a"), V("z"), V("x"), N("0.5"), N("30"), N("60")},
         drawing(ellipse),
         {{8, N("0.7"), ellipse + " color=257 thick=0.7 ltScale=1 lineType=null"},
          {9, S("\"DASHED\""), dashed(ellipse)},
          {10, N("2.5"), drawing(ellipse)}}},
        {32,
         {S("\"lib\""), S("\"VALVE\""), P("a"), V("x"), V("y")},
         "createCadReference(\"lib\", \"VALVE\", (1, 2, 3), (1, 0, 0), (0, 2, 0)) color=257"},
        {41, {I("1"), I("2"), {"I or {P, V}", "3"}}, "createQuorPrimaryBooleanOpr(1, 2, 3)", {}, 4},
        {200, {{"table", "{DN = 50}"}}, "QuorOprKVParamArray([{\"DN\", \"\", double:50}])", {}, 2},
    };
}

} // namespace cases
