#pragma once

#include <condition_variable>
#include <mutex>

namespace zk::test {

// Takes the place of sleeping: a sleeper stays until it is woken, so that a test turns the
// sampler's cycles by hand. While it is open, nobody sleeps.
class SleepGate {
public:
    SleepGate();
    ~SleepGate();
    SleepGate(const SleepGate&) = delete;
    SleepGate& operator=(const SleepGate&) = delete;

    // False where nobody falls asleep for the `nth` time (1: the first ever) within ten seconds.
    bool waitForSleep(int nth);
    void wakeSleeper();
    void open();
    void close();
    // What sleepers call.
    void sleep();

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    int mSleeps = 0;
    int mWakes = 0;
    bool mOpen = false;
};

}  // namespace zk::test
