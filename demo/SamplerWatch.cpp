#include "demo/SamplerWatch.h"

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <thread>

#include "platform/host/DeviceControl.h"

namespace demo {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestWait(3);
constexpr std::chrono::milliseconds kPollInterval(1);
constexpr uint32_t kCaptureMemory = 196608;

// Level and escape state where the thermal service keeps them.
uint32_t thermalStateWord(uint8_t level) {
    return uint32_t{level} << 8 | 1U << 2;
}

void work(std::chrono::milliseconds duration) {
    const auto end = Clock::now() + duration;
    for (volatile uint32_t turns = 0; Clock::now() < end;) {
        turns = turns + 1;
    }
}

double secondsOf(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

}  // namespace

bool SamplerWatch::awaitReading(Meanwhile meanwhile) {
    ++mThermalLevel;
    zk::host::setThermalStateWord(thermalStateWord(mThermalLevel));
    zk::host::setCaptureMemory(kCaptureMemory);
    const auto limit = Clock::now() + kLongestWait;
    do {
        if (meanwhile == Meanwhile::kBusy) {
            work(kPollInterval);
        } else {
            std::this_thread::sleep_for(kPollInterval);
        }
        mRecorder.GetSystemStatus(mSnapshot);
    } while (mSnapshot.thermalLevel != mThermalLevel && Clock::now() < limit);
    return mSnapshot.thermalLevel == mThermalLevel;
}

bool SamplerWatch::awaitBusyPeriod() {
    if (!awaitReading(Meanwhile::kIdle)) {
        return false;
    }
    const double processBefore = secondsOf(CLOCK_PROCESS_CPUTIME_ID);
    const double before = secondsOf(CLOCK_MONOTONIC);
    const bool came = awaitReading(Meanwhile::kBusy);
    const double elapsed = secondsOf(CLOCK_MONOTONIC) - before;
    const double worked = secondsOf(CLOCK_PROCESS_CPUTIME_ID) - processBefore;
    const auto processors = static_cast<double>(sysconf(_SC_NPROCESSORS_ONLN));
    mOwnUsage = 100 * worked / (elapsed * processors);
    return came;
}

}  // namespace demo
