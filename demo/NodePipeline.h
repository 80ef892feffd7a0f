#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "demo/Noise.h"
#include "demo/Options.h"
#include "demo/SessionPlan.h"
#include "records/VDRData1Layout.h"

namespace demo {

// The pipeline's nodes, one behind the other. Each works on one frame at a time, so that a frame
// that is held up holds up those behind it. A node's four stamps, on one clock, nanoseconds since
// boot; 0: never happened:
//
//   queued ──> started ──> finished ──> handed on, which is queued at the next node
//
// One thread.
class NodePipeline {
public:
    static constexpr size_t kNodes = 7;

    struct Passage {
        std::array<vdr1::NodeInfo, kNodes> nodes;
        uint64_t leftAt;  // when the last node that had the frame was through with it
        double slowness;  // of the nodes; 1: as always

        bool isFinishedAt(size_t node) const { return nodes[node].stamps[3] != 0; }
    };

    NodePipeline(const Options& options, const SessionPlan& plan)
          : mCause(options.cause), mPlan(plan), mNoise(options.seed) {}

    // The way of this frame, which must come behind the one before it.
    Passage pass(uint32_t frame, uint64_t enteredAt);
    // The node that the cause holds up, for a reader.
    static std::string troubledNode(Cause cause);
    // A line for each node, its ids and its name, as vdrdump takes them.
    static std::string names();

private:
    bool isTroubled(Cause cause, uint32_t frame, size_t node) const;
    double slownessAt(uint32_t frame) const;

    const Cause mCause;
    const SessionPlan& mPlan;
    Noise mNoise;
    std::array<uint64_t, kNodes> mFreeAt{};  // when each node is through with its frames so far
};

}  // namespace demo
