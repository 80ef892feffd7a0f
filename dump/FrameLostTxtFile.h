#pragma once

#include <cstdint>
#include <memory>

#include "base/RingQueue.h"
#include "dump/LossAccounts.h"
#include "records/frameData.h"

namespace zk {

// The frame-loss text files: one file per dump, one line per frame, oldest first, written by
// tasks on the worker pool, several at once. Every failure is logged and swallowed; the folder is
// not created here. Any thread.
class FrameLostTxtFile {
public:
    FrameLostTxtFile(int32_t vdrLevel, std::shared_ptr<LossAccounts> accounts);

    // Enqueues the writer of one file and returns at once. `count`, the lost frame's number, and
    // `lostTimeStamp` (microseconds since the epoch) name the file; the latter also tells whose
    // account it is.
    void writeTxtForPreviewFrameLost(RingQueue<frameData> frames, uint32_t count,
                                     uint64_t lostTimeStamp) const;

private:
    const int32_t mVdrLevel;
    const std::shared_ptr<LossAccounts> mAccounts;
};

}  // namespace zk
