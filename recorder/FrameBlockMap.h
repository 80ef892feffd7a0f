#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zk {

// Frame number -> record block for the frames that are being filled: a hash table of fixed size,
// since every field that the pipeline writes looks its frame up here. One thread at a time.
class FrameBlockMap {
public:
    // Never holds more, so that it stays sparse and probing short.
    static constexpr size_t kMaxEntries = 80;

    // Null where the frame is absent.
    void* find(uint32_t frameNumber) const {
        for (size_t i = home(frameNumber); mSlots[i].block != nullptr; i = next(i)) {
            if (mSlots[i].frameNumber == frameNumber) {
                return mSlots[i].block;
            }
        }
        return nullptr;
    }

    // The frame must be absent, `block` not null, and the table below kMaxEntries.
    void insert(uint32_t frameNumber, void* block) {
        size_t i = home(frameNumber);
        while (mSlots[i].block != nullptr) {
            i = next(i);
        }
        mSlots[i] = {frameNumber, block};
        ++mSize;
    }

    // The frame must be present. Entries behind the gap move up, so that probing needs no marks
    // for what once was there.
    void erase(uint32_t frameNumber) {
        size_t gap = home(frameNumber);
        while (mSlots[gap].frameNumber != frameNumber || mSlots[gap].block == nullptr) {
            gap = next(gap);
        }
        for (size_t i = next(gap); mSlots[i].block != nullptr; i = next(i)) {
            const size_t wanted = home(mSlots[i].frameNumber);
            if (distance(wanted, i) >= distance(gap, i)) {
                mSlots[gap] = mSlots[i];
                gap = i;
            }
        }
        mSlots[gap] = {};
        --mSize;
    }

    void clear() {
        mSlots = {};
        mSize = 0;
    }

    size_t size() const { return mSize; }

private:
    static constexpr unsigned kIndexBits = 8;
    static constexpr size_t kSlots = size_t{1} << kIndexBits;
    static constexpr uint32_t kGoldenRatio = 2654435769U;  // spreads neighbouring frame numbers

    struct Slot {
        uint32_t frameNumber = 0;
        void* block = nullptr;  // null: the slot is free
    };

    static size_t home(uint32_t frameNumber) {
        return (frameNumber * kGoldenRatio) >> (32 - kIndexBits);
    }
    static size_t next(size_t slot) { return (slot + 1) & (kSlots - 1); }
    static size_t distance(size_t from, size_t to) { return (to - from) & (kSlots - 1); }

    std::array<Slot, kSlots> mSlots{};
    size_t mSize = 0;
};

}  // namespace zk
