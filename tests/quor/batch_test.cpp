// What `quor batch` draws, and that it is what `quor draw` draws of each job alone.

#include "BatchFile.h"
#include "TestSystem.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <map>

namespace {

using Json = nlohmann::json;
using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string summaryOf(const CommandRun& run)
{
    const std::size_t end = run.errors.rfind(": ", run.errors.rfind(" job"));
    return end == std::string::npos ? run.errors : run.errors.substr(end + 2);
}

/// Jobs of every sample component and segment that draws, in several sizes.
void addSamples(BatchFile& batch)
{
    const std::pair<const char*, std::vector<const char*>> components[] = {{"gate_valve", {"main", "symbol"}},
                                                                           {"elbow_90", {"main", "symbol"}},
                                                                           {"reducer", {"main", "symbol"}},
                                                                           {"tee", {"main", "symbol"}},
                                                                           {"support", {"main"}},
                                                                           {"control_valve_iso", {"main"}}};
    for (const auto& [component, segments] : components) {
        for (const std::string segment : segments) {
            for (const char* size : {"large", "inches"}) {
                Json job = {{"script", std::string(component) + ".lua"}, {"segment", segment}};
                if (std::string_view(component) == "control_valve_iso") job["scene"] = "isometric.json";
                if (std::string_view(size) == "large")
                    job["parameters"] = {{"P1", 187.5}, {"NAME", "\xE9\x98\x80"}};
                if (std::string_view(size) == "inches") job["factor"] = 25.4, job["format"] = "text";
                batch.add(job, std::string(component) + "." + segment + "." + size);
            }
        }
    }
}

std::map<std::string, std::string> resultsOf(const BatchFile& batch)
{
    std::map<std::string, std::string> results;
    for (const auto& entry : std::filesystem::directory_iterator(batch.folder().path("out"))) {
        const std::string name = entry.path().filename().string();
        if (name != ".quor-batch") results[name] = readFile(entry.path().string());
    }
    return results;
}

TEST(Batch, DrawsWhatDrawDrawsOfEveryJobByAnyNumberOfThreadsInAnyOrder)
{
    BatchFile batch;
    addSamples(batch);
    std::map<std::string, std::string> expected;
    for (const Json& job : batch.jobs()) {
        const std::string output = batch.folder().path("alone");
        const CommandRun alone = batch.drawAlone(job, output);
        ASSERT_EQ(alone.exitCode, 0) << alone.errors;
        const std::string target = job.at("output").get<std::string>();
        expected[target.substr(target.rfind('/') + 1)] = readFile(output);
    }
    ASSERT_EQ(expected.size(), batch.jobs().size());
    for (const char* threads : {"1", "2", "5"}) {
        std::reverse(batch.jobs().begin(), batch.jobs().end());
        const CommandRun run = batch.run({"--threads", threads, "--force"}, {"LC_ALL=C.UTF-8"});
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_EQ(resultsOf(batch), expected) << threads;
    }
}

/// Whatever a script can leave behind in the library or the process, and what it finds of it.
constexpr const char* leaves = R"(
local found = { tostring(left), tostring(string.left), tostring(package.loaded.left), tostring(param.left),
    tostring(("").left), tostring(getmetatable(_G)), tostring(math.random(1000000)), tostring(math.random()),
    os.date("!%Y-%m-%d %H:%M:%S", param.TIME), os.date("!*t", param.TIME).min, tostring(glb.left) }
left, string.left, package.loaded.left, param.left, glb.left = 1, 1, 1, 1, 1
math.randomseed(param.TIME)
setmetatable(_G, { __index = function() return "strange" end })
function main()
    local all = { { 300, 5 }, { 400, "STEEL" }, { 500, 0.7 } }
    for _, text in ipairs(found) do
        all[#all + 1] = { 19, 0, { 0, 0, 0 }, tostring(text), { 1, 0, 0 }, 0.8, 12 }
    end
    for _ = 1, 200 do
        if os.date("!*t", param.TIME).min ~= math.floor(param.TIME / 60) % 60 then error("another's time") end
    end
    return all
end
)";

TEST(Batch, LeavesNothingOfOneJobToAnother)
{
    BatchFile batch;
    const std::string script = batch.folder().write("s.lua", std::string("param = { TIME = 0 } glb = {}\n") +
                                                                 "param.TIME = 3600\n" + leaves);
    for (int i = 0; i < 24; ++i)
        batch.add({{"script", script}, {"parameters", {{"TIME", 60 * i}}}}, std::to_string(i));
    ASSERT_EQ(
        batch.drawAlone({{"script", script}, {"parameters", {{"TIME", 0}}}}, batch.folder().path("alone"))
            .exitCode,
        0);
    const std::string alone = readFile(batch.folder().path("alone"));
    EXPECT_THAT(alone, AllOf(HasSubstr("1970-01-01 01:00:00"), Not(HasSubstr("another's"))));
    for (const char* threads : {"1", "3"}) {
        const CommandRun run = batch.run({"--threads", threads, "--force"});
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        for (const auto& [name, result] : resultsOf(batch))
            EXPECT_EQ(result, alone) << name;
    }
}

TEST(Batch, RefusesAnotherLocaleForOneOfManyScripts)
{
    BatchFile batch;
    const std::string script = batch.folder().write(
        "s.lua", "function main() assert(os.setlocale() == 'C' and os.setlocale('C') == 'C')\n"
                 "os.setlocale('de_DE.UTF-8') return {} end");
    batch.add({{"script", script}}, "a.json");
    const CommandRun run = batch.run();
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors,
                HasSubstr("os.setlocale: components that are drawn at the same time share one locale"));
}

