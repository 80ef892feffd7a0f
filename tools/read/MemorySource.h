#pragma once

#include <algorithm>
#include <cstring>

#include "tools/read/ByteSource.h"

namespace vdrdump {

// Bytes in memory, which must outlive this.
class MemorySource : public ByteSource {
public:
    MemorySource(const void* bytes, size_t size)
          : mBytes(static_cast<const uint8_t*>(bytes)), mSize(size) {}

    int64_t read(uint8_t* to, size_t size) override {
        const size_t length = std::min(size, mSize - mAt);
        if (length != 0) {
            std::memcpy(to, mBytes + mAt, length);
        }
        mAt += length;
        return static_cast<int64_t>(length);
    }

private:
    const uint8_t* const mBytes;
    const size_t mSize;
    size_t mAt = 0;
};

}  // namespace vdrdump
