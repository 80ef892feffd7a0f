#include <algorithm>
#include <filesystem>

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

    FileFaultsTest() {
        freshDevice();
        mWhole = playSession();
        for (size_t at = 0; at < mWhole.text.size(); at = mLineEnds.back()) {
            mLineEnds.push_back(mWhole.text.find('\n', at) + 1);
        }
    }

    // The nth call fails in the first session of a new recorder.
    void expectAfterFault(FileCall call, size_t nth, const Outcome& expected,
                          const std::string& error) {
        SCOPED_TRACE("call " + std::to_string(nth));
        freshDevice();
        host::failFileCall(call, static_cast<int>(nth));
        Outcome actual = playSession();
        host::failFileCall(call, 0);
        if (!error.empty()) {
            EXPECT_EQ(actual.errors.size(), 1U);
            EXPECT_NE(actual.errors.front().find(error), std::string::npos);
            actual.errors.clear();
        }
        expectSame(actual, expected);
        expectSame(playSession(), mWhole);
    }

    // Where the nth append of the dump file begins, and how long it is.
    static size_t beginOfAppend(size_t nth) { return (nth - 1) * kPair; }
    static size_t sizeOfAppend(size_t nth) { return nth < kAppends ? kPair : kFrameRecordSize; }

    Outcome mWhole;
    std::vector<size_t> mLineEnds;  // of the text file
};

TEST_F(FileFaultsTest, NothingFails_EverythingIsThere) {
    EXPECT_EQ(mWhole.bin.size(), kFrames * kFrameRecordSize);
    EXPECT_EQ(mLineEnds.size(), kLostFrame);
    EXPECT_EQ(mWhole.files, 2U);
    EXPECT_EQ(mWhole.settlement, "done");
    EXPECT_NE(mWhole.livePhoto.find("\"state\" : 1"), std::string::npos);
    EXPECT_EQ(mWhole.registries, "3 7 4 buffer");
    EXPECT_EQ(mWhole.errors, std::vector<std::string>());
}

TEST_F(FileFaultsTest, OpenThatFails_CostsWhatWasToBeWritten) {
    size_t nth = 1;
    for (; nth <= kSamplerFiles; ++nth) {
        expectAfterFault(FileCall::kOpen, nth, mWhole, "");
    }
    for (size_t append = 1; append <= kAppends; ++append, ++nth) {
        if (append == kAppendsBeforeText + 1) {
            Outcome withoutText = mWhole;
            withoutText.text.clear();
            withoutText.files = 1;
            withoutText.settlement = "pending";
            expectAfterFault(FileCall::kOpen, nth++, withoutText, "00000015.txt open fail!");
        }
        Outcome withHole = mWhole;
        withHole.bin.erase(beginOfAppend(append), sizeOfAppend(append));
        expectAfterFault(FileCall::kOpen, nth, withHole, ".bin open fail!");
    }
    expectAfterFault(FileCall::kOpen, nth, mWhole, "");
}

TEST_F(FileFaultsTest, WriteThatFails_LeavesHalfOfItAndGoesOn) {
    size_t nth = 1;
    for (size_t append = 1; append <= kAppends; ++append, ++nth) {
        if (append == kAppendsBeforeText + 1) {
            size_t begin = 0;
            for (const size_t end : mLineEnds) {
                Outcome halfALine = mWhole;
                const size_t half = (end - begin) / 2;
                halfALine.text.erase(begin + half, end - begin - half);
                expectAfterFault(FileCall::kWrite, nth++, halfALine, ".txt write fail, ret=");
                begin = end;
            }
        }
        Outcome withHole = mWhole;
        const size_t half = sizeOfAppend(append) / 2;
        withHole.bin.erase(beginOfAppend(append) + half, half);
        expectAfterFault(FileCall::kWrite, nth, withHole,
                         ".bin write fail, ret=" + std::to_string(half));
    }
    expectAfterFault(FileCall::kWrite, nth, mWhole, "");
}

TEST_F(FileFaultsTest, CloseOrModeThatFails_CostsNothing) {
    for (size_t nth = 1; nth <= kAppends + 1; ++nth) {
        expectAfterFault(FileCall::kClose, nth, mWhole, "");
    }
    expectAfterFault(FileCall::kChangeMode, 1, mWhole, "chmod fail!");
}

TEST_F(FileFaultsTest, FullDisk_CostsTheContentsAndIsTold) {
    freshDevice();
    std::filesystem::create_symlink("/dev/full", binFile());
    std::filesystem::create_symlink("/dev/full", textFile());
    host::failFileCall(FileCall::kChangeMode, 1);  // the device keeps its mode
    const Outcome onFullDisk = playSession();
    const auto told = [&onFullDisk](const char* text) {
        return std::count_if(
                onFullDisk.errors.begin(), onFullDisk.errors.end(),
                [text](const std::string& error) { return error.find(text) != std::string::npos; });
    };
    EXPECT_EQ(told(".bin write fail"), static_cast<long>(kAppends));
    EXPECT_GT(told(".txt write fail"), 0);
    EXPECT_EQ(onFullDisk.settlement, "done");
    EXPECT_TRUE(onFullDisk.livePhoto == mWhole.livePhoto);
    EXPECT_EQ(onFullDisk.openFiles, mWhole.openFiles);
    expectSame(playSession(), mWhole);
}

}  // namespace
}  // namespace zk::test
