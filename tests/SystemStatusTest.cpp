#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>

#include "platform/host/ClockControl.h"
#include "platform/host/DeviceControl.h"
#include "platform/host/FileControl.h"
#include "sysstatus/SystemStatus.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

using std::to_string;

// A number's place in the snapshot; of shorter ones the low bytes are kept.
struct IntegerFile {
    const char* path;
    size_t offset;
    size_t size;
};

constexpr std::array<IntegerFile, 12> kIntegerFiles = {{
        {"/sys/devices/system/cpu/cpu0/cpufreq/scaling_cur_freq", 0, 4},
        {"/sys/devices/system/cpu/cpu4/cpufreq/scaling_cur_freq", 4, 4},
        {"/sys/devices/system/cpu/cpu7/cpufreq/scaling_cur_freq", 8, 4},
        {"/sys/class/devfreq/3d00000.qcom,kgsl-3d0/cur_freq", 60, 4},
        {"/sys/class/ko_thermal/temp/shell_front/temp", 26, 4},
        {"/sys/class/ko_thermal/temp/shell_back/temp", 30, 4},
        {"/sys/class/ko_thermal/temp/shell_frame/temp", 34, 4},
        {"/sys/class/ko_thermal/temp/ambient", 66, 4},
        {"/sys/class/backlight/panel1-backlight/brightness", 71, 4},
        {"/sys/class/backlight/panel0-backlight/brightness", 75, 4},
        {"/sys/class/ko_thermal/temp/fold_state", 70, 1},
        {"/sys/class/power_supply/usb/online", 79, 1},
}};
constexpr const char* kCpu0 = kIntegerFiles[0].path;
constexpr char kMemInfo[] = "/proc/meminfo";
constexpr char kLoadAvg[] = "/proc/loadavg";
constexpr char kGpuBusy[] = "/sys/class/kgsl/kgsl-3d0/gpu_busy_percentage";

std::string bytesOf(const SysStatusCollection& snapshot) {
    return {reinterpret_cast<const char*>(&snapshot), sizeof(snapshot)};
}

class SystemStatusTest : public RecorderTest {
protected:
    // A session whose sampler has published its first cycle.
    void startSampling(int32_t sceneMode = 0) {
        openSession(sceneMode);
        ASSERT_TRUE(mSleep.waitForSleep(++mCycles));
    }
    // One more cycle, published.
    void nextCycle() {
        mSleep.wakeSleeper();
        ASSERT_TRUE(mSleep.waitForSleep(++mCycles));
    }
    // The sampler ends; the recorder and the snapshot stay.
    void stopSampling() {
        closeSession();
        mSleep.wakeSleeper();
        ASSERT_TRUE(waitForSamplersEnd());
    }

    // Its fields are unaligned: compare copies, made by a plus sign, not references.
    SysStatusCollection status() {
        SysStatusCollection snapshot;
        std::memset(&snapshot, 0xEE, sizeof(snapshot));
        recorder().GetSystemStatus(snapshot);
        return snapshot;
    }

    // "cpu0 frequency, usage, scene, snapshots".
    std::string told() {
        const SysStatusCollection now = status();
        return to_string(+now.cpu0Freq) + ", " + to_string(+now.cpuUsage) + ", " +
               to_string(+now.sceneMode) + ", " + to_string(+now.snapshotCount);
    }

    // `total` clock ticks of all processors, of which this process has had `process`, in lines as
    // long as the kernel's; what is over 2^32 in each counter goes to the one of this number.
    void layTimes(uint64_t total, uint64_t process, const char* command = "(camera)",
                  size_t counter = 9) const {
        constexpr uint64_t kMuch = uint64_t{1} << 32;
        std::string all = "cpu ";
        for (size_t i = 0; i < 10; ++i) {
            all += " " + to_string(kMuch + (i == counter ? total : 0));
        }
        layFile("/proc/stat", all + "\ncpu0 1 2\n");
        std::string own = "4711 " + std::string(command) + " S 1 2 3 -1 -1 4194560 90000 80000 7 6";
        for (size_t i = 0; i < 4; ++i) {
            own += " " + to_string(kMuch + (i == counter % 4 ? process : 0));
        }
        layFile("/proc/" + to_string(getpid()) + "/stat", own + " 20 0 99 0 555555 1000000\n");
    }

    static size_t openFiles() {
        using Entries = std::filesystem::directory_iterator;
        return static_cast<size_t>(std::distance(Entries("/proc/self/fd"), Entries()));
    }

private:
    int mCycles = 0;
};

