#include "platform/host/FileControl.h"
#include "tests/faults/WholeSessionTest.h"

namespace zk::test {
namespace {

using host::FileCall;

// One call fails, each in turn of those that a session makes: what hung on it is lost and told in
// one line, nothing else is, and the next session is whole.
class FileFaultsTest : public WholeSessionTest {
protected:
    static constexpr size_t kPair = 2 * kFrameRecordSize;
    static constexpr size_t kAppends = kFrames / 2 + 1;
    // The dumping frame asks for the text file before it is reported itself.
    static constexpr size_t kAppendsBeforeText = (kDumpingFrame - 1) / 2;

    // The nth call, by turns, fails in the first session of a new recorder.
    void expectAfterFault(FileCall call, size_t nth, Outcome expected, const std::string& error) {
        SCOPED_TRACE("call " + std::to_string(nth));
        expected["errors"] = error.empty() ? "" : error + '\n';
        freshDevice();
        host::failFileCall(call, static_cast<int>(nth));
        expectSame(playSession(), expected);
        host::failFileCall(call, 0);
        expectSame(playSession(), mWhole);
    }

    // The whole session but for `size` bytes of a file.
    Outcome without(const char* file, size_t begin, size_t size) const {
        Outcome outcome = mWhole;
        outcome[file].erase(begin, size);
        return outcome;
    }

    // Where the nth append of the dump file begins, and how long it is.
    static size_t beginOfAppend(size_t nth) { return (nth - 1) * kPair; }
    static size_t sizeOfAppend(size_t nth) { return nth < kAppends ? kPair : kFrameRecordSize; }

    // The files, and how the messages about them begin.
    const std::string mBinPath = kBinFolder + ('/' + binFile());
    const std::string mTextPath = kLossFolder + ('/' + textFile());
    const std::string mBinError = "VDR::saveDataToBinFile, " + mBinPath;
    const std::string mTextError = "VDR::writeTxtForPreviewFrameLost, " + mTextPath;
};

TEST_F(FileFaultsTest, NothingFails_EverythingIsThere) {
    const std::string& text = mWhole["text"];
    EXPECT_EQ(mWhole["bin"].size(), kFrames * kFrameRecordSize);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), long{kLostFrame});
    EXPECT_EQ(mWhole["files"] + mWhole["settlement"] + mWhole["errors"], "2done");
    EXPECT_NE(mWhole["livePhoto"].find("\"state\" : 1"), std::string::npos);
}

TEST_F(FileFaultsTest, OpenThatFails_CostsWhatWasToBeWritten) {
    size_t nth = 1;
    for (; nth <= kSamplerFiles; ++nth) {
        expectAfterFault(FileCall::kOpen, nth, mWhole, "");
    }
    for (size_t append = 1; append <= kAppends; ++append, ++nth) {
        if (append == kAppendsBeforeText + 1) {
            Outcome withoutText = without("text", 0, std::string::npos);
            withoutText["files"] = "1";
            withoutText["settlement"] = "pending";
            expectAfterFault(FileCall::kOpen, nth++, withoutText, mTextError + " open fail!");
        }
        expectAfterFault(FileCall::kOpen, nth,
                         without("bin", beginOfAppend(append), sizeOfAppend(append)),
                         mBinError + " open fail!");
    }
    expectAfterFault(FileCall::kOpen, nth, mWhole, "");
}

TEST_F(FileFaultsTest, WriteThatFails_LeavesHalfOfItAndGoesOn) {
    const std::string failed = " write fail, ret=";
    size_t nth = 1;
    for (size_t append = 1; append <= kAppends; ++append, ++nth) {
        if (append == kAppendsBeforeText + 1) {
            const std::string text = mWhole["text"];
            for (size_t begin = 0, end = 0; begin < text.size(); begin = end) {
                end = text.find('\n', begin) + 1;
                const size_t half = (end - begin) / 2;
                expectAfterFault(FileCall::kWrite, nth++,
                                 without("text", begin + half, end - begin - half),
                                 mTextError + failed + std::to_string(half) + '!');
            }
        }
        const size_t half = sizeOfAppend(append) / 2;
        expectAfterFault(FileCall::kWrite, nth, without("bin", beginOfAppend(append) + half, half),
                         mBinError + failed + std::to_string(half) + '!');
    }
    expectAfterFault(FileCall::kWrite, nth, mWhole, "");
}

TEST_F(FileFaultsTest, CloseOrModeThatFails_CostsNothing) {
    for (size_t nth = 1; nth <= kAppends + 1; ++nth) {
        expectAfterFault(FileCall::kClose, nth, mWhole, "");
    }
    expectAfterFault(FileCall::kChangeMode, 1, mWhole,
                     "VDR::writeTxtForPreviewFrameLost, chmod fail!");
}

TEST_F(FileFaultsTest, FullDisk_CostsTheContentsAndIsTold) {
    freshDevice();
    std::filesystem::create_symlink("/dev/full", onHost(mBinPath));
    std::filesystem::create_symlink("/dev/full", onHost(mTextPath));
    host::failFileCall(FileCall::kChangeMode, 1);  // the device keeps its mode
    Outcome onFullDisk = playSession();
    EXPECT_NE(onFullDisk["errors"].find(mBinError + " write fail"), std::string::npos);
    EXPECT_NE(onFullDisk["errors"].find(mTextError + " write fail"), std::string::npos);
    for (const char* hurt : {"errors", "bin", "text"}) {
        onFullDisk[hurt] = mWhole[hurt];
    }
    expectSame(onFullDisk, mWhole);
    announceLoss(200, 1);
    EXPECT_EQ(countLogged("recordCount=15, "), 1U) << "lost lines count as well";
}

}  // namespace
}  // namespace zk::test
