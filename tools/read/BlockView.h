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
    static constexpr size_t kBeyondDoubt = 3;  // records in a row that prove each other
    static constexpr size_t kCompared = 5;     // records that two places are compared by

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
    // Sound, and those behind it have numbers near: where a record may begin. Where few are behind
    // it, its own is near `last`, the number of the last record known.
    bool isChain(size_t at, uint32_t last) const;
    // How many of the first few records at `at` and in steps of a block from there count on from
    // the one in front of them, which is `last` for the first; one more where the dump ends in
    // step.
    size_t countFrom(size_t at, uint32_t last) const;

    // The likeliest of the chains that begin from `from` on and before `end`; `end` where none
    // does. A number soon after `last` goes first, then one whose next is close.
    size_t findChain(size_t from, size_t end, uint32_t last) const;

    // Leading zeros.
    size_t zeros() const;

    static bool follows(uint32_t number, uint32_t next);
    static bool isNear(uint32_t a, uint32_t b);

private:
    uint32_t stepTo(size_t at, uint32_t last) const;

    const uint8_t* const mBytes;
    const size_t mSize;
    const bool mIsEnd;
};

}  // namespace vdrdump
