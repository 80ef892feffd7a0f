#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

#include "base/RingQueue.h"
#include "base/SpinLock.h"
#include "records/frameData.h"

namespace zk {

// Memory for copies of done frames, which go from hand to hand instead of being copied again: a
// place is filled once and is in one hand at a time, until it comes back by itself. In a session
// nothing is allocated while reserved places last, and while frames come one at a time no lock is
// taken. Any thread.
class FrameStock {
public:
    struct Return {
        FrameStock* stock = nullptr;
        void operator()(frameData* place) const { stock->giveBack(place); }
    };
    // Must not outlive its stock.
    using Place = std::unique_ptr<frameData, Return>;

    FrameStock() = default;
    ~FrameStock() { delete mAtHand.load(); }
    FrameStock(const FrameStock&) = delete;
    FrameStock& operator=(const FrameStock&) = delete;

    // So many places, unless it has some. Without memory they come one by one, with the frames.
    void reserve(size_t places);
    // A place for one frame, its bytes undefined. Null where memory is refused.
    Place take();
    // Gives free memory back but for one place, and what comes back from now on as well.
    void clear();

private:
    void giveBack(frameData* place);

    // The one that came back last: frame for frame the newest copy takes the oldest one's place.
    alignas(kCacheLine) std::atomic<frameData*> mAtHand{nullptr};
    SpinLock mStockLock;                                                     // taken last of all
    RingQueue<std::unique_ptr<frameData>> mFree VDR_GUARDED_BY(mStockLock);  // never grows
};

}  // namespace zk
