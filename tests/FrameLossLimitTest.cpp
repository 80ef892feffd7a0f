#include "frameloss/FrameLossLimit.h"

#include "platform/host/ClockControl.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

using FrameLossLimitTest = RecorderTest;

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

TEST_F(FrameLossLimitTest, DayAndHistory_DecideWhetherALossIsRecorded) {
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

TEST_F(FrameLossLimitTest, OverflowedHistory_RefusesLossesUntilTheSessionEnds) {
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
}

}  // namespace
}  // namespace zk::test
