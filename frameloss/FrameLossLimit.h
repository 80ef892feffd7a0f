#pragma once

#include <atomic>
#include <cstdint>

namespace zk {

// How much may be written about losses: 1000 lines a day, and nothing once a history has
// overflowed. Any thread; a check and the writers' counting may interleave.
class FrameLossLimit {
public:
    // The day starts, wall-clock seconds.
    void start(int64_t now) { mFrameLostRecordLastTime = static_cast<uint64_t>(now); }
    // True when a new loss must not be recorded. Starts a new day where one has passed.
    bool checkFrameLostRecordStatus(bool isHistoryExceeded);
    // A line was written to a text file, wholly or not.
    void countLine() { ++mFrameLostRecordCount; }

private:
    void restart(uint64_t now);

    std::atomic<uint64_t> mFrameLostRecordLastTime{0};  // of the last reset, wall-clock seconds
    std::atomic<uint16_t> mFrameLostRecordCount{0};     // lines since then, modulo 65536
};

}  // namespace zk
