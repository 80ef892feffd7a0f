#include <sys/stat.h>

#include <atomic>
#include <chrono>

#include "platform/SyncManager.h"
#include "platform/host/FileControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "records/makeFrameContent.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

constexpr char kName[] = "VIDEO_DEBUG_20231114_221320_00000041.txt";
const std::string kPath = kLossFolder + std::string("/") + kName;
const std::string kWriter = "I operator()<LINE>: VDR::writeTxtForPreviewFrameLost, ";
const std::string kRequest =
        "I dumpDataToFrameLostTxtFile<LINE>: VDR::dumpDataToFrameLostTxtFile, ";
const std::string kWritten = kWriter + kPath + " write succ, lostTimeStamp=1700000000000000!";
const std::string kCompleted = kRequest + "flush now, trigger promise!";
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
    std::string calls;
    host::setFileCallHandler([&](host::FileCall call) {
        if (call != host::FileCall::kOpen) {  // the sampler's too
            calls += "OWCM"[static_cast<int>(call)];
        }
    });
    const mode_t mask = umask(077);
    play("!41 42-71");
    EXPECT_EQ(files(kLossFolder)[kName], expected);
    umask(mask);
    host::setFileCallHandler(nullptr);
    EXPECT_EQ(calls, std::string(30, 'W') + "CM");
    EXPECT_EQ(std::filesystem::status(onHost(kPath)).permissions(), std::filesystem::perms::all);
}

TEST_F(FrameLostTxtFileTest, Name_IsTheLatestAnnouncementsLocalTimeAndTheFirstLostFrame) {
    setenv("TZ", "VDR+22:14", 1);
    tzset();
    announceLoss(123456789, kNow + 99999999);
    announceLoss(123456790, kNow + 39999999);  // earlier, and the latest to come
    announceLoss(123456791, kNow + 99999999);  // a promise that was there
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

TEST_F(FrameLostTxtFileTest, FileOfTheStop_IsNotCounted_NobodyWaitsForIt) {
    host::runTasksInline(true);
    play("11-40 !41 42-46 stop stop");
    EXPECT_EQ(told(),
              (Lines{kRequest + "flush now, still write a txt, front=41!", kCompleted, kWritten}));
    EXPECT_EQ(settlement(), "done");
    forgetLog();
    host::failFileCall(host::FileCall::kWrite, 1);
    play("open 11-40 !42 41-46 stop");
    EXPECT_EQ(countLogged(".txt write fail, ret="), 1U);
    EXPECT_EQ(countLogged(".txt write succ"), 1U) << "what was opened counts as written";
}

TEST_F(FrameLostTxtFileTest, Stop_CompletesEveryLoss_TheLatestAfterItsFiles) {
    host::stopThreadPool();
    play("11-40 !41 !43 !100 42-99");
    announceLoss(100, latestLoss());  // known: its count goes on
    play("101-130 stop stop");
    EXPECT_EQ(told(), (Lines{kRequest + "count:1!", kRequest + "count:2!", kCompleted, kCompleted,
                             kPromiseLeft}));
    EXPECT_EQ(settlement(kNow) + settlement(kNow + 1) + settlement(kNow + 2), "donedonepending");
    std::atomic<bool> isEarly{false};
    const auto latest = SyncManager::getInstance()->getFuture(kNow + 2);
    host::setFileCallHandler([&](host::FileCall call) {
        isEarly =
                isEarly || (call != host::FileCall::kOpen &&
                            latest.wait_for(std::chrono::seconds(0)) == std::future_status::ready);
    });
    host::restartThreadPool();  // several writers at once
    EXPECT_EQ(dumps(kLossFolder), "43: 11-40 42-43; 100: 70-99");
    EXPECT_EQ(countLogged("FrameLost, count=1!") + countLogged("FrameLost, count=0!"), 2U);
    EXPECT_EQ(settlement(kNow + 2), "done");
    host::setFileCallHandler(nullptr);
    EXPECT_FALSE(isEarly) << "not before its files are closed";
    closeSession();  // nothing is left to complete
}

// Before the stop, behind it, and where one file of two can be written.
TEST_F(FrameLostTxtFileTest, FileThatCannotBeOpened_KeepsNobodyWaiting) {
    host::runTasksInline(true);
    host::failEveryOpen(true);
    play("11-40 !41 42-71 stop");
    EXPECT_EQ(told().back(), kCompleted);
    EXPECT_EQ(settlement(), "done");
    host::runTasksInline(false);
    for (const host::FileCall failing : {host::FileCall::kOpen, host::FileCall::kWrite}) {
        SCOPED_TRACE(static_cast<int>(failing));
        host::failEveryOpen(failing == host::FileCall::kOpen);
        host::stopThreadPool();
        play("111-140 !141 142-171 !172 173-202 stop");
        host::failFileCall(host::FileCall::kOpen, 1);
        EXPECT_EQ(settlement(latestLoss()), "pending");
        forgetLog();
        host::restartThreadPool();
        EXPECT_EQ(settlement(latestLoss()), "done");
        EXPECT_EQ(told().back(), kWriter + "trigger promise");
    }
}

TEST_F(FrameLostTxtFileTest, MoreFilesThanADayMayHold_DoNotWaitForThePool) {
    constexpr uint32_t kMost = 32;
    host::stopThreadPool();
    completeFrames(1, 40);
    for (uint32_t lost = 41; lost < 41 + 40 * (kMost + 1); lost += 40) {
        announceLoss(lost);
        completeFrames(lost, lost + 39);
    }
    EXPECT_EQ(transcript("open fail!"),
              Lines{"E" + kWriter.substr(1) + kLossFolder +
                    "/VIDEO_DEBUG_20231114_221320_00001321.txt open fail!"});
    closeSession();
    host::restartThreadPool();
    EXPECT_EQ(files(kLossFolder).size(), kMost);
    EXPECT_EQ(settlement(), "done");
}

// Neither is what the name leads to ours, nor is there always somebody who reads a pipe.
TEST_F(FrameLostTxtFileTest, LinksAndPipesInPlaceOfFiles_AreNotOpened) {
    switchRecordingOn();
    destroyRecorder();
    openSession();
    const std::string bin = kBinFolder + std::string("/VIDEO_DEBUG_20231114_221320.bin");
    layFile("/data/innocent", "whole");
    for (const std::string& path : {kPath, bin}) {
        std::filesystem::create_symlink(onHost("/data/innocent"), onHost(path));
    }
    play("11-40 !41 41-71");
    host::waitForThreadPool();
    EXPECT_EQ(readFile("/data/innocent"), "whole");
    for (const std::string& path : {kPath, bin}) {
        std::filesystem::remove(onHost(path));
        ASSERT_EQ(mkfifo(onHost(path).c_str(), 0666), 0);
    }
    play("stop open 11-40 !41 41-71 stop");
    host::waitForThreadPool();
    EXPECT_EQ(countLogged("writeTxtForPreviewFrameLost, " + kPath + " open fail!"), 2U);
    EXPECT_EQ(countLogged("saveDataToBinFile, " + bin + " open fail!"), 31U + 31U);
}

}  // namespace
}  // namespace zk::test
