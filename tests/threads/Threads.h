#pragma once

#include "Session.h"

#include <functional>

/// What one thread does, told its number, and what it notes.
using Work = std::function<Lines(int number)>;

/// The folders and the process-wide set-up of one test, made before it starts threads, as a host does.
class Threads : public testing::Test {
protected:
    Threads();
    ~Threads() override;
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    /// Lets as many threads work at once, each with a context and states of its own, numbered from 0. The
    /// thread of the test works with them, on the shared ones, under the next number. What each noted.
    static std::vector<Lines> atOnce(int count, const Work& work);

    /// What a thread with a context and states of its own notes while no other works.
    static Lines alone(int number, const Work& work);

    /// Gives the calling thread a context and states of its own as long as one lives.
    class OwnData {
    public:
        OwnData();
        ~OwnData();
        OwnData(const OwnData&) = delete;
        OwnData& operator=(const OwnData&) = delete;

    private:
        const unsigned int id_;
    };

    ScriptFolder folder;
};
