#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <thread>

#include "platform/CameraMemoryItemInfo.h"
#include "platform/Log.h"
#include "platform/host/ClockControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

constexpr uint32_t kFramesPerSession = 4000;
constexpr size_t kThreads = 4;
constexpr uint32_t kPipelineDepth = 16;  // no frame is taken this far ahead of an open one
constexpr uint32_t kFramesPerDrop = 500;
constexpr uint32_t kFramesPerPhoto = 40;
constexpr uint32_t kFramesPerSlowAllocation = 25;
constexpr uint32_t kTagFirstStamp = 19;
constexpr uint32_t kTagLastStamp = 33;
constexpr uint32_t kTagAllocation = 38;
constexpr size_t kFirstStampAt = 3534;
constexpr size_t kAllocationAt = 3945;
constexpr uint64_t kDay = 86400000000;  // microseconds
// Per session. A loss whose account another follows is never settled, so its account stays.
constexpr size_t kBytesOfAccounts = 8 * 512;

// A short run by default.
unsigned sessionCount() {
    const char* text = std::getenv("VDR_SOAK_SESSIONS");
    return text != nullptr ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : 4;
}

size_t bytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// What a frame's field holds: whoever knows the frame number can tell a torn record.
uint64_t stampOf(uint32_t frameNumber, uint64_t tag) {
    return (frameNumber + tag * 1000003) * UINT64_C(0x9E3779B97F4A7C15);
}

// Its frame number.
uint32_t checkRecord(const char* record) {
    const uint32_t number = frameNumberOf(record);
    for (uint32_t tag = kTagFirstStamp; tag <= kTagLastStamp; ++tag) {
        uint64_t stamp = 0;
        std::memcpy(&stamp, record + kFirstStampAt + (tag - kTagFirstStamp) * sizeof(stamp),
                    sizeof(stamp));
        EXPECT_EQ(stamp, stampOf(number, tag)) << number;
    }
    EXPECT_STREQ(record + kAllocationAt, number % kFramesPerSlowAllocation == 0 ? "soak" : "");
    return number;
}

// Camera sessions, one a day, of four pipeline threads that push frames through while drops are
// announced, live photos taken and slow allocations recorded. In every second session a drop is
// announced too late, which overflows the history and has the later ones refused.
class SoakTest : public RecorderTest {
protected:
    uint32_t lastFrame() const { return mFirst + kFramesPerSession - 1; }
    // The frame at which a drop is announced too late, if there is one.
    uint32_t lateDrop() const { return mFirst % (2 * kFramesPerSession) == 1 ? 0 : mFirst + 1999; }
    uint32_t lostFrame(uint32_t announcedAt) const {
        return announcedAt == lateDrop() ? announcedAt - 60 : announcedAt + 100;
    }
    bool isRefused(uint32_t announcedAt) const {
        return lateDrop() != 0 && announcedAt > lateDrop();
    }

    // One pipeline thread: takes the next frame as long as there is one.
    void pushFrames(std::atomic<uint32_t>& mine) {
        while (true) {
            mine = mNextFrame.load();  // not ahead of what it takes now
            mine = mNextFrame++;
            const uint32_t number = mine;
            if (number > lastFrame()) {
                break;
            }
            const auto isTooFarAhead = [number](const std::atomic<uint32_t>& open) {
                return number >= open + uint64_t{kPipelineDepth};
            };
            while (std::any_of(mOpenFrames.begin(), mOpenFrames.end(), isTooFarAhead)) {
                std::this_thread::yield();
            }
            pushFrame(number);
        }
        mine = UINT32_MAX;
    }

    void pushFrame(uint32_t number) {
        const bool isPhoto = number % kFramesPerPhoto == 0;
        Frame current = frame(number);
        for (uint32_t tag = kTagFirstStamp; tag <= kTagLastStamp; ++tag) {
            current.write(tag, stampOf(number, tag));
        }
        if (number % kFramesPerSlowAllocation == 0) {
            recordSlowAllocation(current);
        }
        if (isPhoto) {
            recorder().CacheDataForLivePhoto(number);
        }
        current.done();
        if (isPhoto) {
            recorder().DoneDataForLivePhoto(number);
        }
        if (number % kFramesPerDrop == 0) {
            announceLoss(lostFrame(number), mToday + number);
        }
        recorder().VDRReport(number);
    }

    void recordSlowAllocation(Frame& current) {
        ZkCamera::CameraMemoryItemInfo slow;
        slow.itemName = "soak";
        slow.allocTimeMs = 6000;
        recorder().SetMemAllocTimeOutInfo(slow);
        MemoryAllocTimeoutInfo taken{};
        recorder().GetMemAllocTimeOutInfo(taken);
        current.write(kTagAllocation, taken);
    }

    void playSession() {
        host::setWallClock(mToday);
        mNextFrame = mFirst;
        for (std::atomic<uint32_t>& open : mOpenFrames) {
            open = mFirst;
        }
        openSession();
        std::vector<std::thread> pipeline;
        for (std::atomic<uint32_t>& open : mOpenFrames) {
            pipeline.emplace_back([this, &open] { pushFrames(open); });
        }
        for (std::thread& thread : pipeline) {
            thread.join();
            mSleep.wakeSleeper();
        }
        checkLivePhotos();
        host::waitForThreadPool();
        closeSession();
    }

