#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/host/ClockControl.h"
#include "platform/host/DeviceControl.h"
#include "platform/host/FileControl.h"
#include "sysstatus/SysStatusCollection.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using std::to_string;

struct IntegerFile {
    const char* path;
    int64_t (*read)(const SysStatusCollection&);
};

#define VDR_READS(field) \
    [](const SysStatusCollection& s) -> int64_t { return static_cast<int64_t>(s.field); }
constexpr std::array<IntegerFile, 12> kIntegerFiles = {{
        {"/sys/devices/system/cpu/cpu0/cpufreq/scaling_cur_freq", VDR_READS(cpu0Freq)},
        {"/sys/devices/system/cpu/cpu4/cpufreq/scaling_cur_freq", VDR_READS(cpu4Freq)},
        {"/sys/devices/system/cpu/cpu7/cpufreq/scaling_cur_freq", VDR_READS(cpu7Freq)},
        {"/sys/class/devfreq/3d00000.qcom,kgsl-3d0/cur_freq", VDR_READS(gpuFreq)},
        {"/sys/class/ko_thermal/temp/shell_front/temp", VDR_READS(shellFrontTemp)},
        {"/sys/class/ko_thermal/temp/shell_back/temp", VDR_READS(shellBackTemp)},
        {"/sys/class/ko_thermal/temp/shell_frame/temp", VDR_READS(shellFrameTemp)},
        {"/sys/class/ko_thermal/temp/ambient", VDR_READS(ambientTemp)},
        {"/sys/class/backlight/panel1-backlight/brightness", VDR_READS(panel1Brightness)},
        {"/sys/class/backlight/panel0-backlight/brightness", VDR_READS(panel0Brightness)},
        {"/sys/class/ko_thermal/temp/fold_state", VDR_READS(foldState)},
        {"/sys/class/power_supply/usb/online", VDR_READS(usbOnline)},
}};
constexpr size_t kFirstByte = 10;  // from here on only the low 8 bits are kept
constexpr char kMemInfo[] = "/proc/meminfo";
constexpr char kLoadAvg[] = "/proc/loadavg";
constexpr char kStat[] = "/proc/stat";
constexpr char kGpuBusy[] = "/sys/class/kgsl/kgsl-3d0/gpu_busy_percentage";

constexpr char kStarted[] =
        "D SystemStatusInit<LINE>: VDR::systemStatusInit, start async task, mSysStatusInited=1, "
        "mThreadStatus=0!";
constexpr char kStopping[] =
        "D SystemStatusUnInit<LINE>: VDR::SystemStatusUnInit, prepare to quit thread task, "
        "mSysStatusInited=0!";
constexpr char kEnded[] =
        "D SystemStatusProcess<LINE>: VDR::systemStatusProcess, quit async task, "
        "mSysStatusInited=0!";

std::string bytesOf(const SysStatusCollection& snapshot) {
    return {reinterpret_cast<const char*>(&snapshot), sizeof(snapshot)};
}

bool eventually(const std::function<bool()>& isSo) {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!isSo()) {
        if (std::chrono::steady_clock::now() > giveUp) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
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
        const size_t ended = countLogged("quit async task");
        closeSession();
        mSleep.wakeSleeper();
        ASSERT_TRUE(eventually([&] { return countLogged("quit async task") > ended; }));
    }

    // Its fields are unaligned: compare copies, made by a plus sign, not references.
    SysStatusCollection status() {
        SysStatusCollection snapshot;
        std::memset(&snapshot, 0xEE, sizeof(snapshot));
        recorder().GetSystemStatus(snapshot);
        return snapshot;
    }

    // `total` clock ticks of all processors, of which this process has had `process`; every
    // counter has a share.
    void layTimes(uint64_t total, uint64_t process, const char* command = "(camera)") const {
        std::string processors = "cpu ";
        for (uint64_t i = 1; i < 10; ++i, total -= i) {
            processors += " " + to_string(i + 1);
        }
        layFile(kStat, processors + " " + to_string(total - 9) + "\ncpu0 1 2 3\n" +
                               std::string(9000, 'x'));
        layFile("/proc/" + to_string(getpid()) + "/stat",
                "4711 " + std::string(command) + " S 1 2 3 -1 -1 4194560 90000 80000 7 6 " +
                        to_string(process - 6) + " 1 2 3 20 0 99 0 555555 1000000\n");
    }

private:
    int mCycles = 0;
};

