// Scenes that are not right: each is refused with the file, the place in it, what is expected and what is
// there.

#include "SceneRun.h"
#include "TestSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using sys::inSystemForm;
using testing::HasSubstr;
using testing::StartsWith;

struct Mistake {
    std::string scene;
    std::string message;
};

constexpr const char* keyForm =
    " is expected, written as in \"1,-2\": whole numbers, parted by commas, without blanks "
    "and leading zeros";

std::string point(const std::string& value)
{
    return R"({"points": {"3": )" + value + "}}";
}

std::string points(const std::string& key)
{
    return R"({"points": {")" + key + R"(": [1, 2, 3]}})";
}

std::string badPoint(const std::string& key)
{
    return "points" + (key == "x" ? ".x" : "[\"" + key + "\"]") +
           ": a key of one number from -2147483648 to 2147483647" + keyForm;
}

std::string matrixAt(const std::string& section, const std::string& key)
{
    return R"({"matrices": {")" + section + R"(": {")" + key +
           R"(": [[1,0,0,0],[0,1,0,0],[0,0,1,0],[0,0,0,1]]}}})";
}

std::string id(const std::string& value)
{
    return R"({"object": {"id": )" + value + "}}";
}

std::string badId(const std::string& there)
{
    return "object.id: an id, a whole number of 64 bits or its digits as a text, is expected; " + there +
           " is there";
}

std::string style(const std::string& members)
{
    return R"({"textStyle": "A", "textStyles": {"A": {)" + members + "}}}";
}

class SceneErrors : public testing::Test {
protected:
    void expectOne(const Mistake& mistake)
    {
        const CommandRun drawn = run_.draw(mistake.scene, "return {}");
        EXPECT_EQ(drawn.exitCode, 2) << mistake.scene;
        EXPECT_EQ(drawn.output, "") << mistake.scene;
        EXPECT_EQ(drawn.errors, "quor: " + run_.scenePath() + ": " + mistake.message + "\n") << mistake.scene;
    }
    template<std::size_t count>
    void expect(const Mistake (&mistakes)[count])
    {
        for (const Mistake& mistake : mistakes)
            expectOne(mistake);
    }

    const SceneRun run_;
};

TEST_F(SceneErrors, WhatIsNoJson)
{
    const Mistake heads[] = {
        {"", "line 1, column 1: "},
        {"{\"points\": {},\n  }", "line 2, column 3: "},
        {"{\"view\": [0, 0, 1]} x", "line 1, column 21: "},
        {"{\"view\":\n\n[0, 0, 01]}", "line 3, column 9: "},
        {"{'view': 0}", "line 1, column 2: "},
        {"// a scene\n{}", "line 1, column 1: "},
        {"{\"note\": \"\xB7\xA7\"}", "line 1, column 11: "},
        {"{\"view\": [0, 0, NaN]}", "line 1, column 17: "},
        {"{", "line 1, column 2: "},
    };
    for (const auto& [scene, head] : heads) {
        const CommandRun drawn = run_.draw(scene, "return {}");
        EXPECT_EQ(drawn.exitCode, 2) << scene;
        EXPECT_THAT(drawn.errors, StartsWith("quor: " + run_.scenePath() + ": " + head)) << scene;
        EXPECT_THAT(drawn.errors, testing::Not(HasSubstr("json.exception"))) << scene;
    }
}

TEST_F(SceneErrors, NumbersTooLargeForADouble)
{
    expect({
        {"{\"view\":\n [0, 0, 1e999]}",
         "line 2, column 13: a number of usual size is expected; there is 1e999"},
        {"{\"view\": [-1e400, 0, 1]}",
         "line 1, column 16: a number of usual size is expected; there is -1e400"},
    });
}

TEST_F(SceneErrors, KeysThatStandTwice)
{
    expect({
        {R"({"view": [0, 0, 1], "points": {}, "view": [0, 0, 1]})", "view: the key stands here twice"},
        {R"({"points": {"3": [1, 2, 3], "3": [1, 2, 3]}})", "points[\"3\"]: the key stands here twice"},
        {R"({"matrices": {"arc": {}, "normal": {"1,2": [[{"a": 1, "a": 1}]]}}})",
         "matrices.normal[\"1,2\"][0][0].a: the key stands here twice"},
        {R"({"points": [1, [2, {"x": 1, "x": 1}]]})", "points[1][1].x: the key stands here twice"},
    });
}

TEST_F(SceneErrors, Nesting)
{
    const std::string deep(100000, '[');
    expectOne(Mistake{deep, [] {
                          std::string place;
                          for (int level = 1; level < 32; ++level)
                              place += "[0]";
                          return place + ": it is nested deeper than 32 levels";
                      }()});
}

