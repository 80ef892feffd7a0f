#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Log.h"
#include "records/RecordLine.h"

// How a level's line renderer is made: the level says per field which columns show it, and a field
// without columns, or with columns that do not take exactly its bytes, does not compile.
namespace zk {

// Stands in for RecordLine while compiling, and adds up the bytes that the columns take.
class LineWidth {
public:
    constexpr LineWidth& u8(size_t count = 1) { return add(count * sizeof(uint8_t)); }
    constexpr LineWidth& u16(size_t count = 1) { return add(count * sizeof(uint16_t)); }
    constexpr LineWidth& u32(size_t count = 1) { return add(count * sizeof(uint32_t)); }
    constexpr LineWidth& u64(size_t count = 1) { return add(count * sizeof(uint64_t)); }
    constexpr LineWidth& i16() { return add(sizeof(int16_t)); }
    constexpr LineWidth& f32(size_t count = 1) { return add(count * sizeof(float)); }
    constexpr LineWidth& text(size_t width) { return add(width); }

    constexpr size_t bytes() const { return mBytes; }

private:
    constexpr LineWidth& add(size_t bytes) {
        mBytes += bytes;
        return *this;
    }

    size_t mBytes = 0;
};

}  // namespace zk

// In a source, the level's namespace and an unnamed one, for the type `Record`: the columns of a
// field, as calls of RecordLine's, or those of each element of an array.
#define VDR_SHOW_BYTES(field, size, columns)                       \
    template <typename Line>                                       \
    constexpr decltype(auto) show_##field(Line&& line) {           \
        return line.columns;                                       \
    }                                                              \
    static_assert(show_##field(zk::LineWidth()).bytes() == (size), \
                  "the columns of " #field " take all of it and nothing else")
#define VDR_SHOW(field, columns) VDR_SHOW_BYTES(field, sizeof(Record::field), columns)
#define VDR_SHOW_EACH(field, columns) VDR_SHOW_BYTES(field, sizeof(Record::field[0]), columns)

// In the level's namespace: the renderer. Where the fields cover the layout, which the definition
// of the writers asserts, so does the line.
#define VDR_APPEND_SCALAR(field) show_##field(line.at(offsetof(Record, field)));
#define VDR_APPEND_ARRAY(field, count)                                                        \
    line.elements(offsetof(Record, count), offsetof(Record, field), sizeof(Record::field[0]), \
                  [](zk::RecordLine& element) { show_##field(element); });
#define VDR_DEFINE_LINE(FIELDS)                                          \
    void Record::makeFrameContent(const void* srcData, void* destData) { \
        zk::RecordLine line(srcData, destData);                          \
        FIELDS(VDR_APPEND_SCALAR, VDR_APPEND_ARRAY)                      \
        if (!line.finish()) {                                            \
            VDR_LOGE("VDR::snprintf_s func got error!");                 \
        }                                                                \
    }
