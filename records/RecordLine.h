#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "records/frameData.h"

namespace zk {

// Writes the fields of one record, front to back, as columns of a text line: each call prints the
// values at the cursor, a comma behind each, and moves on. Bytes behind the block read as 0.
// Nothing is written past the destination's 4096 bytes; what does not fit is cut there.
class RecordLine {
public:
    // Appends to the string in `destination`, a buffer of 4096 bytes.
    RecordLine(const void* record, void* destination);

    RecordLine& at(size_t offset) {
        mCursor = offset;
        return *this;
    }

    RecordLine& u8(int count = 1) { return unsignedColumns<uint8_t>(count); }
    RecordLine& u16(int count = 1) { return unsignedColumns<uint16_t>(count); }
    RecordLine& u32(int count = 1) { return unsignedColumns<uint32_t>(count); }
    RecordLine& u64(int count = 1) { return unsignedColumns<uint64_t>(count); }
    RecordLine& i16();
    // As "%f" prints it.
    RecordLine& f32(int count = 1);
    // Up to the next NUL, which the field's width does not bound; the block's end does.
    RecordLine& text(size_t width);

    // The count at `countOffset`, then `columns(*this)` once per element. The count is trusted
    // even where it exceeds the array: the record is shown as it is.
    template <typename Columns>
    void elements(size_t countOffset, size_t offset, size_t elementSize, Columns columns) {
        at(countOffset).u8();
        const size_t count = read<uint8_t>(countOffset);
        for (size_t i = 0; i < count && !mFull; ++i) {
            at(offset + i * elementSize);
            columns(*this);
        }
    }

    // Ends the line. False when something did not fit: the destination then holds the line's
    // first 4095 characters and no newline.
    bool finish();

private:
    template <typename T>
    T read(size_t offset) const {
        T value{};
        if (offset + sizeof(T) <= kFrameRecordSize) {
            std::memcpy(&value, mRecord + offset, sizeof(T));
        } else if (offset < kFrameRecordSize) {
            std::memcpy(&value, mRecord + offset, kFrameRecordSize - offset);
        }
        return value;
    }

    template <typename T>
    T next() {
        const T value = read<T>(mCursor);
        mCursor += sizeof(T);
        return value;
    }

    template <typename T>
    RecordLine& unsignedColumns(int count) {
        for (int i = 0; i < count; ++i) {
            unsignedColumn(next<T>());
        }
        return *this;
    }

    void unsignedColumn(uint64_t value);
    void append(const char* text, size_t length);
    // Lets `format(char* out)` write one column of at most kLongestColumn characters.
    template <typename Format>
    void appendColumn(Format format);

    // "-340282346638528859811704183484516925440.000000," is the longest column but text.
    static constexpr size_t kLongestColumn = 48;

    const uint8_t* const mRecord;
    char* const mDestination;
    size_t mCursor = 0;
    size_t mLength;
    bool mFull = false;
};

}  // namespace zk
