#pragma once

#include <cstdint>

namespace demo {

// How many of the frames are through, redrawn in place. Silent unless standard error is a terminal.
class ProgressLine {
public:
    explicit ProgressLine(uint32_t total);
    ~ProgressLine();  // wipes the line
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(uint32_t done);

private:
    const uint32_t mTotal;
    const bool mVisible;
    uint32_t mPercentShown = 0;
};

}  // namespace demo
