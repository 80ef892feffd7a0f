#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "records/frameData.h"

namespace zk::test {

// A record's line of text by the C library's formatting alone, cut only once it is whole, with the
// columns of the file format as plain letters: what the recorder's own renderer must equal.
class ReferenceLine {
public:
    // Appends the 4096 bytes of `record` to the string in `destination` (4096 bytes too). False
    // where the line does not fit; it then leaves what fits.
    static bool render(const uint8_t* record, char* destination) {
        const std::string line = ReferenceLine(record).text();
        const size_t prefix = strnlen(destination, kFrameRecordSize);
        const size_t start = std::min(prefix, kFrameRecordSize - 1);
        const size_t length = line.copy(destination + start, kFrameRecordSize - 1 - start);
        destination[start + length] = '\0';
        return start == prefix && length == line.size();
    }

private:
    // Zeros behind the block: there counts beyond the arrays read on, and text ends.
    explicit ReferenceLine(const uint8_t* record) : mBytes(record, record + kFrameRecordSize) {
        mBytes.resize(kFrameRecordSize + size_t{255} * 44);
    }

    std::string text() {
        columns("448111f4442fff44444421111");
        list(15, 13, "418");
        list(15, 13, "418");
        list(30, 7, "a1");
        list(30, 7, "a1");
        list(60, 44, "4448888");
        columns("888888888888888");
        columns("44ffffff4h44444h");
        columns("fffffffff4");
        list(10, 19, "gf");
        columns("i421");
        return mLine + "\n";
    }

    // Unsigned numbers of that many bytes, float and int16_t; text in an algorithm's, a gain's or
    // an item's name.
    void columns(const char* kinds) {
        for (; *kinds != '\0'; ++kinds) {
            const void* const at = &mBytes[mAt];
            if (*kinds == 'f') {
                mLine += std::to_string(next<float>(4));
            } else if (*kinds == 'h') {
                mLine += std::to_string(next<int16_t>(2));
            } else if (*kinds <= '8') {
                mLine += std::to_string(next<uint64_t>(static_cast<size_t>(*kinds - '0')));
            } else {
                mLine += static_cast<const char*>(at);
                mAt += *kinds == 'a' ? 6 : *kinds == 'g' ? 15 : 40;
            }
            mLine += ',';
        }
    }

    // As many elements as the count in front says, whatever the list has room for.
    void list(size_t capacity, size_t size, const char* kinds) {
        const size_t count = mBytes[mAt];
        columns("1");
        const size_t first = mAt;
        for (size_t i = 0; i < count && mLine.size() < kFrameRecordSize; ++i) {
            mAt = first + i * size;
            columns(kinds);
        }
        mAt = first + capacity * size;
    }

    template <typename T>
    T next(size_t size) {
        T value{};
        std::memcpy(&value, &mBytes[mAt], size);
        mAt += size;
        return value;
    }

    std::vector<uint8_t> mBytes;
    size_t mAt = 0;
    std::string mLine;
};

}  // namespace zk::test
