#include <sys/stat.h>

#include <numeric>

#include "platform/host/ClockControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "records/makeFrameContent.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

const std::string kName = "VIDEO_DEBUG_20231114_221320_00000041.txt";
const std::string kPath = kLossFolder + ("/" + kName);
const std::string kWriter = "operator()<LINE>: VDR::writeTxtForPreviewFrameLost, ";
const std::string kRequest =
        "I dumpDataToFrameLostTxtFile<LINE>: VDR::dumpDataToFrameLostTxtFile, ";
const std::string kWritten =
        "I " + kWriter + kPath + " write succ, lostTimeStamp=1700000000000000!";
const std::string kCountedDown = "I " + kWriter + "count=0!";
const std::string kPromiseKept = kRequest + "flush now, trigger promise!";
const std::string kPromiseLeft = kRequest + "record notifyFlag in flush!";
const std::string kFlush = kRequest + "flush now, still write a txt, front=41!";
constexpr uint32_t kTagZoomRatio = 5;
constexpr uint32_t kTagNodeInfoCount = 17;
constexpr uint32_t kTagAwbSaCount = 36;

class FrameLostTxtFileTest : public RecorderTest {
protected:
    FrameLostTxtFileTest() {
        openSession();
        EXPECT_TRUE(mSleep.waitForSleep(1)) << "the sampler has opened its files";
    }
    ~FrameLostTxtFileTest() override {
        for (const auto call : {host::FileCall::kOpen, host::FileCall::kWrite,
                                host::FileCall::kClose, host::FileCall::kChangeMode}) {
            host::failFileCall(call, 0);
        }
    }

    // The thirty frames before `lost` are done, and as many of those behind it as told.
    void loseFrame(uint32_t lost = 41, uint32_t framesBehind = 30) {
        completeFrames(lost - 30, lost - 1);
        announceLoss(lost, kNow + lost - 41);
        completeFrames(lost + 1, lost + framesBehind);
    }

    std::string content() const {
        host::waitForThreadPool();
        return readFile(onHost(kPath));
    }

    // The log about files and promises, without the address that it shows.
    static Lines told() {
        host::waitForThreadPool();
        Lines lines = transcript("Txt");
        for (std::string& line : lines) {
            if (const size_t at = line.find("promise, lostTimeStamp="); at != std::string::npos) {
                line.resize(at + 7);
            }
        }
        return lines;
    }
};

TEST_F(FrameLostTxtFileTest, File_HoldsTheRenderedRecordsAndIsEverybodys) {
    std::string expected;
    for (uint32_t number = 11; number <= 40; ++number) {
        frame(number).write(kTagZoomRatio, 0.01f * static_cast<float>(number)).done();
        char line[kFrameRecordSize] = {};
        makeFrameContent(1, oldestDone().data(), line);
        expected += line;
        recorder().VDRReport(0);
    }
    layFile(kPath, "what an earlier process left");
    const mode_t mask = umask(077);
    announceLoss(41);
    completeFrames(42, 71);
    EXPECT_EQ(content(), expected);
    umask(mask);
    EXPECT_EQ(fs::status(onHost(kPath)).permissions(), fs::perms::all);
}

TEST_F(FrameLostTxtFileTest, Name_IsTheAnnouncementsLocalTimeAndTheLostFrame) {
    setenv("TZ", "VDR+22:14", 1);
    tzset();
    completeFrames(1, 1);
    announceLoss(123456789, kNow + 39999999);
    closeSession();
    announceLoss(1234, kNow + 40000000);
    closeSession();
    EXPECT_EQ(lossFiles(), (Lines{"VIDEO_DEBUG_20231113_235959_123456789.txt",
                                  "VIDEO_DEBUG_20231114_000000_00001234.txt"}));
}

TEST_F(FrameLostTxtFileTest, MissingFolder_LeavesTheLossUnsettled) {
    fs::remove(onHost(kLossFolder));
    loseFrame();
    EXPECT_EQ(told(), (Lines{kRequest + "count:1!", "E " + kWriter + kPath + " open fail!"}));
    closeSession();
    EXPECT_EQ(told().back(), kPromiseLeft);
    EXPECT_EQ(settlement(), "pending");
    EXPECT_FALSE(fs::exists(onHost(kLossFolder)));
}

TEST_F(FrameLostTxtFileTest, FailingCloseAndMode_ChangeNothingElse) {
    host::failFileCall(host::FileCall::kClose, 1);
    host::failFileCall(host::FileCall::kChangeMode, 1);
    loseFrame();
    EXPECT_EQ(told(), (Lines{kRequest + "count:1!", kWritten, "E " + kWriter + "chmod fail!",
                             kCountedDown}));
    closeSession();
    EXPECT_EQ(told().back(), kPromiseKept);
    EXPECT_EQ(settlement(), "done");
}

