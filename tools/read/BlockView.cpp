#include "tools/read/BlockView.h"

#include <algorithm>
#include <cstring>

#include "tools/record/RecordSchema.h"

namespace vdrdump {
namespace {

constexpr uint32_t kNear = 80;  // frames that the recorder keeps at once

uint32_t apart(uint32_t a, uint32_t b) {
    return a > b ? a - b : b - a;
}

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
    if (!holds(at) || !isSound(at)) {
        return false;
    }
    size_t length = 1;
    size_t next = at + kBlock;
    while (length < kBeyondDoubt && holds(next) && isNear(number(next - kBlock), number(next)) &&
           isSound(next)) {
        ++length;
        next += kBlock;
    }
    const bool goesOn = isNear(last, number(at));
    const bool isLast = mIsEnd && !holds(next);
    if (length == 1) {
        const bool isNumberAhead = holds(next, sizeof(uint32_t));
        return isLast && (isNumberAhead ? follows(number(at), number(next)) : goesOn);
    }
    return length == kBeyondDoubt || goesOn || isLast;
}

size_t BlockView::countFrom(size_t at, uint32_t last) const {
    size_t count = 0;
    const size_t end = at + kCompared * kBlock;
    for (; at < end && holds(at, mIsEnd ? sizeof(uint32_t) : kBlock); at += kBlock) {
        count += follows(last, number(at)) && (!holds(at) || isSound(at)) ? 1 : 0;
        last = number(at);
    }
    return count + (mIsEnd && at == mSize ? 1 : 0);
}

size_t BlockView::findChain(size_t from, size_t end, uint32_t last) const {
    size_t best = end;
    uint32_t leastStep = UINT32_MAX;
    for (size_t at = from; at < std::min(end, mSize); ++at) {
        if (!isChain(at, last)) {
            continue;
        }
        const uint32_t step = stepTo(at, last);
        if (step < leastStep) {
            leastStep = step;
            best = at;
        }
    }
    return best;
}

// The less, the likelier a record begins at `at`: one that goes on from `last`, then any other.
uint32_t BlockView::stepTo(size_t at, uint32_t last) const {
    const uint32_t here = number(at);
    if (isNear(last, here)) {
        return here > last ? here - last : kNear + last - here;
    }
    const size_t next = at + kBlock;
    return 2 * kNear + (holds(next, sizeof(uint32_t)) ? apart(here, number(next)) : kNear);
}

size_t BlockView::zeros() const {
    const uint8_t* const end = mBytes + mSize;
    return static_cast<size_t>(std::find_if(mBytes, end, [](uint8_t byte) { return byte != 0; }) -
                               mBytes);
}

}  // namespace vdrdump
