#include "tools/read/DumpKind.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tools/read/BlockView.h"
#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

constexpr size_t kBlock = zk::kFrameRecordSize;

// The columns up to the zoom ratio are numbers whatever the record holds.
bool startsWithNumbers(const uint8_t* bytes, size_t size) {
    constexpr int kNumbers = 7;
    int numbers = 0;
    for (size_t i = 0; i < size && numbers < kNumbers; ++i) {
        if (bytes[i] == '\r' || bytes[i] == '\n') {
            return false;
        }
        if (std::strchr("0123456789.,-naif", bytes[i]) == nullptr || bytes[i] == 0) {
            return false;
        }
        numbers += bytes[i] == ',' ? 1 : 0;
    }
    return size != 0;
}

// A line of a dump among these, the damage in front of which would not matter.
bool hasTextLine(const uint8_t* bytes, size_t size) {
    const uint8_t* const end = bytes + size;
    while (bytes != end) {
        if (startsWithNumbers(bytes, static_cast<size_t>(end - bytes))) {
            return true;
        }
        const uint8_t* const newline = std::find(bytes, end, '\n');
        bytes = newline == end ? end : newline + 1;
    }
    return false;
}

// A month of frames, at 30 a second; what begins with words or a magic number is far above it.
bool isUsualNumber(uint32_t number) {
    constexpr uint32_t kMonth = 30 * 24 * 3600 * 30;
    return number < kMonth || number == zk::kNoFrameNumber;
}

// What is in every record beside its number, of any camera.
bool isPlausible(const uint8_t* bytes, size_t size) {
    constexpr size_t kZoom = offsetof(Layout, zoomRatio);
    if (size < kZoom + sizeof(float)) {
        return true;
    }
    const auto zoom = valueAt<float>(bytes + kZoom);
    bool isPlausible = zoom == 0 || (zoom >= 0.01F && zoom <= 1000);
    // A whole record shows what it is otherwise, and its counts may be anything.
    for (const ArrayField* array : kArrays) {
        isPlausible &= size == kBlock || size <= array->countOffset ||
                       bytes[array->countOffset] <= array->capacity;
    }
    return isPlausible;
}

// All there is of a record.
bool isCutRecord(const uint8_t* bytes, size_t size) {
    return size < sizeof(uint32_t)
                   ? std::memchr(bytes, 0, size) != nullptr
                   : isUsualNumber(zk::frameNumberOf(bytes)) && isPlausible(bytes, size);
}

bool isBinary(const uint8_t* bytes, size_t size, bool isEnd) {
    const BlockView view(bytes, size, isEnd);
    if (view.zeros() == size) {
        return true;
    }
    if (size < kBlock) {
        return isCutRecord(bytes, size);
    }
    const size_t front = view.zeros() / kBlock * kBlock;
    if (view.holds(front) && view.hasTail(front) && isPlausible(bytes + front, kBlock) &&
        (isUsualNumber(view.number(front)) || view.isChain(front, 0) ||
         view.isChain(front + kBlock, 0))) {
        return true;
    }
    // Damaged in front; other files, too, have two places that look like records.
    const auto isRecord = [&](size_t at) {
        return view.isChain(at, 0) && isUsualNumber(view.number(at)) &&
               isPlausible(bytes + at, kBlock);
    };
    for (size_t at = 0; view.holds(at, 3 * kBlock); ++at) {
        if (isRecord(at) && isRecord(at + kBlock)) {
            return true;
        }
    }
    return false;
}

}  // namespace

const char* nameOf(DumpKind kind) {
    switch (kind) {
        case DumpKind::Binary:
            return "binary";
        case DumpKind::Text:
            return "text";
        case DumpKind::Empty:
            return "empty";
        case DumpKind::None:
            break;
    }
    return "none";
}

DumpKind detectDumpKind(const uint8_t* bytes, size_t size, bool isEnd) {
    if (size == 0) {
        return DumpKind::Empty;
    }
    // A text file that begins with damage still holds no NUL; a record is hardly ever without.
    const size_t front = std::min(size, kBlock);
    if (startsWithNumbers(bytes, front) ||
        (std::memchr(bytes, 0, front) == nullptr && hasTextLine(bytes, size))) {
        return DumpKind::Text;
    }
    return isBinary(bytes, size, isEnd) ? DumpKind::Binary : DumpKind::None;
}

}  // namespace vdrdump
