#include "tools/read/BlockView.h"

#include <algorithm>
#include <cstring>

#include "tools/record/RecordSchema.h"

namespace vdrdump {
namespace {

constexpr uint32_t kNear = 80;  // frames that the recorder keeps at once

bool isZero(const uint8_t* bytes, size_t size) {
    return size == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, size - 1) == 0);
}

}  // namespace

// 0 proves little: it is what stands in most places of a record.
bool BlockView::follows(uint32_t number, uint32_t next) {
    return next > number && next - number <= (number == 0 ? 1 : kNear);
}

bool BlockView::isNear(uint32_t a, uint32_t b) {
    return b != 0 && (follows(a, b) || follows(b, a));
}

bool BlockView::hasTail(size_t at) const {
    return isZero(mBytes + at + sizeof(Layout), kBlock - sizeof(Layout));
}

bool BlockView::isSound(size_t at) const {
    bool isSound = hasTail(at);
    for (const ArrayField* array : kArrays) {
        isSound &= mBytes[at + array->countOffset] <= array->capacity;
    }
    return isSound;
}

bool BlockView::isChain(size_t at, uint32_t last) const {
    constexpr size_t kBeyondDoubt = 3;
    if (!holds(at) || !isSound(at)) {
        return false;
    }
    size_t length = 1;
    size_t next = at + kBlock;
    while (length < kBeyondDoubt && holds(next) && follows(number(next - kBlock), number(next)) &&
           isSound(next)) {
        ++length;
        next += kBlock;
    }
    const bool goesOn = follows(last, number(at));
    const bool isLast = mIsEnd && !holds(next);
    if (length == 1) {
        const bool isNumberAhead = holds(next, sizeof(uint32_t));
        return isLast && (isNumberAhead ? follows(number(at), number(next)) : goesOn);
    }
    return length == kBeyondDoubt || goesOn || isLast;
}

size_t BlockView::findInStep(size_t at, uint32_t last) const {
    if (at >= mSize) {
        return mIsEnd ? at : kNowhere;
    }
    for (; holds(at); at += kBlock) {
        if (isSound(at) && (isNear(last, number(at)) || isChain(at, last))) {
            return at;
        }
    }
    return mIsEnd && holds(at, sizeof(uint32_t)) && isNear(last, number(at)) ? at : kNowhere;
}

size_t BlockView::findChain(size_t from, size_t end, uint32_t last) const {
    constexpr size_t kWord =
            sizeof(uint32_t);  // a number read from up to this far in front is none
    size_t best = end;
    uint32_t leastStep = UINT32_MAX;
    for (size_t at = from; at < std::min(end, mSize); ++at) {
        if (best != end && at >= best + kWord) {
            break;
        }
        if (!isChain(at, last)) {
            continue;
        }
        const bool hasNext = holds(at + kBlock, kWord);
        const uint32_t step = isNear(last, number(at)) ? 0
                              : hasNext                ? number(at + kBlock) - number(at)
                                                       : kNear;
        if (step < leastStep) {
            leastStep = step;
            best = at;
        }
    }
    return best;
}

size_t BlockView::zeros() const {
    const uint8_t* const end = mBytes + mSize;
    return static_cast<size_t>(std::find_if(mBytes, end, [](uint8_t byte) { return byte != 0; }) -
                               mBytes);
}

}  // namespace vdrdump
