#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "base/RingQueue.h"
#include "frameloss/FrameLossLimit.h"
#include "frameloss/FrameStock.h"

namespace zk {

// One frame-loss text file: a line per frame, oldest first, and nothing else. The folder is not
// created here. Every failure is logged and swallowed. One thread, of the worker pool.
class FrameLostTxtFile {
public:
    // Named after `lostTimeStamp` (microseconds since the epoch, local time) and the lost frame.
    FrameLostTxtFile(uint64_t lostTimeStamp, uint32_t lostFrame);

    // Writes the records in the columns of record level `vdrLevel`, takes each away once it is
    // written, and counts it. False where the file could not be opened: nothing is taken then.
    bool writeTxtForPreviewFrameLost(int32_t vdrLevel, RingQueue<FrameStock::Place>& frames,
                                     FrameLossLimit& limit) const;
    // Tells that the file could not be opened; nothing about one without a name.
    void logOpenFailure() const;

    // Empty where the time stamp is no time.
    const char* path() const { return mPath; }

private:
    static constexpr size_t kPathSize = 125;  // bytes, with the NUL

    void writeLines(int32_t vdrLevel, RingQueue<FrameStock::Place>& frames, FrameLossLimit& limit,
                    std::FILE* file) const;
    void logWriteFailure(int result) const;

    const uint64_t mLostTimeStamp;
    char mPath[kPathSize] = {};
};

}  // namespace zk
