#pragma once

#include <cstdint>

#include "demo/Noise.h"
#include "demo/Options.h"
#include "demo/SessionPlan.h"
#include "recorder/IVideoDataRecoder.h"
#include "records/VDRData1Layout.h"

namespace demo {

// The device status that the pipeline writes into its frames: what the recorder's sampler read
// last, or an invented one that is the same in every session. One thread.
class DeviceStatus {
public:
    // `recorder` and `plan` must outlive this.
    DeviceStatus(zk::IVideoDataRecoder& recorder, const Options& options, const SessionPlan& plan);

    // To be called once the recorder is open: the sampler's first reading comes a little later.
    void awaitFirstReading();
    // Frames come in ascending order. Where the device grows hot, this waits for the sampler, a
    // second or two, so that records show it however fast they are played.
    vdr1::SysStatusInfo at(uint32_t frame);

private:
    void awaitThermalLevel(uint8_t level);
    vdr1::SysStatusInfo invented(bool isHot);

    zk::IVideoDataRecoder& mRecorder;
    const SessionPlan& mPlan;
    const bool mIsSteady;
    const bool mGrowsHot;
    Noise mNoise;
    vdr1::SysStatusInfo mInvented{};
};

}  // namespace demo