TEST(Batch, SaysOneLineForEachFailureAndDrawsTheOthers)
{
    BatchFile batch;
    const std::string script =
        batch.folder().write("s.lua", "param = {P1 = 1} function main() return {} end\n"
                                      "function bad() return 1 end");
    batch.add({{"script", script}}, "a.json");
    batch.add({{"script", script}, {"segment", "none"}}, "b.json");
    batch.add({{"script", script}, {"segment", "bad"}}, "c.json");
    batch.add({{"script", script}, {"parameters", {{"P1", "x"}}}}, "d.json");
    batch.add({{"script", script + "x"}}, "e.json");
    batch.add({{"script", script}, {"scene", "none.json"}}, "f.json");
    batch.add({{"script", script}}, "g.json");
    batch.folder().write("out/b.json", "of an earlier run");
    const CommandRun run = batch.run({"--threads", "2", "--language", "en"});
    EXPECT_EQ(run.exitCode, 1);
    const std::string jobs = batch.folder().path("jobs.jsonl");
    const auto failure = [&](int line, const char* output, const std::string& reason) {
        return HasSubstr("quor: " + jobs + ": line " + std::to_string(line) + ": " + batch.result(output) +
                         ": " + reason);
    };
    EXPECT_THAT(run.errors,
                failure(2, "b.json",
                        script + ": segment none: status 10: the script has no segment of that name; "
                                 "its functions are: bad, main\n"));
    EXPECT_THAT(run.errors, failure(3, "c.json",
                                    script + ":2: segment bad: status 4: the segment did not return a "
                                             "table of primitives"));
    EXPECT_THAT(run.errors,
                failure(4, "d.json", "--set P1=x: a number, as the script has there, is expected"));
    EXPECT_THAT(run.errors, failure(5, "e.json", script + "x: status 1: there is no such file"));
    EXPECT_THAT(run.errors, failure(6, "f.json", "--scene none.json: a file is expected; there is none"));
    EXPECT_THAT(run.errors, EndsWith("quor: " + jobs + ": 7 jobs: 2 drawn, 5 failed\n"));
    EXPECT_THAT(resultsOf(batch), testing::ElementsAre(testing::Key("a.json"), testing::Key("g.json")));
}

TEST(Batch, TellsWhichJobAMessageIsOf)
{
    BatchFile batch;
    const std::string script =
        batch.folder().write("s.lua", "function main() print('one', 2) error('three', 0) end");
    batch.add({{"script", script}}, "a.json");
    const CommandRun run = batch.run();
    const std::string line = batch.folder().path("jobs.jsonl") + ": line 1: ";
    EXPECT_THAT(run.errors, AllOf(HasSubstr(line + "one\t2\n"), HasSubstr(line + "three\n")));
}

