#include "frameloss/FrameLossHistory.h"

#include <utility>

#include "platform/BoundedMemory.h"
#include "platform/Log.h"

namespace zk {
namespace {

constexpr size_t kFramesBeforeLoss = 30;   // one second at 30 fps
constexpr uint32_t kFramesAfterLoss = 30;  // likewise
constexpr size_t kLongestHistory = 99;     // frames; one more overflows
constexpr size_t kRoom = kLongestHistory + 1;
// A history as long as can be while another one is written, and a frame on each camera thread.
constexpr size_t kPlaces = 2 * kRoom + 8;

}  // namespace

void FrameLossHistory::reserve() {
    mStock.reserve(kPlaces);
    for (Frames FrameLossHistory::*queue :
         {&FrameLossHistory::mFrameLostDataQueue, &FrameLossHistory::mNextDataQueue}) {
        Frames room;
        room.reserve(kRoom);  // before the lock: camera threads may be waiting for it
        const SpinLockGuard guard(mFrameLostLock);
        if ((this->*queue).capacity() == 0) {
            this->*queue = std::move(room);
        }
    }
}

void FrameLossHistory::giveBack(Frames frames) {
    frames.reset();
    const SpinLockGuard guard(mFrameLostLock);
    // A history without memory: the session is over, or memory was refused and will be sought anew.
    if (mFrameLostDataQueue.capacity() > 0 && mNextDataQueue.capacity() < frames.capacity()) {
        std::swap(mNextDataQueue, frames);
    }
}

void FrameLossHistory::announce(uint32_t frameNumber, uint64_t timeStamp,
                                LossCompletions::Promise promise) {
    const SpinLockGuard guard(mFrameLostLock);
    mFrameLostNumQueue.push_back(frameNumber);
    mCompletions.add(timeStamp, std::move(promise));
}

void FrameLossHistory::announceAgain(uint64_t frameNumber) {
    const SpinLockGuard guard(mFrameLostLock);
    if (mFrameLostNumQueue.empty() || mFrameLostNumQueue.back() != frameNumber) {
        mFrameLostNumQueue.push_back(static_cast<uint32_t>(frameNumber));
    }
}

std::optional<FrameLossHistory::Dump> FrameLossHistory::frameLostProcess(const frameData* frame) {
    if (frame == nullptr) {
        VDR_LOGE("VDR::frameLostProcess, frameDebugInfo is null!");
        return std::nullopt;
    }
    FrameStock::Place copy = place();
    if (copy == nullptr) {
        tell(outOfMemory(), frame->frameNumber());
        return std::nullopt;
    }
    memcpy_s(copy->bytes, kFrameRecordSize, frame->bytes, kFrameRecordSize);
    return frameLostProcess(std::move(copy));
}

std::optional<FrameLossHistory::Dump> FrameLossHistory::frameLostProcess(FrameStock::Place frame) {
    const uint32_t current = frame->frameNumber();
    if (current == 0) {
        VDR_LOGE("VDR::frameLostProcess, currentDoneFrame is 0!");
        return std::nullopt;
    }
    Step step;
    {
        const SpinLockGuard guard(mFrameLostLock);
        step = keep(frame, current);
        if (step.dump.has_value()) {
            // Before anybody stops the recorder, who would find a loss without a file under way
            // and complete it, or announces another one, which would get this file.
            step.dump->file = mCompletions.expectFile();
        }
    }
    tell(step, current);
    if (step.dump.has_value()) {
        mCompletions.requestFile(step.dump->file);
    }
    return std::move(step.dump);
}

FrameLossHistory::Step FrameLossHistory::outOfMemory() {
    Step step;
    step.isOutOfMemory = true;
    return step;
}

FrameLossHistory::Step FrameLossHistory::keep(FrameStock::Place& frame, uint32_t current) {
    if (!mFrameLostDataQueue.reserve(kRoom)) {
        return outOfMemory();
    }
    mFrameLostDataQueue.push_back(std::move(frame));
    const bool isLossPending = !mFrameLostNumQueue.empty();
    FrameStock::Place oldest;
    // Equality only: a history that a pending loss has made longer is not trimmed.
    if (mFrameLostDataQueue.size() == kFramesBeforeLoss + 1 &&
        (!isLossPending || current < mFrameLostNumQueue.front())) {
        oldest = mFrameLostDataQueue.takeFront();
    }
    Step step = isLossPending ? stepOfPendingLoss(current) : Step();
    step.oldest = std::move(oldest);
    return step;
}

FrameLossHistory::Step FrameLossHistory::stepOfPendingLoss(uint32_t current) {
    const size_t length = mFrameLostDataQueue.size();
    Step step;
    step.lossCount = static_cast<uint32_t>(mFrameLostNumQueue.size());
    step.front = mFrameLostNumQueue.front();
    if (length > kLongestHistory) {
        step.kind = Step::Kind::kOverflow;
        handOver(step, 0);
        mFrameLostNumQueue.clear();
        mFrameLostExceedFlag = true;
        return step;
    }
    if (current != step.front + kFramesAfterLoss) {
        return step;
    }
    step.kind = Step::Kind::kDue;
    const bool isOnlyLoss = step.lossCount == 1;
    if (!isOnlyLoss) {
        mFrameLostNumQueue.pop_front();
        if (mFrameLostNumQueue.front() <= current) {
            // The next loss lies within these frames: one file, after its own 30.
            step.kind = Step::Kind::kMerged;
            return step;
        }
    }
    if (length <= kFramesBeforeLoss) {
        return step;  // an only loss stays queued, and the history grows until it overflows
    }
    handOver(step, kFramesBeforeLoss);
    if (isOnlyLoss) {
        mFrameLostNumQueue.pop_front();
    }
    return step;
}

void FrameLossHistory::handOver(Step& step, size_t keptFrames) {
    Frames frames = std::move(mFrameLostDataQueue);
    mFrameLostDataQueue = std::move(mNextDataQueue);
    // Where memory is refused the frames of the dump are worth more than those of a later one.
    step.isOutOfMemory = keptFrames > 0 && !mFrameLostDataQueue.reserve(kRoom);
    if (!step.isOutOfMemory) {
        mFrameLostDataQueue.takeNewest(frames, keptFrames);
    }
    step.dump = Dump{step.front, std::move(frames), {}};
}

void FrameLossHistory::tell(const Step& step, uint32_t current) {
    // These messages belong to the processing of a done frame, whoever prints them.
    static constexpr char kProcess[] = "frameLostProcess";
    if (step.isOutOfMemory) {
        VDR_LOG_AS(kProcess, kLogError, "VDR::frameLostProcess, no memory to keep the frame!");
    }
    if (step.kind == Step::Kind::kNothing) {
        return;
    }
    const bool isOverflow = step.kind == Step::Kind::kOverflow;
    const char* const reason = isOverflow ? "exceed 100, " : "";
    if (step.lossCount == 1) {
        VDR_LOG_AS(kProcess, kLogInfo,
                   "VDR::frameLostProcess, mFrameLostNumQueue(%u), front=%u, currentDoneFrame=%u, "
                   "%sdump data to txt!",
                   step.lossCount, step.front, current, reason);
        return;
    }
    if (!isOverflow) {
        VDR_LOG_AS(kProcess, kLogInfo,
                   "VDR::frameLostProcess, mFrameLostNumQueue>=2, %u, front=%u pop, "
                   "currentDoneFrame=%u!",
                   step.lossCount, step.front, current);
    }
    if (step.kind != Step::Kind::kMerged) {
        VDR_LOG_AS(kProcess, kLogInfo,
                   "VDR::frameLostProcess, mFrameLostNumQueue>=2, %u, front=%u, "
                   "currentDoneFrame=%u, %sdump data to txt!",
                   isOverflow ? step.lossCount : step.lossCount - 1, step.front, current, reason);
    }
}

std::optional<FrameLossHistory::Dump> FrameLossHistory::stop() {
    mStock.clear();
    std::optional<Dump> dump;
    Frames frames;  // freed when the lock is released
    const SpinLockGuard guard(mFrameLostLock);
    frames = std::move(mFrameLostDataQueue);
    if (!mFrameLostNumQueue.empty() && !mFrameLostExceedFlag && frames.size() <= kLongestHistory) {
        const uint32_t front = mFrameLostNumQueue.front();
        VDR_LOG_AS("dumpDataToFrameLostTxtFile", kLogInfo,
                   "VDR::dumpDataToFrameLostTxtFile, flush now, still write a txt, front=%u!",
                   front);
        dump = Dump{front, std::move(frames), {}};
    }
    mNextDataQueue.clear();
    mFrameLostNumQueue = std::deque<uint32_t>();
    const uint64_t latestLoss = mCompletions.stop();
    if (dump.has_value()) {
        dump->file = {latestLoss, false};
    }
    return dump;
}

}  // namespace zk
