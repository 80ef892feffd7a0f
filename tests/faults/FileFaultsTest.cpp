#include <sched.h>
#include <sys/mount.h>

#include "platform/host/FileControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "tests/faults/WholeSessionTest.h"

namespace zk::test {
namespace {

using host::FileCall;

class FileFaultsTest : public WholeSessionTest {
protected:
    static size_t sizeOf(Outcome& outcome) {
        return outcome["bin"].size() + outcome["text"].size();
    }

    // The files of a fresh device's first session, and how the messages about them begin.
    const std::string mBinPath = kBinFolder + ('/' + binFile());
    const std::string mTextPath = kLossFolder + ('/' + textFile());
    const std::string mBinError = "VDR::saveDataToBinFile, " + mBinPath;
    const std::string mTextError = "VDR::writeTxtForPreviewFrameLost, " + mTextPath;
};

TEST_F(FileFaultsTest, NothingFails_EverythingIsThere) {
    const std::string& text = mWhole["text"];
    EXPECT_EQ(mWhole["bin"].size(), kFrames * kFrameRecordSize);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), long{kLostFrame});
    EXPECT_EQ(mWhole["files"] + mWhole["settlement"] + mWhole["maps"] + mWhole["errors"], "2done");
    EXPECT_NE(mWhole["livePhoto"].find("\"state\" : 1"), std::string::npos);
}

// Each call in turn of those that a session makes: what hung on it is lost and told in one line,
// nothing else is, and the next session is whole.
TEST_F(FileFaultsTest, CallThatFails_CostsWhatHungOnItAndIsTold) {
    constexpr size_t kAppends = kFrames / 2 + 1;
    const size_t whole = sizeOf(mWhole);
    struct Row {
        FileCall call;
        size_t calls;
        size_t lost;  // bytes in all
    };
    const Row rows[] = {{FileCall::kOpen, kSamplerFiles + kAppends + 1, whole},
                        {FileCall::kWrite, kAppends + kLostFrame, whole / 2},  // half is written
                        {FileCall::kClose, kAppends + 1, 0},
                        {FileCall::kChangeMode, 1, 0}};
    std::string told;
    for (const Row& row : rows) {
        size_t lost = 0;
        for (size_t nth = 1; nth <= row.calls + 1; ++nth) {
            SCOPED_TRACE("call " + std::to_string(nth));
            freshDevice();
            host::failFileCall(row.call, static_cast<int>(nth));
            Outcome outcome = playSession();
            host::failFileCall(row.call, 0);
            const std::string errors = outcome["errors"];
            const size_t lostHere = whole - sizeOf(outcome);
            const bool isError = lostHere > 0 || (row.lost == 0 && nth <= row.calls);
            EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), isError ? 1 : 0) << errors;
            EXPECT_EQ(outcome["files"] + outcome["settlement"],
                      errors.find(mTextError + " open") == 0 ? "1done" : "2done");
            for (const char* hurt : {"bin", "text", "errors", "files", "settlement"}) {
                outcome[hurt] = mWhole[hurt];
            }
            expectSame(outcome, mWhole);
            expectSame(playSession(), mWhole);
            lost += lostHere;
            told += errors;
        }
        EXPECT_NEAR(static_cast<double>(lost), static_cast<double>(row.lost), kLostFrame);
    }
    for (const std::string& error :
         {mBinError + " open fail!\n", mTextError + " open fail!\n",
          mBinError + " write fail, ret=4096!\n", mBinError + " write fail, ret=2048!\n",
          mTextError + " write fail, ret=", mBinError + " write fail, ret=-1!\n",
          mTextError + " write fail, ret=-1!\n",
          std::string("VDR::writeTxtForPreviewFrameLost, chmod")}) {
        EXPECT_NE(told.find(error), std::string::npos) << error;
    }
}

// A real one of four pages, below both folders, seen by this thread alone.
TEST_F(FileFaultsTest, FullSmallDisk_CostsTheContentsAndIsTold) {
    const std::string disk = onHost("/data/vendor");
    if (unshare(CLONE_NEWNS) != 0 || mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("vdr", disk.c_str(), "tmpfs", 0, "size=16k") != 0) {
        GTEST_SKIP() << "only root may mount one";
    }
    host::runTasksInline(true);
    freshDevice();
    Outcome onFullDisk = playSession();
    EXPECT_EQ(umount2(disk.c_str(), MNT_DETACH), 0);
    const std::string errors = onFullDisk["errors"];
    EXPECT_NE(errors.find(mBinError + " write fail, ret="), std::string::npos) << errors;
    EXPECT_NE(errors.find(mTextError + " write fail, ret="), std::string::npos) << errors;
    EXPECT_EQ(onFullDisk["bin"], mWhole["bin"].substr(0, 4 * kFrameRecordSize));
    for (const char* hurt : {"errors", "bin", "text"}) {
        onFullDisk[hurt] = mWhole[hurt];
    }
    expectSame(onFullDisk, mWhole);
    announceLoss(200, 1);
    EXPECT_EQ(countLogged("recordCount=15, "), 1U) << "lost lines count as well";
}

}  // namespace
}  // namespace zk::test
