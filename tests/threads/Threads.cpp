#include "Threads.h"

#include <QuorCommon/QuorCommon.h>
#include <atomic>
#include <thread>

namespace {

void alloc(unsigned int id)
{
    quorlua::allocThreadVars(id);
    quorconfig::allocThreadConfig(id);
}

void free(unsigned int id)
{
    quorlua::freeThreadVars(id);
    quorconfig::freeThreadConfig(id);
}

/// Does the work on a thread that notes what the library shows there.
Lines heard(const Work& work, int number)
{
    const Listening listening(number);
    Lines noted = work(number);
    for (const std::string& message : listening.messages())
        noted.push_back("shown: " + message);
    return noted;
}

} // namespace

Threads::OwnData::OwnData() : id_(quorsys::currentThreadId())
{
    alloc(id_);
}

Threads::OwnData::~OwnData()
{
    free(id_);
}

Threads::Threads()
{
    // A name of its own for each test: the shared state outlives them, and runs another file when that has
    // another name.
    static int tests = 0;
    const std::string projectScript = "project" + std::to_string(++tests) + ".lua";
    folder.write("component.lua", componentScript);
    folder.write("layer.lua", layerScript);
    folder.write("installation/bin/" + projectScript, projectConfiguration);
    folder.write("installation/bin/mirtSystemConfig.lua", systemConfiguration);
    QuorSystem::setInstallationFolder(folder.path("installation").c_str());
    QuorSystem::setProjectFolder(folder.path("project").c_str());
    kxcom::setMessageSink(Listening::hear, nullptr);
    setQuorGetText_callbk(Listening::translate);
    EXPECT_TRUE(quorconfig::initConfig(projectScript.c_str(), "the test", nullptr, nullptr));
    EXPECT_TRUE(quorconfig::initSysConfig());
}

Threads::~Threads()
{
    setQuorGetText_callbk(nullptr);
    kxcom::setMessageSink(nullptr, nullptr);
    QuorSystem::setProjectFolder(nullptr);
    QuorSystem::setInstallationFolder(nullptr);
}

std::vector<Lines> Threads::atOnce(int count, const Work& work)
{
    std::vector<unsigned int> ids(static_cast<std::size_t>(count));
    std::vector<Lines> noted(static_cast<std::size_t>(count) + 1);
    // Not latches: on Windows this compiler's may sleep through the last count.
    std::atomic<int> known = 0;
    std::atomic<bool> started = false;
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            const auto at = static_cast<std::size_t>(number);
            ids[at] = quorsys::currentThreadId();
            ++known;
            while (!started)
                std::this_thread::yield();
            noted[at] = heard(work, number);
        });
    }
    while (known != count)
        std::this_thread::yield();
    for (const unsigned int id : ids)
        alloc(id);
    started = true;
    noted.back() = heard(work, count);
    for (std::thread& thread : threads)
        thread.join();
    for (const unsigned int id : ids)
        free(id);
    return noted;
}

Lines Threads::alone(int number, const Work& work)
{
    Lines noted;
    std::thread thread([&] {
        const OwnData data;
        noted = heard(work, number);
    });
    thread.join();
    return noted;
}
