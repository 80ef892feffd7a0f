#pragma once

#include <functional>
#include <map>

#include "tools/explain/Findings.h"
#include "tools/record/Record.h"

namespace vdrdump {

// Takes of one frame after the other, in the order of their numbers, every value that can be
// compared with those of other frames. It remembers the frame before and when each node was
// through, and nothing else: a session may be of any length.
class FrameMeasurer {
public:
    // A subject may come twice in a frame.
    using Take = std::function<void(const Subject& subject, double value)>;

    explicit FrameMeasurer(const StampClocks& clocks) : mClocks(clocks) {}

    // Interval, latency, times of nodes and costs of algorithms.
    void measureTimes(uint32_t frame, const Record& record, const Take& take);
    // How far feature requests, feature messages and motion data are from the frame.
    void measureDelays(const Record& record, const Take& take) const;

private:
    void measureInterval(uint32_t frame, const Record& record, const Take& take);
    void measureNodes(const Record& record, const Take& take);
    static void measureCosts(const Record& record, const Take& take);
    void measureFeatures(const Record& record, const Take& take) const;
    void measureMotion(const Record& record, const Take& take) const;

    const StampClocks mClocks;
    uint32_t mLastFrame = 0;
    uint64_t mLastStamp = 0;
    std::map<NodeIds, uint64_t> mFreeAt;  // when the node is through with the frames so far
};

}  // namespace vdrdump
