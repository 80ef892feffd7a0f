#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <random>
#include <utility>

#include "frameloss/FrameDropEvents.h"
#include "platform/Log.h"
#include "platform/host/ClockControl.h"
#include "sysstatus/SysStatusCollection.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

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
    size_t doneCount() {
        uint32_t count = 99;
        recorder().VDRDoneCount(0, &count);
        return count;
    }

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

    uint32_t videoRecordSeconds() {
        SysStatusCollection status{};
        recorder().GetSystemStatus(status);
        return status.videoRecordSeconds;
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
}

TEST_F(FrameFlowTest, FrameWithoutAFreeBlock_IsSilentlyNotRecorded) {
    openSession();
    for (uint32_t number = 1; number <= kBlocks; ++number) {
        frame(number);
    }
    forgetLog();
    frame(81).write(kZoomRatio, 1.5F).done();
    EXPECT_EQ(doneCount(), 0U);
    frame(1).done();
    recorder().VDRReport(0);
    frame(81).done();
    EXPECT_EQ(doneCount(), 1U);
    EXPECT_TRUE(transcript("").empty());
}

TEST_F(FrameFlowTest, FrameThatWasNeverTaken_ReachesNobody) {
    recorder();
    forgetLog();
    recorder().VDRDone(5);
    EXPECT_TRUE(transcript("").empty());
    recorder().VDRProcessing(5);
    recorder().VDRDone(5);  // without its number, which the frame-loss history refuses
    EXPECT_EQ(transcript("").size(), 1U);
}

TEST_F(FrameFlowTest, OldestDoneRecord_IsTheLiveBlock) {
    openSession();
    frame(7).done();
    void* record = nullptr;
    recorder().getVDRInfo(6, &record);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(frameNumberOf(record), 7U);
    recorder().VDRReport(6);
    EXPECT_EQ(frameNumberOf(record), 0U);

    bool writable = true;
    recorder().getVDRInfo(7, &record);
    recorder().getMP4Writable(&writable);
    EXPECT_EQ(record, nullptr);
    EXPECT_FALSE(writable);
}

struct Refusal {
    const char* name;
    std::function<void(IVideoDataRecoder&)> call;
    const char* told = nullptr;  // null: nothing
};

void PrintTo(const Refusal& row, std::ostream* out) {
    *out << row.name;
}

class RefusalTest : public FrameFlowTest, public testing::WithParamInterface<Refusal> {};

TEST_P(RefusalTest, IsToldInOneLineOrNotAtAllAndWritesNothing) {
    openSession(-1);
    recorder().VDRProcessing(7);
    forgetLog();
    GetParam().call(recorder());
    std::vector<std::string> expected;
    if (GetParam().told != nullptr) {
        expected = {std::string("E ") + GetParam().told};
    }
    EXPECT_EQ(transcript(""), expected);
    recorder().VDRDone(7);
    EXPECT_EQ(oldestDone(), plainRecord(0, 0));
}

