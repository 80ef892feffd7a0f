#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>

#include "base/RingQueue.h"
#include "base/SpinLock.h"
#include "dump/FrameLostTxtFile.h"
#include "dump/LossAccounts.h"
#include "records/frameData.h"

namespace zk {

// Copies of the newest done frames, and the choice of what to dump for an announced loss:
//
//   no loss pending      the last 30 done frames
//   lost frame to come   still 30
//   lost frame passed    grows, until exactly 30 frames later all but the newest 30 go into a text
//                        file, or until 100 frames go out whole and switch recording off
//
// Threads: frameLostProcess on camera threads, announcements on the service's; neither does file
// I/O. A done frame costs one copy of 4096 bytes.
class FrameLossHistory {
public:
    explicit FrameLossHistory(int32_t vdrLevel, std::shared_ptr<LossAccounts> accounts);

    // One done frame, in order of completion. `frame` may be null and lives for the call only.
    void frameLostProcess(const frameData* frame);

    // A frame was lost.
    void announce(uint32_t frameNumber);
    // It was announced before: queued again unless it is the last one queued.
    void announceAgain(uint64_t frameNumber);

    // Writes out the history for a loss that is still pending, forgets all frames and losses, and
    // settles the latest loss's account or leaves that to its last writer.
    void dumpDataToFrameLostTxtFile();

    // Whether a history overflowed since the last reset: no loss is recorded any more.
    bool isExceeded() const { return mFrameLostExceedFlag; }
    void resetExceeded() { mFrameLostExceedFlag = false; }

private:
    // Requests a file of `frames` for the loss of `lostFrame`.
    void dumpDataToFrameLostTxtFile(uint32_t lostFrame, RingQueue<frameData> frames)
            VDR_REQUIRES(mFrameLostLock);
    // Copies of the oldest frames; none, after an error line, where memory is refused.
    RingQueue<frameData> copyOldest(size_t frameCount) const VDR_REQUIRES(mFrameLostLock);

    const std::shared_ptr<LossAccounts> mAccounts;
    const FrameLostTxtFile mTxtFile;
    std::atomic<bool> mFrameLostExceedFlag{false};

    SpinLock mFrameLostLock;  // taken before the lock of the accounts, never after it
    RingQueue<frameData> mFrameLostDataQueue VDR_GUARDED_BY(mFrameLostLock);  // oldest in front
    std::deque<uint32_t> mFrameLostNumQueue VDR_GUARDED_BY(mFrameLostLock);   // in order of report
};

}  // namespace zk
