#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <random>
#include <utility>

#include "platform/Log.h"
#include "platform/host/ClockControl.h"
#include "sysstatus/SysStatusCollection.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Lines = std::vector<std::string>;

constexpr size_t kBlocks = 80;
constexpr uint32_t kFrameNumber = 0;  // tags
constexpr uint32_t kZoomRatio = 5;
constexpr uint32_t kSetGmeNcsDep = 19;  // the first of fifteen stamps
constexpr size_t kZoomRatioAt = 19;     // offsets in the record
constexpr size_t kVideoActionAt = 78;
constexpr size_t kSetGmeNcsDepAt = 3534;

// A record in which only the frame number and one of the stamps are written.
std::vector<uint8_t> plainRecord(uint32_t number, uint64_t stamp, size_t which = 0) {
    std::vector<uint8_t> bytes(kFrameRecordSize, 0);
    std::memcpy(&bytes[0], &number, sizeof(number));
    std::memcpy(&bytes[kSetGmeNcsDepAt + which * sizeof(stamp)], &stamp, sizeof(stamp));
    return bytes;
}

class FrameFlowTest : public RecorderTest {
protected:
    bool isToBeRecorded(uint32_t number) {
        bool isPreviewOpen = false;
        recorder().checkPreviewAndVideoStatus(number, &isPreviewOpen);
        return isPreviewOpen;
    }

    // Of this frame as the oldest done one.
    bool isMp4Writable(uint32_t number) {
        frame(number).done();
        bool writable = false;
        recorder().getMP4Writable(&writable);
        recorder().VDRReport(0);
        return writable;
    }

    // False where one is running.
    bool startRecording(uint32_t number) {
        bool isStarted = false;
        recorder().markWritable(number, isStarted);
        return isStarted;
    }
};

// What the pools must hold, told in the plainest containers: frame numbers and stamps.
struct Pools {
    std::map<uint32_t, uint32_t> processing;
    std::deque<std::pair<uint32_t, uint32_t>> done;

    bool hasRoomFor(uint32_t number) const {
        return processing.size() + done.size() < kBlocks && processing.count(number) == 0;
    }
    std::vector<uint8_t> oldest() const {
        return done.empty() ? std::vector<uint8_t>()
                            : plainRecord(done[0].first, done[0].second, done[0].second % 15);
    }
};

TEST_F(FrameFlowTest, CallsInAnyOrder_KeepEveryBlockInOnePool) {
    std::mt19937 generator(20231114);
    const auto random = [&generator](uint32_t below) {
        return static_cast<uint32_t>(generator() % below);
    };
    Pools pools;
    size_t fullest = 0;
    openSession(-1);
    for (uint32_t step = 0; step < 30000; ++step) {
        // Neighbours, as cameras count, and numbers that a golden-ratio hash puts in one place,
        // on both sides of the end of its table; 0 and the one that means none among them.
        const uint32_t k = random(64) - 32;
        const uint32_t number = random(2) == 0 ? k : k * 340573321U;
        const uint32_t act = random(2000);
        const uint32_t takes = step / 3000 % 2 == 0 ? 1500 : 500;  // filling, then draining
        const auto found = pools.processing.find(number);
        if (act == 0) {
            closeSession();
            pools = {};
        } else if (act < takes) {
            recorder().VDRProcessing(number);
            if (pools.hasRoomFor(number)) {
                const uint64_t stamp = step;
                recorder().writeMaintain(number, kFrameNumber, &number);
                recorder().writeMaintain(number, kSetGmeNcsDep + step % 15, &stamp);
                pools.processing[number] = step;
            }
        } else if (act < 1750) {
            recorder().VDRDone(number);
            if (found != pools.processing.end()) {
                pools.done.emplace_back(*found);
                pools.processing.erase(found);
            }
        } else {
            recorder().VDRReport(number);
            if (!pools.done.empty()) {
                pools.done.pop_front();
            }
        }
        if (pools.processing.count(number) == 0) {
            recorder().writeMaintain(number, kZoomRatio, &number);  // must land nowhere
        }
        fullest = std::max(fullest, pools.processing.size());
        ASSERT_EQ(doneCount(), pools.done.size()) << "step " << step;
        ASSERT_EQ(oldestDone(), pools.oldest()) << "step " << step;
    }
    EXPECT_GT(fullest, 60U);  // or the walk has not shown much
    EXPECT_EQ(countLogged("", kLogError), countLogged("currentDoneFrame is 0!"));
}

