#pragma once

#include <unistd.h>

#include <atomic>
#include <cstddef>

// Clang checks at compile time that what a lock guards is touched under it only; other compilers
// skip the annotations.
#if defined(__clang__)
#define VDR_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VDR_THREAD_ANNOTATION(x)
#endif
#define VDR_CAPABILITY(name) VDR_THREAD_ANNOTATION(capability(name))
#define VDR_SCOPED_CAPABILITY VDR_THREAD_ANNOTATION(scoped_lockable)
#define VDR_GUARDED_BY(lock) VDR_THREAD_ANNOTATION(guarded_by(lock))
#define VDR_PT_GUARDED_BY(lock) VDR_THREAD_ANNOTATION(pt_guarded_by(lock))
#define VDR_REQUIRES(...) VDR_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define VDR_ACQUIRE(...) VDR_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define VDR_RELEASE(...) VDR_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define VDR_ASSERT_CAPABILITY(x) VDR_THREAD_ANNOTATION(assert_capability(x))

namespace zk {

// Bytes of memory that go from processor to processor at once. A lock that camera threads share
// starts a line, so that what it guards comes along with it and its neighbours stay where they are.
inline constexpr size_t kCacheLine = 64;

// The recorder's one kind of lock: one byte, no kernel object. Whoever has to wait looks again for
// one to three microseconds and then naps between attempts, so that the holder gets the processor.
// Most holders copy a record or change a container; where one does more, a log line or the disk,
// the class that has the lock says so. Not recursive; docs/architecture.md says which may be taken
// while another is held.
class VDR_CAPABILITY("SpinLock") SpinLock {
public:
    SpinLock() = default;
    SpinLock(const SpinLock&) = delete;
    SpinLock& operator=(const SpinLock&) = delete;

    // A nap takes some sixty times as long as a holder does, and whoever wakes from one pushes
    // another thread off its processor: with four threads on two, the longest thousandth of field
    // writes, which take no lock, is ten times shorter for the look before it. Alone it costs
    // nothing.
    void lock() VDR_ACQUIRE() {
        if (seize()) {
            return;
        }
        for (int i = 0; i < kLooks; ++i) {
            if (!mLocked.load(std::memory_order_relaxed) && seize()) {
                return;
            }
            pause();
        }
        while (!seize()) {
            usleep(kNapMicroseconds);
        }
    }

    // Releasing a free lock does nothing.
    void unlock() VDR_RELEASE() {
        bool expected = true;
        mLocked.compare_exchange_strong(expected, false);
    }

    // For the compiler only, where the lock is known to be held under another name.
    void assertHeld() const VDR_ASSERT_CAPABILITY(this) {}

private:
    static constexpr int kLooks = 64;  // one to three microseconds, several records' copies
    static constexpr useconds_t kNapMicroseconds = 10;

    // Tells the processor that this thread waits for another.
    static void pause() {
#if defined(__x86_64__)
        __builtin_ia32_pause();
#elif defined(__aarch64__)
        asm volatile("yield");
#endif
    }

    // Never fails on a free lock: that would cost a nap.
    bool seize() {
        bool expected = false;
        return mLocked.compare_exchange_strong(expected, true);
    }

    std::atomic<bool> mLocked{false};
};

static_assert(sizeof(SpinLock) == 1, "one byte");

class VDR_SCOPED_CAPABILITY SpinLockGuard {
public:
    explicit SpinLockGuard(SpinLock& lock) VDR_ACQUIRE(lock) : mLock(lock) { mLock.lock(); }
    ~SpinLockGuard() VDR_RELEASE() { mLock.unlock(); }
    SpinLockGuard(const SpinLockGuard&) = delete;
    SpinLockGuard& operator=(const SpinLockGuard&) = delete;

private:
    SpinLock& mLock;
};

}  // namespace zk