TEST(Batch, SumsUpUnlessItIsToBeQuiet)
{
    BatchFile batch;
    batch.add({{"script", "tee.lua"}}, "a.json");
    CommandRun run = batch.run();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, batch.folder().path("jobs.jsonl") + ": 1 job: 1 drawn\n");
    run = batch.run({"--quiet", "--force"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
}

TEST(Batch, TakesAnEmptyFileAndBlankLines)
{
    const ScratchFolder folder;
    EXPECT_EQ(runQuor({"batch", folder.write("a.jsonl", "")}).exitCode, 0);
    EXPECT_EQ(runQuor({"batch", folder.write("b.jsonl", "\n \t\r\n")}).exitCode, 0);
}

// A script that writes a line into a file each time it draws.
class BatchAgain : public testing::Test {
protected:
    BatchAgain()
    {
        log_ = batch_.folder().path("log");
        script_ = batch_.folder().write("s.lua", scriptText("1"));
        for (int i = 0; i < 4; ++i)
            batch_.add({{"script", script_}, {"parameters", {{"P1", i}}}}, std::to_string(i));
    }

    std::string scriptText(const std::string& end) const
    {
        return "param = {P1 = 0}\nfunction main() local file = io.open('" + log_ +
               "', 'a') file:write(string.format('%d ', param.P1)) file:close() return {} end --" + end;
    }

    /// Which jobs were drawn by a run, one after the other.
    std::string drawn(const Arguments& options = {})
    {
        Arguments all = {"--threads", "1"};
        all.insert(all.end(), options.begin(), options.end());
        std::filesystem::remove(log_);
        const CommandRun run = batch_.run(all);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        summary_ = summaryOf(run);
        return readFile(log_);
    }

    BatchFile batch_;
    std::string log_;
    std::string script_;
    std::string summary_;
};

TEST_F(BatchAgain, DrawsOnlyWhatIsMissing)
{
    EXPECT_EQ(drawn(), "0 1 2 3 ");
    EXPECT_EQ(drawn(), "");
    EXPECT_EQ(summary_, "4 jobs: 0 drawn, 4 there already\n");
    std::filesystem::remove(batch_.result("2"));
    EXPECT_EQ(drawn(), "2 ");
    EXPECT_EQ(summary_, "4 jobs: 1 drawn, 3 there already\n");
}

TEST_F(BatchAgain, DrawsWhatChanged)
{
    drawn();
    batch_.jobs()[1]["parameters"]["P1"] = 7;
    EXPECT_EQ(drawn(), "7 ");
    batch_.jobs()[2]["format"] = "text";
    EXPECT_EQ(drawn(), "2 ");
    batch_.jobs()[3]["segment"] = "main";
    EXPECT_EQ(drawn(), "3 ");
    batch_.folder().write("out/0", "not what was drawn");
    EXPECT_EQ(drawn(), "0 ");
    batch_.folder().write("s.lua", scriptText("2"));
    EXPECT_EQ(drawn(), "0 7 2 3 ");
    EXPECT_EQ(drawn(), "");
}

TEST_F(BatchAgain, KnowsAJobInAnotherFile)
{
    drawn();
    std::reverse(batch_.jobs().begin(), batch_.jobs().end());
    batch_.jobs().pop_back();
    EXPECT_EQ(drawn(), "");
    EXPECT_EQ(summary_, "3 jobs: 0 drawn, 3 there already\n");
}

TEST_F(BatchAgain, DrawsAllByForce)
{
    drawn();
    EXPECT_EQ(drawn({"--force"}), "0 1 2 3 ");
}

TEST_F(BatchAgain, TrustsNoRecordThatIsNotWhole)
{
    drawn();
    const std::string record = batch_.result(".quor-batch");
    const std::string whole = readFile(record);
    batch_.folder().write("out/.quor-batch", whole.substr(0, whole.size() - 1));
    EXPECT_EQ(drawn(), "3 ");
    batch_.folder().write("out/.quor-batch", "x\n\nabc 12\n");
    EXPECT_EQ(drawn(), "0 1 2 3 ");
}

struct Refusal {
    const char* lines;
    const char* message; ///< behind the file's name
};

const Refusal refusals[] = {
    {"[]", ": line 1: an object is expected; an array of 0 is there"},
    {"{}", ": line 1: script: the path of a script is expected; it is missing"},
    {R"({"script":"tee.lua"})", ": line 1: output: the path of a file is expected; it is missing"},
    {"\n{\"script\":\"tee.lua\",\"output\":\"a\",\"size\":1}",
     ": line 2: size: the key is unknown; known here are "},
    {R"({"script":"tee.lua","output":"a",})", ": line 1, column 34: syntax error"},
    {R"({"script":"tee.lua","output":"a","output":"b"})", ": line 1: output: the key stands here twice"},
    {R"({"script":1,"output":"a"})", ": line 1: script: the path of a script is expected; 1 is there"},
    {R"({"script":"","output":"a"})",
     ": line 1: script: the path of a script is expected; the text \"\" is there"},
    {R"({"script":"tee.lua","output":"-"})",
     ": line 1: output: the path of a file is expected; the text \"-\""},
    {R"({"script":"tee.lua","output":"a/"})",
     ": line 1: output: the path of a file is expected; the text \"a/\""},
    {R"({"script":"tee.lua","output":"a","segment":""})",
     ": line 1: segment: the name of a segment is expected"},
    {R"({"script":"tee.lua","output":"a","segment":5})",
     ": line 1: segment: the name of a segment is expected; 5"},
    {R"({"script":"tee.lua","output":"a","factor":0})",
     ": line 1: factor: a number above 0 is expected; 0 is there"},
    {R"({"script":"tee.lua","output":"a","factor":"2"})",
     ": line 1: factor: a number above 0 is expected; the text"},
    {R"({"script":"tee.lua","output":"a","format":"svg"})",
     ": line 1: format: \"json\" or \"text\" is expected; the text \"svg\" is there"},
    {R"({"script":"tee.lua","output":"a","scene":[]})",
     ": line 1: scene: the path of a scene is expected; an array"},
    {R"({"script":"tee.lua","output":"a","parameters":[]})",
     ": line 1: parameters: an object is expected; an array"},
    {R"({"script":"tee.lua","output":"a","parameters":{"P1":null}})",
     ": line 1: parameters.P1: a number, true or false, a text, or a point, three numbers, is expected; "
     "null"},
    {R"({"script":"tee.lua","output":"a","parameters":{"P1":[1,2]}})",
     ": line 1: parameters.P1: a number, true or false, a text, or a point, three numbers, is expected; an "
     "array of 2"},
    {R"({"script":"tee.lua","output":"a","parameters":{"A=B":1}})",
     ": line 1: parameters[\"A=B\"]: a name that is not empty and has no \"=\" is expected"},
    {R"({"script":"tee.lua","output":"a","parameters":{"P1":"\u20BF"}})",
     ": line 1: parameters.P1: text that GBK can write is expected"},
};

TEST(BatchFiles, ThatAreNotRightAreWrongUsageAndNothingIsDrawn)
{
    const ScratchFolder folder;
    const std::string good = Json({{"script", "tee.lua"}, {"output", folder.path("good.json")}}).dump();
    for (const Refusal& refusal : refusals) {
        const std::string jobs = folder.write("jobs.jsonl", std::string(refusal.lines) + "\n" + good + "\n");
        const CommandRun run = runQuor({"batch", jobs}, {"LC_ALL=C.UTF-8"});
        EXPECT_EQ(run.exitCode, 2) << refusal.lines;
        EXPECT_THAT(run.errors, StartsWith("quor: " + jobs + refusal.message)) << refusal.lines;
        EXPECT_THAT(folder.names(), testing::ElementsAre("jobs.jsonl"));
    }
}

TEST(BatchFiles, ThatAreNotThereAreWrongUsage)
{
    const ScratchFolder folder;
    const CommandRun run = runQuor({"batch", folder.path("none.jsonl")});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors,
              "quor: " + folder.path("none.jsonl") + ": a regular file is expected; there is none\n");
}

