#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/read/ByteSource.h"

namespace vdrdump {

// The piece of a source that is in memory just now: filled in large blocks at its end, consumed
// from its front. However long the source, the window stays the same size.
class ByteWindow {
public:
    // `source` must outlive this.
    explicit ByteWindow(ByteSource& source);

    // Bytes in the window: at least `wanted`, fewer only at the end of the source.
    size_t ensure(size_t wanted) { return mEnd - mBegin >= wanted ? mEnd - mBegin : fill(wanted); }

    // Bytes in the window now.
    size_t available() const { return mEnd - mBegin; }

    const uint8_t* data() const { return mBuffer.data() + mBegin; }

    void consume(size_t size) {
        mBegin += size;
        mOffset += size;
    }

    // Of the window's front in the source.
    uint64_t offset() const { return mOffset; }
    // 0, or the errno value with which reading ended before the source did.
    int error() const { return mError; }

private:
    size_t fill(size_t wanted);

    ByteSource& mSource;
    std::vector<uint8_t> mBuffer;
    size_t mBegin = 0;
    size_t mEnd = 0;
    uint64_t mOffset = 0;
    bool mAtEnd = false;
    int mError = 0;
};

}  // namespace vdrdump
