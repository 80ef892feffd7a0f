#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

namespace vdrdump {

class Progress;

enum class Damage : uint8_t {
    Unreadable,     // the file does not open, or reading it ends early
    NoDump,         // neither records nor text lines are in it
    NoLines,        // a frame-loss file that is empty, as a crash or a full disk leaves it
    ZeroRecord,     // zeros where a record should be
    CutRecord,      // fewer bytes than a record has
    PassedBytes,    // bytes that belong to no record
    Misnumbered,    // a frame number that no record around it bears out
    CountTooLarge,  // a count that exceeds its array
    CutLine,        // a text line without its newline
    BadLine,        // a text line that does not hold the columns of a record
    Count
};

// What is wrong with one file: each finding a line with file, offset and what was expected, the
// first of them only, so that a file of garbage does not bury the rest; all are counted.
class DamageLog {
public:
    // Prints to `out`, or nothing when it is null. `progress`, if any, must outlive this; its line
    // is taken away before anything is printed.
    DamageLog(std::string file, std::FILE* out, Progress* progress = nullptr);

    // Counts a finding; true when it is to be described, too.
    bool add(Damage damage, uint64_t times = 1);
    void describe(uint64_t offset, const std::string& expected);
    // Says how many findings were only counted.
    void finish() const;

    uint64_t count(Damage damage) const { return mCounts[static_cast<size_t>(damage)]; }
    bool any() const { return mTotal != 0; }
    bool isNoDump() const { return count(Damage::NoDump) != 0; }

    // Bytes that belong to no whole record, of those in front of the last one.
    void addPassed(uint64_t bytes) { mPassed += bytes; }
    uint64_t passed() const { return mPassed; }

private:
    static constexpr uint64_t kMostDescribed = 20;

    const std::string mFile;
    std::FILE* const mOut;
    Progress* const mProgress;
    std::array<uint64_t, static_cast<size_t>(Damage::Count)> mCounts{};
    uint64_t mTotal = 0;
    uint64_t mDescribed = 0;  // a run of one kind is described once
    uint64_t mUnlisted = 0;
    uint64_t mPassed = 0;
};

}  // namespace vdrdump
