#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

namespace vdrdump {

class Progress;

enum class Damage : uint8_t {
    Unreadable,     // the file does not open, or reading it ends early
    CutRecord,      // fewer bytes at the end than a record has
    CountTooLarge,  // a count that exceeds its array
    CutLine,        // a text line without its newline
    BadLine,        // a text line that does not hold the columns of a record
};

// What is wrong with one file: each finding a line with file, offset and what was expected, the
// first of them only, so that a file of garbage does not bury the rest; all are counted.
class DamageLog {
public:
    // Prints to `out`, or nothing when it is null. `progress`, if any, must outlive this; its line
    // is taken away before anything is printed.
    DamageLog(std::string file, std::FILE* out, Progress* progress = nullptr);

    // Counts a finding; true when it is to be described, too.
    bool add(Damage damage);
    void describe(uint64_t offset, const std::string& expected);
    // Says how many findings were only counted.
    void finish() const;

    uint64_t count(Damage damage) const { return mCounts[static_cast<size_t>(damage)]; }
    bool any() const { return mTotal != 0; }

private:
    static constexpr uint64_t kDescribed = 20;

    const std::string mFile;
    std::FILE* const mOut;
    Progress* const mProgress;
    std::array<uint64_t, 5> mCounts{};
    uint64_t mTotal = 0;
};

}  // namespace vdrdump
