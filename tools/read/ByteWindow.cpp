#include "tools/read/ByteWindow.h"

#include <cstring>

namespace vdrdump {
namespace {

constexpr size_t kWindowSize = size_t{256} * 1024;  // a block stays in the second-level cache

}  // namespace

ByteWindow::ByteWindow(ByteSource& source) : mSource(source), mBuffer(kWindowSize) {}

size_t ByteWindow::fill(size_t wanted) {
    std::memmove(mBuffer.data(), mBuffer.data() + mBegin, mEnd - mBegin);
    mEnd -= mBegin;
    mBegin = 0;
    while (mEnd < wanted && !mAtEnd) {
        const int64_t length = mSource.read(mBuffer.data() + mEnd, mBuffer.size() - mEnd);
        if (length > 0) {
            mEnd += static_cast<size_t>(length);
        } else {
            mAtEnd = true;
            mError = static_cast<int>(-length);
        }
    }
    return mEnd;
}

}  // namespace vdrdump