constexpr uint32_t kValue = 0x01010101;
constexpr uint32_t kTags[] = {0, 5};
const void* const kDatas[] = {&kValue, &kValue};
const Refusal kRefusals[] = {
        {"TagBeyondTheLast", [](auto& r) { r.writeMaintain(7, 39, &kValue); },
         "writeMaintain<LINE>: VDR::writeMaintain, tagId is wrong or data is nullptr, tagId=39, "
         "frameNumber=7!"},
        {"HugeTagOfAnyFrame", [](auto& r) { r.writeMaintain(UINT32_MAX, UINT32_MAX, &kValue); },
         "writeMaintain<LINE>: VDR::writeMaintain, tagId is wrong or data is nullptr, tagId=-1, "
         "frameNumber=-1!"},
        {"NullData", [](auto& r) { r.writeMaintain(7, 0, nullptr); },
         "writeMaintain<LINE>: VDR::writeMaintain, tagId is wrong or data is nullptr, tagId=0, "
         "frameNumber=7!"},
        {"FrameNotTaken", [](auto& r) { r.writeMaintain(8, 0, &kValue); }},
        {"NullDatas", [](auto& r) { r.writeMaintains(8, kTags, nullptr, 0); },
         "writeMaintains<LINE>: VDR::writeMaintains, data is nullptr, frameNumber=8!"},
        {"NullTags", [](auto& r) { r.writeMaintains(7, nullptr, kDatas, 2); },
         "writeMaintains<LINE>: VDR::writeMaintains, tagIds is nullptr, frameNumber=7!"},
        {"NullTagsOfNoPairs", [](auto& r) { r.writeMaintains(7, nullptr, kDatas, 0); }},
        {"NullTagsOfAFrameNotTaken", [](auto& r) { r.writeMaintains(8, nullptr, kDatas, 2); }},
        {"PairsOfAFrameNotTaken", [](auto& r) { r.writeMaintains(8, kTags, kDatas, UINT32_MAX); }},
        {"NoPairs", [](auto& r) { r.writeMaintains(7, kTags, kDatas, 0); }},
        {"NullCount", [](auto& r) { r.VDRDoneCount(7, nullptr); },
         "VDRDoneCount<LINE>: VDR::count is nullptr!"},
        {"NullRecord", [](auto& r) { r.getVDRInfo(7, nullptr); },
         "getVDRInfo<LINE>: VDR::data is nullptr!"},
        {"NullWritable", [](auto& r) { r.getMP4Writable(nullptr); },
         "getMP4Writable<LINE>: VDR::writable is nullptr!"},
        {"NullStatus", [](auto& r) { r.getVDRStatus(nullptr); },
         "getVDRStatus<LINE>: VDR::getVDRStatus is nullptr!"},
        {"NullPreview", [](auto& r) { r.checkPreviewAndVideoStatus(7, nullptr); },
         "checkPreviewAndVideoStatus<LINE>: VDR::isPreviewOpen is nullptr!"},
        {"NothingToReport", [](auto& r) { r.VDRReport(7); }},
        {"NoRecordingToEnd", [](auto& r) { r.markUnWritable(7); }},
};
INSTANTIATE_TEST_SUITE_P(Table, RefusalTest, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.name; });

TEST_F(FrameFlowTest, FieldWithoutAWriter_IsRefusedOneByOneAndSkippedInPairs) {
    recorder().VDRProcessing(7);
    forgetLog();
    recorder().writeMaintain(7, 38, &kValue);
    recorder().writeMaintain(8, 5, &kValue);
    recorder().writeMaintains(7, kTags, kDatas, 2);
    EXPECT_EQ(transcript(""),
              (std::vector<std::string>{"E writeMaintain<LINE>: VDR::writeMaintain, fun is "
                                        "nullptr, tagId=38, frameNumber=7!",
                                        "E writeMaintain<LINE>: VDR::writeMaintain, fun is "
                                        "nullptr, tagId=5, frameNumber=8!"}));
}

TEST_F(FrameFlowTest, BadPairs_AreToldAndTheOthersWritten) {
    openSession();
    const uint32_t tags[] = {0, 40, 5, 38, 39, 19};
    const uint64_t stamp = 0x1122334455667788;
    const void* const datas[] = {&kValue, &kValue, &kValue, nullptr, &kValue, &stamp};
    recorder().VDRProcessing(7);
    forgetLog();
    recorder().writeMaintains(7, tags, datas, 6);
    recorder().VDRDone(7);
    EXPECT_EQ(transcript(""),
              (std::vector<std::string>{
                      "E writeMaintains<LINE>: VDR::writeMaintains, tagId is wrong, tagId=40, "
                      "frameNumber=7!",
                      "E () write_memoryAllocTimeoutInfo<LINE>: VDR::maintainData == nullptr || "
                      "data == nullptr!",
                      "E writeMaintains<LINE>: VDR::writeMaintains, tagId is wrong, tagId=39, "
                      "frameNumber=7!"}));
    std::vector<uint8_t> expected = plainRecord(kValue, stamp);
    std::memcpy(expected.data() + kZoomRatioAt, &kValue, sizeof(kValue));
    EXPECT_EQ(oldestDone(), expected);
}

struct Window {
    const char* name;
    std::vector<std::pair<char, uint32_t>> marks;  // '+' starts a recording, '-' ends it
    uint32_t frameNumber;
    bool isMp4Writable;
    bool isToBeRecorded;
};

void PrintTo(const Window& row, std::ostream* out) {
    *out << row.name;
}

class WindowTest : public FrameFlowTest, public testing::WithParamInterface<Window> {};

