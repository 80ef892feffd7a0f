#pragma once

#include "tools/explain/Findings.h"
#include "tools/explain/FrameMap.h"

namespace vdrdump {

// The node that cannot keep up with the frames, over the frames around the loss that it worked on:
// it takes longer for one than they are apart, works on one at a time, and rests for less long.
// Of several the slowest. Frames are lost steadily before such a node, and no value stands out.
// None where times of nodes cannot be compared with those of frames.
std::optional<Bottleneck> findBottleneck(const FrameMap& frames, const FrameRange& lost,
                                         const StampClocks& clocks);

}  // namespace vdrdump
