#include "frameloss/FrameLossHistory.h"

#include <utility>

#include "platform/Log.h"

namespace zk {
namespace {

constexpr size_t kFramesBeforeLoss = 30;   // one second at 30 fps
constexpr uint32_t kFramesAfterLoss = 30;  // likewise
constexpr size_t kLongestHistory = 99;     // frames; one more overflows

}  // namespace

FrameLossHistory::FrameLossHistory(int32_t vdrLevel, std::shared_ptr<LossAccounts> accounts)
      : mAccounts(accounts), mTxtFile(vdrLevel, std::move(accounts)) {}

void FrameLossHistory::announce(uint32_t frameNumber) {
    const SpinLockGuard guard(mFrameLostLock);
    mFrameLostNumQueue.push_back(frameNumber);
}

void FrameLossHistory::announceAgain(uint64_t frameNumber) {
    const SpinLockGuard guard(mFrameLostLock);
    if (mFrameLostNumQueue.empty() || mFrameLostNumQueue.back() != frameNumber) {
        mFrameLostNumQueue.push_back(static_cast<uint32_t>(frameNumber));
    }
}

void FrameLossHistory::frameLostProcess(const frameData* frame) {
    if (frame == nullptr) {
        VDR_LOGE("VDR::frameLostProcess, frameDebugInfo is null!");
        return;
    }
    const uint32_t current = frame->frameNumber();
    if (current == 0) {
        VDR_LOGE("VDR::frameLostProcess, currentDoneFrame is 0!");
        return;
    }
    const SpinLockGuard guard(mFrameLostLock);
    // At once for the longest one, so that no later frame of the session waits for memory.
    if (!mFrameLostDataQueue.reserve(kLongestHistory + 1) ||
        !mFrameLostDataQueue.push_back(*frame)) {
        VDR_LOGE("VDR::frameLostProcess, no memory to keep the frame!");
        return;
    }
    const bool isLossPending = !mFrameLostNumQueue.empty();
    // Equality only: a history that a pending loss has made longer is not trimmed.
    if (mFrameLostDataQueue.size() == kFramesBeforeLoss + 1 &&
        (!isLossPending || current < mFrameLostNumQueue.front())) {
        mFrameLostDataQueue.pop_front();
    }
    if (!isLossPending) {
        return;
    }
    const size_t length = mFrameLostDataQueue.size();
    const uint32_t front = mFrameLostNumQueue.front();
    const auto lossCount = static_cast<uint32_t>(mFrameLostNumQueue.size());
    const bool isOnlyLoss = lossCount == 1;

    if (length > kLongestHistory) {
        if (isOnlyLoss) {
            VDR_LOGI(
                    "VDR::frameLostProcess, mFrameLostNumQueue(%u), front=%u, "
                    "currentDoneFrame=%u, exceed 100, dump data to txt!",
                    lossCount, front, current);
        } else {
            VDR_LOGI(
                    "VDR::frameLostProcess, mFrameLostNumQueue>=2, %u, front=%u, "
                    "currentDoneFrame=%u, exceed 100, dump data to txt!",
                    lossCount, front, current);
        }
        dumpDataToFrameLostTxtFile(front, std::move(mFrameLostDataQueue));
        mFrameLostNumQueue.clear();
        mFrameLostExceedFlag = true;
        return;
    }
    if (current != front + kFramesAfterLoss) {
        return;
    }
    if (isOnlyLoss) {
        VDR_LOGI(
                "VDR::frameLostProcess, mFrameLostNumQueue(%u), front=%u, currentDoneFrame=%u, "
                "dump data to txt!",
                lossCount, front, current);
    } else {
        VDR_LOGI(
                "VDR::frameLostProcess, mFrameLostNumQueue>=2, %u, front=%u pop, "
                "currentDoneFrame=%u!",
                lossCount, front, current);
        mFrameLostNumQueue.pop_front();
        if (mFrameLostNumQueue.front() <= current) {
            return;  // the next loss lies within these frames: one file, after its own 30
        }
        VDR_LOGI(
                "VDR::frameLostProcess, mFrameLostNumQueue>=2, %u, front=%u, "
                "currentDoneFrame=%u, dump data to txt!",
                lossCount - 1, front, current);
    }
    if (length <= kFramesBeforeLoss) {
        return;  // an only loss stays queued, and the history grows until it overflows
    }
    dumpDataToFrameLostTxtFile(front, copyOldest(length - kFramesBeforeLoss));
    mFrameLostDataQueue.keepNewest(kFramesBeforeLoss);
    if (isOnlyLoss) {
        mFrameLostNumQueue.pop_front();
    }
}

void FrameLossHistory::dumpDataToFrameLostTxtFile(uint32_t lostFrame, RingQueue<frameData> frames) {
    const LossAccounts::FileRequest request = mAccounts->requestFile();
    if (request.count.has_value()) {
        VDR_LOGI("VDR::dumpDataToFrameLostTxtFile, count:%d!", *request.count);
    }
    mTxtFile.writeTxtForPreviewFrameLost(std::move(frames), lostFrame, request.lostTimeStamp);
}

RingQueue<frameData> FrameLossHistory::copyOldest(size_t frameCount) const {
    RingQueue<frameData> frames = mFrameLostDataQueue.oldest(frameCount);
    if (frames.size() < frameCount) {
        VDR_LOGE("VDR::copyOldest, no memory for %u frames, the file stays empty!",
                 static_cast<uint32_t>(frameCount));
    }
    return frames;
}

void FrameLossHistory::dumpDataToFrameLostTxtFile() {
    {
        const SpinLockGuard guard(mFrameLostLock);
        const size_t length = mFrameLostDataQueue.size();
        if (!mFrameLostNumQueue.empty() && !mFrameLostExceedFlag && length <= kLongestHistory) {
            const uint32_t front = mFrameLostNumQueue.front();
            VDR_LOGI("VDR::dumpDataToFrameLostTxtFile, flush now, still write a txt, front=%u!",
                     front);
            // Not counted in the loss's account: whoever waits for it is told without this file.
            mTxtFile.writeTxtForPreviewFrameLost(std::move(mFrameLostDataQueue), front,
                                                 mAccounts->latestTimeStamp());
        }
        mFrameLostDataQueue.clear();
        mFrameLostNumQueue = std::deque<uint32_t>();
    }
    LossAccounts::Promise promise;
    switch (mAccounts->stop(promise)) {
        case LossAccounts::Stop::kSettled:
            VDR_LOGI("VDR::dumpDataToFrameLostTxtFile, flush now, trigger promise!");
            if (promise != nullptr) {
                promise->set_value(VDR_SYNC_DONE);
            }
            break;
        case LossAccounts::Stop::kLeftToLastWriter:
            VDR_LOGI("VDR::dumpDataToFrameLostTxtFile, record notifyFlag in flush!");
            break;
        case LossAccounts::Stop::kNothing:
            break;
    }
}

}  // namespace zk
