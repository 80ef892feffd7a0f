#include "demo/ChiThread.h"

namespace demo {
namespace {

// The stack numbers its requests by itself: past 32 bits for fences, ahead by seven for frames.
unsigned long fenceRequest(uint32_t frame) {
    return (1UL << 33) + frame;
}
uint32_t chiFrame(uint32_t frame) {
    return frame + 7;
}
uint8_t fenceTag(uint32_t frame) {
    return static_cast<uint8_t>(1 + frame % 3);
}

}  // namespace

ChiThread::ChiThread(zk::IVideoDataRecoder& recorder, const SessionPlan& plan)
      : mRecorder(recorder), mAllocations(plan), mThread([this] { run(); }) {}

ChiThread::~ChiThread() {
    {
        const std::lock_guard guard(mMutex);
        mQuit = true;
    }
    mChanged.notify_all();
    mThread.join();
}

void ChiThread::submit(uint32_t frame) {
    std::unique_lock lock(mMutex);
    mSubmitted = frame;
    mChanged.notify_all();
    mChanged.wait(lock, [this] { return !mSubmitted.has_value(); });
    ++mParked;
}

void ChiThread::run() {
    std::unique_lock lock(mMutex);
    while (true) {
        mChanged.wait(lock, [this] { return mQuit || mSubmitted.has_value(); });
        if (mQuit) {
            return;
        }
        park(*mSubmitted);
        mSubmitted.reset();
        mChanged.notify_all();
    }
}

void ChiThread::park(uint32_t frame) {
    mRecorder.SetChiFenceMap(&fenceOf(frame), fenceRequest(frame), fenceTag(frame));
    mRecorder.SetChiFrameMap(chiFrame(frame), frame);
    if (auto allocation = mAllocations.offered(frame)) {
        mRecorder.SetMemAllocTimeOutInfo(*allocation);
    }
}

void ChiThread::takeBack(uint32_t frame) {
    unsigned long request = 0;
    uint8_t fenceTagId = 0;
    mRecorder.GetChiFenceMap(&fenceOf(frame), request, fenceTagId);
    if (request == fenceRequest(frame) && fenceTagId == fenceTag(frame)) {
        ++mFencesTaken;
    }
    uint32_t pipelineFrame = 0;
    mRecorder.GetChiFrameMap(chiFrame(frame), pipelineFrame);
    if (pipelineFrame == frame) {
        ++mFramesTaken;
    }
}

}  // namespace demo
