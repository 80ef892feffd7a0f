#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "base/SpinLock.h"

namespace zk {

// Frame number -> record block for the frames that are being filled: a hash table of fixed size,
// since every field that the pipeline writes looks its frame up here. It is changed by one thread
// at a time, under the pool's lock, and read by any number meanwhile that neither wait nor write
// to memory that others read: a reader notices by the version that the table was changed under
// its eyes.
class FrameBlockMap {
public:
    // Never holds more, so that it stays sparse and probing short.
    static constexpr size_t kMaxEntries = 80;

    // Null where a glance does not show the frame's block: it is absent, or displaced by another
    // frame, or the table is being changed. Any thread, at any time.
    void* glance(uint32_t frameNumber) const {
        const size_t i = home(frameNumber);
        const uint32_t version = mVersion.load(std::memory_order_acquire);
        const bool isHere = numberAt(i) == frameNumber;
        void* const block = blockAt(i);
        return isHere && isStill(version) ? block : nullptr;
    }
    // What a look-up found: nothing to rely on where the table was being changed.
    struct Sight {
        bool isClear;
        void* block;  // null where the frame is absent
    };
    // Any thread, at any time. What it finds in clear sight is what it would have found before or
    // after any concurrent change.
    Sight look(uint32_t frameNumber) const {
        const uint32_t version = mVersion.load(std::memory_order_acquire);
        void* const block = find(frameNumber);
        return {isStill(version), block};
    }

    // All below: one thread at a time.

    // Null where the frame is absent.
    void* find(uint32_t frameNumber) const {
        size_t i = home(frameNumber);
        // Bounded for those who look while entries move: they may never meet a free slot.
        for (size_t probes = 0; probes < kSlots; ++probes, i = next(i)) {
            void* const block = blockAt(i);
            if (block == nullptr || numberAt(i) == frameNumber) {
                return block;
            }
        }
        return nullptr;
    }

    // The frame must be absent, `block` not null, and the table below kMaxEntries.
    void insert(uint32_t frameNumber, void* block) {
        size_t i = home(frameNumber);
        while (blockAt(i) != nullptr) {
            i = next(i);
        }
        const Change change(mVersion);
        store(i, frameNumber, block);
        ++mSize;
    }

    // The frame must be present. Entries behind the gap move up, so that probing needs no marks
    // for what once was there.
    void erase(uint32_t frameNumber) {
        size_t gap = home(frameNumber);
        while (numberAt(gap) != frameNumber || blockAt(gap) == nullptr) {
            gap = next(gap);
        }
        const Change change(mVersion);
        for (size_t i = next(gap); blockAt(i) != nullptr; i = next(i)) {
            const size_t wanted = home(numberAt(i));
            if (distance(wanted, i) >= distance(gap, i)) {
                store(gap, numberAt(i), blockAt(i));
                gap = i;
            }
        }
        store(gap, 0, nullptr);
        --mSize;
    }

    void clear() {
        const Change change(mVersion);
        for (size_t i = 0; i < kSlots; ++i) {
            store(i, 0, nullptr);
        }
        mSize = 0;
    }

    size_t size() const { return mSize; }

private:
    static constexpr unsigned kIndexBits = 8;
    static constexpr size_t kSlots = size_t{1} << kIndexBits;
    static constexpr uint32_t kGoldenRatio = 2654435769U;  // spreads neighbouring frame numbers

    struct Slot {
        std::atomic<void*> block{nullptr};  // null: the slot is free
        std::atomic<uint32_t> frameNumber{0};
    };

    // The version is odd while the table is being changed. The fences keep the changes between
    // the two stores, and what a reader saw between its two looks at the version.
    class Change {
    public:
        explicit Change(std::atomic<uint32_t>& version) : mVersion(version) {
            mVersion.store(current() + 1, std::memory_order_relaxed);
            std::atomic_thread_fence(std::memory_order_release);
        }
        ~Change() { mVersion.store(current() + 1, std::memory_order_release); }
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;

    private:
        uint32_t current() const { return mVersion.load(std::memory_order_relaxed); }

        std::atomic<uint32_t>& mVersion;
    };

    static size_t home(uint32_t frameNumber) {
        return (frameNumber * kGoldenRatio) >> (32 - kIndexBits);
    }
    static size_t next(size_t slot) { return (slot + 1) & (kSlots - 1); }
    static size_t distance(size_t from, size_t to) { return (to - from) & (kSlots - 1); }

    // Whether nothing was changed since the version was loaded, nor was being changed then: an odd
    // version never comes up again with its lowest bit cleared.
    bool isStill(uint32_t version) const {
        std::atomic_thread_fence(std::memory_order_acquire);
        return mVersion.load(std::memory_order_relaxed) == (version & ~1U);
    }

    void* blockAt(size_t i) const { return mSlots[i].block.load(std::memory_order_relaxed); }
    uint32_t numberAt(size_t i) const {
        return mSlots[i].frameNumber.load(std::memory_order_relaxed);
    }
    void store(size_t i, uint32_t frameNumber, void* block) {
        mSlots[i].frameNumber.store(frameNumber, std::memory_order_relaxed);
        mSlots[i].block.store(block, std::memory_order_relaxed);
    }

    // Apart from the pool's lock, which changes hands more often.
    alignas(kCacheLine) std::atomic<uint32_t> mVersion{0};
    uint32_t mSize = 0;
    std::array<Slot, kSlots> mSlots{};
};

}  // namespace zk
