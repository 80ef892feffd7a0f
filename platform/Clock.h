#pragma once

#include <sys/time.h>

#include <cstdint>

// Wall clock and sleep. Any thread.

namespace zk::platform {

// Wall clock since the epoch. Returns 0, or -1 with `now` untouched.
int getTimeOfDay(timeval* now);

// Blocks the calling thread for about `microseconds`.
void sleepMicroseconds(uint32_t microseconds);

// Whole seconds since the epoch; 0 where the clock cannot be read.
inline int64_t wallClockSeconds() {
    timeval now{};
    getTimeOfDay(&now);
    return now.tv_sec;
}

// Microseconds since the epoch; 0 where the clock cannot be read.
inline uint64_t wallClockMicroseconds() {
    timeval now{};
    getTimeOfDay(&now);
    return static_cast<uint64_t>(now.tv_sec) * 1000000U + static_cast<uint64_t>(now.tv_usec);
}

}  // namespace zk::platform