// Frames 7 and 9 are being filled, frame 8 is not.
TEST_F(FrameFlowTest, BadCalls_AreToldInOneLineOrNotAtAllAndWriteNothing) {
    constexpr uint32_t kValue = 0x01010101;
    constexpr uint32_t kTags[] = {0, 5};
    const void* const kDatas[] = {&kValue, &kValue};
    IVideoDataRecoder& r = recorder();
    r.VDRProcessing(7);
    r.VDRProcessing(9);
    forgetLog();
    r.writeMaintain(7, 38, &kValue);  // no field has a writer before the first session
    r.writeMaintain(8, 5, &kValue);
    r.writeMaintains(7, kTags, kDatas, 2);
    const std::string one = "E writeMaintain<LINE>: VDR::writeMaintain, ";
    EXPECT_EQ(transcript(""), (Lines{one + "fun is nullptr, tagId=38, frameNumber=7!",
                                     one + "fun is nullptr, tagId=5, frameNumber=8!"}));
    openSession(-1);
    forgetLog();
    r.writeMaintain(7, 39, &kValue);
    r.writeMaintain(UINT32_MAX, UINT32_MAX, &kValue);
    r.writeMaintain(7, 0, nullptr);
    r.writeMaintain(8, 0, &kValue);
    r.writeMaintains(8, kTags, nullptr, 0);
    r.writeMaintains(7, nullptr, kDatas, 2);
    r.writeMaintains(7, nullptr, kDatas, 0);
    r.writeMaintains(8, nullptr, kDatas, 2);
    r.writeMaintains(8, kTags, kDatas, UINT32_MAX);
    r.writeMaintains(7, kTags, kDatas, 0);
    r.VDRDoneCount(7, nullptr);
    r.getVDRInfo(7, nullptr);
    r.getMP4Writable(nullptr);
    r.getVDRStatus(nullptr);
    r.checkPreviewAndVideoStatus(7, nullptr);
    r.VDRDone(8);
    r.VDRReport(7);
    r.markUnWritable(7);
    const std::string bad = one + "tagId is wrong or data is nullptr, ";
    const std::string several = "E writeMaintains<LINE>: VDR::writeMaintains, ";
    EXPECT_EQ(transcript(""),
              (Lines{bad + "tagId=39, frameNumber=7!", bad + "tagId=-1, frameNumber=-1!",
                     bad + "tagId=0, frameNumber=7!", several + "data is nullptr, frameNumber=8!",
                     several + "tagIds is nullptr, frameNumber=7!",
                     "E VDRDoneCount<LINE>: VDR::count is nullptr!",
                     "E getVDRInfo<LINE>: VDR::data is nullptr!",
                     "E getMP4Writable<LINE>: VDR::writable is nullptr!",
                     "E getVDRStatus<LINE>: VDR::getVDRStatus is nullptr!",
                     "E checkPreviewAndVideoStatus<LINE>: VDR::isPreviewOpen is nullptr!"}));
    forgetLog();
    const uint32_t tags[] = {0, 40, 5, 38, 39, 19};
    const uint64_t stamp = 0x1122334455667788;
    const void* const datas[] = {&kValue, &kValue, &kValue, nullptr, &kValue, &stamp};
    r.writeMaintains(9, tags, datas, 6);
    const std::string wrong = several + "tagId is wrong, ";
    EXPECT_EQ(transcript(""), (Lines{wrong + "tagId=40, frameNumber=9!",
                                     "E () write_memoryAllocTimeoutInfo<LINE>: VDR::maintainData "
                                     "== nullptr || data == nullptr!",
                                     wrong + "tagId=39, frameNumber=9!"}));
    r.VDRDone(7);
    r.VDRDone(9);
    EXPECT_EQ(oldestDone(), plainRecord(0, 0));
    r.VDRReport(7);
    std::vector<uint8_t> expected = plainRecord(kValue, stamp);
    std::memcpy(expected.data() + kZoomRatioAt, &kValue, sizeof(kValue));
    EXPECT_EQ(oldestDone(), expected);
    r.VDRReport(9);
    void* record = this;
    bool writable = true;
    r.getVDRInfo(7, &record);
    r.getMP4Writable(&writable);
    EXPECT_TRUE(record == nullptr && !writable) << "no frame is done";
}

