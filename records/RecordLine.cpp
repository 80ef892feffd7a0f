#include "records/RecordLine.h"

#include <charconv>

#include "records/FloatText.h"

namespace zk {
namespace {

constexpr size_t kLongestLine = kFrameRecordSize - 1;  // characters, without the NUL

}  // namespace

RecordLine::RecordLine(const void* record, void* destination)
      : mRecord(static_cast<const uint8_t*>(record)),
        mDestination(static_cast<char*>(destination)),
        mLength(strnlen(mDestination, kFrameRecordSize)) {
    if (mLength > kLongestLine) {
        mLength = kLongestLine;
        mFull = true;
    }
}

void RecordLine::append(const char* text, size_t length) {
    if (mFull) {
        return;
    }
    if (length > kLongestLine - mLength) {
        length = kLongestLine - mLength;
        mFull = true;
    }
    std::memcpy(mDestination + mLength, text, length);
    mLength += length;
}

template <typename Format>
void RecordLine::appendColumn(Format format) {
    if (kLongestLine - mLength >= kLongestColumn && !mFull) {
        mLength = static_cast<size_t>(format(mDestination + mLength) - mDestination);
        return;
    }
    char column[kLongestColumn];
    append(column, static_cast<size_t>(format(column) - column));
}

void RecordLine::unsignedColumn(uint64_t value) {
    appendColumn([value](char* out) {
        char* end = std::to_chars(out, out + kLongestColumn, value).ptr;
        *end++ = ',';
        return end;
    });
}

RecordLine& RecordLine::i16() {
    const int16_t value = next<int16_t>();
    appendColumn([value](char* out) {
        char* end = std::to_chars(out, out + kLongestColumn, value).ptr;
        *end++ = ',';
        return end;
    });
    return *this;
}

RecordLine& RecordLine::f32(int count) {
    for (int i = 0; i < count; ++i) {
        const float value = next<float>();
        appendColumn([value](char* out) {
            char* end = formatFloat(out, value);
            *end++ = ',';
            return end;
        });
    }
    return *this;
}

RecordLine& RecordLine::text(size_t width) {
    if (mCursor < kFrameRecordSize) {
        const auto* begin = reinterpret_cast<const char*>(mRecord) + mCursor;
        append(begin, strnlen(begin, kFrameRecordSize - mCursor));
    }
    append(",", 1);
    mCursor += width;
    return *this;
}

bool RecordLine::finish() {
    append("\n", 1);
    mDestination[mLength] = '\0';
    return !mFull;
}

}  // namespace zk
