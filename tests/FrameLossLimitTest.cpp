#include "frameloss/FrameLossLimit.h"

#include "platform/host/ClockControl.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Lines = std::vector<std::string>;

constexpr int64_t kSecond = 1000000;  // microseconds

enum class Verdict { kNoLimit, kDayIsFull, kHistoryOverflowed };

struct Day {
    const char* name;
    uint32_t lines;   // written since the day began
    int64_t seconds;  // later than that
    bool isHistoryExceeded;
    const char* reset;  // how the message of a new day compares the times; empty: no new day
    Verdict verdict;
};

const Day kDays[] = {
        {"one line below the limit", 999, 1, false, "", Verdict::kNoLimit},
        {"at the limit", 1000, 1, false, "", Verdict::kDayIsFull},
        {"the day's last second", 1234, 86399, false, "", Verdict::kDayIsFull},
        {"the day's turn", 1000, 86400, false, "<=", Verdict::kNoLimit},
        {"the second in which the day began", 1000, 0, false, ">", Verdict::kNoLimit},
        {"a clock set back", 1000, -1, false, ">", Verdict::kNoLimit},
        {"an overflowed history", 7, 1, true, "", Verdict::kHistoryOverflowed},
        {"an overflow and a new day", 1000, 90000, true, "<=", Verdict::kHistoryOverflowed},
        {"both limits", 1000, 1, true, "", Verdict::kDayIsFull},
};

using FrameLossLimitTest = RecorderTest;

TEST_F(FrameLossLimitTest, DayAndHistory_DecideWhetherALossIsRecorded) {
    for (const Day& day : kDays) {
        SCOPED_TRACE(day.name);
        forgetLog();
        const auto accounts = std::make_shared<LossAccounts>();
        FrameLossLimit limit(accounts);
        limit.start(kNow / kSecond);
        for (uint32_t i = 0; i < day.lines; ++i) {
            accounts->countLine();
        }
        host::setWallClock(kNow);
        host::advanceWallClock(day.seconds * kSecond);
        EXPECT_EQ(limit.checkFrameLostRecordStatus(day.isHistoryExceeded),
                  day.verdict != Verdict::kNoLimit);

        const bool isReset = *day.reset != '\0';
        const std::string count = std::to_string(isReset ? 0 : day.lines);
        const std::string now = "now(" + std::to_string(1700000000 + day.seconds) + ")!";
        const std::string prefix =
                "I checkFrameLostRecordStatus<LINE>: VDR::checkFrameLostRecordStatus(), ";
        Lines expected;
        if (isReset) {
            expected.push_back(prefix + "update frame lost record count, recordCount=" +
                               std::to_string(day.lines) + ", lastTime(1700000000)" + day.reset +
                               now);
        }
        if (day.verdict == Verdict::kNoLimit) {
            expected.push_back(prefix + "no exceed limit, recordCount=" + count +
                               ", lastTime(1700000000), " + now);
        } else {
            expected.push_back(prefix + "exceed 100" +
                               (day.verdict == Verdict::kDayIsFull
                                        ? "0(" + count + ") limit in one day"
                                        : " limit") +
                               ", don't write txt file if frame lost!");
        }
        EXPECT_EQ(transcript(""), expected);
    }
}

TEST_F(FrameLossLimitTest, ResetCount_StartsANewDay) {
    const auto accounts = std::make_shared<LossAccounts>();
    FrameLossLimit limit(accounts);
    limit.start(kNow / kSecond + 50000);
    EXPECT_FALSE(limit.checkFrameLostRecordStatus(false)) << "the clock has been set back";
    for (int i = 0; i < 1000; ++i) {
        accounts->countLine();
    }
    host::advanceWallClock(86399 * kSecond);
    EXPECT_TRUE(limit.checkFrameLostRecordStatus(false));
    host::advanceWallClock(kSecond);
    EXPECT_FALSE(limit.checkFrameLostRecordStatus(false));
}

TEST_F(FrameLossLimitTest, ThousandLinesWritten_RefuseTheNextLossUntilTheDayTurns) {
    openSession();
    for (uint32_t i = 1; i <= 10; ++i) {
        host::advanceWallClock(kSecond);
        announceLoss(1000 * i, kNow + i);
        completeFrames(1000 * i + 101, 1000 * i + 200);
        closeSession();
    }
    EXPECT_EQ(lossFiles().size(), 10U);
    host::advanceWallClock(kSecond);
    announceLoss(41, 1);
    EXPECT_EQ(settlement(1), "limited");
    completeFrames(1, 71);
    EXPECT_EQ(lossFiles().size(), 10U);

    host::advanceWallClock(86400 * kSecond);
    announceLoss(91, 2);
    EXPECT_EQ(settlement(2), "pending");
    completeFrames(72, 121);
    EXPECT_EQ(lossFiles().size(), 11U);
    closeSession();
    EXPECT_EQ(settlement(2), "done");
}

TEST_F(FrameLossLimitTest, OverflowedHistory_RefusesLossesUntilTheSessionEnds) {
    openSession();
    announceLoss(41, 1);
    completeFrames(101, 200);
    announceLoss(250, 2);
    announceLoss(251, 2);
    announceLoss(252, 1);
    const std::string refused =
            "I ReceiveEvent<LINE>: [] zk::ZkaVideoDataRecoderImpl::ReceiveEvent:LINE "
            "VDR::ReceiveEvent, frameLost num already reach the max:";
    EXPECT_EQ(transcript("reach the max"),
              (Lines{refused + "2, 250", refused + "2, 251, but fail to set",
                     refused + "1, 252, but fail to set"}));
    EXPECT_EQ(settlement(2), "limited");
    completeFrames(201, 290);
    EXPECT_EQ(lossFiles().size(), 1U);
    EXPECT_EQ(settlement(1), "pending");

    closeSession();
    EXPECT_EQ(settlement(1), "done");
    announceLoss(330, 3);
    completeFrames(300, 360);
    EXPECT_EQ(lossFiles().size(), 2U);
}

}  // namespace
}  // namespace zk::test
