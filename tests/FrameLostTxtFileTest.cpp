#include <sys/stat.h>

#include "platform/host/ThreadPoolControl.h"
#include "records/makeFrameContent.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

constexpr char kName[] = "VIDEO_DEBUG_20231114_221320_00000041.txt";
const std::string kPath = kLossFolder + std::string("/") + kName;
const std::string kWriter = "I operator()<LINE>: VDR::writeTxtForPreviewFrameLost, ";
const std::string kRequest =
        "I dumpDataToFrameLostTxtFile<LINE>: VDR::dumpDataToFrameLostTxtFile, ";
const std::string kWritten = kWriter + kPath + " write succ, lostTimeStamp=1700000000000000!";
const std::string kPromiseLeft = kRequest + "record notifyFlag in flush!";

class FrameLostTxtFileTest : public RecorderTest {
protected:
    FrameLostTxtFileTest() { openSession(); }

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
        frame(number).stamp().done();
        char line[kFrameRecordSize] = {};
        makeFrameContent(1, oldestDone().data(), line);
        expected += line;
        recorder().VDRReport(0);
    }
    layFile(kPath, "what an earlier process left");
    const mode_t mask = umask(077);
    play("!41 42-71");
    EXPECT_EQ(files(kLossFolder)[kName], expected);
    umask(mask);
    EXPECT_EQ(std::filesystem::status(onHost(kPath)).permissions(), std::filesystem::perms::all);
}

TEST_F(FrameLostTxtFileTest, Name_IsTheAnnouncementsLocalTimeAndTheLostFrame) {
    setenv("TZ", "VDR+22:14", 1);
    tzset();
    announceLoss(123456789, kNow + 39999999);
    closeSession();
    EXPECT_EQ(files(kLossFolder).count("VIDEO_DEBUG_20231113_235959_123456789.txt"), 1U);
}

// Whoever completes a frame neither renders nor writes: the pool does, even if it comes to it late.
TEST_F(FrameLostTxtFileTest, StoppedPool_WritesWhenItStartsAgain_EvenAfterTheRecorderIsGone) {
    constexpr uint8_t kMany = 255;
    host::stopThreadPool();
    for (uint32_t number = 11; number <= 40; ++number) {
        // Two lists of so many are too long a line, and rendering it shows in the log.
        frame(number)
                .write(tag::nodeInfoCount, kMany)
                .write(tag::awbInfo_qawb_cap_saCount, kMany)
                .done();
        recorder().VDRReport(0);
    }
    play("!41 42-71 stop");
    destroyRecorder();
    EXPECT_EQ(settlement(), "pending");
    EXPECT_EQ(countLogged("makeFrameContent"), 0U);
    host::restartThreadPool();
    EXPECT_EQ(told(), (Lines{kRequest + "count:1!", kPromiseLeft, kWritten, kWriter + "count=0!",
                             kWriter + "trigger promise"}));
    EXPECT_EQ(countLogged("makeFrameContent"), 30U);
    EXPECT_EQ(settlement(), "done");
}

TEST_F(FrameLostTxtFileTest, FileOfTheStop_IsNotCounted_SoItsWriterMayTakeTheCountBelowZero) {
    host::runTasksInline(true);
    play("11-40 !41 42-46 stop");
    EXPECT_EQ(told(), (Lines{kRequest + "flush now, still write a txt, front=41!", kWritten,
                             kWriter + "count=255!", kPromiseLeft}));
    EXPECT_EQ(settlement(), "pending");
}

TEST_F(FrameLostTxtFileTest, LatestLoss_IsCreditedWithEveryFileAndAloneSettledAtTheStop) {
    host::stopThreadPool();
    play("11-40 !41 !100 42-99 101-130 stop stop");
    EXPECT_EQ(told(), (Lines{kRequest + "count:1!", kRequest + "count:2!", kPromiseLeft}));
    host::restartThreadPool();  // several writers at once
    EXPECT_EQ(dumps(kLossFolder), "41: 11-40; 100: 70-99");
    EXPECT_EQ(countLogged("FrameLost, count=1!") + countLogged("FrameLost, count=0!"), 2U);
    EXPECT_EQ(settlement(kNow + 1) + settlement(kNow), "donepending");
}

}  // namespace
}  // namespace zk::test
