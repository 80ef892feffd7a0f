#include "frameloss/FrameStock.h"

#include <new>
#include <utility>

namespace zk {

void FrameStock::reserve(size_t places) {
    {
        const SpinLockGuard guard(mStockLock);
        if (mFree.capacity() > 0) {
            return;
        }
    }
    // Before the lock: camera threads may be waiting for it.
    RingQueue<std::unique_ptr<frameData>> reserved;
    if (!reserved.reserve(places)) {
        return;
    }
    while (reserved.size() < places) {
        std::unique_ptr<frameData> place(new (std::nothrow) frameData);
        if (place == nullptr) {
            break;
        }
        reserved.push_back(std::move(place));
    }
    const SpinLockGuard guard(mStockLock);
    if (mFree.capacity() == 0) {
        std::swap(mFree, reserved);
    }
}

FrameStock::Place FrameStock::take() {
    frameData* place = mAtHand.exchange(nullptr);
    if (place == nullptr) {
        const SpinLockGuard guard(mStockLock);
        if (!mFree.empty()) {
            place = mFree.takeFront().release();
        }
    }
    return Place(place != nullptr ? place : new (std::nothrow) frameData, Return{this});
}

void FrameStock::giveBack(frameData* place) {
    frameData* none = nullptr;
    if (mAtHand.compare_exchange_strong(none, place)) {
        return;
    }
    std::unique_ptr<frameData> owned(place);
    const SpinLockGuard guard(mStockLock);
    if (mFree.size() < mFree.capacity()) {
        mFree.push_back(std::move(owned));
    }
}

void FrameStock::clear() {
    RingQueue<std::unique_ptr<frameData>> freed;
    const SpinLockGuard guard(mStockLock);
    std::swap(mFree, freed);
}

}  // namespace zk
