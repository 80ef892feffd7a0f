#include "platform/Clock.h"

#include <unistd.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/host/ClockControl.h"

namespace {

constexpr uint64_t kMachineClock = UINT64_MAX;

std::atomic<uint64_t> wallClock{kMachineClock};
std::atomic<bool> clockFails{false};

using SleepHandler = std::function<void(uint32_t)>;

struct SleepState {
    std::mutex mutex;
    std::shared_ptr<SleepHandler> handler;
};

// Never destroyed: a sampler may still be asleep when the process ends.
SleepState& sleepState() {
    static auto* instance = new SleepState;
    return *instance;
}

}  // namespace

void zk::host::setWallClock(uint64_t microseconds) {
    wallClock = microseconds;
}

void zk::host::advanceWallClock(int64_t microseconds) {
    wallClock += static_cast<uint64_t>(microseconds);
}

void zk::host::useMachineClock() {
    wallClock = kMachineClock;
}

void zk::host::failClock(bool fail) {
    clockFails = fail;
}

void zk::host::setSleepHandler(std::function<void(uint32_t)> handler) {
    const std::lock_guard guard(sleepState().mutex);
    sleepState().handler = handler ? std::make_shared<SleepHandler>(std::move(handler)) : nullptr;
}

int zk::platform::getTimeOfDay(timeval* now) {
    if (clockFails) {
        return -1;
    }
    const uint64_t set = wallClock;
    if (set == kMachineClock) {
        return gettimeofday(now, nullptr);
    }
    now->tv_sec = static_cast<time_t>(set / 1000000);
    now->tv_usec = static_cast<suseconds_t>(set % 1000000);
    return 0;
}

void zk::platform::sleepMicroseconds(uint32_t microseconds) {
    std::shared_ptr<SleepHandler> handler;
    {
        const std::lock_guard guard(sleepState().mutex);
        handler = sleepState().handler;
    }
    if (handler != nullptr) {
        (*handler)(microseconds);
    } else {
        usleep(microseconds);
    }
}
