#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <utility>

#include "testing/RecorderTest.h"

namespace zk::test {

// A recorder and an account, in the plainest containers, of what its pools must hold.
class CheckedRecorder : public RecorderTest {
protected:
    static constexpr size_t kBlocks = 80;

    void take(uint32_t frameNumber);
    void complete(uint32_t frameNumber);
    void report(uint32_t frameNumber);
    void stop();

    // The count of done records, and whether there is an oldest one.
    void checkPools();
    // The sizes that the recorder tells when a session opens or ends, if this line is one of these.
    void checkSizes(const std::string& line) const;

    // What each frame that has a record was the how many-th to take, from 1.
    std::map<uint32_t, uint64_t> mProcessing;
    std::deque<std::pair<uint32_t, uint64_t>> mDone;
    uint64_t mTaken = 0;
};

}  // namespace zk::test