TEST_F(SystemStatusTest, EveryCycleReadsEveryFileAfresh) {
    // One digit and another, then longer and shorter content in the same file.
    for (const std::string number : {"1", "30000", "2"}) {
        const auto scale = static_cast<uint16_t>(std::stoi(number));
        SysStatusCollection expected{};
        expected.usedMem = 4000000000U + scale;
        expected.thermalLevel = static_cast<uint8_t>(5 + scale % 3);
        expected.thermalEscapeState = static_cast<uint8_t>(1 + scale % 3);
        host::setCaptureMemory(4000000000U + scale);
        host::setThermalStateWord(0xFFFFF0F3 | uint32_t{expected.thermalLevel} << 8 |
                                  uint32_t{expected.thermalEscapeState} << 2);
        int value = 0;
        for (const IntegerFile& file : kIntegerFiles) {
            value += scale;
            layFile(file.path, to_string(value));
            std::memcpy(reinterpret_cast<char*>(&expected) + file.offset, &value, file.size);
        }
        std::string memInfo = "MemTotal: 99 kB\nMemFree: \t";
        memInfo.append(number).append(" kB\nMemAvailable: 1").append(number).append(" kB\n");
        layFile(kMemInfo, memInfo.append(9000, '\n'));
        std::string loadAvg = number;
        layFile(kLoadAvg, loadAvg.append(".5 0.25 2").append(number).append(".0 1/2 3\n"));
        layFile(kGpuBusy, number + " %\n");
        expected.loadAvg1 = static_cast<float>(scale) + 0.5F;
        expected.loadAvg5 = 0.25F;
        expected.loadAvg15 = std::stof("2" + number);
        expected.memFree = scale;
        expected.memAvailable = static_cast<uint32_t>(std::stoul("1" + number));
        expected.gpuBusy = scale;
        number == "1" ? startSampling() : nextCycle();
        EXPECT_EQ(bytesOf(status()), bytesOf(expected)) << number;
    }
}

TEST_F(SystemStatusTest, FileThatDoesNotScan_KeepsItsLastValueAndIsNotRewound) {
    struct Row {
        const char* name;
        const char* path;
        std::array<const char*, 4> content;  // cycle by cycle; null: left as it is
        std::array<int64_t, 4> expected;
    };
    const Row rows[] = {
            {"a number in the next line", kCpu0, {"5\n", "none\n6\n"}, {5, 5, 6, 6}},
            {"empty, then a number", kCpu0, {"5\n", "", "6\n", "7\n"}, {5, 5, 5, 5}},
            {"blank line, one with a unit", kCpu0, {"5\n", "\n", " \t\n", "-6 C\n"}, {5, 0, 0, -6}},
            {"busy", kGpuBusy, {"37 %\n", "38\n", "39%\n", "65537 %\n"}, {37, 38, 39, 1}},
            {"load becomes text", kLoadAvg, {"3 2 1\n", "n/a\n", nullptr, "4 4\n"}, {3, 3, 3, 3}},
            // Free memory in tens, available in ones: their lines are needed, in order.
            {"no MemAvailable", kMemInfo, {"MemFree: 7 kB\nBuffers: 1 kB\n"}, {70, 0, 0, 0}},
            {"MemFree behind", kMemInfo, {"MemAvailable: 9 kB\nMemFree: 7 kB\n"}, {9, 9, 9, 9}},
    };
    for (const Row& row : rows) {
        for (size_t cycle = 0; cycle < 4; ++cycle) {
            if (row.content[cycle] != nullptr) {
                layFile(row.path, row.content[cycle]);
            }
            cycle == 0 ? startSampling() : nextCycle();
            const SysStatusCollection now = status();
            const int64_t reading = row.path == kCpu0      ? now.cpu0Freq
                                    : row.path == kGpuBusy ? now.gpuBusy
                                    : row.path == kLoadAvg ? static_cast<int64_t>(now.loadAvg1)
                                                           : now.memFree * 10 + now.memAvailable;
            EXPECT_EQ(reading, row.expected[cycle]) << row.name << ", cycle " << cycle;
        }
        stopSampling();
    }
    EXPECT_EQ(countLogged("W ") + countLogged("E "), 0U);
}

TEST_F(SystemStatusTest, ReadThatFails_IsTriedAgain_AndPipesAreNotWaitedFor) {
    host::withholdThermalObserver(true);
    for (const char* path : {kCpu0, kLoadAvg}) {
        std::filesystem::create_directories(onHost(path).parent_path());
        ASSERT_EQ(mkfifo(onHost(path).c_str(), 0600), 0);
    }
    const int pipe = open(onHost(kCpu0).c_str(), O_RDWR | O_CLOEXEC);
    startSampling();
    EXPECT_EQ(bytesOf(status()), bytesOf({})) << "fails: empty, but with a writer";
    ASSERT_EQ(write(pipe, "8\n", 2), 2);
    nextCycle();
    EXPECT_EQ(+status().cpu0Freq, 8);
    stopSampling();
    close(pipe);
}

