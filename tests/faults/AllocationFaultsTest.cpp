#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>

#include "tests/faults/WholeSessionTest.h"

// Every allocation that the recorder's own code asks of malloc, or of new without an exception,
// comes by here; the C++ library's do not, for whose failure nobody asks.

namespace {

std::atomic<size_t> smallest{0};  // bytes: smaller ones pass and are not counted
std::atomic<int> firstRefused{0};
std::atomic<int> lastRefused{0};
std::atomic<int> counted{0};

bool isRefused(size_t size) {
    if (size < smallest) {
        return false;
    }
    const int nth = ++counted;
    return nth >= firstRefused && nth <= lastRefused;
}

// From now on, counted from 1; none where the first is 0.
void refuseAllocations(int first, int last, size_t fromSize) {
    smallest = fromSize;
    counted = 0;
    firstRefused = first;
    lastRefused = first == 0 ? -1 : last;
}

}  // namespace

extern "C" {
void* __real_malloc(size_t size);
void* __wrap_malloc(size_t size) {
    return isRefused(size) ? nullptr : __real_malloc(size);
}
void* __real__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t&);
void* __wrap__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t& tag) {
    return isRefused(size) ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}
}

namespace zk::test {
namespace {

class AllocationFaultsTest : public WholeSessionTest {
protected:
    static constexpr int kBlocks = 80;

    AllocationFaultsTest() {
        freshDevice();
        mWhole = playSession();
        freshDevice();
    }
    ~AllocationFaultsTest() override { refuseAllocations(0, 0, 0); }

    // How many frames can be filled at a time; leaves them so.
    uint32_t room() {
        for (uint32_t number = 1; number <= 2 * kBlocks; ++number) {
            frame(number).done();
        }
        uint32_t count = 0;
        recorder().VDRDoneCount(0, &count);
        return count;
    }

    Outcome mWhole;
};

TEST_F(AllocationFaultsTest, BlockThatCannotBeMade_IsMissingAndNothingElse) {
    refuseAllocations(0, 0, kFrameRecordSize);
    recorder();
    ASSERT_EQ(counted, 1 + kBlocks);
    for (int nth = 2; nth <= 1 + kBlocks; ++nth) {
        SCOPED_TRACE(nth);
        freshDevice();
        refuseAllocations(nth, nth, kFrameRecordSize);
        Outcome outcome = playSession();
        ASSERT_EQ(outcome.errors.size(), 1U);
        EXPECT_NE(outcome.errors[0].find("VDR::failed to alloc VDR data buffer for write!"),
                  std::string::npos);
        outcome.errors.clear();
        expectSame(outcome, mWhole);
        EXPECT_EQ(room(), kBlocks - 1U);
        closeSession();
        EXPECT_EQ(countLogged("mDataReadyPool.size()=79, mDataDonePool.size()=0, "
                              "mDataProcessingPool.size()=0!"),
                  1U);
    }
}

TEST_F(AllocationFaultsTest, StagingBufferThatCannotBeMade_CostsTheRecordsOfTheDumpFile) {
    refuseAllocations(1, 1, kFrameRecordSize);
    Outcome outcome = playSession();
    ASSERT_EQ(outcome.errors.size(), 1U + kFrames);
    EXPECT_NE(outcome.errors[0].find("VDR::failed to alloc VDR bin file buffer!"),
              std::string::npos);
    EXPECT_NE(outcome.errors[kFrames].find("VDR::dumpDataToBinFile, memcpy_s fail!"),
              std::string::npos);
    outcome.errors.clear();
    Outcome emptyDump = mWhole;
    emptyDump.bin.clear();
    expectSame(outcome, emptyDump);
}

TEST_F(AllocationFaultsTest, NoMemoryAtAll_RecordsNothing) {
    refuseAllocations(1, INT_MAX, 0);
    const Outcome outcome = playSession();
    EXPECT_EQ(outcome.errors.size(), 1U + kBlocks);
    EXPECT_EQ(outcome.bin + outcome.text, "");
    EXPECT_EQ(outcome.files, 2U);
    // The loss's only file is the uncounted one of the stop, which may be done before the account
    // is looked at: whether the promise is settled depends on who is first.
    EXPECT_NE(outcome.settlement, "limited");
    EXPECT_EQ(outcome.registries, mWhole.registries);
    EXPECT_EQ(room(), 0U);
}

// Later ones too: whatever queue could not grow has lost frames, and the next session has not.
TEST_F(AllocationFaultsTest, AllocationDuringASession_CostsThatSessionOnly) {
    int nth = 1;
    for (bool isOver = false; !isOver; ++nth) {
        SCOPED_TRACE(nth);
        freshDevice();
        recorder();
        refuseAllocations(nth, nth, 0);
        const Outcome outcome = playSession();
        isOver = counted < nth;
        refuseAllocations(0, 0, 0);
        EXPECT_TRUE(outcome.bin == mWhole.bin);
        EXPECT_EQ(outcome.registries, mWhole.registries);
        EXPECT_EQ(outcome.settlement, mWhole.settlement);
        EXPECT_EQ(outcome.files, mWhole.files);
        EXPECT_EQ(outcome.openFiles, mWhole.openFiles);
        expectSame(playSession(), mWhole);
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_GT(nth, 5);
}

}  // namespace
}  // namespace zk::test
