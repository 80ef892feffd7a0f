#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <unordered_map>

#include "records/frameData.h"

// What the field writers of every level have in common.
namespace zk {

// Copies one field from `data` into a 4096-byte record block. The source holds at least the
// field's size in bytes (an array's: one element's); it is not converted. Reentrant.
using WriteFunc = void (*)(void* maintainData, const void* data);
using Name2FuncMap = std::unordered_map<std::string, WriteFunc>;

// The error line of a writer that was handed a null pointer, under the writer's own name.
void logNull(const char* writer, int line);

// True, after that line, when either pointer is null.
inline bool refusesNull(const void* maintainData, const void* data, const char* writer, int line) {
    if (maintainData != nullptr && data != nullptr) {
        return false;
    }
    logNull(writer, line);
    return true;
}

// Bounded copies whose bounds the compiler checks, since all sizes are constants: a check while
// running would compare the same two numbers at every write. Sizes and offsets in bytes.

template <size_t kOffset, size_t kSize>
void copyField(void* maintainData, const void* data) {
    static_assert(kOffset + kSize <= kFrameRecordSize, "a field lies within the record");
    std::memcpy(static_cast<uint8_t*>(maintainData) + kOffset, data, kSize);
}

// Appends one element; a full array drops it without a word, since the pipeline may offer more
// elements than a record holds and must not be slowed down for it. The byte at kCountOffset is
// the number of elements in use.
template <size_t kCountOffset, size_t kOffset, size_t kSize, size_t kElementSize>
void appendElement(void* maintainData, const void* data) {
    static_assert(kOffset + kSize <= kFrameRecordSize, "an array lies within the record");
    auto* record = static_cast<uint8_t*>(maintainData);
    const size_t count = record[kCountOffset];  // read once: it bounds the copy
    if (count > kSize / kElementSize - 1) {
        return;
    }
    std::memcpy(record + kOffset + count * kElementSize, data, kElementSize);
    record[kCountOffset] = static_cast<uint8_t>(count + 1);
}

}  // namespace zk
