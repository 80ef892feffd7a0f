#pragma once

#include "tools/explain/Findings.h"
#include "tools/explain/FrameMap.h"

namespace vdrdump {

// What the frames around it tell about the loss of `lost`: one frame, or all around it without a
// record. `session` has the records of its camera session, of which those from N-60 to N+30 are
// looked at; `ticksPerSecond` as in clocksOf. No input, no output, no time of day.
Findings analyseLoss(const FrameRange& lost, const FrameMap& session,
                     std::optional<double> ticksPerSecond = std::nullopt);

// Frames `before` the lost ones to `behind` them.
FrameRange framesAround(const FrameRange& lost, uint32_t before, uint32_t behind);

}  // namespace vdrdump
