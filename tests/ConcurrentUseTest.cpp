#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <set>
#include <shared_mutex>
#include <thread>

#include "platform/CameraMemoryItemInfo.h"
#include "platform/host/ClockControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/MonitoringService.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

constexpr uint32_t kBlocks = 80;

void runTogether(uint32_t threads, const std::function<void(uint32_t)>& body) {
    std::vector<std::thread> running;
    for (uint32_t i = 0; i < threads; ++i) {
        running.emplace_back(body, i);
    }
    for (std::thread& thread : running) {
        thread.join();
    }
}

class ConcurrentUseTest : public RecorderTest {
protected:
    // Held by those who write fields, and alone by who closes the session: a record must not be
    // written any more when the session ends. Everything else goes on meanwhile.
    std::shared_mutex mWriting;

    void pushFrame(uint32_t number) {
        recorder().VDRProcessing(number);
        {
            const std::shared_lock guard(mWriting);
            frame(number).stamp();
            bool writable = false;
            recorder().markWritable(number, writable);
            recorder().markUnWritable(number);
        }
        recorder().CacheDataForLivePhoto(number);
        recorder().WriteMaintainForLivePhoto(number, tag::frameNumber, &number);
        recorder().DoneDataForLivePhoto(number);
        recorder().VDRDone(number);
        recorder().VDRReport(number);
    }

    void callTheRest(uint32_t number) {
        bool answer = false;
        SysStatusCollection status{};
        MemoryAllocTimeoutInfo slow{};
        unsigned long chiFrame = number;
        uint8_t tag = 0;
        recorder().getMP4Writable(&answer);
        recorder().checkPreviewAndVideoStatus(number, &answer);
        recorder().GetSystemStatus(status);
        recorder().SnapshotCountAddOne();
        recorder().SetChiFenceMap(this, chiFrame, tag);
        recorder().GetChiFenceMap(this, chiFrame, tag);
        recorder().SetChiFrameMap(number, number);
        recorder().GetChiFrameMap(number, number);
        recorder().SetMemAllocTimeOutInfo({"buffer", 6000, 1, 4096});
        recorder().GetMemAllocTimeOutInfo(slow);
    }
};

TEST_F(ConcurrentUseTest, AllOperationsAtOnce_LeaveEveryRecordWholeAndLoseNoBlock) {
    constexpr uint32_t kPipelines = 4;
    switchRecordingOn();
    openSession();
    std::atomic<uint32_t> pipelinesLeft{kPipelines};
    runTogether(kPipelines + 2, [&](uint32_t thread) {
        if (thread < kPipelines) {
            for (uint32_t number = 1; number <= 300; ++number) {
                pushFrame(thread * 1000 + number);
                callTheRest(number);
            }
            --pipelinesLeft;
        } else if (thread == kPipelines) {
            int32_t scene = 0;
            do {
                mSleep.wakeSleeper();
                openSession(scene++ % 3 - 1);
                std::this_thread::yield();
                const std::lock_guard guard(mWriting);
                closeSession();
                host::advanceWallClock(500000);
            } while (pipelinesLeft > 0);
        } else {
            uint64_t loss = 11;
            do {
                announceLoss(loss, kNow + loss);
                ++loss;
                recorder().RegisterCamDataCb([](uint32_t, const std::string&) {});
                takeLivePhoto(0, 9999, 180 * kFrameRecordSize);
            } while (pipelinesLeft > 0);
        }
    });
    closeSession();
    std::set<uint32_t> frames;
    for (const auto& [name, content] : files(kBinFolder)) {
        for (size_t at = 0; at < content.size(); at += kFrameRecordSize) {
            EXPECT_TRUE(frames.insert(checkStamps(&content.at(at))).second) << "only once";
        }
    }
    EXPECT_FALSE(frames.empty());
    for (uint32_t number = 1; number <= kBlocks + 1; ++number) {
        frame(number).done();
    }
    EXPECT_EQ(doneCount(), kBlocks);
}

TEST_F(ConcurrentUseTest, RecordingStartedAndEndedByAllThreadsAtOnce_StartsAndEndsOnce) {
    constexpr uint32_t kThreads = 4;
    constexpr size_t kRounds = 500;
    recorder();
    std::atomic<size_t> starts{0};
    std::atomic<uint32_t> arrivals{0};
    runTogether(kThreads, [&](uint32_t thread) {
        for (size_t round = 0; round < kRounds; ++round) {
            bool isMine = false;
            meet(arrivals, kThreads);
            recorder().markWritable(thread, isMine);
            starts += isMine ? 1 : 0;
            meet(arrivals, kThreads);
            recorder().markUnWritable(100);
        }
    });
    EXPECT_EQ(starts, kRounds);
    EXPECT_EQ(host::MonitoringService::instance().sentEvents().size(), kRounds);
}

// While the disk keeps one report waiting, nobody else waits for it: neither those who fill and
// complete frames nor who opens a session.
TEST_F(ConcurrentUseTest, SlowDisk_KeepsOnlyFurtherReportsWaiting) {
    switchRecordingOn();
    openSession();
    frame(1).done();
    frame(2).done();
    std::promise<void> atDisk;
    std::promise<void> diskIsDone;
    std::atomic<bool> isWaiting{false};
    host::setFileCallHandler([&, isFirst = std::make_shared<std::atomic<bool>>(true)](auto call) {
        if (call == host::FileCall::kWrite && isFirst->exchange(false)) {
            isWaiting = true;
            atDisk.set_value();
            diskIsDone.get_future().wait_for(std::chrono::seconds(10));
            isWaiting = false;
        }
    });
    const auto reportTwo = [this](uint32_t /*thread*/) {
        recorder().VDRReport(0);
        recorder().VDRReport(0);
    };
    std::thread first(reportTwo, 0);
    atDisk.get_future().wait();
    for (uint32_t number = 3; number <= kBlocks; ++number) {
        frame(number).stamp().done();
    }
    recorder().CacheDataForLivePhoto(kBlocks);
    EXPECT_EQ(doneCount(), kBlocks - 2);
    EXPECT_EQ(frameNumberOf(oldestDone().data()), 3U);
    openSession();
    EXPECT_TRUE(isWaiting) << "somebody has waited for the disk";
    std::thread second(reportTwo, 1);
    diskIsDone.set_value();
    first.join();
    second.join();
    closeSession();
    host::setFileCallHandler(nullptr);
    EXPECT_EQ(dumps(kBinFolder), "221320: 1-4");
}

}  // namespace
}  // namespace zk::test
