#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <optional>

#include "base/RingQueue.h"
#include "base/SpinLock.h"
#include "frameloss/FrameStock.h"
#include "frameloss/LossCompletions.h"
#include "records/frameData.h"

namespace zk {

// Copies of the newest done frames, and the choice of what to dump for an announced loss:
//
//   no loss pending      the last 30 done frames
//   lost frame to come   still 30
//   lost frame passed    grows, until exactly 30 frames later all but the newest 30 go into a text
//                        file, or until 100 frames go out whole and switch recording off
//
// Threads: frameLostProcess on camera threads, announcements on the service's. Nothing is copied
// here: a done frame comes with the memory that it lies in, and a dump takes that along.
class FrameLossHistory {
public:
    using Frames = RingQueue<FrameStock::Place>;
    // One text file: its frames, and the loss that it is written for. Must not outlive the history.
    struct Dump {
        uint32_t lostFrame;
        Frames frames;
        LossCompletions::File file;
    };

    // `completions` must outlive this.
    explicit FrameLossHistory(LossCompletions& completions) : mCompletions(completions) {}

    // Memory for the longest history and for the one that follows it when it is handed over, so
    // that no frame of the session waits for it. Without it the memory comes with the frames.
    void reserve();
    // The memory of a dump that is written, for the session's next one.
    void giveBack(Frames frames);

    // Where a frame that is done may be copied to. Null where memory is refused.
    FrameStock::Place place() { return mStock.take(); }
    // One done frame, not null, in order of completion: the dump that it completes, if any.
    std::optional<Dump> frameLostProcess(FrameStock::Place frame);
    // The same of a frame that lies elsewhere; `frame` may be null and lives for the call only.
    std::optional<Dump> frameLostProcess(const frameData* frame);

    // An accepted loss and its completion are entered together: a stop sees both or neither.
    void announce(uint32_t frameNumber, uint64_t timeStamp, LossCompletions::Promise promise);
    // It was announced before: queued again unless it is the last one queued.
    void announceAgain(uint64_t frameNumber);

    // Forgets all frames and losses, and completes the losses or leaves that to their last files.
    // Returns the dump of a loss that was still pending, for which nobody waits.
    std::optional<Dump> stop();

    // Whether a history overflowed since the last reset: no loss is recorded any more.
    bool isExceeded() const { return mFrameLostExceedFlag; }
    void resetExceeded() { mFrameLostExceedFlag = false; }

private:
    // What a done frame led to. It is told once the lock is released.
    struct Step {
        enum class Kind { kNothing, kDue, kMerged, kOverflow } kind = Kind::kNothing;
        uint32_t lossCount = 0;  // pending ones, before this frame
        uint32_t front = 0;      // the first of them
        bool isOutOfMemory = false;
        FrameStock::Place oldest;  // that need not be kept any longer
        std::optional<Dump> dump;
    };
    static Step outOfMemory();
    // Takes the frame, unless there is no memory.
    Step keep(FrameStock::Place& frame, uint32_t current) VDR_REQUIRES(mFrameLostLock);
    Step stepOfPendingLoss(uint32_t current) VDR_REQUIRES(mFrameLostLock);
    // Hands the history over but for its newest frames, so many.
    void handOver(Step& step, size_t keptFrames) VDR_REQUIRES(mFrameLostLock);
    static void tell(const Step& step, uint32_t current);

    LossCompletions& mCompletions;
    FrameStock mStock;  // before the queues, whose frames come back to it
    std::atomic<bool> mFrameLostExceedFlag{false};

    // Taken before the lock of the completions, never after it.
    alignas(kCacheLine) SpinLock mFrameLostLock;
    Frames mFrameLostDataQueue VDR_GUARDED_BY(mFrameLostLock);               // oldest in front
    Frames mNextDataQueue VDR_GUARDED_BY(mFrameLostLock);                    // empty: its memory
    std::deque<uint32_t> mFrameLostNumQueue VDR_GUARDED_BY(mFrameLostLock);  // in order of report
};

}  // namespace zk
