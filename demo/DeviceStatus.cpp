#include "demo/DeviceStatus.h"

#include <chrono>
#include <cstring>
#include <thread>

#include "platform/host/DeviceControl.h"
#include "sysstatus/SysStatusCollection.h"

namespace demo {
namespace {

constexpr uint8_t kWarm = 1;  // thermal levels
constexpr uint8_t kHot = 5;
constexpr uint32_t kCaptureMemory = 196608;
constexpr uint32_t kFramesPerReading = 30;
constexpr double kSpread = 0.01;

// As the thermal service keeps its level.
uint32_t thermalWord(uint8_t level) {
    return uint32_t{level} << 8;
}

}  // namespace

DeviceStatus::DeviceStatus(zk::IVideoDataRecoder& recorder, const Options& options,
                           const SessionPlan& plan)
      : mRecorder(recorder),
        mPlan(plan),
        mIsSteady(options.steady),
        mGrowsHot(options.cause == Cause::kThermal),
        mNoise(options.seed + 2) {
    zk::host::setThermalStateWord(thermalWord(kWarm));
    zk::host::setCaptureMemory(kCaptureMemory);
}

void DeviceStatus::awaitFirstReading() {
    awaitThermalLevel(kWarm);
}

vdr1::SysStatusInfo DeviceStatus::at(uint32_t frame) {
    const bool isHot = mGrowsHot && frame >= mPlan.hotFrom;
    if (isHot && frame == mPlan.hotFrom) {
        zk::host::setThermalStateWord(thermalWord(kHot));
        awaitThermalLevel(kHot);
    }
    if (mIsSteady) {
        if (frame % kFramesPerReading == 1 || frame == mPlan.hotFrom) {
            mInvented = invented(isHot);
        }
        return mInvented;
    }
    zk::SysStatusCollection snapshot{};
    mRecorder.GetSystemStatus(snapshot);
    vdr1::SysStatusInfo status{};
    std::memcpy(&status, &snapshot, sizeof(status));  // a snapshot begins with the record's field
    return status;
}

// Nothing but the host's control moves the level: with it comes a new reading.
void DeviceStatus::awaitThermalLevel(uint8_t level) {
    if (mIsSteady) {
        return;
    }
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(3);
    zk::SysStatusCollection snapshot{};
    do {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        mRecorder.GetSystemStatus(snapshot);
    } while (snapshot.thermalLevel != level && std::chrono::steady_clock::now() < limit);
}

// Of the size that a phone at work shows. A hot one has its clocks cut.
vdr1::SysStatusInfo DeviceStatus::invented(bool isHot) {
    const double speed = isHot ? 0.4 : 1;
    const double warmth = mGrowsHot ? 1.3 : 1;
    vdr1::SysStatusInfo status{};
    status.cpu0Freq = mNoise.around<uint32_t>(1401600 * speed, kSpread);
    status.cpu4Freq = mNoise.around<uint32_t>(1766400 * speed, kSpread);
    status.cpu7Freq = mNoise.around<uint32_t>(2476800 * speed, kSpread);
    status.cpuUsage = mNoise.around<uint16_t>(24 / speed, 0.05);
    status.loadAvg1 = mNoise.around<float>(4, kSpread);
    status.loadAvg5 = 3.75F;
    status.loadAvg15 = 3.5F;
    status.shellFrontTemp = mNoise.around<uint32_t>(33000 * warmth, 0.002);
    status.shellBackTemp = mNoise.around<uint32_t>(34000 * warmth, 0.002);
    status.shellFrameTemp = mNoise.around<uint32_t>(33500 * warmth, 0.002);
    status.memFree = mNoise.around<uint32_t>(1200000, kSpread);
    status.memAvailable = mNoise.around<uint32_t>(4800000, kSpread);
    status.usedMem = kCaptureMemory;
    status.sceneMode = SessionPlan::kSceneMode;
    status.thermalLevel = isHot ? kHot : kWarm;
    return status;
}

}  // namespace demo