TEST_F(SystemStatusTest, EveryCycleReadsEveryFileAfresh) {
    host::setThermalStateWord(0xFFFFF5F7);  // level 5, escape state 1, all other bits set
    host::setCaptureMemory(4000000000U);
    // One digit and another, then longer and shorter content in the same file.
    for (const int scale : {0, 1, 30000, -2, 3}) {
        const std::string row = "scale " + to_string(scale);
        for (size_t i = 0; i < kIntegerFiles.size(); ++i) {
            layFile(kIntegerFiles[i].path, to_string(static_cast<int>(i % 3 + 1) * scale));
        }
        const auto positive = static_cast<uint32_t>(scale + 5);
        layFile(kMemInfo, "MemTotal: 99 kB\nMemFree: \t" + to_string(positive) +
                                  " kB\nMemAvailable: " + to_string(positive * 2) + " kB\n" +
                                  std::string(9000, '\n'));
        layFile(kLoadAvg, to_string(positive) + ".5 0.25 " + to_string(scale) + ".0 1/2 3\n");
        layFile(kGpuBusy, to_string(positive) + " %\n");
        scale == 0 ? startSampling() : nextCycle();
        const SysStatusCollection now = status();
        for (size_t i = 0; i < kIntegerFiles.size(); ++i) {
            const int64_t value = static_cast<int>(i % 3 + 1) * scale;
            EXPECT_EQ(kIntegerFiles[i].read(now), i < kFirstByte ? value : value & 0xFF)
                    << row << " " << kIntegerFiles[i].path;
        }
        EXPECT_EQ(+now.memFree, positive) << row;
        EXPECT_EQ(+now.memAvailable, positive * 2) << row;
        EXPECT_EQ(+now.loadAvg1, static_cast<float>(positive) + 0.5F) << row;
        EXPECT_EQ(+now.loadAvg5, 0.25F) << row;
        EXPECT_EQ(+now.loadAvg15, static_cast<float>(scale)) << row;
        EXPECT_EQ(+now.gpuBusy, positive) << row;
        EXPECT_EQ(+now.usedMem, 4000000000U) << row;
        EXPECT_EQ(+now.thermalLevel, 5) << row;
        EXPECT_EQ(+now.thermalEscapeState, 1) << row;
    }
    EXPECT_EQ(mSleep.lastSleepMicroseconds(), 1000000U);
}

TEST_F(SystemStatusTest, FileThatFailsToScanOnce_KeepsItsLastValueForGood) {
    struct Row {
        const char* name;
        const char* path;
        int64_t (*read)(const SysStatusCollection&);
        std::array<const char*, 4> content;  // cycle by cycle
        std::array<int64_t, 4> expected;
    };
    const auto row = [](const char* name, size_t file, std::array<const char*, 4> content,
                        std::array<int64_t, 4> expected) {
        return Row{name, kIntegerFiles[file].path, kIntegerFiles[file].read, content, expected};
    };
    const Row rows[] = {
            row("text, then a number", 0, {"5\n", "none\n", "6\n", "7\n"}, {5, 5, 5, 5}),
            row("text, then a longer number", 1, {"5\n", "none\n", "1804800\n", "9\n"},
                {5, 5, 5, 5}),
            row("text from the start", 2, {"none\n", "6\n", "7\n", "8\n"}, {0, 0, 0, 0}),
            row("empty, then a number", 3, {"5\n", "", "6\n", "7\n"}, {5, 5, 5, 5}),
            row("blank line", 4, {"5\n", "\n", " \t\n", "6\n"}, {5, 0, 0, 6}),
            row("number with a unit", 5, {"41 C\n", "-42C\n", "+43", " 44\n"}, {41, -42, 43, 44}),
            row("only the first line counts", 6, {"1\n2\n", "\n3\n", "4\nx\n", "5\n"},
                {1, 0, 4, 5}),
            {"busy without a percent sign",
             kGpuBusy,
             VDR_READS(gpuBusy),
             {"37 %\n", "38\n", "39%\n", "65537 %\n"},
             {37, 38, 39, 1}},
            {"load becomes text",
             kLoadAvg,
             VDR_READS(loadAvg1),
             {"3.0 2.0 1.0\n", "n/a\n", "4000.0 4000.0 4000.0\n", "5.0 5.0 5.0\n"},
             {3, 3, 3, 3}},
    };
    for (size_t cycle = 0; cycle < 4; ++cycle) {
        for (const Row& r : rows) {
            layFile(r.path, r.content[cycle]);
        }
        cycle == 0 ? startSampling() : nextCycle();
        for (const Row& r : rows) {
            EXPECT_EQ(r.read(status()), r.expected[cycle]) << r.name << ", cycle " << cycle;
        }
    }
    EXPECT_EQ(countLogged("", 5) + countLogged("", 6), 0U);
}

