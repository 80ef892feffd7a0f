#pragma once

#include <cstdint>

namespace vdrgst {

inline constexpr int64_t kNoTime = INT64_MIN;

// What is known of a buffer, by which the frame in it is told from others: read off, never kept.
struct BufferMark {
    // Running times, nanoseconds: what elements keep alike, whatever they do to segments and
    // stamps.
    int64_t presentation = kNoTime;
    int64_t decoding = kNoTime;
    // Of its first memory; an address only, good for comparing while the memory is in the pipeline.
    const void* memory = nullptr;
};

}  // namespace vdrgst
