#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zk {

inline constexpr size_t kFrameRecordSize = 4096;  // bytes of a record block, in memory and in files
inline constexpr uint32_t kNoFrameNumber = UINT32_MAX;  // "none" wherever a frame number is kept

// In both layouts a record begins with its frame number.
inline uint32_t frameNumberOf(const void* record) {
    uint32_t number = 0;
    std::memcpy(&number, record, sizeof(number));
    return number;
}

// A copy of one whole frame record block. Left uninitialised: whoever makes one fills it.
struct frameData {
    uint8_t bytes[kFrameRecordSize];

    uint32_t frameNumber() const { return frameNumberOf(bytes); }
};

static_assert(sizeof(frameData) == kFrameRecordSize,
              "copied block by block into files and buffers");

}  // namespace zk
