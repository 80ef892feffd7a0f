#pragma once

#include <cstdint>

namespace demo {

// How many of the frames are through, redrawn in place. Silent unless standard output is a
// terminal.
class ProgressBar {
public:
    explicit ProgressBar(uint32_t total);
    ~ProgressBar();  // wipes the bar
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(uint32_t done);

private:
    const uint32_t mTotal;
    const bool mVisible;
    int mPercentShown = -1;
};

}  // namespace demo