TEST_P(WindowTest, DecidesWhatBelongsToARecording) {
    bool isRunning = false;
    for (const auto& [mark, number] : GetParam().marks) {
        if (mark == '+') {
            bool writable = isRunning;
            recorder().markWritable(number, writable);
            EXPECT_EQ(writable, !isRunning);
        } else {
            recorder().markUnWritable(number);
        }
        isRunning = mark == '+';
    }
    openSession(-1);
    EXPECT_EQ(isMp4Writable(GetParam().frameNumber), GetParam().isMp4Writable);
    EXPECT_EQ(isToBeRecorded(GetParam().frameNumber), GetParam().isToBeRecorded);
    closeSession();
    EXPECT_FALSE(isMp4Writable(GetParam().frameNumber) || isToBeRecorded(GetParam().frameNumber));
}

const Window kWindows[] = {
        {"NoRecording", {}, 5, false, false},
        {"BeforeTheFirst", {{'+', 100}}, 99, false, false},
        {"First", {{'+', 100}}, 100, true, true},
        {"LastNumberThereIs", {{'+', 100}}, UINT32_MAX - 1, true, true},
        {"NumberThatMeansNone", {{'+', 100}}, UINT32_MAX, false, true},
        {"StartFromNone", {{'+', UINT32_MAX}}, UINT32_MAX - 1, false, false},
        {"SecondStart", {{'+', 100}, {'+', 50}}, 99, false, false},
        {"Last", {{'+', 100}, {'-', 200}}, 199, true, true},
        {"FrameThatEndsIt", {{'+', 100}, {'-', 200}}, 200, false, false},
        {"OlderThanTheEndedOne", {{'+', 100}, {'-', 200}}, 1, true, true},
        {"EndWithoutStart", {{'-', 200}}, 199, false, false},
        {"SecondEnd", {{'+', 100}, {'-', 200}, {'-', 300}}, 250, false, false},
        {"EndAtZero", {{'+', 100}, {'-', 0}}, 5, false, false},
        {"EndAtZeroOfNone", {{'+', 100}, {'-', 0}}, UINT32_MAX, false, false},
        {"NextForgetsTheLast", {{'+', 100}, {'-', 200}, {'+', 300}}, 150, false, false},
        {"Next", {{'+', 100}, {'-', 200}, {'+', 300}}, 300, true, true}};
INSTANTIATE_TEST_SUITE_P(Table, WindowTest, testing::ValuesIn(kWindows),
                         [](const auto& row) { return row.param.name; });

TEST_F(FrameFlowTest, RecordingSwitch_HasEveryFrameRecorded) {
    switchRecordingOn();
    EXPECT_TRUE(isToBeRecorded(0) && isToBeRecorded(UINT32_MAX));
    EXPECT_FALSE(isMp4Writable(5));
}

TEST_F(FrameFlowTest, Recording_IsToldTimedAndMarkedInItsFrames) {
    openSession();
    bool writable = false;
    frame(100);
    frame(200);
    forgetLog();
    recorder().markWritable(100, writable);
    host::advanceWallClock(61999999);
    recorder().markWritable(101, writable);
    EXPECT_FALSE(writable);
    recorder().markUnWritable(200);
    EXPECT_EQ(transcript(""),
              (std::vector<std::string>{
                      "I markWritable<LINE>: VDR::markWritable, mFirstVideoFrameNum = 100!",
                      "I markUnWritable<LINE>: VDR::markUnWritable, mLastVideoFrameNum = 199!"}));
    recorder().VDRDone(100);
    EXPECT_EQ(oldestDone()[kVideoActionAt], 1);
    recorder().VDRReport(0);
    recorder().VDRDone(200);
    EXPECT_EQ(oldestDone()[kVideoActionAt], 2);
    EXPECT_EQ(videoRecordSeconds(), 61U);

    recorder().markWritable(300, writable);
    host::advanceWallClock(-62000000);  // set back: the seconds wrap, and end one short of the sum
    recorder().markUnWritable(0);
    EXPECT_EQ(videoRecordSeconds(), UINT32_MAX);
    EXPECT_EQ(countLogged("mLastVideoFrameNum = 4294967295!"), 1U);
}

}  // namespace
}  // namespace zk::test
