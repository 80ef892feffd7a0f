#include "demo/NodePipeline.h"

#include <algorithm>
#include <cstdio>

namespace demo {
namespace {

struct Node {
    uint32_t ids[3];  // pipeline, type, instance: the same in every frame
    const char* name;
    double work;  // nanoseconds per frame; together less than two frame times
};
constexpr Node kChain[NodePipeline::kNodes] = {
        {{1, 101, 0}, "sensor front end", 6e6},
        {{1, 102, 0}, "statistics", 4e6},
        {{1, 103, 0}, "noise reduction", 12e6},
        {{2, 201, 0}, "scene recognition", 9e6},
        {{2, 202, 0}, "plug-in algorithms", 14e6},
        {{2, 203, 0}, "stabilisation", 8e6},
        {{2, 204, 0}, "output", 3e6},
};
constexpr double kDispatch = 200e3;  // nanoseconds from a free node's queue to its work
constexpr double kHandOn = 50e3;
constexpr double kSpread = 0.03;  // of work from frame to frame

constexpr uint64_t kHoldUp = 10 * kFrameTime;

// A hot device slows down with every frame, until the camera stack has shed load.
constexpr uint32_t kSlowFrames = 25;
constexpr double kSlownessPerFrame = 0.095;

size_t troubledPlace(Cause cause) {
    return cause == Cause::kSlowAllocation ? 2 : 4;
}

std::string idsOf(const Node& node) {
    char text[3 * sizeof("0xffffffff")];
    std::snprintf(text, sizeof(text), "0x%x:0x%x:0x%x", node.ids[0], node.ids[1], node.ids[2]);
    return text;
}

}  // namespace

std::string NodePipeline::troubledNode(Cause cause) {
    const Node& node = kChain[troubledPlace(cause)];
    return node.name + (" (" + idsOf(node) + ")");
}

std::string NodePipeline::names() {
    std::string lines;
    for (const Node& node : kChain) {
        lines += idsOf(node) + "  " + node.name + "\n";
    }
    return lines;
}

bool NodePipeline::isTroubled(Cause cause, uint32_t frame, size_t node) const {
    return cause == mCause && frame == mPlan.troubled && node == troubledPlace(cause);
}

double NodePipeline::slownessAt(uint32_t frame) const {
    const bool isSlow = mCause == Cause::kThermal && frame >= mPlan.hotFrom &&
                        frame - mPlan.hotFrom < kSlowFrames;
    return isSlow ? 1 + kSlownessPerFrame * (frame - mPlan.hotFrom) : 1;
}

NodePipeline::Passage NodePipeline::pass(uint32_t frame, uint64_t enteredAt) {
    Passage passage{{}, enteredAt, slownessAt(frame)};
    bool isGivenUp = false;
    for (size_t i = 0; i < kNodes; ++i) {
        const Node& node = kChain[i];
        vdr1::NodeInfo& info = passage.nodes[i];
        info = {{node.ids[0], node.ids[1], node.ids[2]}, {}};
        if (isGivenUp) {
            continue;  // stamps stay 0
        }
        const uint64_t queued = passage.leftAt;
        uint64_t started = std::max(queued, mFreeAt[i]) + mNoise.around<uint64_t>(kDispatch, 0.5);
        if (isTroubled(Cause::kSlowAllocation, frame, i)) {
            started += kHoldUp;
        }
        uint64_t finished =
                started + mNoise.around<uint64_t>(node.work * passage.slowness, kSpread);
        uint64_t handedOn = finished + mNoise.around<uint64_t>(kHandOn, 0.5);
        if (isTroubled(Cause::kStuckNode, frame, i)) {
            isGivenUp = true;
            finished = started + kHoldUp;
            handedOn = 0;
        }
        info = {{node.ids[0], node.ids[1], node.ids[2]}, {queued, started, finished, handedOn}};
        passage.leftAt = std::max(finished, handedOn);
        mFreeAt[i] = passage.leftAt;
    }
    return passage;
}

}  // namespace demo
