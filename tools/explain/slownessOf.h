#pragma once

#include "tools/explain/Measurements.h"

namespace vdrdump {

// How long nodes take for the last frames up to the lost one, as a multiple of what they took
// before: before the device grew hot, or N-30 to N-11. The median over the nodes: above 1 only
// where most have slowed down. 0 where that cannot be told.
double slownessOf(const FrameMap& frames, const Measurements& measurements, const FrameRange& lost,
                  const std::optional<Change>& thermalRise);

}  // namespace vdrdump
