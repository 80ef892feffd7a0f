#pragma once

#include "recorder/IVideoDataRecoder.h"
#include "sysstatus/SysStatusCollection.h"

namespace demo {

// Follows the status sampler through the snapshots that it publishes. One thread.
class SamplerWatch {
public:
    enum class Meanwhile { kIdle, kBusy };

    explicit SamplerWatch(zk::IVideoDataRecoder& recorder) : mRecorder(recorder) {}

    // Lets the device grow warmer and waits until a snapshot shows it, which tells a new reading
    // from an old one; three seconds at most, about one as a rule. False when none came.
    bool awaitReading(Meanwhile meanwhile);
    // Keeps one processor busy for a whole sampling period, so that the usage has something to
    // follow; snapshot() is then the reading at its end.
    bool awaitBusyPeriod();

    const zk::SysStatusCollection& snapshot() const { return mSnapshot; }
    // This process's share of all processors over the busy period by its own clock, percent.
    double ownUsage() const { return mOwnUsage; }

private:
    zk::IVideoDataRecoder& mRecorder;
    zk::SysStatusCollection mSnapshot{};
    double mOwnUsage = 0;
    uint8_t mThermalLevel = 0;
};

}  // namespace demo
