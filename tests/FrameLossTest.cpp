#include "frameloss/FrameLoss.h"
#include "frameloss/FrameLossLimit.h"
#include "platform/host/ClockControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

using FrameLossTest = RecorderTest;

struct Story {
    const char* name;
    const char* script;
    const char* dumped;
};

const Story kStories[] = {
        {"lost frame", "1-40 !41 42-70 71 72-200", "41: 11-40"},
        {"announced at the last moment", "1-40 42-70 !41 71", "41: 40"},
        {"lost frame is done all the same", "1-40 !41 41-71", "41: 11-41"},
        {"announced late: overflow", "1-71 !41 72-140 141 142-200", "41: 42-141"},
        {"100 frames: all are written", "1-40 !41 42-70 72-111 112", "41: 11-40 42-70 72-112"},
        {"none before it: pending until the overflow", "!41 42-71 72-200", "41: 42-141"},
        {"numbers that skip: 30 frames before, 30 numbers after",
         "2 4 6 8 10 12 14 16 18 20-44 !46 48 50 52 54 56 58 60 62 64 66 68 70 72 74 76 78",
         "46: 10 12 14 16 18 20-29"},
        {"numbers that wrap", "4294967250-4294967279 !4294967280 4294967281-4294967295 0 1-14",
         "-16: 4294967250-4294967278"},
        {"100th frame is 30 after it: overflow", "1-40 !41 42-70 42-70 42-52 71 72-110",
         "41: 11-40 42-70 42-70 42-52 71"},
        {"two, too few frames before the first: let go", "!41 !80 42-110", "80: 50-80"},
        {"close: one file for the later", "1-40 !41 !50 42-49 51-80", "50: 11-40 42-49"},
        {"30 frames apart: one file", "1-40 !41 42-60 !71 61-101", "71: 11-40 42-71"},
        {"31 frames apart: two files", "1-40 !41 !72 42-71 73-102", "41: 11-40; 72: 42-71"},
        {"30th frame after one lost too", "1-40 !41 !71 42-70 72-300", "41: 11-40 42-70 72-112"},
        {"stop with a loss pending", "1-40 !41 42-50 stop", "41: 11-40 42-50"},
        {"stop with two: one file for the first", "1-40 !41 !43 42 stop", "41: 11-40 42"},
        {"stop forgets frames and losses", "1-40 !41 stop 42-50 !51 52-81", "41: 11-40; 51: 42-50"},
        {"no loss: the last 30 frames are kept", "1-100 !101 stop", "101: 71-100"},
        {"frame 0 is not kept", "1 0 2 !41 stop", "41: 1-2"},
};

TEST_F(FrameLossTest, LostFrames_AreDumpedWithThoseBeforeThem) {
    host::runTasksInline(true);  // a second file of one name must replace the first
    for (const Story& story : kStories) {
        SCOPED_TRACE(story.name);
        openSession();
        play(story.script);
        EXPECT_EQ(dumps(kLossFolder), story.dumped);
        closeSession();
        files(kLossFolder);  // the writers have ended
        removeDumps();
    }
}

TEST_F(FrameLossTest, Losses_AreToldWhenDueWhenSharedAndWhenTheyOverflow) {
    openSession();
    play("!41 42-71");
    EXPECT_EQ(transcript("Txt"), Lines{}) << "told, but with too few frames to dump";
    play("72-141 stop 1-40 !41 !45 !100 42-44 46-99 101-130 !90 !95 131-200 0");
    FrameLoss(1).frameLostProcess(nullptr);
    const std::string prefix = "frameLostProcess<LINE>: VDR::frameLostProcess, ";
    const std::string one = "I " + prefix + "mFrameLostNumQueue(1), front=";
    const std::string several = "I " + prefix + "mFrameLostNumQueue>=2, ";
    EXPECT_EQ(transcript("frameLostProcess"),
              (Lines{one + "41, currentDoneFrame=71, dump data to txt!",
                     one + "41, currentDoneFrame=141, exceed 100, dump data to txt!",
                     several + "3, front=41 pop, currentDoneFrame=71!",
                     several + "2, front=45 pop, currentDoneFrame=75!",
                     several + "1, front=45, currentDoneFrame=75, dump data to txt!",
                     one + "100, currentDoneFrame=130, dump data to txt!",
                     several + "2, front=90, currentDoneFrame=200, exceed 100, dump data to txt!",
                     "E " + prefix + "currentDoneFrame is 0!",
                     "E " + prefix + "frameDebugInfo is null!"}));
}

