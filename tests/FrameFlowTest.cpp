#include <algorithm>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <utility>

#include "platform/host/ClockControl.h"
#include "records/VDRData1.h"
#include "sysstatus/SysStatusCollection.h"
#include "testing/CheckedRecorder.h"
#include "testing/Sequence.h"

namespace zk::test {
namespace {

constexpr size_t kZoomRatioAt = offsetof(vdr1::VDRData1, zoomRatio);
constexpr size_t kVideoActionAt = offsetof(vdr1::VDRData1, videoAction);
constexpr size_t kFirstStampAt = offsetof(vdr1::VDRData1, setGmeNcsDep);

// A record in which only the frame number and one of the stamps are written.
std::vector<uint8_t> plainRecord(uint32_t number, uint64_t stamp, size_t which = 0) {
    std::vector<uint8_t> bytes(kFrameRecordSize, 0);
    std::memcpy(&bytes[0], &number, sizeof(number));
    std::memcpy(&bytes[kFirstStampAt + which * sizeof(stamp)], &stamp, sizeof(stamp));
    return bytes;
}

using FrameFlowTest = CheckedRecorder;

TEST_F(FrameFlowTest, CallsInAnyOrder_KeepEveryBlockInOnePool) {
    std::mt19937 generator(20231114);
    const auto random = [&generator](uint32_t below) {
        return static_cast<uint32_t>(generator() % below);
    };
    size_t fullest = 0;
    openSession(-1);
    for (uint32_t step = 0; step < 30000; ++step) {
        // Neighbours, as cameras count, and numbers that a golden-ratio hash puts in one place,
        // on both sides of the end of its table; 0 and the one that means none among them.
        const uint32_t k = random(64) - 32;
        const uint32_t number = random(2) == 0 ? k : k * 340573321U;
        const uint32_t act = random(2000);
        const uint32_t takes = step / 3000 % 2 == 0 ? 1500 : 500;  // filling, then draining
        if (act == 0) {
            stop();
        } else if (act < takes) {
            const uint64_t takenBefore = mTaken;
            take(number);
            if (mTaken > takenBefore) {
                recorder().writeMaintain(number, tag::frameNumber, &number);
                recorder().writeMaintain(
                        number, static_cast<uint32_t>(tag::setGmeNcsDep + mTaken % 15), &mTaken);
            }
        } else if (act < 1750) {
            complete(number);
        } else {
            report(number);
        }
        if (mProcessing.count(number) == 0) {
            recorder().writeMaintain(number, tag::zoomRatio, &number);  // must land nowhere
        }
        fullest = std::max(fullest, mProcessing.size());
        checkPools();
        ASSERT_EQ(oldestDone(), mDone.empty() ? std::vector<uint8_t>()
                                              : plainRecord(mDone[0].first, mDone[0].second,
                                                            mDone[0].second % 15))
                << "step " << step;
    }
    EXPECT_GT(fullest, 60U);  // or the walk has not shown much
    EXPECT_EQ(countLogged("E "), countLogged("currentDoneFrame is 0!"));
}

// Frames 7 and 9 are being filled, frame 8 is not.
TEST_F(FrameFlowTest, BadCalls_AreToldInOneLineOrNotAtAllAndWriteNothing) {
    constexpr uint32_t kValue = 0x01010101;
    constexpr uint32_t kTags[] = {tag::frameNumber, tag::zoomRatio};
    const void* const kDatas[] = {&kValue, &kValue};
    IVideoDataRecoder& r = recorder();
    r.VDRProcessing(7);
    r.VDRProcessing(9);
    forgetLog();
    r.writeMaintain(8, tag::zoomRatio, &kValue);  // no field has a writer before the first session
    r.writeMaintains(7, kTags, kDatas, 2);
    openSession(-1);
    r.writeMaintain(7, tag::kCount, &kValue);
    r.writeMaintain(UINT32_MAX, UINT32_MAX, &kValue);
    r.writeMaintain(7, tag::frameNumber, nullptr);
    r.writeMaintain(8, tag::frameNumber, &kValue);
    r.writeMaintains(8, kTags, nullptr, 0);
    r.writeMaintains(7, nullptr, kDatas, 2);
    r.writeMaintains(7, nullptr, kDatas, 0);
    r.writeMaintains(8, nullptr, kDatas, 2);
    r.writeMaintains(8, kTags, kDatas, UINT32_MAX);
    r.VDRDoneCount(7, nullptr);
    r.getVDRInfo(7, nullptr);
    r.getMP4Writable(nullptr);
    r.getVDRStatus(nullptr);
    r.checkPreviewAndVideoStatus(7, nullptr);
    r.VDRDone(8);
    r.VDRReport(7);
    r.markUnWritable(7);
    const uint32_t tags[] = {tag::frameNumber, tag::kCount, tag::zoomRatio,
                             tag::memoryAllocTimeoutInfo, tag::setGmeNcsDep};
    const uint64_t stamp = 0x1122334455667788;
    const void* const datas[] = {&kValue, &kValue, &kValue, nullptr, &stamp};
    r.writeMaintains(9, tags, datas, 5);
    const std::string one = "E writeMaintain<LINE>: VDR::writeMaintain, ";
    const std::string bad = one + "tagId is wrong or data is nullptr, ";
    const std::string several = "E writeMaintains<LINE>: VDR::writeMaintains, ";
    EXPECT_EQ(transcript("E "),
              (Lines{one + "fun is nullptr, tagId=5, frameNumber=8!",
                     bad + "tagId=39, frameNumber=7!", bad + "tagId=-1, frameNumber=-1!",
                     bad + "tagId=0, frameNumber=7!", several + "data is nullptr, frameNumber=8!",
                     several + "tagIds is nullptr, frameNumber=7!",
                     "E VDRDoneCount<LINE>: VDR::count is nullptr!",
                     "E getVDRInfo<LINE>: VDR::data is nullptr!",
                     "E getMP4Writable<LINE>: VDR::writable is nullptr!",
                     "E getVDRStatus<LINE>: VDR::getVDRStatus is nullptr!",
                     "E checkPreviewAndVideoStatus<LINE>: VDR::isPreviewOpen is nullptr!",
                     several + "tagId is wrong, tagId=39, frameNumber=9!",
                     ("E () write_memoryAllocTimeoutInfo<LINE>: VDR::maintainData == nullptr || "
                      "data == nullptr!")}));
    r.VDRDone(7);
    r.VDRDone(9);
    EXPECT_EQ(oldestDone(), plainRecord(0, 0));
    r.VDRReport(7);
    std::vector<uint8_t> expected = plainRecord(kValue, stamp);
    std::memcpy(&expected[kZoomRatioAt], &kValue, sizeof(kValue));
    EXPECT_EQ(oldestDone(), expected);
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
                           {"number that means none", {100}, UINT32_MAX, false, true},
                           {"second start", {100, 50}, 99, false, false},
                           {"last frame", {100, -200}, 199, true, true},
                           {"frame that ends it", {100, -200}, 200, false, false},
                           {"older frame, after the end", {100, -200}, 50, true, true},
                           {"end at zero", {100, 0}, 5, false, false},
                           {"the next forgets the last", {100, -200, 300}, 150, false, false}};

TEST_F(FrameFlowTest, Recordings_DecideWhatBelongsToOne) {
    const auto belongs = [this](uint32_t number) {
        bool isMp4Writable = true;
        bool isToBeRecorded = true;
        recorder().getMP4Writable(&isMp4Writable);
        EXPECT_FALSE(isMp4Writable) << "no frame is done";
        frame(number).done();
        recorder().getMP4Writable(&isMp4Writable);
        recorder().checkPreviewAndVideoStatus(number, &isToBeRecorded);
        recorder().VDRReport(0);
        return std::make_pair(isMp4Writable, isToBeRecorded);
    };
    openSession(-1);
    for (const Window& window : kWindows) {
        bool isStarted = false;
        for (const int64_t mark : window.marks) {
            if (mark > 0) {
                recorder().markWritable(static_cast<uint32_t>(mark), isStarted);
            } else {
                recorder().markUnWritable(static_cast<uint32_t>(-mark));
            }
        }
        openSession(-1);  // changes nothing
        EXPECT_EQ(belongs(window.frameNumber),
                  std::make_pair(window.isMp4Writable, window.isToBeRecorded))
                << window.name;
        closeSession();
        EXPECT_EQ(belongs(window.frameNumber), std::make_pair(false, false)) << window.name;
    }
    destroyRecorder();
    switchRecordingOn();
    EXPECT_EQ(belongs(0), std::make_pair(false, true)) << "every frame is recorded";
}

TEST_F(FrameFlowTest, Recordings_AreToldTimedTogetherAndMarkedInTheirFrames) {
    bool isStarted = false;
    recorder().markWritable(50, isStarted);
    openSession();  // the first, which knows of no start
    recorder().markUnWritable(60);
    SysStatusCollection status{};
    recorder().GetSystemStatus(status);
    EXPECT_EQ(uint32_t{status.videoRecordSeconds}, kNow / 1000000);
    play("stop open");
    frame(100);
    frame(200);
    forgetLog();
    recorder().markWritable(100, isStarted);
    EXPECT_TRUE(isStarted);
    host::advanceWallClock(61999999);
    recorder().markWritable(101, isStarted);
    EXPECT_FALSE(isStarted);
    recorder().markUnWritable(200);
    recorder().markWritable(300, isStarted);
    host::advanceWallClock(-62000000);  // set back: the seconds wrap, and end one short of the sum
    recorder().markUnWritable(0);
    recorder().GetSystemStatus(status);
    EXPECT_EQ(uint32_t{status.videoRecordSeconds}, UINT32_MAX);
    const std::string started = "I markWritable<LINE>: VDR::markWritable, mFirstVideoFrameNum = ";
    const std::string ended = "I markUnWritable<LINE>: VDR::markUnWritable, mLastVideoFrameNum = ";
    EXPECT_EQ(transcript("mark"),
              (Lines{started + "100!", ended + "199!", started + "300!", ended + "4294967295!"}));
    for (const uint32_t action : {1U, 2U}) {
        recorder().VDRDone(action * 100);
        EXPECT_EQ(oldestDone()[kVideoActionAt], action);
        recorder().VDRReport(0);
    }
}

// The fuzzer's seeds, whole and beside the program, and what nobody has thought of.
TEST(SequenceTest, AnyCallsWhereAnythingFails_KeepTheRecordersPromises) {
    std::vector<std::vector<uint8_t>> inputs;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (const auto& seed : std::filesystem::directory_iterator(folder / "fuzz/seeds/sequence")) {
        std::ifstream file(seed.path(), std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    EXPECT_GE(inputs.size(), 14U);
    std::mt19937 random(20231114);
    for (int i = 0; i < 100; ++i) {
        inputs.emplace_back(100 + random() % 400);
        for (uint8_t& byte : inputs.back()) {
            byte = static_cast<uint8_t>(random());
        }
    }
    for (const std::vector<uint8_t>& input : inputs) {
        SCOPED_TRACE(&input - inputs.data());
        Sequence(input.data(), input.size()).play();
        ASSERT_FALSE(testing::Test::HasFailure());
    }
}

}  // namespace
}  // namespace zk::test
