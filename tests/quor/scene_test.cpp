// What a script is told that asks the host: the scene's answers, and no result where the scene has none.

#include "SceneRun.h"
#include "TestSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* matrix = "[[1, 2, 3, 4], [5.5, 6, 7, 8], [9, 10, -11, 12], [13, 14, 15, 16e2]]";
const std::vector<double> matrixNumbers = {1, 2, 3, 4, 5.5, 6, 7, 8, 9, 10, -11, 12, 13, 14, 15, 1600};

std::string matrices(const std::string& members)
{
    return R"({"matrices": {)" + members + "}}";
}

std::string withMatrix(const std::string& section, const std::string& key)
{
    return matrices("\"" + section + "\": {\"" + key + "\": " + matrix + "}");
}

/// A call, a scene that answers it, and one that knows everything of the kind but this.
struct Question {
    const char* call;
    std::string scene;
    std::vector<double> numbers;
    std::string other;
};

const Question questions[] = {
    {"glib.getDefaultIsoMat()", matrices(std::string("\"default\": ") + matrix), matrixNumbers,
     withMatrix("reference", "default")},
    {"glib.getDefaultMat()", matrices(std::string("\"default\": ") + matrix), matrixNumbers,
     withMatrix("reference", "default")},
    {"glib.getNormalIsoMat(1, 2)", withMatrix("normal", "1,2"), matrixNumbers, withMatrix("normal", "2,1")},
    {"glib.getNormalIsoMat(1, 2)", withMatrix("normal", "1,2"), matrixNumbers,
     withMatrix("normal", "1,2,0,0")},
    {"glib.getNormalIsoMat(65535, 0)", withMatrix("normal", "65535,0"), matrixNumbers,
     withMatrix("normal", "65535,1")},
    {"glib.getNormalIsoMat(65537, -1)", withMatrix("normal", "1,65535"), matrixNumbers,
     withMatrix("normal", "65535,1")},
    {"glib.getNormalIsoMat(1, 2, 3, 4)", withMatrix("normal", "1,2,3,4"), matrixNumbers,
     withMatrix("normal", "1,2")},
    {"glib.getNormalIsoMat(1, 2, 3, 4)", withMatrix("normal", "1,2,3,4"), matrixNumbers,
     withMatrix("normal", "1,2,4,3")},
    {"glib.getArcIsoMat(1, 2, 3)", withMatrix("arc", "1,3,2"), matrixNumbers, withMatrix("arc", "1,2,3")},
    {"glib.getRefIsoMat()", withMatrix("reference", "0,-1"), matrixNumbers, withMatrix("reference", "0,0")},
    {"glib.getRefIsoMat(5)", withMatrix("reference", "5,-1"), matrixNumbers, withMatrix("reference", "0,-1")},
    {"glib.getRefIsoMat(5, 70000)", withMatrix("reference", "5,70000"), matrixNumbers,
     withMatrix("reference", "5,4464")},
    {"glib.getRefIsoMat(5, 70000)", withMatrix("reference", "default"), matrixNumbers,
     matrices(std::string("\"default\": ") + matrix)},
    {"glib.getIsoPoint(3)",
     R"({"points": {"3": [1.5, -2, 0]}})",
     {1.5, -2, 0},
     R"({"points": {"4": [1, 2, 3]}})"},
    {"glib.getIsoPoint(-2147483648)",
     R"({"points": {"-2147483648": [1, 2, 3]}})",
     {1, 2, 3},
     R"({"points": {"2147483647": [1, 2, 3]}})"},
    {"glib.getIsoVgdir(1, 2)",
     R"({"legs": {"1,2": [0, 0.5, 1e-3]}})",
     {0, 0.5, 1e-3},
     R"({"legs": {"2,1": [1, 0, 0]}})"},
    {"glib.getPsView()", R"({"view": [0, 0, -1]})", {0, 0, -1}, R"({"legs": {"1,2": [1, 0, 0]}})"},
};