TEST_F(SystemStatusTest, MemoryNeedsAllItsLinesInOrder) {
    struct Row {
        const char* name;
        const char* content;
        std::array<uint32_t, 3> free;
        std::array<uint32_t, 3> available;
    };
    const Row rows[] = {
            {"no MemAvailable", "MemFree: 7 kB\nBuffers: 1 kB\n", {7, 0, 0}, {0, 0, 0}},
            {"no MemFree", "MemAvailable: 9 kB\n", {0, 0, 0}, {9, 9, 9}},
            {"MemFree behind", "MemAvailable: 9 kB\nMemFree: 7 kB\n", {0, 0, 0}, {9, 9, 9}},
            {"no unit", "MemFree: 7\nMemAvailable:9", {7, 7, 7}, {9, 9, 9}},
            {"empty", "", {0, 0, 0}, {0, 0, 0}},
    };
    host::setCaptureMemory(3);
    for (const Row& row : rows) {
        layFile(kMemInfo, row.content);
        startSampling();
        for (size_t cycle = 0; cycle < 3; ++cycle) {
            EXPECT_EQ(+status().memFree, row.free[cycle]) << row.name << " " << cycle;
            EXPECT_EQ(+status().memAvailable, row.available[cycle]) << row.name;
            EXPECT_EQ(+status().usedMem, 3U) << row.name;
            nextCycle();
        }
        stopSampling();
    }
}

TEST_F(SystemStatusTest, UsageIsTheProcessShareOfTheMachineSinceItLastGrew) {
    struct Row {
        const char* name;
        uint64_t total;
        uint64_t process;
        unsigned usage;
    };
    const Row rows[] = {
            {"first cycle", 1000, 100, 0},
            {"a quarter", 2000, 350, 25},
            {"idle: stays", 3000, 350, 25},
            {"interval spans the idle cycle", 4000, 650, 15},
            {"machine stands: stays", 4000, 700, 15},
            {"truncates", 5000, 669, 1},
            {"backwards: stays", 100, 50, 1},
            {"low 16 bits", 6000, 669 + 700000, 70000 & 0xFFFF},
    };
    layTimes(rows[0].total, rows[0].process);
    startSampling();
    for (const Row& row : rows) {
        layTimes(row.total, row.process);
        nextCycle();
        EXPECT_EQ(+status().cpuUsage, row.usage) << row.name;
    }
}

TEST_F(SystemStatusTest, BlankInTheCommandName_LeavesUsageAtZero) {
    layTimes(1000, 100, "(my camera)");
    startSampling();
    layTimes(2000, 900, "(my camera)");
    nextCycle();
    EXPECT_EQ(+status().cpuUsage, 0);
}

TEST_F(SystemStatusTest, DeviceWithoutFilesOrObserver_PublishesZerosAndLogsNothing) {
    host::withholdThermalObserver(true);
    host::setThermalStateWord(UINT32_MAX);
    host::setCaptureMemory(5);
    EXPECT_EQ(bytesOf(status()), bytesOf({})) << "before any session";
    startSampling(70000);
    nextCycle();
    SysStatusCollection expected{};
    expected.sceneMode = 4464;  // the low 16 bits
    EXPECT_EQ(bytesOf(status()), bytesOf(expected));
    EXPECT_EQ(countLogged("", 5) + countLogged("", 6), 0U);
}

TEST_F(SystemStatusTest, WithoutARootFolder_ThisMachineIsSampled) {
    host::setRootFolder("");
    startSampling();
    EXPECT_GT(+status().memAvailable, 0U);
    EXPECT_GT(+status().memFree, 0U);
    EXPECT_LE(+status().cpuUsage, 100);
}