TEST_F(FrameLostTxtFileTest, ShortWrite_LeavesHalfALineAndCarriesOn) {
    host::failFileCall(host::FileCall::kWrite, 2);
    loseFrame();
    const std::string text = content();
    const size_t line = text.find('\n') + 1;
    EXPECT_EQ(text.size(), 29 * line + line / 2);
    EXPECT_EQ(text.substr(line + line / 2, 3), "13,") << "directly behind half of frame 12";
    EXPECT_EQ(transcript("fail"),
              Lines{"E " + kWriter + kPath + " write fail, ret=" + std::to_string(line / 2) + "!"});
    EXPECT_EQ(told().back(), kCountedDown);
}

TEST_F(FrameLostTxtFileTest, FullDisk_CostsTheContentOnly) {
    fs::create_symlink("/dev/full", onHost(kPath));
    host::failFileCall(host::FileCall::kChangeMode, 1);  // leave this machine's device alone
    loseFrame();
    EXPECT_EQ(told().back(), kCountedDown);
    EXPECT_GE(countLogged("write fail, ret=", 6), 1U);
    host::advanceWallClock(1000000);
    announceLoss(200, 1);
    EXPECT_EQ(countLogged("no exceed limit, recordCount=30,"), 1U) << "lost lines count as well";
}

// Whoever completes a frame neither renders nor writes: the pool does, even if it comes to it late.
TEST_F(FrameLostTxtFileTest, StoppedPool_WritesWhenItStartsAgain_EvenAfterTheRecorderIsGone) {
    constexpr uint8_t kMany = 255;
    host::stopThreadPool();
    for (uint32_t number = 11; number <= 40; ++number) {
        // Too long a line: rendering it shows in the log.
        frame(number).write(kTagNodeInfoCount, kMany).write(kTagAwbSaCount, kMany).done();
        recorder().VDRReport(0);
    }
    announceLoss(41);
    completeFrames(42, 71);
    EXPECT_EQ(transcript("stopped"), Lines{"E enqueue on stopped OrnThreadManager"});
    closeSession();
    const Lines untilStop{kRequest + "count:1!", kPromiseLeft};
    EXPECT_EQ(told(), untilStop);
    EXPECT_EQ(settlement(), "pending");
    mSleep.open();
    destroyRecorder();
    EXPECT_EQ(lossFiles(), Lines{});
    EXPECT_EQ(countLogged("makeFrameContent"), 0U);

    host::restartThreadPool();
    EXPECT_EQ(lossFiles(), Lines{kName});
    EXPECT_EQ(countLogged("makeFrameContent"), 30U);
    Lines expected = untilStop;
    expected.insert(expected.end(), {kWritten, kCountedDown, "I " + kWriter + "trigger promise"});
    EXPECT_EQ(told(), expected);
    EXPECT_EQ(settlement(), "done");
}

TEST_F(FrameLostTxtFileTest, FileOfTheStop_IsNotCounted_SoItsWriterMayTakeTheCountBelowZero) {
    host::runTasksInline(true);
    loseFrame(41, 5);
    closeSession();
    EXPECT_EQ(told(), (Lines{kFlush, kWritten, "I " + kWriter + "count=255!", kPromiseLeft}));
    EXPECT_EQ(settlement(), "pending");
}

TEST_F(FrameLostTxtFileTest, FileOfTheStop_MayComeAfterThePromise) {
    host::stopThreadPool();
    loseFrame(41, 5);
    closeSession();
    EXPECT_EQ(settlement(), "done");
    host::restartThreadPool();
    EXPECT_EQ(told(), (Lines{kFlush, kPromiseKept, kWritten}));
}

TEST_F(FrameLostTxtFileTest, LatestLoss_IsCreditedWithEveryFileAndAloneSettledAtTheStop) {
    host::stopThreadPool();
    completeFrames(11, 40);
    announceLoss(41, kNow - 1);
    announceLoss(100, kNow);
    completeFrames(42, 99);
    completeFrames(101, 130);
    closeSession();
    EXPECT_EQ(told(), (Lines{kRequest + "count:1!", kRequest + "count:2!", kPromiseLeft}));
    closeSession();
    EXPECT_EQ(told().size(), 3U) << "once is enough";
    host::restartThreadPool();
    EXPECT_EQ(lossFiles(), (Lines{kName, "VIDEO_DEBUG_20231114_221320_00000100.txt"}));
    EXPECT_EQ(countLogged("FrameLost, count=1!") + countLogged("FrameLost, count=0!"), 2U);
    EXPECT_EQ(settlement(kNow), "done");
    EXPECT_EQ(settlement(kNow - 1), "pending");
}

TEST_F(FrameLostTxtFileTest, SeveralWritersAtOnce_WriteEachItsOwn) {
    constexpr uint32_t kLosses = 12;
    host::stopThreadPool();
    for (uint32_t i = 1; i <= kLosses; ++i) {
        loseFrame(100 * i);
    }
    host::restartThreadPool();
    const Lines names = lossFiles();
    ASSERT_EQ(names.size(), kLosses);
    for (uint32_t i = 1; i <= kLosses; ++i) {
        std::vector<uint32_t> expected(30);
        std::iota(expected.begin(), expected.end(), 100 * i - 30);
        EXPECT_EQ(framesInLossFile(names[i - 1]), expected);
    }
    EXPECT_EQ(countLogged("FrameLost, count=0!"), kLosses);
}

}  // namespace
}  // namespace zk::test
