#include "platform/host/ClockControl.h"
#include "platform/host/PropertyControl.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

using BinDumpFileTest = RecorderTest;

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
        host::setWallClock(kNow);
        host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus",
                          sessions.recordingSwitch);
        play(sessions.script);
        EXPECT_EQ(dumps(kBinFolder), sessions.dumped) << sessions.name;
        destroyRecorder();
        removeDumps();
    }
}

TEST_F(BinDumpFileTest, Name_IsTheLocalTime_AndTheLastOneWhereTheClockFails) {
    switchRecordingOn();
    host::failClock(true);
    play("open 1-2");
    EXPECT_EQ(transcript("saveDataToBinFile"),
              Lines{"E saveDataToBinFile<LINE>: VDR::saveDataToBinFile,  open fail!"});
    host::failClock(false);
    setenv("TZ", "TST-5:45", 1);
    tzset();
    host::setWallClock(1704049505000000);  // 2023-12-31 19:05:05 UTC
    openSession();
    host::failClock(true);
    play("open 3-4");
    EXPECT_EQ(files(kBinFolder).count("VIDEO_DEBUG_20240101_005005.bin"), 1U);
    EXPECT_EQ(dumps(kBinFolder), "5005: 3-4");
}

}  // namespace
}  // namespace zk::test
