#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "base/RingQueue.h"
#include "frameloss/FrameLossHistory.h"
#include "frameloss/FrameLossLimit.h"
#include "frameloss/LossCompletions.h"
#include "platform/OrnEvent.h"
#include "records/frameData.h"

namespace zk {

// Everything about lost frames: takes in what the monitoring service announces, watches the done
// frames, and has the frames around a loss written as text on the worker pool. Writers hold a
// reference to this, so that one that comes late finds it alive.
//
//   announcement ──limit──> history <──done frames
//                              │ the frames of a file            at most 32 wait for the pool
//                              v
//                        text file on the pool ──> completion: the announcer's promise
class FrameLoss : public std::enable_shared_from_this<FrameLoss> {
public:
    // `vdrLevel`: the record level, which decides the columns of the text.
    explicit FrameLoss(int32_t vdrLevel) : mVdrLevel(vdrLevel) {}

    // The day of the daily limit starts, wall-clock seconds.
    void startDay(int64_t now) { mLimit.start(now); }
    // A session opens: reserves what its frames will need.
    void open() { mHistory.reserve(); }

    // An event of the monitoring service, on its thread. -22 for null, 0 otherwise.
    int32_t ReceiveEvent(const std::shared_ptr<Orn::IEvent>& event);
    // One done frame, in order of completion. Camera threads; does no file I/O. `frame` may be
    // null and lives for the call only.
    void frameLostProcess(const frameData* frame);
    // Where a frame that is done may be copied to, for frameLostProcess to keep. Null where memory
    // is refused.
    FrameStock::Place place() { return mHistory.place(); }
    // The same as above without a copy; `frame` is not null.
    void frameLostProcess(FrameStock::Place frame);

    // The session ends: writes out the history for a loss that is still pending, forgets frames
    // and losses, and completes the losses, those with files under way after their last file.
    void stop();
    // Losses are recorded again after a history overflowed.
    void resetExceeded() { mHistory.resetExceeded(); }

private:
    static constexpr int kMostWaitingFiles = 32;  // what a day may hold, at 31 lines each

    void frameDropped(uint64_t timeStamp, uint64_t frameNumber);
    // Enqueues the writer of one file and returns at once.
    void enqueueFile(FrameLossHistory::Dump dump);
    void writeFile(FrameLossHistory::Dump& dump);

    const int32_t mVdrLevel;
    FrameLossLimit mLimit;
    LossCompletions mCompletions;
    FrameLossHistory mHistory{mCompletions};
    std::atomic<int> mWaitingFiles{0};  // enqueued, and not come to by the worker pool
};

}  // namespace zk