struct Window {
    const char* name;
    std::vector<int64_t> marks;  // the frame that starts a recording, or minus the one that ends it
    uint32_t frameNumber;
    bool isMp4Writable;
    bool isToBeRecorded;
};

const Window kWindows[] = {{"no recording", {}, 5, false, false},
                           {"before the first frame", {100}, 99, false, false},
                           {"first frame", {100}, 100, true, true},
                           {"last number there is", {100}, UINT32_MAX - 1, true, true},
                           {"number that means none", {100}, UINT32_MAX, false, true},
                           {"start from none", {UINT32_MAX}, UINT32_MAX - 1, false, false},
                           {"second start", {100, 50}, 99, false, false},
                           {"last frame", {100, -200}, 199, true, true},
                           {"frame that ends it", {100, -200}, 200, false, false},
                           {"older than the ended one", {100, -200}, 1, true, true},
                           {"end without start", {-200}, 199, false, false},
                           {"second end", {100, -200, -300}, 250, false, false},
                           {"end at zero", {100, 0}, 5, false, false},
                           {"end at zero of none", {100, 0}, UINT32_MAX, false, false},
                           {"the next forgets the last", {100, -200, 300}, 150, false, false},
                           {"the next", {100, -200, 300}, 300, true, true}};

TEST_F(FrameFlowTest, Recordings_DecideWhatBelongsToOne) {
    openSession(-1);
    for (const Window& window : kWindows) {
        SCOPED_TRACE(window.name);
        const uint32_t number = window.frameNumber;
        bool isRunning = false;
        for (const int64_t mark : window.marks) {
            if (mark > 0) {
                EXPECT_EQ(startRecording(static_cast<uint32_t>(mark)), !isRunning);
            } else {
                recorder().markUnWritable(static_cast<uint32_t>(-mark));
            }
            isRunning = mark > 0;
        }
        EXPECT_EQ(isMp4Writable(number), window.isMp4Writable);
        EXPECT_EQ(isToBeRecorded(number), window.isToBeRecorded);
        closeSession();
        EXPECT_FALSE(isMp4Writable(number) || isToBeRecorded(number));
    }
}

TEST_F(FrameFlowTest, RecordingSwitch_HasEveryFrameRecorded) {
    switchRecordingOn();
    EXPECT_TRUE(isToBeRecorded(0) && isToBeRecorded(UINT32_MAX) && !isMp4Writable(5));
}

TEST_F(FrameFlowTest, Recordings_AreToldTimedTogetherAndMarkedInTheirFrames) {
    openSession();
    frame(100);
    frame(200);
    forgetLog();
    EXPECT_TRUE(startRecording(100));
    host::advanceWallClock(61999999);
    EXPECT_FALSE(startRecording(101));
    recorder().markUnWritable(200);
    EXPECT_TRUE(startRecording(300));
    host::advanceWallClock(-62000000);  // set back: the seconds wrap, and end one short of the sum
    recorder().markUnWritable(0);
    SysStatusCollection status{};
    recorder().GetSystemStatus(status);
    EXPECT_EQ(uint32_t{status.videoRecordSeconds}, UINT32_MAX);
    const std::string started = "I markWritable<LINE>: VDR::markWritable, mFirstVideoFrameNum = ";
    const std::string ended = "I markUnWritable<LINE>: VDR::markUnWritable, mLastVideoFrameNum = ";
    EXPECT_EQ(transcript(""),
              (Lines{started + "100!", ended + "199!", started + "300!", ended + "4294967295!"}));
    recorder().VDRDone(100);
    EXPECT_EQ(oldestDone()[kVideoActionAt], 1);
    recorder().VDRReport(0);
    recorder().VDRDone(200);
    EXPECT_EQ(oldestDone()[kVideoActionAt], 2);
}

}  // namespace
}  // namespace zk::test
