#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace vdrdump {

// A line on the terminal that shows how far a long run is: nothing for the first half second, and
// nothing at all where standard error is no terminal.
class Progress {
public:
    // `wanted`: false where data goes to the same terminal.
    Progress(const std::vector<std::string>& paths, bool wanted);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void advance(uint64_t bytes);
    // Takes the line away, so that something else can be printed.
    void clear();

private:
    using Clock = std::chrono::steady_clock;

    void draw();

    const bool mIsShown;
    uint64_t mTotalBytes = 0;  // 0: not known
    uint64_t mBytes = 0;
    const Clock::time_point mStart = Clock::now();
    Clock::time_point mNextDraw = mStart + std::chrono::milliseconds(500);
    bool mIsDrawn = false;
};

}  // namespace vdrdump
