#pragma once

#include <array>

#include "tools/record/Record.h"

namespace vdrdump {

// Frame numbers of the records ahead, nearest first, as they stand in the dump.
struct NumbersAhead {
    static constexpr size_t kMost = 8;

    std::array<uint32_t, kMost> numbers{};
    size_t count = 0;

    void add(uint32_t number) { numbers[count++] = number; }
    bool isFull() const { return count == kMost; }
    const uint32_t* begin() const { return numbers.data(); }
    const uint32_t* end() const { return numbers.data() + count; }
};

// Finds the records of one dump, front to back. Whatever the bytes: every record that can be
// read is given, and what is wrong goes to the damage log.
class DumpReader {
public:
    virtual ~DumpReader() = default;
    // False at the end. `record` is valid until the next call.
    virtual bool next(Record& record) = 0;
    // What follows the record that was given last: tells a number that is damaged from a new
    // session. The record stays valid.
    virtual NumbersAhead ahead() = 0;
};

}  // namespace vdrdump
