#pragma once

#include <cstddef>
#include <cstdint>

namespace vdrdump {

// Where bytes come from, front to back.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    // Puts at most `size` bytes at `to`. 0: the end. Negative: an errno value.
    virtual int64_t read(uint8_t* to, size_t size) = 0;
};

}  // namespace vdrdump
