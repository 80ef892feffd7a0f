#include "records/RecordLine.h"

#include "records/FloatText.h"
#include "records/IntegerText.h"

namespace zk {
namespace {

// "-340282346638528859811704183484516925440.000000," is the longest column but text.
constexpr size_t kLongestColumn = 48;

// Not the function's address, so that it is inlined.
constexpr auto kUnsigned = [](char* out, uint64_t value) { return formatUnsigned(out, value); };

}  // namespace

RecordLine::RecordLine(const void* record, void* destination)
      : mRecord(static_cast<const uint8_t*>(record)),
        mOut(static_cast<char*>(destination)),
        mEnd(mOut + kFrameRecordSize - 1) {
    mOut += strnlen(mOut, kFrameRecordSize);
    if (mOut > mEnd) {
        mOut = mEnd;
        mFull = true;
    }
}

void RecordLine::append(const char* text, size_t length) {
    if (mFull) {
        return;
    }
    const auto room = static_cast<size_t>(mEnd - mOut);
    if (length > room) {
        length = room;
        mFull = true;
    }
    std::memcpy(mOut, text, length);
    mOut += length;
}

// Where the text or the block may end between the values. Out of line, since what it needs to save
// would cost the common way a tenth.
template <typename T, typename Format>
__attribute__((noinline)) void RecordLine::columnsOneByOne(size_t count, Format format) {
    for (size_t i = 0; i < count; ++i) {
        char column[kLongestColumn];
        char* end = format(column, read<T>(mCursor + i * sizeof(T)));
        *end++ = ',';
        append(column, static_cast<size_t>(end - column));
    }
}

template <typename T, typename Format>
RecordLine& RecordLine::columns(size_t count, Format format) {
    if (count * kLongestColumn > static_cast<size_t>(mEnd - mOut) ||
        mCursor + count * sizeof(T) > kFrameRecordSize) {
        columnsOneByOne<T>(count, format);
    } else {
        const uint8_t* const values = mRecord + mCursor;
        char* out = mOut;
        for (size_t i = 0; i < count; ++i) {
            T value{};
            std::memcpy(&value, values + i * sizeof(T), sizeof(T));
            out = format(out, value);
            *out++ = ',';
        }
        mOut = out;
    }
    mCursor += count * sizeof(T);
    return *this;
}

RecordLine& RecordLine::u8() {
    return columns<uint8_t>(1, kUnsigned);
}

RecordLine& RecordLine::u8(size_t count) {
    return columns<uint8_t>(count, kUnsigned);
}

RecordLine& RecordLine::u16() {
    return columns<uint16_t>(1, kUnsigned);
}

RecordLine& RecordLine::u16(size_t count) {
    return columns<uint16_t>(count, kUnsigned);
}

RecordLine& RecordLine::u32() {
    return columns<uint32_t>(1, kUnsigned);
}

RecordLine& RecordLine::u32(size_t count) {
    return columns<uint32_t>(count, kUnsigned);
}

RecordLine& RecordLine::u64() {
    return columns<uint64_t>(1, kUnsigned);
}

RecordLine& RecordLine::u64(size_t count) {
    return columns<uint64_t>(count, kUnsigned);
}

RecordLine& RecordLine::i16() {
    return columns<int16_t>(1, [](char* out, int16_t value) { return formatSigned(out, value); });
}

RecordLine& RecordLine::f32() {
    return columns<float>(1, formatFloat);
}

RecordLine& RecordLine::f32(size_t count) {
    return columns<float>(count, formatFloat);
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
    *mOut = '\0';
    return !mFull;
}

}  // namespace zk
