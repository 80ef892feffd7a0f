#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/RingQueue.h"
#include "base/SpinLock.h"
#include "recorder/FrameBlockMap.h"
#include "records/frameData.h"

namespace zk {

// The record blocks, 80 of 4096 bytes, allocated once, each in exactly one of three pools:
//
//   ready ──take──> processing ──complete──> done ──report──> ready
//
// A block is zero whenever it is ready. Any thread; nothing here allocates after construction.
class FrameRecordPool {
public:
    struct Sizes {
        size_t ready;
        size_t processing;
        size_t done;
    };
    enum class Copy { kDone, kFailed, kNoSuchFrame };

    // Blocks that cannot be allocated are logged and missing.
    FrameRecordPool();
    ~FrameRecordPool();
    FrameRecordPool(const FrameRecordPool&) = delete;
    FrameRecordPool& operator=(const FrameRecordPool&) = delete;

    // Nothing happens where no block is free or the frame has one already.
    void take(uint32_t frameNumber);
    // The block of a frame that is being filled where a glance without the lock shows it, else
    // null. In sight of the compiler, since every field write passes here.
    void* glance(uint32_t frameNumber) const { return mDataProcessingPool.glance(frameNumber); }
    // The block of a frame that is being filled, or null; takes the lock only while somebody
    // changes the pool. It is written outside the lock.
    void* find(uint32_t frameNumber);
    // Copies the block of a frame that is being filled.
    Copy copy(uint32_t frameNumber, frameData& out);
    // Moves the frame's block to the done pool and copies it.
    Copy complete(uint32_t frameNumber, frameData& out);
    // Shows the oldest done block to `stage`, under the lock, then clears and frees it.
    template <typename Stage>
    void reportOldest(Stage stage) {
        const SpinLockGuard guard(mDataPoolLock);
        if (!mDataDonePool.empty()) {
            stage(mDataDonePool.front());
            freeOldest();
        }
    }
    // The oldest done block or null; valid until it is reported.
    void* oldestDone();
    // Frame number of the oldest done block; false where there is none.
    bool oldestDoneFrameNumber(uint32_t& frameNumber);
    // Frees every block, cleared, wherever it was.
    void recycleAll();
    Sizes sizes();

private:
    static constexpr size_t kBlocks = FrameBlockMap::kMaxEntries;

    static Copy copyBlock(const void* block, frameData& out);
    void freeOldest() VDR_REQUIRES(mDataPoolLock);

    std::vector<void*> mDataBufferList;  // owns the blocks; fixed after construction

    // Held for container work, to copy a record and to clear blocks.
    alignas(kCacheLine) SpinLock mDataPoolLock;
    RingQueue<void*> mDataReadyPool VDR_GUARDED_BY(mDataPoolLock);
    RingQueue<void*> mDataDonePool VDR_GUARDED_BY(mDataPoolLock);  // oldest at the front
    FrameBlockMap mDataProcessingPool;  // changed under the lock, looked at without it
};

}  // namespace zk