TEST_F(SystemStatusTest, UsageIsTheProcessShareOfTheMachineSinceItLastGrew) {
    struct Row {
        const char* name;
        uint64_t total;
        uint64_t process;
        unsigned usage;
        const char* command = "(camera)";
    };
    const Row rows[] = {
            {"first cycle", 1000, 100, 0},
            {"idle: stays", 2000, 100, 0},
            {"interval spans the idle cycle", 3000, 350, 12},
            {"machine stands: stays", 3000, 700, 12},
            {"blank in the command's name: times as before", 4000, 2669, 35, "(my camera)"},
            {"backwards: stays", 100, 50, 35},
            {"low 16 bits", 5000, 700 + 700000, 70000 & 0xFFFF},
    };
    layTimes(rows[0].total, rows[0].process);
    startSampling();
    for (const Row& row : rows) {
        layTimes(row.total, row.process, row.command);
        nextCycle();
        EXPECT_EQ(+status().cpuUsage, row.usage) << row.name;
    }
    uint64_t total = rows[6].total;
    uint64_t process = rows[6].process;
    for (size_t counter = 0; counter < 10; ++counter) {  // which alone grows, in all ten cycles
        layTimes(total += 1000, process += 10 * (counter + 1), "(camera)", counter);
        nextCycle();
        EXPECT_EQ(+status().cpuUsage, counter + 1) << "counter " << counter;
    }
}

TEST_F(SystemStatusTest, OneTaskRunsFromStartToStop) {
    for (const IntegerFile& file : kIntegerFiles) {
        layFile(file.path, "1\n");
    }
    for (const char* path : {kMemInfo, kLoadAvg, kGpuBusy}) {
        layFile(path, "1\n");
    }
    layTimes(1000, 100);
    recorder().SnapshotCountAddOne();  // before any session
    const size_t openBefore = openFiles();
    startSampling(0x10003);  // a scene mode has 16 bits
    EXPECT_GE(openFiles(), openBefore + 17) << "every file is kept open";
    for (uint32_t count = 0; count <= UINT16_MAX + 1; ++count) {  // and wraps
        recorder().SnapshotCountAddOne();
    }
    openSession(4);  // silent while it runs
    std::filesystem::remove(onHost(kCpu0));
    layFile(kCpu0, "2\n");
    layTimes(2000, 350);
    nextCycle();
    EXPECT_EQ(told(), "1, 25, 3, 1") << "the file is kept open";
    closeSession();
    openSession(9);
    SysStatusCollection cleared{};
    cleared.sceneMode = 9;
    EXPECT_EQ(bytesOf(status()), bytesOf(cleared));
    nextCycle();
    EXPECT_EQ(told(), "1, 25, 9, 0") << "the task has gone on";
    EXPECT_EQ(host::openCaptureCounters(), 1);
    stopSampling();
    EXPECT_EQ(openFiles(), openBefore);
    closeSession();  // silent: it is stopped
    EXPECT_EQ(host::openCaptureCounters(), 0);
    EXPECT_EQ(told(), "1, 25, 9, 0") << "the snapshot stays";
    startSampling(5);
    EXPECT_EQ(told(), "2, 0, 5, 0") << "files are opened anew";
    for (const char* twice : {"start async task, mSysStatusInited=1, mThreadStatus=0!",
                              "VDR::SystemStatusUnInit, prepare to quit thread task, "
                              "mSysStatusInited=0!"}) {
        EXPECT_EQ(countLogged(twice), 2U) << twice;
    }
    EXPECT_EQ(countLogged("async task still alive, do not create task, mThreadStatus=1!"), 1U);
}

TEST_F(SystemStatusTest, SamplerThatIsWantedAgainWhileItEnds_GoesOn) {
    layFile(kCpu0, "1\n");
    startSampling();
    closeSession();
    host::setFileCallHandler([&, isFirst = true](host::FileCall call) mutable {
        if (call == host::FileCall::kClose && isFirst) {
            isFirst = false;
            openSession(7);
        }
    });
    nextCycle();
    host::setFileCallHandler(nullptr);
    EXPECT_EQ(told(), "1, 0, 7, 0");
    EXPECT_EQ(samplers(), 1U);
}

// Nobody waits for a sampler that sleeps, and no signal of the camera process wakes it.
TEST_F(SystemStatusTest, SamplerOutlivesItsRecorder_AndTakesNoSignal) {
    sigset_t mask;
    sigset_t after;
    sigemptyset(&mask);
    SleepGate gate;
    host::setSleepHandler([&](uint32_t microseconds) {
        EXPECT_EQ(microseconds, 1000000U);
        pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        gate.sleep();
    });
    {
        SystemStatus owner;
        owner.SystemStatusInit(0);
        ASSERT_TRUE(gate.waitForSleep(1));
    }
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    EXPECT_EQ(samplers(), 1U);
    gate.open();
    EXPECT_TRUE(waitForSamplersEnd());
    EXPECT_EQ(host::openCaptureCounters(), 0);
    for (const int signal : {SIGHUP, SIGTERM, SIGALRM, SIGPROF, SIGCHLD, SIGUSR1, SIGUSR2}) {
        EXPECT_EQ(sigismember(&mask, signal), 1) << signal;
        EXPECT_EQ(sigismember(&after, signal), 0) << signal;
    }
}

}  // namespace
}  // namespace zk::test
