#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <numeric>
#include <shared_mutex>
#include <thread>

#include "frameloss/FrameDropEvents.h"
#include "platform/CameraMemoryItemInfo.h"
#include "platform/host/ClockControl.h"
#include "platform/host/MonitoringService.h"
#include "records/VDRData1.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

constexpr uint32_t kBlocks = 80;
constexpr uint32_t kElements = 20;  // written per list

// Lets threads go on together, again and again; short of a kernel object, so that they really do.
class StartingLine {
public:
    explicit StartingLine(int runners) : mRunners(runners) {}
    void wait() {
        const int round = mRound;
        if (++mWaiting == mRunners) {
            mWaiting = 0;
            ++mRound;
        }
        while (mRound == round) {
            std::this_thread::yield();
        }
    }

private:
    const int mRunners;
    std::atomic<int> mWaiting{0};
    std::atomic<int> mRound{0};
};

void runTogether(int threads, const std::function<void(int)>& body) {
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back(body, i);
    }
    for (std::thread& thread : running) {
        thread.join();
    }
}

class ConcurrentUseTest : public RecorderTest {
protected:
    std::vector<std::string> recordsInFiles() const {
        std::vector<std::string> records;
        for (const std::string& name : binFiles()) {
            const std::string content = readBinFile(name);
            EXPECT_EQ(content.size() % kFrameRecordSize, 0U);
            for (size_t at = 0; at + kFrameRecordSize <= content.size(); at += kFrameRecordSize) {
                records.push_back(content.substr(at, kFrameRecordSize));
            }
        }
        return records;
    }

    // What pipelineFrame wrote, and nothing else but the recording's marks.
    static void expectWhole(const std::string& record) {
        vdr1::VDRData1 data;
        std::memcpy(&data, record.data(), sizeof(data));
        const uint64_t number = data.frameNumber;
        EXPECT_TRUE(data.setGmeNcsDep == number && data.getEisV3NcsDepMag == number);
        EXPECT_EQ(data.nodeInfoCount, kElements);
        for (uint32_t i = 0; i < kElements; ++i) {
            const uint32_t id = data.nodeInfo[i].ids[0];
            EXPECT_EQ(id, number * 100 + i);
        }
        EXPECT_TRUE(std::all_of(record.begin() + sizeof(data), record.end(),
                                [](char byte) { return byte == 0; }));
    }

    // Held by those who write fields, and alone by who closes the session: a record must not be
    // written any more when the session ends. Everything else goes on meanwhile.
    std::shared_mutex mWriting;

    void writeFields(uint32_t number) {
        const std::shared_lock guard(mWriting);
        const uint64_t stamp = number;
        const uint32_t tags[] = {0, 19, 33};
        const void* const datas[] = {&number, &stamp, &stamp};
        recorder().writeMaintains(number, tags, datas, 3);
        for (uint32_t i = 0; i < kElements; ++i) {
            vdr1::NodeInfo node{};
            node.ids[0] = number * 100 + i;
            recorder().writeMaintain(number, 18, &node);
        }
        bool writable = false;
        recorder().markWritable(number, writable);
        if (!writable) {
            recorder().markUnWritable(number);
        }
    }

    void pipelineFrame(uint32_t number) {
        recorder().VDRProcessing(number);
        writeFields(number);
        recorder().CacheDataForLivePhoto(number);
        const float zoom = 1.0F;
        recorder().WriteMaintainForLivePhoto(number, 5, &zoom);
        recorder().DoneDataForLivePhoto(number);
        recorder().VDRDone(number);
        recorder().VDRReport(number);
    }

    void askEverything(uint32_t number) {
        uint32_t count = 0;
        void* record = nullptr;
        bool answer = false;
        recorder().VDRDoneCount(number, &count);
        recorder().getVDRInfo(number, &record);
        recorder().getMP4Writable(&answer);
        recorder().getVDRStatus(&answer);
        recorder().checkPreviewAndVideoStatus(number, &answer);
        SysStatusCollection status{};
        recorder().GetSystemStatus(status);
        recorder().SnapshotCountAddOne();
    }