TEST_F(SystemStatusTest, OneTaskRunsFromStartToStop) {
    layFile(kIntegerFiles[0].path, "1\n");
    startSampling(3);
    recorder().SnapshotCountAddOne();
    openSession(4);  // silent while it runs
    EXPECT_EQ(+status().sceneMode, 3);
    EXPECT_EQ(+status().snapshotCount, 1);
    std::filesystem::remove(onHost(kIntegerFiles[0].path));
    layFile(kIntegerFiles[0].path, "2\n");
    nextCycle();
    EXPECT_EQ(+status().cpu0Freq, 1) << "the file is kept open";
    EXPECT_EQ(host::openCaptureCounters(), 1);

    stopSampling();
    closeSession();  // silent: it is stopped
    EXPECT_EQ(host::openCaptureCounters(), 0);
    EXPECT_EQ(+status().cpu0Freq, 1) << "the snapshot stays";
    EXPECT_EQ(+status().snapshotCount, 1);

    startSampling(5);
    EXPECT_EQ(+status().cpu0Freq, 2) << "a new task opens its files anew";
    EXPECT_EQ(+status().sceneMode, 5);
    EXPECT_EQ(+status().snapshotCount, 0);
    EXPECT_EQ(transcript("ystemStatus"),
              (std::vector<std::string>{kStarted, kStopping, kEnded, kStarted}));
}

TEST_F(SystemStatusTest, RestartInPlace_ClearsTheSnapshotAndKeepsTheTask) {
    layTimes(1000, 100);
    startSampling();
    layTimes(2000, 350);
    nextCycle();
    ASSERT_EQ(+status().cpuUsage, 25);
    recorder().SnapshotCountAddOne();
    closeSession();
    openSession(9);
    EXPECT_EQ(transcript("ystemStatus"),
              (std::vector<std::string>{
                      kStarted, kStopping,
                      "D SystemStatusInit<LINE>: VDR::systemStatusInit, async task still alive, "
                      "do not create task, mThreadStatus=1!"}));
    SysStatusCollection cleared{};
    cleared.sceneMode = 9;
    EXPECT_EQ(bytesOf(status()), bytesOf(cleared));
    nextCycle();
    EXPECT_EQ(+status().cpuUsage, 25) << "totals and usage go on";
}

TEST_F(SystemStatusTest, VideoTimeAndSnapshotCountAreTheCallersOwn) {
    for (int i = 0; i < 65536 + 3; ++i) {  // wraps, open or not
        recorder().SnapshotCountAddOne();
    }
    EXPECT_EQ(+status().snapshotCount, 3);
    startSampling();
    EXPECT_EQ(+status().snapshotCount, 0);
    recorder().SnapshotCountAddOne();
    bool isWritable = false;
    recorder().markWritable(1, isWritable);
    ASSERT_TRUE(isWritable);
    host::advanceWallClock(2900000);
    recorder().markUnWritable(2);
    nextCycle();
    EXPECT_EQ(+status().videoRecordSeconds, 2U);
    EXPECT_EQ(+status().snapshotCount, 1);
}

TEST_F(SystemStatusTest, DestructionOfAnOpenRecorder_EndsTheSampler) {
    mSleep.open();
    openSession();
    destroyRecorder();
    EXPECT_EQ(host::openCaptureCounters(), 0);
    EXPECT_EQ(countLogged("quit async task"), 1U);
}

TEST_F(SystemStatusTest, EveryRoundOfTwoAlternatingThreadsSamplesAgain) {
    mSleep.open();
    layFile(kLoadAvg, "1.0 1.0 1.0\n");
    recorder();
    std::mutex mutex;
    std::condition_variable turned;
    int round = 0;
    const auto play = [&](int player) {
        std::unique_lock lock(mutex);
        for (int mine = player; mine < 1000; mine += 2) {
            turned.wait(lock, [&] { return round == mine; });
            openSession(mine);
            EXPECT_TRUE(eventually([&] { return status().loadAvg1 > 0; })) << "round " << mine;
            EXPECT_EQ(host::openCaptureCounters(), 1);
            closeSession();
            ++round;
            turned.notify_one();
        }
    };
    std::thread other(play, 1);
    play(0);
    other.join();
}

TEST_F(SystemStatusTest, StartsAndStopsFromTwoThreadsAtOnce_NeverLoseTheSampler) {
    mSleep.open();
    layFile(kLoadAvg, "1.0 1.0 1.0\n");
    recorder();
    std::atomic<bool> isOver{false};
    int mostTasks = 0;
    std::thread watch([&] {
        for (; !isOver; std::this_thread::yield()) {
            mostTasks = std::max(mostTasks, host::openCaptureCounters());
        }
    });
    for (int i = 0; i < 10; ++i) {
        const auto play = [this] {
            for (int round = 0; round < 100; ++round) {
                openSession();
                closeSession();
            }
        };
        std::thread other(play);
        play();
        other.join();
        openSession();
        EXPECT_TRUE(eventually([&] { return status().loadAvg1 > 0; })) << i;
        closeSession();
    }
    isOver = true;
    watch.join();
    EXPECT_EQ(mostTasks, 1);
}

}  // namespace
}  // namespace zk::test
