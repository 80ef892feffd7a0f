#pragma once

#include <cstdint>
#include <functional>

// The clock and the sleep of the Linux stand-in. Any thread.
namespace zk::host {

// The wall clock stands still at this time, microseconds since the epoch.
void setWallClock(uint64_t microseconds);
void advanceWallClock(int64_t microseconds);
// Back to the machine's own clock.
void useMachineClock();
// While set, reading the clock fails.
void failClock(bool fail);

// Sleeps call this instead of sleeping, on the thread that wants to sleep; empty: really sleep.
void setSleepHandler(std::function<void(uint32_t microseconds)> handler);

}  // namespace zk::host
