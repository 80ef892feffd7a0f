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

bool BlockView::follows(uint32_t number, uint32_t next) {
    return next > number && next - number <= kNear;
}

// 0 proves nothing: it is what stands in most places of a record.
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
    if (!holds(at)) {
        return false;
    }
    const uint32_t first = number(at);
    if (holds(at + kBlock)) {
        return follows(first, number(at + kBlock)) && isSound(at) && isSound(at + kBlock);
    }
    const bool isNumberAhead = holds(at + kBlock, sizeof(uint32_t));
    return mIsEnd && (isNumberAhead ? follows(first, number(at + kBlock)) : follows(last, first)) &&
           isSound(at);
}

bool BlockView::isBorneOut(size_t at, uint32_t last) const {
    if (at >= mSize) {
        return mIsEnd;
    }
    for (; holds(at); at += kBlock) {
        if (isSound(at) && (isNear(last, number(at)) || isChain(at, last))) {
            return true;
        }
    }
    return mIsEnd && holds(at, sizeof(uint32_t)) && isNear(last, number(at));
}

size_t BlockView::zeros() const {
    const uint8_t* const end = mBytes + mSize;
    return static_cast<size_t>(std::find_if(mBytes, end, [](uint8_t byte) { return byte != 0; }) -
                               mBytes);
}

}  // namespace vdrdump