TEST(Scene, AnswersWhatItHolds)
{
    const SceneRun run;
    for (const Question& question : questions)
        EXPECT_THAT(run.numbers(question.scene, question.call), ElementsAreArray(question.numbers))
            << question.call << " of " << question.scene;
}

TEST(Scene, GivesNoResultForWhatItDoesNotHold)
{
    const SceneRun run;
    for (const Question& question : questions) {
        for (const std::string& scene : {question.other, std::string("{}")})
            EXPECT_THAT(run.numbers(scene, std::string("select('#', ") + question.call + ")"), ElementsAre(0))
                << question.call << " of " << scene;
    }
}

TEST(Scene, MatrixIsFourRowsInAScript)
{
    const SceneRun run;
    const std::string scene = matrices(std::string("\"default\": ") + matrix);
    EXPECT_THAT(
        run.numbers(scene, "#glib.getDefaultMat(), #glib.getDefaultMat()[2], glib.getDefaultMat()[2][4]"),
        ElementsAre(4, 4, 8));
}

TEST(Scene, ReferenceOfItsOwnNumbersComesBeforeTheDefault)
{
    const SceneRun run;
    const std::string scene = R"({"matrices": {"reference": {
        "default": [[1,0,0,0], [0,1,0,0], [0,0,1,0], [0,0,0,1]],
        "0,-1": [[7,0,0,0], [0,1,0,0], [0,0,1,0], [0,0,0,1]]}}})";
    EXPECT_THAT(run.numbers(scene, "glib.getRefIsoMat()[1][1], glib.getRefIsoMat(1, 1)[1][1]"),
                ElementsAre(7, 1));
}

TEST(Scene, IdsKeepAllTheirBits)
{
    const SceneRun run;
    for (const char* id : {"9223372036854775807", "-9223372036854775808", "9007199254740993", "-1", "0"}) {
        for (const std::string& written : {std::string(id), "\"" + std::string(id) + "\""}) {
            const CommandRun drawn = run.draw(R"({"object": {"id": )" + written + "}}",
                                              "return {{200, {ID = tostring(glib.getCurrentObjectId())}}}");
            ASSERT_EQ(drawn.exitCode, 0) << drawn.errors;
            const auto primitives = nlohmann::json::parse(drawn.output).at("primitives");
            EXPECT_EQ(primitives.at(0).at("args").at(0).at(0).at("value"), id) << written;
        }
    }
    EXPECT_THAT(run.numbers(R"({"object": {"pointer": true}})", "select('#', glib.getCurrentObjectId())"),
                ElementsAre(0));
}

TEST(Scene, ObjectsPointerIsThereOrNot)
{
    const SceneRun run;
    const char* const asked = "type(glib.getCurrentObjectPointer()) == 'userdata' and "
                              "glib.getCurrentObjectPointer() == glib.getCurrentObjectPointer() and 1 or 0";
    EXPECT_THAT(run.numbers(R"({"object": {"pointer": true}})", asked), ElementsAre(1));
    for (const char* scene :
         {R"({"object": {"pointer": false}})", R"({"object": {"id": 5}})", R"({"object": {}})"})
        EXPECT_THAT(run.numbers(scene, "select('#', glib.getCurrentObjectPointer())"), ElementsAre(0))
            << scene;
}

TEST(Scene, WithoutStylesThereIsNoCurrentOne)
{
    const SceneRun run;
    for (const char* scene : {"{}", R"({"textStyles": {}})"})
        EXPECT_THAT(run.numbers(scene, "select('#', glib.getCurrentTxtstyle())"), ElementsAre(0)) << scene;
}

