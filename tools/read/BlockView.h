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
    static constexpr size_t kBeyondDoubt = 3;  // records in a row that prove each other
    static constexpr size_t kGoesOn = 2;       // what going on from the last record weighs

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
    struct Run {
        size_t at;      // where its first record begins, kNowhere where there is none
        size_t weight;  // its records, and some more where they go on from the last one known

        bool goesOn() const { return weight > kGoesOn; }
        bool isBeyondDoubt() const { return weight >= kBeyondDoubt + kGoesOn; }
    };
    // Of the records at `at` and in steps of a block from there, the most that count on from each
    // other.
    Run runFrom(size_t at, uint32_t last) const;
    // How many of them have the number that is due in their place: `due` at `at`, and so on.
    size_t countInPlace(size_t at, uint32_t due) const;

    // Where, from `from` on, a record begins before `end`; `end` where none does. Other places may
    // look like one, too: a number soon after `last` goes first, then one that counts up slowly.
    size_t findChain(size_t from, size_t end, uint32_t last) const;

    // Leading zeros.
    size_t zeros() const;

    static bool follows(uint32_t number, uint32_t next);
    static bool isNear(uint32_t a, uint32_t b);

private:
    bool mayBegin(size_t at) const;
    size_t countFrom(size_t at) const;
    uint32_t stepTo(size_t at, uint32_t last) const;

    const uint8_t* const mBytes;
    const size_t mSize;
    const bool mIsEnd;
};

}  // namespace vdrdump
