#pragma once

#include <unistd.h>

#include <atomic>

namespace zk::bench {

// What the recorder's lock costs by itself: compare-and-swap both ways, a nap between attempts.
// Written out, so that a change of the recorder's lock does not change what it is measured by.
class BareLock {
public:
    void lock() {
        bool expected = false;
        while (!mLocked.compare_exchange_weak(expected, true)) {
            usleep(10);
            expected = false;
        }
    }
    void unlock() {
        bool expected = true;
        mLocked.compare_exchange_strong(expected, false);
    }
    void pair() {
        lock();
        unlock();
    }

    template <int kCount>
    void pairs() {
        for (int i = 0; i < kCount; ++i) {
            pair();
        }
    }

private:
    alignas(64) std::atomic<bool> mLocked{false};
};

}  // namespace zk::bench
