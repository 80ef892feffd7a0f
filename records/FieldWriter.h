#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

#include "platform/BoundedMemory.h"

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

inline void copyField(void* maintainData, size_t offset, size_t size, const void* data) {
    memcpy_s(static_cast<uint8_t*>(maintainData) + offset, size, data, size);
}

// Where an array lives in the record; sizes and offsets in bytes.
struct ArrayPlace {
    size_t countOffset;  // of the one-byte number of elements in use
    size_t offset;
    size_t elementSize;
    size_t maxElements;
};

// Appends one element; a full array drops it without a word, since the pipeline may offer more
// elements than a record holds and must not be slowed down for it.
inline void appendElement(void* maintainData, const ArrayPlace& place, const void* data) {
    auto* record = static_cast<uint8_t*>(maintainData);
    const size_t count = record[place.countOffset];  // read once: it bounds the copy
    if (count > place.maxElements - 1) {
        return;
    }
    memcpy_s(record + place.offset + count * place.elementSize, place.elementSize, data,
             place.elementSize);
    record[place.countOffset] = static_cast<uint8_t>(count + 1);
}

}  // namespace zk