TEST_F(SceneErrors, UnknownKeys)
{
    expect({
        {R"({"veiw": [0, 0, 1]})",
         "veiw: the key is unknown; known here are note, object, view, matrices, points, "
         "legs, textStyle, textStyles"},
        {R"({"": 1})",
         "[\"\"]: the key is unknown; known here are note, object, view, matrices, points, legs, "
         "textStyle, textStyles"},
        {R"({"object": {"Id": 1}})", "object.Id: the key is unknown; known here are id, pointer"},
        {R"({"matrices": {"iso-\u9600\n": []}})",
         "matrices[\"iso-\u9600\\n\"]: the key is unknown; known here are default, normal, arc, reference"},
        {style(R"("font": "f.ttf", "height": 1, "width": 1)"),
         "textStyles.A.width: the key is unknown; known here are font, face, height, factor"},
    });
}

TEST_F(SceneErrors, ValuesOfAnotherKind)
{
    expect({
        {"[]", "an object is expected; an array of 0 is there"},
        {"5", "an object is expected; 5 is there"},
        {R"({"note": 5})", "note: a text is expected; 5 is there"},
        {R"({"object": null})", "object: an object is expected; null is there"},
        {R"({"object": {"pointer": 1}})", "object.pointer: true or false is expected; 1 is there"},
        {R"({"matrices": []})", "matrices: an object is expected; an array of 0 is there"},
        {R"({"matrices": {"arc": "x"}})", "matrices.arc: an object is expected; the text \"x\" is there"},
        {R"({"matrices": {"normal": 1}})", "matrices.normal: an object is expected; 1 is there"},
        {R"({"matrices": {"reference": 1}})", "matrices.reference: an object is expected; 1 is there"},
        {R"({"points": [[1, 2, 3]]})", "points: an object is expected; an array of 1 is there"},
        {R"({"legs": true})", "legs: an object is expected; true is there"},
        {R"({"textStyles": 1.5})", "textStyles: an object is expected; 1.5 is there"},
    });
}

TEST_F(SceneErrors, Points)
{
    expect({
        {point("[1, 2]"), "points[\"3\"]: a point, three numbers, is expected; an array of 2 is there"},
        {point("[1, 2, 3, 4]"), "points[\"3\"]: a point, three numbers, is expected; an array of 4 is there"},
        {point("5"), "points[\"3\"]: a point, three numbers, is expected; 5 is there"},
        {point(R"({"x": 1})"), "points[\"3\"]: a point, three numbers, is expected; an object is there"},
        {point(R"([1, "2", 3])"), "points[\"3\"][1]: a number is expected; the text \"2\" is there"},
        {point("[1, 2, null]"), "points[\"3\"][2]: a number is expected; null is there"},
        {point("[1, 2, \"" + std::string(61, 'x') + "\"]"),
         "points[\"3\"][2]: a number is expected; a long text is there"},
    });
}

TEST_F(SceneErrors, Directions)
{
    const std::string expected = ": a direction, three numbers that are not all 0, is expected; ";
    expect({
        {R"({"view": [1, 2]})", "view" + expected + "an array of 2 is there"},
        {R"({"view": [0, 0.0, -0]})", "view" + expected + "[0, 0, 0] is there"},
        {R"({"legs": {"1,2": [0, 0, 0]}})", "legs[\"1,2\"]" + expected + "[0, 0, 0] is there"},
        {R"({"legs": {"1,2": "up"}})", "legs[\"1,2\"]" + expected + "the text \"up\" is there"},
        {R"({"legs": {"1,2": [0, [], 0]}})",
         "legs[\"1,2\"][1]: a number is expected; an array of 0 is there"},
    });
}

TEST_F(SceneErrors, Matrices)
{
    const std::string expected = ": a matrix, four rows of four numbers, is expected; ";
    expect({
        {R"({"matrices": {"default": 1}})", "matrices.default" + expected + "1 is there"},
        {R"({"matrices": {"default": [[1,0,0,0],[0,1,0,0],[0,0,1,0]]}})",
         "matrices.default" + expected + "an array of 3 is there"},
        {R"({"matrices": {"arc": {"1,2,3": [1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]}}})",
         "matrices.arc[\"1,2,3\"]" + expected + "an array of 16 is there"},
        {R"({"matrices": {"normal": {"1,2": [[1,0,0,0],[0,1,0],[0,0,1,0],[0,0,0,1]]}}})",
         "matrices.normal[\"1,2\"][1]: a row, four numbers, is expected; an array of 3 is there"},
        {R"({"matrices": {"reference": {"default": [[1,0,0,0],[0,1,0,0],[0,0,1,0],[0,0,0,"1"]]}}})",
         "matrices.reference.default[3][3]: a number is expected; the text \"1\" is there"},
    });
}