TEST(BatchFiles, WithTwoJobsForOneOutputAreWrongUsage)
{
    BatchFile batch;
    batch.add({{"script", "tee.lua"}}, "a.json");
    batch.add({{"script", "reducer.lua"}}, "../out/./a.json");
    const CommandRun run = batch.run();
    EXPECT_EQ(run.exitCode, 2);
    const std::string jobs = batch.folder().path("jobs.jsonl");
    EXPECT_EQ(run.errors, "quor: " + jobs + ": line 2: output: a file of its own is expected; " +
                              batch.result("../out/./a.json") + " is that of " + jobs + ": line 1\n");
    EXPECT_THAT(batch.folder().names(), Not(Contains("out")));
}

TEST(BatchFiles, WhoseResultWouldReplaceAnInputAreWrongUsage)
{
    BatchFile batch;
    const std::string script = batch.folder().write("s.lua", "function main() return {} end");
    const std::pair<const char*, const char*> cases[] = {
        {"../s.lua", "a script"}, {"../scene.json", "a scene"}, {"../jobs.jsonl", "the file of jobs"}};
    batch.folder().write("scene.json", "{}");
    for (const auto& [output, name] : cases) {
        batch.jobs().clear();
        batch.add({{"script", "tee.lua"}}, output);
        batch.add({{"script", script}, {"scene", batch.folder().path("scene.json")}}, "b.json");
        const CommandRun run = batch.run();
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_THAT(run.errors,
                    HasSubstr(std::string(": line 1: output: a file other than ") + name + " is expected; "));
    }
}

TEST(BatchThreads, MustBeANumberOfThem)
{
    const ScratchFolder folder;
    const std::string jobs = folder.write("jobs.jsonl", "");
    for (const char* threads : {"0", "-1", "1025", "two", "1.5"}) {
        const CommandRun run = runQuor({"batch", jobs, std::string("--threads=") + threads});
        EXPECT_EQ(run.exitCode, 2) << threads;
        EXPECT_EQ(run.errors, std::string("quor: --threads ") + threads +
                                  ": a whole number from 1 to 1024 is expected\n");
    }
}

} // namespace
