#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <unordered_map>

#include "records/frameData.h"

// What the field writers of every level have in common, and how they are made from its field list.
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

// Whether fields in this order cover a layout of `size` bytes without a gap.
struct FieldPlace {
    size_t offset;
    size_t size;
};
template <size_t kFields>
constexpr bool coverLayout(const FieldPlace (&fields)[kFields], size_t size) {
    size_t end = 0;
    for (const FieldPlace& field : fields) {
        if (field.offset != end) {
            return false;
        }
        end += field.size;
    }
    return end == size;
}

}  // namespace zk

// In a level's class: one writer per field.
#define VDR_DECLARE_SCALAR_WRITER(field) \
    static void write_##field(void* maintainData, const void* data);
#define VDR_DECLARE_ARRAY_WRITER(field, count) VDR_DECLARE_SCALAR_WRITER(field)
#define VDR_DECLARE_WRITERS(FIELDS) FIELDS(VDR_DECLARE_SCALAR_WRITER, VDR_DECLARE_ARRAY_WRITER)

// In a source and the level's namespace: the writers, and the map of them that is filled while the
// library is loaded, before anything can ask for it.
#define VDR_DEFINE_SCALAR_WRITER(field)                                                        \
    void Record::write_##field(void* maintainData, const void* data) {                         \
        if (!zk::refusesNull(maintainData, data, __func__, __LINE__)) {                        \
            zk::copyField<offsetof(Record, field), sizeof(Record::field)>(maintainData, data); \
        }                                                                                      \
    }
#define VDR_DEFINE_ARRAY_WRITER(field, count)                                                \
    void Record::write_##field(void* maintainData, const void* data) {                       \
        if (!zk::refusesNull(maintainData, data, __func__, __LINE__)) {                      \
            zk::appendElement<offsetof(Record, count), offsetof(Record, field),              \
                              sizeof(Record::field), sizeof(Record::field[0])>(maintainData, \
                                                                               data);        \
        }                                                                                    \
    }
#define VDR_SCALAR_PLACE(field) {offsetof(Record, field), sizeof(Record::field)},
#define VDR_ARRAY_PLACE(field, count) VDR_SCALAR_PLACE(field)
#define VDR_SCALAR_MAPPING(field) {#field, &Record::write_##field},
#define VDR_ARRAY_MAPPING(field, count) VDR_SCALAR_MAPPING(field)
#define VDR_DEFINE_WRITERS(Level, FIELDS)                                                    \
    namespace {                                                                              \
    using Record = Level;                                                                    \
    constexpr zk::FieldPlace kPlaces[] = {FIELDS(VDR_SCALAR_PLACE, VDR_ARRAY_PLACE)};        \
    static_assert(zk::coverLayout(kPlaces, sizeof(Record)), #FIELDS " is the whole layout"); \
    }                                                                                        \
    FIELDS(VDR_DEFINE_SCALAR_WRITER, VDR_DEFINE_ARRAY_WRITER)                                \
    namespace {                                                                              \
    /* Never destroyed: a session may open while the process ends. */                        \
    const zk::Name2FuncMap* const name2FuncMap =                                             \
            new zk::Name2FuncMap{FIELDS(VDR_SCALAR_MAPPING, VDR_ARRAY_MAPPING)};             \
    }                                                                                        \
    const zk::Name2FuncMap* Record::getName2FuncMap() {                                      \
        return name2FuncMap;                                                                 \
    }