TEST_F(SceneErrors, KeysOfPoints)
{
    for (const char* key : {"", "x", "1.0", "01", "+1", "-0", " 1", "1 ", "0x1", "1e1", "1,2", "1,",
                            "2147483648", "-2147483649", "99999999999999999999"})
        expectOne(Mistake{points(key), badPoint(key)});
}

TEST_F(SceneErrors, KeysOfMatricesAndLegs)
{
    const struct {
        const char* section;
        const char* expected;
        std::vector<const char*> keys;
    } cases[] = {
        {"normal",
         "two or four numbers from 0 to 65535",
         {"1", "1,2,3", "1,2,3,4,5", "65536,0", "-1,0", "1;2", "1, 2", "default"}},
        {"arc", "three numbers from 0 to 65535", {"1,2", "1,2,3,4", "1,2,65536", "1,2,-3", "1,,3", ",,"}},
        {"reference",
         "two numbers from -2147483648 to 2147483647, or \"default\",",
         {"0", "0,-1,0", "2147483648,0", "0,-2147483649", "Default"}},
    };
    for (const auto& [section, expected, keys] : cases) {
        for (const std::string key : keys) {
            const bool isWord = key == "default" || key == "Default";
            expectOne(Mistake{matrixAt(section, key), std::string("matrices.") + section +
                                                          (isWord ? "." + key : "[\"" + key + "\"]") +
                                                          ": a key of " + expected + keyForm});
        }
    }
    expect({
        {R"({"legs": {"1": [1, 0, 0]}})",
         std::string("legs[\"1\"]: a key of two numbers from 0 to 65535") + keyForm},
        {R"({"legs": {"1,65536": [1, 0, 0]}})",
         std::string("legs[\"1,65536\"]: a key of two numbers from 0 to 65535") + keyForm},
    });
}

TEST_F(SceneErrors, Ids)
{
    expect({
        {id("9223372036854775808"), badId("9223372036854775808")},
        {id("18446744073709551615"), badId("18446744073709551615")},
        {id("18446744073709551616"), badId("1.8446744073709552e+19")},
        {id("-9223372036854775809"), badId("-9.223372036854776e+18")},
        {id("5.0"), badId("5.0")},
        {id("1e3"), badId("1000.0")},
        {id("\"9223372036854775808\""), badId("the text \"9223372036854775808\"")},
        {id("\"-9223372036854775809\""), badId("the text \"-9223372036854775809\"")},
        {id("\"0x10\""), badId("the text \"0x10\"")},
        {id("\"12 \""), badId("the text \"12 \"")},
        {id("\"\""), badId("the text \"\"")},
        {id("true"), badId("true")},
        {id("null"), badId("null")},
    });
}

TEST_F(SceneErrors, Styles)
{
    const std::string font = R"("font": "f.ttf", "height": 1)";
    expect({
        {style(R"("height": 1)"), "textStyles.A.font: the path of a font is expected; it is missing"},
        {style(R"("font": "", "height": 1)"),
         "textStyles.A.font: the path of a font is expected; the text \"\" is there"},
        {style(R"("font": 5, "height": 1)"), "textStyles.A.font: the path of a font is expected; 5 is there"},
        {style(R"("font": "a\u0000b", "height": 1)"),
         "textStyles.A.font: a text without the character 0 is expected; the text \"a\\u0000b\" is there"},
        {style(R"("font": "f.ttf")"), "textStyles.A.height: a number above 0 is expected; it is missing"},
        {style(R"("font": "f.ttf", "height": 0)"),
         "textStyles.A.height: a number above 0 is expected; 0 is there"},
        {style(R"("font": "f.ttf", "height": -2.5)"),
         "textStyles.A.height: a number above 0 is expected; -2.5 is there"},
        {style(R"("font": "f.ttf", "height": "5")"),
         "textStyles.A.height: a number above 0 is expected; the text \"5\" is there"},
        {style(font + R"(, "factor": 0)"), "textStyles.A.factor: a number above 0 is expected; 0 is there"},
        {style(font + R"(, "face": -1)"),
         "textStyles.A.face: the number of a face, from 0 to 65535, is expected; -1 is there"},
        {style(font + R"(, "face": 65536)"),
         "textStyles.A.face: the number of a face, from 0 to 65535, is expected; 65536 is there"},
        {style(font + R"(, "face": 0.5)"),
         "textStyles.A.face: the number of a face, from 0 to 65535, is expected; 0.5 is there"},
        {R"({"textStyle": "A", "textStyles": {"A": 5}})", "textStyles.A: an object is expected; 5 is there"},
    });
}