    void useRegistries(uint32_t number) {
        unsigned long chiFrame = 0;
        uint8_t tag = 0;
        recorder().SetChiFenceMap(&mWriting, number, 1);
        recorder().GetChiFenceMap(&mWriting, chiFrame, tag);
        recorder().SetChiFrameMap(number, number);
        recorder().GetChiFrameMap(number, number);
        recorder().SetMemAllocTimeOutInfo({"buffer", 6000, 1, 4096});
        MemoryAllocTimeoutInfo slow{};
        recorder().GetMemAllocTimeOutInfo(slow);
    }

    void postLivePhotos(int fd) {
        recorder().RegisterCamDataCb([](uint32_t, const std::string&) {});
        recorder().PostDataForLivePhoto(
                fd, R"({"id":"1","startFrame":0,"endFrame":4000000000,"bufferSize":737280})");
    }
};

TEST_F(ConcurrentUseTest, AllOperationsAtOnce_LeaveEveryRecordWhole) {
    constexpr int kPipelines = 3;
    constexpr uint32_t kFrames = 300;  // of each
    switchRecordingOn();
    openSession();
    const int fd = memfd_create("live-photo", 0);
    ASSERT_EQ(ftruncate(fd, 180 * kFrameRecordSize), 0);
    std::atomic<int> pipelinesLeft{kPipelines};
    runTogether(kPipelines + 2, [&](int thread) {
        if (thread < kPipelines) {
            const uint32_t first = static_cast<uint32_t>(thread) * 10000 + 1;
            for (uint32_t number = first; number < first + kFrames; ++number) {
                pipelineFrame(number);
                askEverything(number);
                useRegistries(number);
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
                postLivePhotos(fd);
            } while (pipelinesLeft > 0);
        }
    });
    close(fd);
    closeSession();

    std::vector<std::string> records = recordsInFiles();
    EXPECT_FALSE(records.empty());
    std::for_each(records.begin(), records.end(), expectWhole);
    std::sort(records.begin(), records.end());
    EXPECT_TRUE(std::adjacent_find(records.begin(), records.end()) == records.end());
    for (uint32_t number = 1; number <= kBlocks + 1; ++number) {
        frame(number).done();
    }
    uint32_t count = 0;
    recorder().VDRDoneCount(0, &count);
    EXPECT_EQ(count, kBlocks);
}

TEST_F(ConcurrentUseTest, RecordingStartedAndEndedByAllThreadsAtOnce_StartsAndEndsOnce) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 1000;
    recorder();
    StartingLine line(kThreads);
    std::atomic<int> starts{0};
    runTogether(kThreads, [&](int thread) {
        for (int round = 0; round < kRounds; ++round) {
            bool isMine = false;
            line.wait();
            recorder().markWritable(static_cast<uint32_t>(thread), isMine);
            starts += isMine ? 1 : 0;
            line.wait();
            recorder().markUnWritable(100);
        }
    });
    EXPECT_EQ(starts, kRounds);
    EXPECT_EQ(host::MonitoringService::instance().sentEvents().size(), size_t{kRounds});
}

TEST_F(ConcurrentUseTest, ReportsThatRunIntoTheClose_LoseAndRepeatNoRecord) {
    constexpr uint32_t kFrames = 60;
    constexpr int kRounds = 30;
    switchRecordingOn();
    openSession();
    for (int round = 0; round < kRounds; ++round) {
        for (uint32_t number = 1; number <= kFrames; ++number) {
            frame(number).done();
        }
        StartingLine line(2);
        std::atomic<uint32_t> reported{0};
        runTogether(2, [&](int thread) {
            line.wait();
            if (thread == 0) {
                for (; reported < kFrames; ++reported) {
                    recorder().VDRReport(0);
                }
            } else {
                // Somewhere in the middle, a different place each round.
                while (reported < static_cast<uint32_t>(2 * round)) {
                }
                closeSession();
            }
        });
        closeSession();  // appends what a late report has staged

        std::vector<uint32_t> numbers;
        for (const std::string& record : recordsInFiles()) {
            numbers.push_back(frameNumberOf(record.data()));
        }
        std::sort(numbers.begin(), numbers.end());
        std::vector<uint32_t> oldest(numbers.size());  // what the close found unreported is gone
        std::iota(oldest.begin(), oldest.end(), 1);
        EXPECT_EQ(numbers, oldest);
        EXPECT_GE(numbers.size(), static_cast<size_t>(2 * round));
        std::filesystem::remove(onHost(kBinFolder) / binFiles().at(0));
    }
}

}  // namespace
}  // namespace zk::test