// An announcement that passed the limits just before an overflow may be queued just behind it.
TEST_F(FrameLossTest, StopAfterAnOverflow_WritesNoFurtherFile) {
    LossCompletions completions;
    FrameLossHistory history(completions);
    frameData frame{};
    frame.bytes[0] = 100;
    history.announce(41, 1, nullptr);
    for (int i = 0; i < 99; ++i) {
        EXPECT_FALSE(history.frameLostProcess(&frame).has_value());
    }
    EXPECT_TRUE(history.frameLostProcess(&frame).has_value());
    history.announce(206, 2, nullptr);
    EXPECT_FALSE(history.stop().has_value());
}

// Another thread stops the recorder, or announces the next loss, just behind the frame that
// completes a dump.
TEST_F(FrameLossTest, StopBehindTheFrameThatCompletesADump_WaitsForItsFile) {
    LossCompletions completions;
    FrameLossHistory history(completions);
    const auto promise = std::make_shared<SyncManager::Promise>();
    const auto settled = promise->get_future();
    const auto isSettled = [&settled] {
        return settled.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    };
    history.announce(41, 1, promise);
    std::optional<FrameLossHistory::Dump> dump;
    frameData frame{};
    for (frame.bytes[0] = 11; !dump.has_value() && frame.bytes[0] <= 71; ++frame.bytes[0]) {
        dump = history.frameLostProcess(&frame);
    }
    ASSERT_TRUE(dump.has_value());
    history.announce(72, 2, nullptr);
    history.stop();
    EXPECT_FALSE(isSettled()) << "told before its file is written";
    EXPECT_EQ(dump->file.lostTimeStamp, 1U);
    completions.finishFile(dump->file, "");
    EXPECT_TRUE(isSettled());
}

constexpr int64_t kSecond = 1000000;  // microseconds

struct Check {
    int64_t seconds;  // later than the check before
    uint32_t lines;   // written in between
    bool isHistoryExceeded;
    const char* told;
};

const Check kChecks[] = {
        {0, 5, false, "no exceed limit, recordCount=0, lastTime(1700000000), now(1700000000)!"},
        {1, 999, false, "no exceed limit, recordCount=999, lastTime(1700000000), now(1700000001)!"},
        {1, 1, true, "exceed 1000(1000) limit in one day, don't write txt file if frame lost!"},
        {86397, 0, false,
         "exceed 1000(1000) limit in one day, don't write txt file if frame lost!"},
        {1, 0, false, "no exceed limit, recordCount=0, lastTime(1700000000), now(1700086400)!"},
        {1, 7, true, "exceed 100 limit, don't write txt file if frame lost!"},
        {-50000, 1000, false,
         "no exceed limit, recordCount=0, lastTime(1700086400), now(1700036401)!"},
};

TEST_F(FrameLossTest, DayAndHistory_DecideWhetherALossIsRecorded) {
    FrameLossLimit limit;
    limit.start(kNow / kSecond);
    const std::string prefix =
            "I checkFrameLostRecordStatus<LINE>: VDR::checkFrameLostRecordStatus(), ";
    for (const Check& check : kChecks) {
        host::advanceWallClock(check.seconds * kSecond);
        for (uint32_t i = 0; i < check.lines; ++i) {
            limit.countLine();
        }
        EXPECT_EQ(limit.checkFrameLostRecordStatus(check.isHistoryExceeded), check.told[0] == 'e');
        EXPECT_EQ(transcript("").back(), prefix + check.told);
    }
    const std::string newDay = prefix + "update frame lost record count, recordCount=";
    EXPECT_EQ(transcript("update"),
              (Lines{newDay + "5, lastTime(1700000000)>now(1700000000)!",
                     newDay + "1000, lastTime(1700000000)<=now(1700086400)!",
                     newDay + "1007, lastTime(1700086400)>now(1700036401)!"}));
}

TEST_F(FrameLossTest, OverflowedHistory_RefusesLossesUntilTheSessionEnds) {
    openSession();
    host::advanceWallClock(kSecond);  // the day has started
    play("!41 101-200");
    announceLoss(250, 2);
    announceLoss(251, 2);
    const std::string refused =
            "I ReceiveEvent<LINE>: [] zk::ZkaVideoDataRecoderImpl::ReceiveEvent:LINE "
            "VDR::ReceiveEvent, frameLost num already reach the max:";
    EXPECT_EQ(transcript("reach the max"),
              (Lines{refused + "2, 250", refused + "2, 251, but fail to set"}));
    EXPECT_EQ(settlement(2), "limited");
    play("201-290");
    EXPECT_EQ(settlement(), "pending");
    play("stop");
    EXPECT_EQ(settlement(), "done");
    play("!330 300-360");
    EXPECT_EQ(dumps(kLossFolder), "41: 101-200; 330: 300-330");
    EXPECT_EQ(countLogged("update frame lost record count"), 0U);
    EXPECT_EQ(countLogged("no exceed limit, recordCount=100, "), 1U) << "the lines of the file";
}

}  // namespace
}  // namespace zk::test
