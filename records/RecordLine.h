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

    // One value, or so many: most columns are one, and a loop around it would cost a tenth.
    RecordLine& u8();
    RecordLine& u8(size_t count);
    RecordLine& u16();
    RecordLine& u16(size_t count);
    RecordLine& u32();
    RecordLine& u32(size_t count);
    RecordLine& u64();
    RecordLine& u64(size_t count);
    RecordLine& i16();
    // As "%f" prints it.
    RecordLine& f32();
    RecordLine& f32(size_t count);
    // Up to the next NUL, which the field's width does not bound; the block's end does.
    RecordLine& text(size_t width);

    // `columns(*this)` for each element in use, as many as the byte at `countOffset` says. It is
    // trusted even where it exceeds the array: the record is shown as it is.
    template <typename Columns>
    void elements(size_t countOffset, size_t offset, size_t elementSize, Columns columns) {
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

    // `format(char* out, T value)` writes a value's characters and returns their end.
    template <typename T, typename Format>
    RecordLine& columns(size_t count, Format format);
    template <typename T, typename Format>
    void columnsOneByOne(size_t count, Format format);
    void append(const char* text, size_t length);

    const uint8_t* const mRecord;
    size_t mCursor = 0;
    char* mOut;        // end of the text so far
    char* const mEnd;  // where the NUL stands at the latest
    bool mFull = false;
};

}  // namespace zk
