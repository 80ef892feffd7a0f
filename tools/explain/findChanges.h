#pragma once

#include <vector>

#include "tools/explain/Findings.h"
#include "tools/explain/FrameMap.h"

namespace vdrdump {

// What the frames of `range` have other than the frame before each, in the order of the frames.
std::vector<Change> findChanges(const FrameMap& frames, const FrameRange& range);

// The latest time that the thermal level went up, of all frames to `upTo`.
std::optional<Change> findThermalRise(const FrameMap& frames, uint32_t upTo);

}  // namespace vdrdump
