#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "records/frameData.h"
#include "tools/record/RecordSchema.h"

namespace vdrdump {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "records are in the device's byte order");

// One frame record as a reader found it. A view: valid until the reader is asked for the next.
struct Record {
    const uint8_t* bytes = nullptr;  // a whole block; what was not read is 0
    size_t known = 0;                // bytes of the layout that were read, from its front
    uint64_t offset = 0;             // of the record in its file
    uint64_t index = 0;              // of the record in its file, from 0
    uint32_t session = 0;            // camera session in its file, from 1
    bool isMisnumbered = false;      // its frame number is damaged, and as good as not read

    bool knows(const Column& column) const {
        return static_cast<size_t>(column.offset) + column.size <= known &&
               (!isMisnumbered || column.offset != 0);
    }

    bool isWhole() const { return known == sizeof(Layout) && !isMisnumbered; }

    // As it stands in the record.
    uint32_t frame() const { return zk::frameNumberOf(bytes); }
    bool isNumbered() const { return !isMisnumbered && frame() != zk::kNoFrameNumber; }

    template <typename T>
    T read(size_t at) const {
        T value{};
        std::memcpy(&value, bytes + at, sizeof(T));
        return value;
    }

    // Elements in use, as far as the array holds and the reader read them.
    size_t elements(const ArrayField& array) const {
        if (known <= array.offset) {
            return 0;
        }
        const size_t present = (known - array.offset) / array.elementSize;
        return std::min({size_t{bytes[array.countOffset]}, size_t{array.capacity}, present});
    }
};

}  // namespace vdrdump
