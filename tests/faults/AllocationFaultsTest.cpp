#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>

#include "tests/faults/WholeSessionTest.h"

// Every allocation that the recorder's own code asks of malloc, or of new without an exception,
// comes by here and can be refused. Those of its containers are counted only: nobody asks what
// happens when they fail.

namespace {

thread_local size_t allocationsOfThread = 0;

std::atomic<size_t> smallest{0};  // bytes: smaller ones pass and are not counted
std::atomic<int> firstRefused{0};
std::atomic<int> lastRefused{0};
std::atomic<int> counted{0};

bool isRefused(size_t size) {
    ++allocationsOfThread;
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
void* __real__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t&);
void* __wrap__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t& tag) {
    return isRefused(size) ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}
void* __real__Znwm(size_t size);
void* __wrap__Znwm(size_t size) {
    ++allocationsOfThread;
    return __real__Znwm(size);
}
}

namespace zk::test {
namespace {

class AllocationFaultsTest : public WholeSessionTest {
protected:
    static constexpr int kBlocks = 80;

    ~AllocationFaultsTest() override { refuseAllocations(0, 0, 0); }

    // How many frames can be filled at a time; leaves them so.
    uint32_t room() {
        for (uint32_t number = 1; number <= 2 * kBlocks; ++number) {
            frame(number).done();
        }
        return doneCount();
    }
};

TEST_F(AllocationFaultsTest, BlockThatCannotBeMade_IsMissingAndNothingElse) {
    Outcome withError = mWhole;
    withError["errors"] = "VDR::failed to alloc VDR data buffer for write!\n";
    for (int nth = 2; nth <= 1 + kBlocks; ++nth) {  // the first is the staging buffer
        SCOPED_TRACE(nth);
        freshDevice();
        refuseAllocations(nth, nth, kFrameRecordSize);
        expectSame(playSession(), withError);
        EXPECT_EQ(room(), kBlocks - 1U);
    }
}

TEST_F(AllocationFaultsTest, StagingBufferThatCannotBeMade_CostsTheRecordsOfTheDumpFile) {
    refuseAllocations(1, 1, kFrameRecordSize);
    Outcome emptyDump = playSession();
    const std::string errors = emptyDump["errors"];
    EXPECT_EQ(errors.find("VDR::failed to alloc VDR bin file buffer!\n"), 0U);
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1 + kFrames);
    EXPECT_EQ(emptyDump["bin"], "");
    emptyDump["bin"] = mWhole["bin"];
    emptyDump["errors"] = "";
    expectSame(emptyDump, mWhole);
}

TEST_F(AllocationFaultsTest, NoMoreMemory_KeepsNothingButTheRecords) {
    recorder();
    refuseAllocations(1, INT_MAX, 0);
    Outcome outcome = playSession();
    EXPECT_EQ(outcome["bin"], mWhole["bin"]);
    EXPECT_EQ(outcome["text"], "");
    EXPECT_NE(outcome["errors"].find("no memory to keep the frame!"), std::string::npos);
    EXPECT_EQ(outcome["files"] + outcome["settlement"], "2done");
}

// Later ones too: whatever queue could not grow has lost frames, and the next session has not.
TEST_F(AllocationFaultsTest, AllocationDuringASession_CostsThatSessionOnly) {
    std::string told;
    int nth = 1;
    for (bool isOver = false; !isOver; ++nth) {
        SCOPED_TRACE(nth);
        freshDevice();
        recorder();
        refuseAllocations(nth, nth, 0);
        Outcome outcome = playSession();
        isOver = counted < nth;
        refuseAllocations(0, 0, 0);
        if (outcome["errors"].find("no memory for 4096 bytes") != std::string::npos) {
            EXPECT_NE(outcome["livePhoto"].find("\"state\" : 0"), std::string::npos);
        }
        told += outcome["errors"];
        for (const char* hurt : {"errors", "text", "livePhoto"}) {
            outcome[hurt] = mWhole[hurt];
        }
        expectSame(outcome, mWhole);
        expectSame(playSession(), mWhole);
        ASSERT_FALSE(HasFailure());
    }
    EXPECT_NE(told.find("PostDataForLivePhoto, no memory for 4096"), std::string::npos);
}

using FramePathTest = RecorderTest;

// A loss is pending in the end, so that the history grows. Recording is off: opening the dump file
// allocates, every second frame.
TEST_F(FramePathTest, AllocatesNothingAfterTheFirstFrame) {
    const std::vector<uint8_t> field(kFrameRecordSize);
    openSession();
    for (uint32_t number = 11; number <= 130; ++number) {
        if (number == 101) {
            announceLoss(101);
        }
        const size_t before = allocationsOfThread;
        recorder().VDRProcessing(number);
        recorder().writeMaintain(number, tag::frameNumber, &number);
        for (uint32_t tagId = tag::cslInfo; tagId < tag::kCount; ++tagId) {
            recorder().writeMaintain(number, tagId, field.data());
        }
        recorder().CacheDataForLivePhoto(number);
        recorder().WriteMaintainForLivePhoto(number, tag::frameNumber, &number);
        recorder().DoneDataForLivePhoto(number);
        unsigned long chiFrame = number;
        uint8_t tag = 0;
        uint32_t frameNumber = number;
        recorder().SetChiFenceMap(&chiFrame, chiFrame, tag);
        recorder().GetChiFenceMap(&chiFrame, chiFrame, tag);
        recorder().SetChiFrameMap(number, frameNumber);
        recorder().GetChiFrameMap(number, frameNumber);
        recorder().VDRDone(number);
        recorder().VDRReport(number);
        if (number == 11) {
            EXPECT_GT(allocationsOfThread, before) << "nothing is counted";
        } else {
            EXPECT_EQ(allocationsOfThread, before) << "frame " << number;
        }
    }
}

// A dump takes its frames' memory along and gives it back once it is written.
TEST_F(FramePathTest, DumpsOfASession_ServeEachOtherWithTheMemoryOfTheirFrames) {
    openSession();
    refuseAllocations(0, 0, kFrameRecordSize);
    for (uint32_t lost = 101; lost <= 901; lost += 100) {
        completeFrames(lost - 69, lost);
        announceLoss(lost, kNow + lost);
        completeFrames(lost + 1, lost + 30);
        EXPECT_EQ(files(kLossFolder).size(), lost / 100);
    }
    EXPECT_EQ(counted, 0) << "allocations of a record or more";
}

}  // namespace
}  // namespace zk::test
