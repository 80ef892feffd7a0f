#include "sysstatus/SystemStatusReader.h"

#include <unistd.h>

#include <cstring>
#include <locale>
#include <numeric>
#include <sstream>
#include <string>

#include "platform/BoundedMemory.h"
#include "platform/Files.h"
#include "platform/thermalStateWord.h"

namespace zk {
namespace {

constexpr size_t kLineSize = 1024;        // bytes, with the NUL
constexpr size_t kMemInfoLineSize = 256;  // likewise
constexpr unsigned kThermalLevelShift = 8;
constexpr uint32_t kThermalLevelMask = 15;
constexpr unsigned kThermalEscapeShift = 2;
constexpr uint32_t kThermalEscapeMask = 3;

// The next read asks the kernel again: flushing an input stream drops what the C library has
// buffered, which it would serve a second time after seeking alone.
void rewindFile(std::FILE* file) {
    std::fflush(file);
    std::fseek(file, 0, SEEK_SET);
}

}  // namespace

SystemStatusReader::SystemStatusReader() {
    const std::string processStat = "/proc/" + std::to_string(getpid()) + "/stat";
    const std::array<const char*, kFiles> paths = {
            "/sys/devices/system/cpu/cpu0/cpufreq/scaling_cur_freq",
            "/sys/devices/system/cpu/cpu4/cpufreq/scaling_cur_freq",
            "/sys/devices/system/cpu/cpu7/cpufreq/scaling_cur_freq",
            "/sys/class/devfreq/3d00000.qcom,kgsl-3d0/cur_freq",
            "/sys/class/ko_thermal/temp/shell_front/temp",
            "/sys/class/ko_thermal/temp/shell_back/temp",
            "/sys/class/ko_thermal/temp/shell_frame/temp",
            "/sys/class/ko_thermal/temp/ambient",
            "/sys/class/ko_thermal/temp/fold_state",
            "/sys/class/backlight/panel1-backlight/brightness",
            "/sys/class/backlight/panel0-backlight/brightness",
            "/sys/class/power_supply/usb/online",
            "/proc/meminfo",
            "/proc/loadavg",
            "/proc/stat",
            processStat.c_str(),
            "/sys/class/kgsl/kgsl-3d0/gpu_busy_percentage",
    };
    for (size_t i = 0; i < kFiles; ++i) {
        mFiles[i] = platform::openFile(paths[i]);
    }
    mThermalObserver = CameraHalThermal::ThermalService::GetInstance()->GetThermalEscapeObserver(
            "thermalLevel");
}

void SystemStatusReader::close() {
    for (std::FILE* file : mFiles) {
        if (file != nullptr) {
            platform::closeFile(file);
        }
    }
    mCaptureCounter.close();
}

void SystemStatusReader::read() {
    readIntegers();
    readMemory();
    readThermal();
    readLoad();
    readProcessorTimes();
    readProcessTimes();
    updateUsage();
    readGpuBusy();
}

// Reads a file's line and hands it to `scan`, which returns what sscanf_s does: 0 for text that
// is no number, less for a blank line, which counts as read. A file that gives no line or no number
// is not rewound and its values stay: text is followed by the file's next line in the next cycle,
// its end by nothing any more, a failed read by another try.
template <typename Scan>
void SystemStatusReader::readLine(File file, Scan scan) {
    char line[kLineSize];
    if (mFiles[file] == nullptr) {
        return;
    }
    if (std::fgets(line, sizeof(line), mFiles[file]) != nullptr && scan(line) != 0) {
        rewindFile(mFiles[file]);
    }
}

void SystemStatusReader::readIntegers() {
    for (size_t i = 0; i < kIntegerFiles; ++i) {
        readLine(static_cast<File>(i), [&](const char* line) {
            int number = 0;
            const int scanned = sscanf_s(line, "%d", &number);
            if (scanned != 0) {
                mReadings[i] = number;
            }
            return scanned;
        });
    }
}

void SystemStatusReader::readMemory() {
    std::FILE* file = mFiles[kMemInfo];
    if (file == nullptr) {
        return;
    }
    mMemFree = mMemAvailable = 0;
    char line[kMemInfoLineSize];
    while (std::fgets(line, sizeof(line), file) != nullptr) {
        if (sscanf_s(line, "MemFree: %u kB", &mMemFree) == 1) {
            continue;
        }
        if (sscanf_s(line, "MemAvailable: %u kB", &mMemAvailable) == 1) {
            rewindFile(file);
            break;
        }
    }
    mUsedMem = mCaptureCounter.usedMemory();
}

void SystemStatusReader::readThermal() {
    if (mThermalObserver == nullptr) {
        return;
    }
    const uint32_t word = platform::thermalStateWord(*mThermalObserver);
    mThermalLevel = (word >> kThermalLevelShift) & kThermalLevelMask;
    mThermalEscapeState = (word >> kThermalEscapeShift) & kThermalEscapeMask;
}

void SystemStatusReader::readLoad() {
    readLine(kLoadAvg, [this](const char* line) {
        return sscanf_s(line, "%f %f %f", &mLoadAvg[0], &mLoadAvg[1], &mLoadAvg[2]);
    });
}

void SystemStatusReader::readProcessorTimes() {
    readLine(kStat, [&t = mProcessorTimes](const char* line) {
        return sscanf_s(line, "cpu %llu %llu %llu %llu %llu %llu %llu %llu %llu %llu", &t[0], &t[1],
                        &t[2], &t[3], &t[4], &t[5], &t[6], &t[7], &t[8], &t[9]);
    });
}

// The command name is taken as one word: a blank in it ends the extraction early, and the times
// keep their values.
void SystemStatusReader::readProcessTimes() {
    char line[kLineSize];
    std::FILE* file = mFiles[kProcessStat];
    if (file == nullptr || std::fgets(line, sizeof(line), file) == nullptr) {
        return;
    }
    long processId = 0;
    std::string command;
    char state = 0;
    std::array<long, 5> ids{};              // parent, group, session, terminal, its group
    std::array<unsigned long, 5> faults{};  // flags, minor and major faults
    std::istringstream fields(line);
    fields.imbue(std::locale::classic());
    fields >> processId >> command >> state;
    for (long& id : ids) {
        fields >> id;
    }
    for (unsigned long& fault : faults) {
        fields >> fault;
    }
    for (unsigned long& time : mProcessTimes) {
        fields >> time;
    }
    rewindFile(file);
}

// A cycle in which this process took no time changes nothing: the last usage stays, and the next
// interval spans several cycles.
void SystemStatusReader::updateUsage() {
    const uint64_t total =
            std::accumulate(mProcessorTimes.begin(), mProcessorTimes.end(), uint64_t{0});
    const uint64_t process =
            std::accumulate(mProcessTimes.begin(), mProcessTimes.end(), uint64_t{0});
    if (mPreviousTotal != 0) {
        if (total <= mPreviousTotal || process <= mPreviousProcess) {
            return;
        }
        mUsage = (process - mPreviousProcess) * 100 / (total - mPreviousTotal);
    }
    mPreviousTotal = total;
    mPreviousProcess = process;
}

void SystemStatusReader::readGpuBusy() {
    readLine(kGpuBusy, [this](const char* line) { return sscanf_s(line, "%u %%", &mGpuBusy); });
}

void SystemStatusReader::publish(SysStatusCollection& snapshot) const {
    snapshot.cpu0Freq = mReadings[kCpu0Freq];
    snapshot.cpu4Freq = mReadings[kCpu4Freq];
    snapshot.cpu7Freq = mReadings[kCpu7Freq];
    snapshot.cpuUsage = static_cast<uint16_t>(mUsage);
    snapshot.loadAvg1 = mLoadAvg[0];
    snapshot.loadAvg5 = mLoadAvg[1];
    snapshot.loadAvg15 = mLoadAvg[2];
    snapshot.shellFrontTemp = mReadings[kShellFrontTemp];
    snapshot.shellBackTemp = mReadings[kShellBackTemp];
    snapshot.shellFrameTemp = mReadings[kShellFrameTemp];
    snapshot.memFree = mMemFree;
    snapshot.memAvailable = mMemAvailable;
    snapshot.usedMem = mUsedMem;
    snapshot.thermalLevel = static_cast<uint8_t>(mThermalLevel);
    snapshot.thermalEscapeState = static_cast<uint8_t>(mThermalEscapeState);
    snapshot.gpuFreq = mReadings[kGpuFreq];
    snapshot.gpuBusy = static_cast<uint16_t>(mGpuBusy);
    snapshot.ambientTemp = mReadings[kAmbientTemp];
    snapshot.foldState = static_cast<uint8_t>(mReadings[kFoldState]);
    snapshot.panel1Brightness = mReadings[kPanel1Brightness];
    snapshot.panel0Brightness = mReadings[kPanel0Brightness];
    snapshot.usbOnline = static_cast<uint8_t>(mReadings[kUsbOnline]);
}

}  // namespace zk
