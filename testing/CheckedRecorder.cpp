#include "testing/CheckedRecorder.h"

#include <cstdio>

namespace zk::test {

void CheckedRecorder::take(uint32_t frameNumber) {
    recorder().VDRProcessing(frameNumber);
    if (mProcessing.size() + mDone.size() < kBlocks &&
        mProcessing.try_emplace(frameNumber, mTaken + 1).second) {
        ++mTaken;
    }
}

void CheckedRecorder::complete(uint32_t frameNumber) {
    recorder().VDRDone(frameNumber);
    if (const auto frame = mProcessing.find(frameNumber); frame != mProcessing.end()) {
        mDone.emplace_back(*frame);
        mProcessing.erase(frame);
    }
}

void CheckedRecorder::report(uint32_t frameNumber) {
    recorder().VDRReport(frameNumber);
    if (!mDone.empty()) {
        mDone.pop_front();
    }
}

void CheckedRecorder::stop() {
    mProcessing.clear();
    mDone.clear();
    closeSession();
}

void CheckedRecorder::checkPools() {
    EXPECT_EQ(doneCount(), mDone.size());
    EXPECT_EQ(oldestDone().empty(), mDone.empty());
}

void CheckedRecorder::checkSizes(const std::string& line) const {
    size_t ready = 0;
    size_t done = 0;
    size_t processing = 0;
    const size_t at = line.find("nitialize(), mDataReadyPool");
    if (at != std::string::npos &&
        std::sscanf(&line[at],
                    "nitialize(), mDataReadyPool.size()=%zu, mDataDonePool.size()=%zu, "
                    "mDataProcessingPool.size()=%zu",
                    &ready, &done, &processing) == 3) {
        EXPECT_EQ(done, mDone.size());
        EXPECT_EQ(processing, mProcessing.size());
        EXPECT_EQ(ready + done + processing, kBlocks) << "every block is in exactly one pool";
    }
}

}  // namespace zk::test
