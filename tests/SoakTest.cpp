#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <set>
#include <sstream>
#include <thread>

#include "platform/CameraMemoryItemInfo.h"
#include "platform/host/ClockControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "records/VDRData1.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

constexpr uint32_t kFramesPerSession = 4000;
constexpr uint32_t kThreads = 4;
constexpr uint32_t kPipelineDepth = 16;  // frames in the pipeline; they leave it together
constexpr uint32_t kFramesPerDrop = 500;
constexpr uint32_t kAhead = 100;
constexpr uint32_t kFramesPerPhoto = 40;
constexpr uint32_t kFramesPerSlowAllocation = 25;
constexpr size_t kAllocationAt = offsetof(vdr1::VDRData1, memoryAllocTimeoutInfo);
constexpr uint64_t kDay = 86400000000;  // microseconds
// Per session. A loss whose account another follows is never settled, so its account stays.
constexpr size_t kBytesOfAccounts = size_t{8} * 512;
// What the allocator holds back for each thread counts as in use.
constexpr size_t kBytesOfThreads = 32768;

// A short run by default.
unsigned sessionCount() {
    const char* text = std::getenv("VDR_SOAK_SESSIONS");
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : 4;
}

size_t bytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Camera sessions, one a day, of four pipeline threads that push frames through while drops are
// announced a hundred frames ahead, live photos taken and slow allocations recorded.
class SoakTest : public RecorderTest {
protected:
    uint32_t lastFrame() const { return mFirst + kFramesPerSession - 1; }

    // One pipeline thread: every fourth frame.
    void pushFrames(uint32_t thread) {
        for (uint32_t i = thread; i < kFramesPerSession; i += kThreads) {
            if (i % kPipelineDepth == thread) {
                meet(mArrivals, kThreads);
            }
            pushFrame(mFirst + i);
        }
    }

    void pushFrame(uint32_t number) {
        const bool isPhoto = number % kFramesPerPhoto == 0;
        Frame current = frame(number).stamp();
        if (number % kFramesPerSlowAllocation == 0) {
            recorder().SetMemAllocTimeOutInfo({"soak", 6000, 1, 4096});
            MemoryAllocTimeoutInfo slow{};
            recorder().GetMemAllocTimeOutInfo(slow);
            current.write(tag::memoryAllocTimeoutInfo, slow);
        }
        if (isPhoto) {
            recorder().CacheDataForLivePhoto(number);
        }
        current.done();
        if (isPhoto) {
            recorder().DoneDataForLivePhoto(number);
        }
        if (number % kFramesPerDrop == 0) {
            announceLoss(number + kAhead, mToday + number);
        }
        recorder().VDRReport(number);
    }

    void playSession() {
        host::setWallClock(mToday);
        mArrivals = 0;
        openSession();
        std::vector<std::thread> pipeline;
        for (uint32_t i = 0; i < kThreads; ++i) {
            pipeline.emplace_back([this, i] { pushFrames(i); });
        }
        for (std::thread& thread : pipeline) {
            thread.join();
            mSleep.wakeSleeper();
        }
        checkRecords(takeLivePhoto(0, UINT32_MAX - 1,
                                   kFramesPerSession / kFramesPerPhoto * kFrameRecordSize),
                     kFramesPerPhoto);
        host::waitForThreadPool();
        closeSession();
        ASSERT_EQ(files(kBinFolder).size(), 1U);
        checkRecords(files(kBinFolder).begin()->second, 1);
    }

    // Every frame of the session, or every so many, each once and whole.
    void checkRecords(const std::string& records, uint32_t step) {
        std::set<uint32_t> frames;
        ASSERT_EQ(records.size(), kFramesPerSession / step * kFrameRecordSize);
        for (size_t at = 0; at < records.size(); at += kFrameRecordSize) {
            const uint32_t number = checkStamps(&records[at]);
            EXPECT_TRUE(number >= mFirst && number <= lastFrame() && number % step == 0) << number;
            EXPECT_TRUE(frames.insert(number).second) << number;
            EXPECT_STREQ(&records[at + kAllocationAt],
                         number % kFramesPerSlowAllocation == 0 ? "soak" : "");
        }
    }

    // A file for each loss. Frames are completed out of order, but only among those that are in the
    // pipeline together.
    void checkLosses() {
        const std::map<std::string, std::string> written = files(kLossFolder);
        EXPECT_EQ(written.size(), kFramesPerSession / kFramesPerDrop);
        for (const auto& [name, content] : written) {
            SCOPED_TRACE(name);
            const auto lost = static_cast<uint32_t>(std::stoul(name.substr(name.rfind('_') + 1)));
            EXPECT_TRUE(lost % kFramesPerDrop == kAhead && lost > mFirst);
            EXPECT_NE(settlement(mToday + lost - kAhead), "limited");
            std::set<uint32_t> frames;
            std::istringstream lines(content);
            for (std::string line; std::getline(lines, line);) {
                EXPECT_TRUE(frames.insert(static_cast<uint32_t>(std::stoul(line))).second) << line;
            }
            ASSERT_GE(frames.size(), 30 - kPipelineDepth);
            EXPECT_NEAR(*frames.rbegin(), std::min(lost, lastFrame()), 2 * kPipelineDepth);
        }
    }

    void turnTheDay() {
        removeDumps();
        host::forgetPromises();
        host::MonitoringService::instance().reset();
        forgetLog();
        mToday += kDay;
        mFirst += kFramesPerSession;
    }

    std::atomic<uint32_t> mArrivals{0};
    uint64_t mToday = kNow;
    uint32_t mFirst = 1;
};

TEST_F(SoakTest, SessionAfterSession_LosesNothingAndKeepsNoMemory) {
    switchRecordingOn();
    size_t afterFirst = 0;
    const unsigned sessions = sessionCount();
    for (unsigned session = 1; session <= sessions && !HasFailure(); ++session) {
        SCOPED_TRACE("session " + std::to_string(session));
        playSession();
        checkLosses();
        EXPECT_EQ(transcript("E "), Lines{});
        turnTheDay();
        if (session == 1) {
            afterFirst = bytesInUse();
        }
    }
    RecordProperty("bytesAfterFirst", std::to_string(afterFirst));
    RecordProperty("bytesAfterLast", std::to_string(bytesInUse()));
    EXPECT_LT(bytesInUse(), afterFirst + sessions * kBytesOfAccounts + kBytesOfThreads);
}

}  // namespace
}  // namespace zk::test
