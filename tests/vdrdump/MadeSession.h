#pragma once

#include <functional>
#include <optional>
#include <random>
#include <vector>

#include "tests/vdrdump/Dumps.h"

namespace vdrdump::test {

// A camera session with noise, in which something may be planted: 30 frames a second through five
// nodes, each of which works on one frame at a time. Stamps are nanoseconds.
struct MadeSession {
    static constexpr uint32_t kLost = 100;
    static constexpr size_t kNodes = 5;
    static constexpr double kMillisecond = 1e6;

    double spread = 0.08;  // standard deviation, as a part of each time
    // Delays of one frame, in milliseconds.
    uint32_t hit = kLost;
    double sensorDelay = 0;  // and of all behind it
    double wait = 0;         // before the third node
    double work = 0;         // in the third node
    uint8_t cost = 0;        // of its algorithm
    bool isStuck = false;    // in the third node, which never ends
    // From this frame on all nodes take that many times as long.
    uint32_t slowFrom = UINT32_MAX;
    double slowness = 1;
    // Work of the third node on each frame that it takes, with some at once. One more waits before
    // it, and those that come meanwhile are lost.
    double steadyWork = 0;
    size_t atOnce = 1;
    uint32_t burst = 1;  // frames that come together, in the time of as many
    // Whatever else is to be in a record.
    std::function<void(Frame&)> also;

    std::vector<Frame> frames(uint32_t first, uint32_t last, uint32_t seed) const;
    // Whether it was lost before the third node.
    static bool isLost(const Frame& frame) { return frame.nodeInfo[2].stamps[0] == 0; }
};

}  // namespace vdrdump::test
