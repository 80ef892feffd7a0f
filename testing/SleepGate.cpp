#include "testing/SleepGate.h"

#include <chrono>

#include "platform/host/ClockControl.h"

namespace zk::test {

SleepGate::SleepGate() {
    host::setSleepHandler([this](uint32_t /*microseconds*/) { sleep(); });
}

SleepGate::~SleepGate() {
    open();
    host::setSleepHandler(nullptr);
}

void SleepGate::sleep() {
    std::unique_lock lock(mMutex);
    const int mine = ++mSleeps;
    mChanged.notify_all();
    mChanged.wait(lock, [&] { return mOpen || mWakes >= mine; });
}

bool SleepGate::waitForSleep(int nth) {
    std::unique_lock lock(mMutex);
    return mChanged.wait_for(lock, std::chrono::seconds(10), [&] { return mSleeps >= nth; });
}

void SleepGate::wakeSleeper() {
    const std::lock_guard guard(mMutex);
    ++mWakes;
    mChanged.notify_all();
}

void SleepGate::open() {
    const std::lock_guard guard(mMutex);
    mOpen = true;
    mChanged.notify_all();
}

void SleepGate::close() {
    const std::lock_guard guard(mMutex);
    mOpen = false;
}

}  // namespace zk::test