TEST(Scene, WithoutOneNothingIsAnswered)
{
    const ScratchFolder folder;
    const std::string script = folder.write("s.lua", R"(
function main()
    local names = { "getDefaultIsoMat", "getDefaultMat", "getRefIsoMat", "getCurrentObjectId",
        "getCurrentObjectPointer", "getPsView", "getCurrentTxtstyle" }
    for _, name in ipairs(names) do assert(select("#", glib[name]()) == 0, name) end
    assert(select("#", glib.getIsoPoint(1)) == 0)
    assert(select("#", glib.getIsoVgdir(1, 2)) == 0)
    assert(select("#", glib.getNormalIsoMat(1, 2)) == 0)
    assert(select("#", glib.getArcIsoMat(1, 2, 3)) == 0)
    return {}
end)");
    const CommandRun run = runQuor({"draw", "-q", script});
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitCode, 0);
}

TEST(Scene, NoteIsForPeople)
{
    const SceneRun run;
    EXPECT_THAT(run.numbers(R"({"note": "a tee, seen from above", "view": [0, 0, 1]})", "glib.getPsView()"),
                ElementsAre(0, 0, 1));
    EXPECT_THAT(run.numbers(R"({"note": ""})", "glib.getPsView()"), IsEmpty());
}

TEST(Scene, NumbersAreReadAlikeInEveryLocale)
{
    const ScratchFolder locales;
    const Arguments german = testsystem::terminalOf(locales, "de_DE", "UTF-8");
    if (german.empty()) GTEST_SKIP() << "localedef makes no de_DE.UTF-8 here (package locales)";
    const std::string scene = locales.write("scene.json", R"({"points": {"1": [0.5, -2.25, 1e-3]}})");
    const std::string script =
        locales.write("s.lua", "function main() return {{26, glib.getIsoPoint(1), 1}} end");
    const CommandRun run = runQuor({"draw", "-q", script, "--scene", scene}, german);
    ASSERT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(nlohmann::json::parse(run.output)["primitives"][0]["args"][0],
              nlohmann::json::parse("[0.5, -2.25, 0.001]"));
}

TEST(Scene, IsLookedForInTheProjectAndItsScenes)
{
    const ScratchFolder project;
    project.write("s.lua", "function main() return {{26, glib.getIsoPoint(1), 1}} end");
    project.write("a.json", R"({"points": {"1": [1, 0, 0]}})");
    project.write("scenes/a.json", R"({"points": {"1": [2, 0, 0]}})");
    project.write("scenes/b.json", R"({"points": {"1": [3, 0, 0]}})");
    const auto drawn = [&](const std::string& scene) {
        return runQuor({"draw", "s.lua", "--format", "text", "--project", project.path(""), "--scene", scene})
            .output;
    };
    EXPECT_THAT(drawn("a.json"), HasSubstr("(1, 0, 0)"));
    EXPECT_THAT(drawn("b.json"), HasSubstr("(3, 0, 0)"));
    EXPECT_THAT(drawn("scenes/a.json"), HasSubstr("(2, 0, 0)"));
    EXPECT_THAT(drawn(project.path("scenes/a.json")), HasSubstr("(2, 0, 0)"));
}

TEST(Scene, IsGoneWhenTheStateCloses)
{
    // A collector that runs last still asks, and uses the style that it kept.
    const SceneRun run;
    const CommandRun drawn = run.draw(R"({"view": [0, 0, 1]})", R"(
last = newproxy(true)
getmetatable(last).__gc = function() io.stderr:write("views: ", select("#", glib.getPsView()), "\n") end
return {})");
    EXPECT_EQ(drawn.exitCode, 0);
    EXPECT_EQ(drawn.errors, "views: 0\n");
}

TEST(Scene, IsNeverTheOutput)
{
    const ScratchFolder folder;
    const std::string script = folder.write("s.lua", "function main() error('no') end");
    const std::string scene = folder.write("scene.json", "{}");
    const CommandRun run = runQuor({"draw", script, "--scene", scene, "-o", scene});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors, "quor: -o " + scene + ": a file other than the scene is expected\n");
    EXPECT_EQ(readFile(scene), "{}");
}

} // namespace
