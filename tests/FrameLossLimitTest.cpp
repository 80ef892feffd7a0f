#include "frameloss/FrameLossLimit.h"

#include "platform/host/ClockControl.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Lines = std::vector<std::string>;
using FrameLossLimitTest = RecorderTest;

constexpr int64_t kSecond = 1000000;  // microseconds

struct Check {
    const char* name;
    int64_t seconds;  // later than the check before
    uint32_t lines;   // written in between
    bool isHistoryExceeded;
    bool isRefused;
};

const Check kChecks[] = {
        {"the second in which the day began", 0, 5, false, false},
        {"one line below the limit", 1, 999, false, false},
        {"at the limit", 1, 1, false, true},
        {"both limits", 1, 0, true, true},
        {"the day's last second", 86396, 234, false, true},
        {"the day's turn", 1, 0, false, false},
        {"an overflowed history", 1, 7, true, true},
        {"a clock set back", -50000, 1000, false, false},
        {"the last second of that day", 86399, 1000, false, true},
        {"an overflow on a new day", 1, 0, true, true},
};

TEST_F(FrameLossLimitTest, DayAndHistory_DecideWhetherALossIsRecorded) {
    const auto accounts = std::make_shared<LossAccounts>();
    FrameLossLimit limit(accounts);
    limit.start(kNow / kSecond);
    for (const Check& check : kChecks) {
        host::advanceWallClock(check.seconds * kSecond);
        for (uint32_t i = 0; i < check.lines; ++i) {
            accounts->countLine();
        }
        EXPECT_EQ(limit.checkFrameLostRecordStatus(check.isHistoryExceeded), check.isRefused)
                << check.name;
    }
    const std::string told =
            "I checkFrameLostRecordStatus<LINE>: VDR::checkFrameLostRecordStatus(), ";
    const std::string newDay = told + "update frame lost record count, recordCount=";
    const std::string noLimit = told + "no exceed limit, recordCount=";
    const std::string today = " limit in one day, don't write txt file if frame lost!";
    const std::string overflow = told + "exceed 100 limit, don't write txt file if frame lost!";
    EXPECT_EQ(transcript(""),
              (Lines{newDay + "5, lastTime(1700000000)>now(1700000000)!",
                     noLimit + "0, lastTime(1700000000), now(1700000000)!",
                     noLimit + "999, lastTime(1700000000), now(1700000001)!",
                     told + "exceed 1000(1000)" + today, told + "exceed 1000(1000)" + today,
                     told + "exceed 1000(1234)" + today,
                     newDay + "1234, lastTime(1700000000)<=now(1700086400)!",
                     noLimit + "0, lastTime(1700000000), now(1700086400)!", overflow,
                     newDay + "1007, lastTime(1700086400)>now(1700036401)!",
                     noLimit + "0, lastTime(1700086400), now(1700036401)!",
                     told + "exceed 1000(1000)" + today,
                     newDay + "1000, lastTime(1700036401)<=now(1700122801)!", overflow}));
}

TEST_F(FrameLossLimitTest, ThousandLinesWritten_RefuseTheNextLossUntilTheDayTurns) {
    host::advanceWallClock(-kSecond);
    openSession();
    host::advanceWallClock(kSecond);
    for (int lost = 11; lost <= 20; ++lost) {
        play("!" + std::to_string(lost) + " 101-200 stop");
    }
    EXPECT_EQ(settlement(kNow + 9), "done");
    play("!41 1-71 stop");
    EXPECT_EQ(settlement(kNow + 10), "limited");
    host::advanceWallClock(86399 * kSecond);
    play("!91 72-121 stop");
    EXPECT_EQ(settlement(kNow + 11), "done");
    EXPECT_EQ(lossFiles().size(), 11U);
}

TEST_F(FrameLossLimitTest, OverflowedHistory_RefusesLossesUntilTheSessionEnds) {
    openSession();
    play("!41 101-200");
    announceLoss(250, 2);
    announceLoss(251, 2);
    announceLoss(252);
    const std::string refused =
            "I ReceiveEvent<LINE>: [] zk::ZkaVideoDataRecoderImpl::ReceiveEvent:LINE "
            "VDR::ReceiveEvent, frameLost num already reach the max:";
    EXPECT_EQ(transcript("reach the max"),
              (Lines{refused + "2, 250", refused + "2, 251, but fail to set",
                     refused + "1700000000000000, 252, but fail to set"}));
    EXPECT_EQ(settlement(2), "limited");
    play("201-290");
    EXPECT_EQ(settlement(), "pending");
    play("stop");
    EXPECT_EQ(settlement(), "done");
    play("!330 300-360");
    EXPECT_EQ(dumps(kLossFolder), "41: 101-200; 330: 300-330");
}

}  // namespace
}  // namespace zk::test
