#pragma once

#include <atomic>
#include <cstdint>

#include "base/SpinLock.h"
#include "records/frameData.h"

namespace zk {

// The frames of the running or last video recording. Any thread; questions take no lock.
//
//   idle ──start(n)──> recording from n ──end(m)──> idle, last frame m - 1 ──start──> ...
class VideoWindow {
public:
    // False, with nothing changed, while a recording runs.
    bool start(uint32_t frameNumber);
    // The frame that ends a recording is outside it. False where none runs.
    bool end(uint32_t frameNumber);
    void reset();

    // Whether a completed frame belongs to a recording. After the end every older frame does:
    // there is no lower bound then.
    bool contains(uint32_t frameNumber) const;
    // Whether a frame that is about to be taken is to be recorded.
    bool covers(uint32_t frameNumber) const;
    uint32_t lastFrame() const { return mLastVideoFrameNum.load(std::memory_order_relaxed); }

private:
    SpinLock mVideoWindowLock;  // orders start, end and reset; the members are read without it
    std::atomic<uint32_t> mFirstVideoFrameNum{kNoFrameNumber};
    std::atomic<uint32_t> mLastVideoFrameNum{kNoFrameNumber};
    std::atomic<bool> mIsVideoRecording{false};
};

}  // namespace zk