TEST_F(SceneErrors, NamesOfStyles)
{
    const std::string name =
        ": a name that GBK can write, not empty and without the character 0, is expected";
    const std::string entry = R"({"font": "f.ttf", "height": 1})";
    expect({
        {R"({"textStyles": {"": )" + entry + "}}", "textStyles[\"\"]" + name},
        {R"({"textStyles": {"a\u0000b": )" + entry + "}}", "textStyles[\"a\\u0000b\"]" + name},
        {R"({"textStyles": {"\ud83d\ude00": )" + entry + "}}", "textStyles[\"\U0001F600\"]" + name},
        {R"({"textStyles": {"\uf7b7\uf7a7": )" + entry + R"(, "阀": )" + entry + "}}",
         "textStyles[\"\\xB7\\xA7\"]: in GBK this is the name of another style"},
        {R"({"textStyles": {"A": )" + entry + "}}",
         "textStyle: the name of one of textStyles is expected; it is missing"},
        {R"({"textStyle": "B", "textStyles": {"A": )" + entry + "}}",
         "textStyle: the name of one of textStyles is expected; the text \"B\" is there"},
        {R"({"textStyle": "B"})",
         "textStyle: the name of one of textStyles is expected; the text \"B\" is there"},
        {R"({"textStyle": 5})", "textStyle: the name of one of textStyles is expected; 5 is there"},
        {R"({"textStyle": ""})", "textStyle" + name},
    });
}

TEST_F(SceneErrors, MissingSceneNamesThePlacesLookedAt)
{
    const ScratchFolder project;
    const std::string folder = project.path("");
    const std::string script = project.write("s.lua", "function main() return {} end");
    const CommandRun relative = runQuor({"draw", script, "--project", folder, "--scene", "missing.json"});
    EXPECT_EQ(relative.exitCode, 2);
    EXPECT_EQ(relative.errors,
              "quor: --scene missing.json: a file is expected; there is none\nlooked for:\n"
              "  missing.json\n  " +
                  sys::inSystemForm(folder + "missing.json\n  " + folder + "scenes/missing.json\n"));
    const CommandRun absolute = runQuor({"draw", script, "--scene", project.path("missing.json")});
    EXPECT_EQ(absolute.exitCode, 2);
    EXPECT_EQ(absolute.errors,
              "quor: --scene " + project.path("missing.json") + ": a file is expected; there is none\n");
    const CommandRun empty = runQuor({"draw", script, "--scene", ""});
    EXPECT_EQ(empty.exitCode, 2);
    EXPECT_EQ(empty.errors, "quor: --scene: the path of a scene's file is expected; it is empty\n");
}

TEST_F(SceneErrors, FoldersAndPipesAreNoScenes)
{
    const ScratchFolder folder;
    const std::string script = folder.write("s.lua", "function main() return {} end");
    const testsystem::Pipe pipe(folder, "pipe.json");
    const CommandRun piped = runQuor({"draw", script, "--scene", pipe.path()});
    EXPECT_EQ(piped.exitCode, 2);
    EXPECT_THAT(piped.errors,
                StartsWith(testsystem::isWindows
                               ? "quor: --scene " + pipe.path() + ": a file is expected; there is none\n"
                               : "quor: " + pipe.path() + ": a regular file is expected; this is none\n"));
    EXPECT_EQ(runQuor({"draw", script, "--scene", folder.path("")}).errors,
              "quor: " + folder.path("") + ": a regular file is expected; a folder is there\n");
}

TEST_F(SceneErrors, ProtectedSceneIsNotRead)
{
    const ScratchFolder folder;
    const std::string script = folder.write("s.lua", "function main() return {} end");
    const std::string scene = folder.write("scene.json", "{}");
    const testsystem::Unreadable protection(scene);
    if (!protection.isSo()) GTEST_SKIP() << "root may read everything";
    EXPECT_EQ(runQuor({"draw", script, "--scene", scene}).errors,
              "quor: " + scene + ": cannot be read: Permission denied\n");
}

TEST_F(SceneErrors, NothingOfTheScriptRuns)
{
    const ScratchFolder folder;
    const std::string script = folder.write("s.lua", "print('runs') function main() return {} end");
    const std::string scene = folder.write("scene.json", "[]");
    const std::string output = folder.write("out.json", "of before");
    const CommandRun run = runQuor({"draw", script, "--scene", scene, "-o", output});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors, "quor: " + scene + ": an object is expected; an array of 0 is there\n");
    EXPECT_EQ(readFile(output), "of before");
}

TEST_F(SceneErrors, MessagesAreInTheTerminalsCharacterSet)
{
    const ScratchFolder folder;
    const std::string script = folder.write("s.lua", "function main() return {} end");
    const std::string scene = folder.write("scene.json", R"({"阀": 1})");
    EXPECT_THAT(runQuor({"draw", script, "--scene", scene}, {"LOCPATH", "LC_ALL=zh_CN.GBK"}).errors,
                StartsWith("quor: " + scene + ": [\"\xB7\xA7\"]: the key is unknown; "));
}

} // namespace
