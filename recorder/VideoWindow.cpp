#include "recorder/VideoWindow.h"

namespace zk {

bool VideoWindow::start(uint32_t frameNumber) {
    const SpinLockGuard guard(mVideoWindowLock);
    if (mIsVideoRecording) {
        return false;
    }
    mFirstVideoFrameNum.store(frameNumber, std::memory_order_relaxed);
    mLastVideoFrameNum.store(kNoFrameNumber, std::memory_order_relaxed);
    mIsVideoRecording = true;
    return true;
}

bool VideoWindow::end(uint32_t frameNumber) {
    const SpinLockGuard guard(mVideoWindowLock);
    if (!mIsVideoRecording) {
        return false;
    }
    mFirstVideoFrameNum.store(kNoFrameNumber, std::memory_order_relaxed);
    mLastVideoFrameNum.store(frameNumber - 1, std::memory_order_relaxed);  // 0 wraps to none
    mIsVideoRecording = false;
    return true;
}

void VideoWindow::reset() {
    const SpinLockGuard guard(mVideoWindowLock);
    mIsVideoRecording = false;
    mFirstVideoFrameNum.store(kNoFrameNumber, std::memory_order_relaxed);
    mLastVideoFrameNum.store(kNoFrameNumber, std::memory_order_relaxed);
}

bool VideoWindow::contains(uint32_t frameNumber) const {
    if (frameNumber == kNoFrameNumber) {
        return false;
    }
    if (mIsVideoRecording) {
        const uint32_t first = mFirstVideoFrameNum.load(std::memory_order_relaxed);
        return first != kNoFrameNumber && frameNumber >= first;
    }
    const uint32_t last = lastFrame();
    return last != kNoFrameNumber && frameNumber <= last;
}

bool VideoWindow::covers(uint32_t frameNumber) const {
    const uint32_t first = mFirstVideoFrameNum.load(std::memory_order_relaxed);
    if (first != kNoFrameNumber && first <= frameNumber) {
        return true;
    }
    const uint32_t last = lastFrame();
    return last != kNoFrameNumber && last >= frameNumber;
}

}  // namespace zk
