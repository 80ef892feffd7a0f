#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "platform/CaptureCounter.h"
#include "platform/ThermalService.h"
#include "sysstatus/SysStatusCollection.h"

namespace zk {

// Reads the device's state from 17 files under /proc and /sys, opened once and rewound for every
// cycle, from the thermal service and from the capture counter. Lives on the sampler's thread for
// one run. A file that does not open is skipped; nothing is logged about any file.
class SystemStatusReader {
public:
    SystemStatusReader();
    SystemStatusReader(const SystemStatusReader&) = delete;
    SystemStatusReader& operator=(const SystemStatusReader&) = delete;

    // One cycle: reads everything that can be read now.
    void read();
    // Stores what the last cycle knows; leaves the fields that others keep.
    void publish(SysStatusCollection& snapshot) const;
    // To be called once, at the end of the run.
    void close();

private:
    static constexpr size_t kIntegerFiles = 12;  // each holds one number; they come first
    static constexpr size_t kFiles = 17;

    enum File : size_t {  // place in mFiles; 0 to 11 are also places in mReadings
        kCpu0Freq,
        kCpu4Freq,
        kCpu7Freq,
        kGpuFreq,
        kShellFrontTemp,
        kShellBackTemp,
        kShellFrameTemp,
        kAmbientTemp,
        kFoldState,
        kPanel1Brightness,
        kPanel0Brightness,
        kUsbOnline,
        kMemInfo,
        kLoadAvg,
        kStat,
        kProcessStat,
        kGpuBusy,
    };

    template <typename Scan>
    void readLine(File file, Scan scan);
    void readIntegers();
    void readMemory();
    void readThermal();
    void readLoad();
    void readProcessorTimes();
    void readProcessTimes();
    void readGpuBusy();
    void updateUsage();

    std::array<std::FILE*, kFiles> mFiles{};
    std::shared_ptr<CameraHalThermal::ThermalEscapeObserver> mThermalObserver;  // may be null
    platform::CaptureCounter mCaptureCounter;

    std::array<int32_t, kIntegerFiles> mReadings{};
    uint32_t mMemFree = 0;       // kB
    uint32_t mMemAvailable = 0;  // kB
    uint32_t mUsedMem = 0;
    uint32_t mThermalLevel = 0;
    uint32_t mThermalEscapeState = 0;
    std::array<float, 3> mLoadAvg{};
    uint32_t mGpuBusy = 0;  // percent

    // Times in clock ticks since boot.
    std::array<unsigned long long, 10> mProcessorTimes{};  // user to guest_nice, all processors
    std::array<unsigned long, 4> mProcessTimes{};          // utime, stime, cutime, cstime
    uint64_t mPreviousTotal = 0;                           // 0: no cycle yet
    uint64_t mPreviousProcess = 0;
    uint64_t mUsage = 0;  // percent
};

}  // namespace zk
