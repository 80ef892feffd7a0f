#pragma once

#include <cstddef>
#include <cstdint>

#include "records/frameData.h"

namespace vdrdump {

// The bytes of a binary dump from some place on, looked at as blocks that may begin at any of
// them. Records have no marks: a block is one for how it looks and for what follows it.
class BlockView {
public:
    static constexpr size_t kBlock = zk::kFrameRecordSize;
    static constexpr size_t kNowhere = SIZE_MAX;

    // `isEnd`: the dump ends behind these bytes.
    BlockView(const uint8_t* bytes, size_t size, bool isEnd)
          : mBytes(bytes), mSize(size), mIsEnd(isEnd) {}

    size_t size() const { return mSize; }
    bool isEnd() const { return mIsEnd; }
    bool holds(size_t at, size_t size = kBlock) const { return at + size <= mSize; }

    uint32_t number(size_t at) const { return zk::frameNumberOf(mBytes + at); }
    // Zero behind the layout, as records are.
    bool hasTail(size_t at) const;
    // Counts within their arrays, too.
    bool isSound(size_t at) const;
    // Sound, and those behind it count on from it: where a record begins, beyond doubt. Where few
    // are behind it, it counts on from `last`, the number of the last record known.
    bool isChain(size_t at, uint32_t last) const;
    // The first block from `at` on, in steps of a block, that bears out that records begin there;
    // kNowhere where none does.
    size_t findInStep(size_t at, uint32_t last) const;

    // Where, behind `from`, the first record begins before `end`; `end` where none does. Nearby
    // bytes may look like one, too: a number near `last` goes first, then one that counts up
    // slowly.
    size_t findChain(size_t from, size_t end, uint32_t last) const;

    // Leading zeros.
    size_t zeros() const;

    static bool follows(uint32_t number, uint32_t next);
    static bool isNear(uint32_t a, uint32_t b);

private:
    const uint8_t* const mBytes;
    const size_t mSize;
    const bool mIsEnd;
};

}  // namespace vdrdump
