#include <cstdlib>
#include <ctime>
#include <random>

#include "platform/Log.h"
#include "platform/host/ClockControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/PropertyControl.h"
#include "records/FieldTags.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Names = std::vector<std::string>;

constexpr char kFile[] = "VIDEO_DEBUG_20231114_221320.bin";  // of kNow
constexpr char kNextFile[] = "VIDEO_DEBUG_20231114_221321.bin";
constexpr int64_t kSecond = 1000000;

class BinDumpFileTest : public RecorderTest {
protected:
    // The frame numbers in a file; its size must be a whole number of records.
    std::vector<uint32_t> framesIn(const std::string& name) const {
        const std::string content = readBinFile(name);
        EXPECT_EQ(content.size() % kFrameRecordSize, 0U);
        std::vector<uint32_t> frames;
        for (size_t at = 0; at + kFrameRecordSize <= content.size(); at += kFrameRecordSize) {
            frames.push_back(frameNumberOf(content.data() + at));
        }
        return frames;
    }

    // A session of frames with arbitrary fields, some of them repeated; the file that it leaves.
    std::string arbitrarySession(int level) {
        useLevel(level);
        std::mt19937 random(4096);
        openSession();
        for (uint32_t number = 1; number <= 60; ++number) {
            frame(number);
            for (int i = 0; i < 200; ++i) {
                const auto tag = static_cast<uint32_t>(1 + random() % (kTagCount - 1));
                uint8_t bytes[64];  // the largest field's 60 and some
                for (uint8_t& byte : bytes) {
                    byte = static_cast<uint8_t>(random() % 70);  // counts in and beyond the limits
                }
                recorder().writeMaintain(number, tag, bytes);
            }
            recorder().VDRDone(number);
            recorder().VDRReport(0);
        }
        closeSession();
        mSleep.wakeSleeper();
        destroyRecorder();
        std::string content = readBinFile(kFile);
        std::filesystem::remove(onHost(kBinFolder) / kFile);
        return content;
    }
};

TEST_F(BinDumpFileTest, SwitchedOff_NothingIsWritten) {
    host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus", "0");
    openSession();
    completeFrames(1, 3);
    closeSession();
    EXPECT_EQ(binFiles(), Names{});
}

TEST_F(BinDumpFileTest, Records_AreAppendedTwoAtATimeAndTheLastOneAtTheEnd) {
    switchRecordingOn();
    openSession();
    completeFrames(1, 1);
    EXPECT_EQ(binFiles(), Names{});
    completeFrames(2, 3);
    EXPECT_EQ(framesIn(kFile), (std::vector<uint32_t>{1, 2}));
    closeSession();
    EXPECT_EQ(framesIn(kFile), (std::vector<uint32_t>{1, 2, 3}));
    closeSession();
    EXPECT_EQ(framesIn(kFile), (std::vector<uint32_t>{1, 2, 3}));
}

TEST_F(BinDumpFileTest, SessionWithoutReports_LeavesAnEmptyFile) {
    // Any number switches it on.
    host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus", "-1");
    openSession();
    frame(1).done();  // never reported
    closeSession();
    EXPECT_EQ(binFiles(), Names{kFile});
    EXPECT_EQ(readBinFile(kFile), "");
}

TEST_F(BinDumpFileTest, SessionsOfOneSecond_ShareAFile_LaterOnesHaveTheirOwn) {
    switchRecordingOn();
    for (uint32_t session = 0; session < 3; ++session) {
        openSession();
        completeFrames(10 * session + 1, 10 * session + 3);
        closeSession();
        host::advanceWallClock(kSecond / 2);
    }
    EXPECT_EQ(binFiles(), (Names{kFile, kNextFile}));
    EXPECT_EQ(framesIn(kFile), (std::vector<uint32_t>{1, 2, 3, 11, 12, 13}));
    EXPECT_EQ(framesIn(kNextFile), (std::vector<uint32_t>{21, 22, 23}));
}

TEST_F(BinDumpFileTest, SecondInitializeOfASession_TakesTheStagedRecordAlong) {
    switchRecordingOn();
    openSession();
    completeFrames(1, 3);
    host::advanceWallClock(kSecond);
    openSession();
    completeFrames(4, 4);
    EXPECT_EQ(framesIn(kFile), (std::vector<uint32_t>{1, 2}));
    EXPECT_EQ(framesIn(kNextFile), (std::vector<uint32_t>{3, 4}));
}

TEST_F(BinDumpFileTest, Name_IsTheLocalTime) {
    setenv("TZ", "TST-5:45", 1);
    tzset();
    host::setWallClock(1704049505 * uint64_t{kSecond});  // 2023-12-31 19:05:05 UTC
    switchRecordingOn();
    openSession();
    closeSession();
    EXPECT_EQ(binFiles(), Names{"VIDEO_DEBUG_20240101_005005.bin"});
}

TEST_F(BinDumpFileTest, ClockThatFails_LeavesTheLastName) {
    switchRecordingOn();
    host::failClock(true);
    openSession();
    completeFrames(1, 2);
    EXPECT_EQ(transcript("saveDataToBinFile"),
              Names{"E saveDataToBinFile<LINE>: VDR::saveDataToBinFile,  open fail!"});
    host::failClock(false);
    openSession();
    host::failClock(true);
    openSession();
    completeFrames(3, 4);
    EXPECT_EQ(binFiles(), Names{kFile});
    EXPECT_EQ(framesIn(kFile), (std::vector<uint32_t>{3, 4}));
}

TEST_F(BinDumpFileTest, OpenThatFails_LosesThePairAndNoBlock) {
    switchRecordingOn();
    openSession();
    ASSERT_TRUE(mSleep.waitForSleep(1));  // the sampler has opened its files
    host::failFileCall(host::FileCall::kOpen, 2);
    completeFrames(1, 7);
    closeSession();
    EXPECT_EQ(framesIn(kFile), (std::vector<uint32_t>{1, 2, 5, 6, 7}));
    EXPECT_EQ(transcript("saveDataToBinFile"),
              Names{"E saveDataToBinFile<LINE>: VDR::saveDataToBinFile, "
                    "/data/vendor/camera/VIDEO_DEBUG_20231114_221320.bin open fail!"});

    std::filesystem::remove_all(onHost(kBinFolder));
    completeFrames(100, 299);
    closeSession();
    EXPECT_EQ(countLogged("VIDEO_DEBUG_20231114_221320.bin open fail!", kLogError), 102U);
}

TEST_F(BinDumpFileTest, ShortWrite_KeepsWhatWasWritten) {
    switchRecordingOn();
    openSession();
    host::failFileCall(host::FileCall::kWrite, 1);
    completeFrames(1, 4);
    EXPECT_EQ(framesIn(kFile), (std::vector<uint32_t>{1, 3, 4}));
    EXPECT_EQ(transcript("saveDataToBinFile"),
              Names{"E saveDataToBinFile<LINE>: VDR::saveDataToBinFile, "
                    "/data/vendor/camera/VIDEO_DEBUG_20231114_221320.bin write fail, ret=4096!"});
}

TEST_F(BinDumpFileTest, SameWritesAtBothLevels_LeaveTheSameBytes) {
    switchRecordingOn();
    const std::string first = arbitrarySession(1);
    EXPECT_EQ(first.size(), 60 * kFrameRecordSize);
    EXPECT_TRUE(first == arbitrarySession(2));
}

}  // namespace
}  // namespace zk::test
