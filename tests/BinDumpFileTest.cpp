#include <array>
#include <random>

#include "platform/host/ClockControl.h"
#include "platform/host/PropertyControl.h"
#include "records/FieldTags.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Names = std::vector<std::string>;

constexpr char kFile[] = "VIDEO_DEBUG_20231114_221320.bin";  // of kNow

class BinDumpFileTest : public RecorderTest {
protected:
    // A session of frames with arbitrary fields, some of them repeated; the file that it leaves.
    std::string arbitrarySession(int level) {
        useLevel(level);
        std::mt19937 random(4096);
        openSession();
        for (uint32_t number = 1; number <= 60; ++number) {
            Frame current = frame(number);
            for (int i = 0; i < 200; ++i) {
                const auto tag = static_cast<uint32_t>(1 + random() % (kTagCount - 1));
                std::array<uint8_t, 64> bytes;  // the largest field's 60 and some
                for (uint8_t& byte : bytes) {
                    byte = static_cast<uint8_t>(random() % 70);  // counts in and beyond the limits
                }
                current.write(tag, bytes);
            }
            current.done();
            recorder().VDRReport(0);
        }
        closeSession();
        mSleep.wakeSleeper();
        destroyRecorder();
        std::string content = readBinFile(kFile);
        removeDumps();
        return content;
    }
};

struct Sessions {
    const char* name;
    const char* recordingSwitch;
    const char* script;
    const char* dumped;
};

const Sessions kSessions[] = {
        {"switched off", "0", "open 1-3 stop", ""},
        {"one record is staged", "1", "open 1", ""},
        {"two are appended", "1", "open 1-3", "221320: 1-2"},
        {"the last at the end, once", "1", "open 1-3 stop stop", "221320: 1-3"},
        {"nothing reported, and any number switches on", "-1", "open stop", "221320:"},
        {"a file per second", "1", "open 1-3 stop pause open 11-13 stop pause open 21-23 stop",
         "221320: 1-3 11-13; 221321: 21-23"},
        {"opened twice: takes the staged record along", "1", "open 1-3 pause pause open 4",
         "221320: 1-2; 221321: 3-4"},
};

TEST_F(BinDumpFileTest, Records_AreAppendedTwoAtATimeToTheFileOfTheSession) {
    for (const Sessions& sessions : kSessions) {
        SCOPED_TRACE(sessions.name);
        host::setWallClock(kNow);
        host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus",
                          sessions.recordingSwitch);
        play(sessions.script);
        EXPECT_EQ(dumps(kBinFolder), sessions.dumped);
        closeSession();
        mSleep.wakeSleeper();
        destroyRecorder();
        removeDumps();
    }
}

TEST_F(BinDumpFileTest, Name_IsTheLocalTime_AndTheLastOneWhereTheClockFails) {
    switchRecordingOn();
    host::failClock(true);
    play("open 1-2");
    EXPECT_EQ(transcript("saveDataToBinFile"),
              Names{"E saveDataToBinFile<LINE>: VDR::saveDataToBinFile,  open fail!"});
    host::failClock(false);
    setenv("TZ", "TST-5:45", 1);
    tzset();
    host::setWallClock(1704049505000000);  // 2023-12-31 19:05:05 UTC
    openSession();
    host::failClock(true);
    play("open 3-4");
    EXPECT_EQ(binFiles(), Names{"VIDEO_DEBUG_20240101_005005.bin"});
    EXPECT_EQ(dumps(kBinFolder), "5005: 3-4");
}

TEST_F(BinDumpFileTest, SameWritesAtBothLevels_LeaveTheSameBytes) {
    switchRecordingOn();
    const std::string first = arbitrarySession(1);
    EXPECT_EQ(first.size(), 60 * kFrameRecordSize);
    EXPECT_TRUE(first == arbitrarySession(2));
}

}  // namespace
}  // namespace zk::test
