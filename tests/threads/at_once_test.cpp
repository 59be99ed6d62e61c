#include "Threads.h"

#include <sstream>

namespace {

using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

constexpr int threadCount = 8;
constexpr int rounds = 10;

class AtOnce : public Threads {
protected:
    /// What each of several threads notes is what it notes alone, and nobody else's.
    static void expectAsAlone(const Work& work)
    {
        const std::vector<Lines> noted = atOnce(threadCount, work);
        ASSERT_EQ(noted.size(), threadCount + 1u);
        for (int number = 0; number <= threadCount; ++number) {
            const Lines& lines = noted[static_cast<std::size_t>(number)];
            // The shared states, which the thread of the test asks, remember what was asked before.
            if (number < threadCount) {
                EXPECT_EQ(lines, alone(number, work)) << "thread " << number;
            }
            EXPECT_FALSE(lines.empty());
            for (int another = 0; another <= threadCount; ++another) {
                if (another == number) continue;
                EXPECT_THAT(lines, Each(Not(HasSubstr("thread " + std::to_string(another)))));
            }
        }
    }
};

TEST_F(AtOnce, ThreadsDrawAsEachWouldAlone)
{
    expectAsAlone([this](int number) { return drawing(number, folder, rounds); });
}

TEST_F(AtOnce, ThreadsAskTheConfigurationAsEachWouldAlone)
{
    expectAsAlone([](int number) { return asking(number, 5 * rounds); });
}

TEST_F(AtOnce, ThreadsDrawAndAskAsEachWouldAlone)
{
    expectAsAlone([this](int number) {
        Lines lines;
        for (int round = 0; round < rounds; ++round) {
            for (const Lines& part : {drawing(number, folder, 1), asking(number, 3)})
                lines.insert(lines.end(), part.begin(), part.end());
        }
        return lines;
    });
}

TEST_F(AtOnce, EachThreadHasItsOwnAttributesAnswersAndErrors)
{
    const std::vector<Lines> noted =
        atOnce(threadCount, [this](int number) { return drawing(number, folder, 1); });
    for (int number = 0; number <= threadCount; ++number) {
        const Lines& lines = noted[static_cast<std::size_t>(number)];
        const std::string n = std::to_string(number);
        const std::string tag = "thread " + n;
        const int colour = 100 + 10 * number;
        std::ostringstream line;
        line << "drawn createQuorLine((" << n << ", " << n << ", 0.5), (" << n << ".25, 1, "
             << 1 + 10 * number << ")) color=" << colour << " thick=" << colour / 8.0
             << " ltScale=3 lineType=\"LINE " << tag << '"';
        EXPECT_THAT(lines, Contains(line.str()));
        EXPECT_THAT(lines, Contains("last error 2003 [" + tag + "] 图形库调用出错：failing"));
        EXPECT_THAT(lines, Contains("last error 2007 [" + tag + "] 图形库脚本未返回结果"));
        EXPECT_THAT(lines, Contains("shown: fails: " + tag));
        EXPECT_THAT(lines, Contains("shown: no " + tag));
        EXPECT_THAT(lines, Contains("style " + tag));
    }
}

TEST_F(AtOnce, WavesOfThreadsFindNothingOfThoseBefore)
{
    const Work work = [this](int number) {
        Lines lines = drawing(number, folder, 1);
        const Lines answers = asking(number, 2);
        lines.insert(lines.end(), answers.begin(), answers.end());
        return lines;
    };
    const std::vector<Lines> first = atOnce(threadCount, work);
    for (int wave = 0; wave < 5; ++wave) {
        std::vector<Lines> noted = atOnce(threadCount, work);
        for (std::size_t at = 0; at < threadCount; ++at)
            EXPECT_EQ(noted[at], first[at]) << "wave " << wave;
    }
}

} // namespace
