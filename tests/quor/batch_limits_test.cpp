// How `quor batch` ends: by limits of its jobs, by an interruption, and in parts on several machines.

#include "../hostile/cases.h"
#include "BatchFile.h"
#include "TestSystem.h"

#include <gmock/gmock.h>

namespace {

using Json = nlohmann::json;
using hostile::Ending;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* nothing = "function main() return {} end";
constexpr const char* lastWords = "where nothing but the command's end could end it";

TEST(BatchLimits, OfTimeHoldForEachJobAndTheOthersGoOn)
{
    BatchFile batch;
    const std::string good = batch.folder().write("good.lua", nothing);
    const std::string slow = batch.folder().write("slow.lua", "function main() while true do end end");
    for (int i = 0; i < 2; ++i) {
        batch.add({{"script", slow}}, "slow" + std::to_string(i));
        batch.add({{"script", good}}, "good" + std::to_string(i));
    }
    const CommandRun run = batch.run({"--threads", "3", "--time-limit", "1"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, AllOf(HasSubstr(batch.result("slow0") + ": " + slow +
                                            ": --time-limit 1: the script still ran after 1 seconds\n"),
                                  HasSubstr(batch.result("slow1") + ": " + slow +
                                            ": --time-limit 1: the script still ran after 1 seconds\n"),
                                  HasSubstr(": 4 jobs: 2 drawn, 2 failed\n"), Not(HasSubstr(lastWords))));
}

TEST(BatchLimits, OfMemoryHoldForEachJobAndTheOthersGoOn)
{
    BatchFile batch;
    const std::string good = batch.folder().write("good.lua", nothing);
    const std::string large =
        batch.folder().write("large.lua", "function main() return string.rep('x', 2 ^ 28) end");
    for (int i = 0; i < 2; ++i) {
        batch.add({{"script", large}}, "large" + std::to_string(i));
        batch.add({{"script", good}}, "good" + std::to_string(i));
    }
    const CommandRun run = batch.run({"--threads", "2", "--memory-limit", "16"});
    EXPECT_EQ(run.exitCode, 1);
    const std::string reason = ": " + large + ": --memory-limit 16: the script asked for more than 16 MiB\n";
    EXPECT_THAT(run.errors,
                AllOf(HasSubstr(batch.result("large0") + reason), HasSubstr(batch.result("large1") + reason),
                      HasSubstr(": 4 jobs: 2 drawn, 2 failed\n")));
}

TEST(BatchLimits, LeaveBehindWhatNothingCanEnd)
{
    BatchFile batch;
    const std::string good = batch.folder().write("good.lua", nothing);
    std::size_t count = 0;
    for (const hostile::Case& one : hostile::cases) {
        if (one.ending != Ending::Watchdog) continue;
        const std::string name(one.name);
        batch.add({{"script", QUOR_SOURCE_DIR "/tests/hostile/" + name + ".lua"}, {"segment", "main"}}, name);
        batch.folder().write("out/" + name, "of an earlier run");
        ++count;
    }
    ASSERT_GT(count, 0u);
    batch.add({{"script", good}}, "good");
    const CommandRun run = batch.run({"--threads", "6", "--time-limit", "1"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors,
                AllOf(HasSubstr(lastWords), HasSubstr(std::to_string(count + 1) + " jobs: 1 drawn, " +
                                                      std::to_string(count) + " failed\n")));
    EXPECT_NE(readFile(batch.result("good")), "");
    EXPECT_EQ(readFile(batch.result("native_loop")), "");
}

TEST(BatchLimits, EndWhenTooMuchIsLeftBehind)
{
    BatchFile batch;
    const std::string stuck = QUOR_SOURCE_DIR "/tests/hostile/native_loop.lua";
    constexpr int threads = 4;
    constexpr int spare = 8;
    for (int i = 0; i < threads + spare + 2; ++i)
        batch.add({{"script", stuck}, {"segment", "main"}}, std::to_string(i));
    const CommandRun run = batch.run({"--threads", "4", "--time-limit", "0.05"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, HasSubstr(": 14 jobs: 0 drawn, 12 failed, 2 not begun\n"));
}

TEST(BatchLimits, MakeScriptsUntrusted)
{
    BatchFile batch;
    const std::string script = batch.folder().write(
        "s.lua",
        "function main() assert(not io and not os.setlocale and os.date('!%Y', 0) == '1970') return {} end");
    batch.add({{"script", script}}, "a");
    EXPECT_EQ(batch.run().exitCode, 1);
    const CommandRun run = batch.run({"--untrusted"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
}

TEST(BatchInput, IsNotForScripts)
{
    BatchFile batch;
    const std::string script =
        batch.folder().write("s.lua", "function main() assert(io.read() == nil) return {} end");
    batch.add({{"script", script}}, "a");
    const CommandRun run = batch.run();
    EXPECT_EQ(run.exitCode, 0) << run.errors;
}

struct Interruption {
    const char* signal;
    int exitCode;
};

TEST(BatchInterruption, EndsBehindTheJobsThatAreBegunAndTheNextRunDoesTheRest)
{
    if (testsystem::isWindows) GTEST_SKIP() << "no program sends signals there";
    for (const Interruption& interruption : {Interruption{"INT", 130}, Interruption{"TERM", 143}}) {
        BatchFile batch;
        const std::string good = batch.folder().write("good.lua", nothing);
        // A shell that does not ignore the signal for the program that started it, as os.execute would.
        const std::string interrupts = batch.folder().write(
            "interrupts.lua", std::string("function main()\nlocal mark = '") + batch.folder().path("mark") +
                                  "'\nif not io.open(mark) then io.open(mark, 'w'):close()\n"
                                  "io.popen('kill -" +
                                  interruption.signal + " $PPID'):close() end\nreturn {} end");
        batch.add({{"script", good}}, "0");
        batch.add({{"script", interrupts}}, "1");
        batch.add({{"script", good}}, "2");
        batch.add({{"script", good}}, "3");
        // Who starts the tests may let them ignore the signals.
        CommandRun run = runProgram(
            {"env", "--default-signal=INT,TERM", quorCommand(), "batch", batch.write(), "--threads", "1"});
        EXPECT_EQ(run.exitCode, interruption.exitCode) << run.errors;
        EXPECT_THAT(run.errors, HasSubstr(": 4 jobs: 2 drawn, 2 not begun\n"));
        run = batch.run({"--threads", "1"});
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_THAT(run.errors, HasSubstr(": 4 jobs: 2 drawn, 2 there already\n"));
    }
}

std::string quoted(const std::string& text)
{
    return "'" + text + "'";
}

TEST(BatchProgress, IsShownOnATerminalAlone)
{
    if (testsystem::isWindows) GTEST_SKIP() << "no program makes a terminal there";
    if (runProgram({"script", "--version"}).exitCode != 0) GTEST_SKIP() << "there is no program script";
    BatchFile batch;
    const std::string script = batch.folder().write(
        "s.lua", "function main() io.popen('sleep 0.25'):close() print('said') return {} end");
    batch.add({{"script", script}}, "a");
    batch.add({{"script", script}}, "b");
    const std::string command = quoted(quorCommand()) + " batch --force --threads 1 " + quoted(batch.write());
    const CommandRun shown = runProgram({"script", "-qec", command, testsystem::nullDevice()});
    EXPECT_EQ(shown.exitCode, 0) << shown.output;
    EXPECT_THAT(shown.output, AllOf(HasSubstr("[------------------------------] 0 of 2"),
                                    HasSubstr("[###############---------------] 1 of 2"),
                                    HasSubstr("\r" + batch.folder().path("jobs.jsonl") + ": line 1: said")));
    const CommandRun quiet = runProgram({"script", "-qec", command + " --quiet", testsystem::nullDevice()});
    EXPECT_THAT(quiet.output, Not(HasSubstr(" of 2")));
    EXPECT_THAT(batch.run({"--force"}).errors, Not(HasSubstr(" of 2")));
}

/// What one run draws of a file of jobs, by the outputs' names.
class BatchParts : public testing::Test {
protected:
    BatchParts()
    {
        for (int i = 0; i < count; ++i)
            batch_.add({{"script", "tee.lua"}, {"parameters", {{"P1", 60 + i}}}},
                       std::to_string(i) + ".json");
        EXPECT_EQ(batch_.run({"--quiet"}).exitCode, 0);
        for (int i = 0; i < count; ++i)
            whole_.push_back(readFile(batch_.result(std::to_string(i) + ".json")));
        std::filesystem::remove_all(batch_.folder().path("out"));
    }

    void expectTheSame() const
    {
        for (int i = 0; i < count; ++i) {
            EXPECT_NE(whole_[static_cast<std::size_t>(i)], "");
            EXPECT_EQ(readFile(batch_.result(std::to_string(i) + ".json")),
                      whole_[static_cast<std::size_t>(i)])
                << i;
        }
    }

    CommandRun runShell(const std::string& line) const
    {
        return runProgram({"sh", "-c", line}, {"QUOR_INSTALLATION=" QUOR_SOURCE_DIR "/sample/installation",
                                               "QUOR_PROJECT=" QUOR_SOURCE_DIR "/sample/project",
                                               "HOME=" + batch_.folder().path("")});
    }

    static constexpr int count = 40;
    BatchFile batch_;
    std::vector<std::string> whole_;
};

TEST_F(BatchParts, OfOneFileAreDrawnAtTheSameTimeByGnuParallel)
{
    if (testsystem::isWindows) GTEST_SKIP() << "there is no GNU parallel";
    if (runProgram({"parallel", "--version"}).exitCode != 0) GTEST_SKIP() << "there is no GNU parallel";
    const std::string line = "parallel --will-cite --sshlogin 2/: --pipepart --arg-file " +
                             quoted(batch_.write()) + " --block 1k " + quoted(quorCommand()) +
                             " batch - --threads 2";
    CommandRun run = runShell(line);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    expectTheSame();
    std::filesystem::remove(batch_.result("7.json"));
    run = runShell(line);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    expectTheSame();
    EXPECT_THAT(run.errors, AllOf(HasSubstr(": 1 drawn, "), Not(HasSubstr(": 2 drawn"))));
}

TEST_F(BatchParts, InFilesOfTheirOwnAreDrawnOneByOneAndKnownToTheWhole)
{
    const std::vector<Json> all = batch_.jobs();
    for (int part = 0; part < 2; ++part) {
        batch_.jobs().assign(all.begin() + part * count / 2, all.begin() + (part + 1) * count / 2);
        EXPECT_EQ(runQuor({"batch", batch_.write("part.jsonl"), "--quiet"}).exitCode, 0);
    }
    expectTheSame();
    batch_.jobs() = all;
    EXPECT_THAT(batch_.run().errors, HasSubstr(": 40 jobs: 0 drawn, 40 there already\n"));
}

} // namespace