    // Every frame, each once and whole.
    void checkDump() const {
        ASSERT_EQ(binFiles().size(), 1U);
        const std::string dump = readBinFile(binFiles()[0]);
        ASSERT_EQ(dump.size(), kFramesPerSession * kFrameRecordSize);
        std::set<uint32_t> frames;
        for (size_t at = 0; at < dump.size(); at += kFrameRecordSize) {
            frames.insert(checkRecord(dump.data() + at));
        }
        EXPECT_EQ(frames.size(), kFramesPerSession);
        EXPECT_EQ(*frames.begin(), mFirst);
        EXPECT_EQ(*frames.rbegin(), lastFrame());
    }

    void checkLivePhotos() {
        const size_t expected = kFramesPerSession / kFramesPerPhoto;
        const size_t size = expected * kFrameRecordSize;
        const int fd = memfd_create("buffer", 0);
        ASSERT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0);
        recorder().PostDataForLivePhoto(
                fd, R"({"endFrame":4294967294,"bufferSize":)" + std::to_string(size) + "}");
        std::string buffer(size, '\0');
        ASSERT_EQ(pread(fd, buffer.data(), size, 0), static_cast<ssize_t>(size));
        close(fd);
        std::set<uint32_t> photos;
        for (size_t at = 0; at < size; at += kFrameRecordSize) {
            photos.insert(checkRecord(buffer.data() + at));
            EXPECT_EQ(*photos.rbegin() % kFramesPerPhoto, 0U);
        }
        EXPECT_EQ(photos.size(), expected);
    }

    // A file for each loss that no limit refused, and a promise kept or still owed for the others.
    void checkLosses() {
        std::set<std::string> owed;
        for (uint32_t at = mFirst + kFramesPerDrop - 1; at <= lastFrame(); at += kFramesPerDrop) {
            EXPECT_EQ(settlement(mToday + at) == "limited", isRefused(at)) << at;
            if (!isRefused(at)) {
                owed.insert(std::to_string(lostFrame(at)));
            }
        }
        const std::vector<std::string> files = lossFiles();
        for (const std::string& file : files) {
            const size_t digits = file.find_first_not_of('0', file.rfind('_') + 1);
            const std::string lost = file.substr(digits, file.rfind('.') - digits);
            EXPECT_EQ(owed.erase(lost), 1U) << file;
            checkLossFile(file, static_cast<uint32_t>(std::strtoul(lost.c_str(), nullptr, 10)));
        }
        EXPECT_TRUE(owed.empty()) << *owed.begin();
        // The other sessions end with a loss pending, whose uncounted file may unsettle it.
        EXPECT_TRUE(lateDrop() == 0 || settlement(mToday + lateDrop()) == "done");
    }

    void checkLossFile(const std::string& name, uint32_t lost) {
        std::set<uint32_t> frames;
        const std::string content = readFile(onHost(kLossFolder) / name);
        std::istringstream lines(content);
        for (std::string line; std::getline(lines, line);) {
            const auto number = static_cast<uint32_t>(std::strtoul(line.c_str(), nullptr, 10));
            EXPECT_TRUE(frames.insert(number).second) << number;
            EXPECT_NE(line.find(',' + std::to_string(stampOf(number, kTagLastStamp)) + ','),
                      std::string::npos);
        }
        // The pipeline's threads complete frames out of order, by its depth at most.
        ASSERT_GE(frames.size(), 30 - kPipelineDepth) << name;
        EXPECT_EQ(content.back(), '\n');
        const bool isLate = lost == lateDrop() - 60;
        EXPECT_EQ(frames.size() == 100, isLate) << name;
        const uint32_t last = std::min(isLate ? lost + 130 : lost, lastFrame());
        EXPECT_LE(*frames.rbegin(), last + 2 * kPipelineDepth) << name;
        EXPECT_GE(*frames.rbegin(), last - 2 * kPipelineDepth) << name;
    }

    void turnTheDay() {
        for (const char* folder : {kBinFolder, kLossFolder}) {
            std::filesystem::remove_all(onHost(folder));
            std::filesystem::create_directories(onHost(folder));
        }
        host::forgetPromises();
        host::MonitoringService::instance().reset();
        forgetLog();
        mToday += kDay;
        mFirst += kFramesPerSession;
    }

    std::atomic<uint32_t> mNextFrame{0};
    std::array<std::atomic<uint32_t>, kThreads> mOpenFrames{};
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
        checkDump();
        checkLosses();
        EXPECT_EQ(logged("", kLogError), std::vector<std::string>());
        turnTheDay();
        if (session == 1) {
            afterFirst = bytesInUse();
        }
    }
    RecordProperty("bytesAfterFirst", std::to_string(afterFirst));
    RecordProperty("bytesAfterLast", std::to_string(bytesInUse()));
    EXPECT_LT(bytesInUse(), afterFirst + sessions * kBytesOfAccounts);
}

}  // namespace
}  // namespace zk::test
