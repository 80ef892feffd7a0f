#pragma once

#include "tools/explain/Measurements.h"

namespace vdrdump {

// Where the lost frame got stuck or, if it did not, the nearest one before it in the window: the
// first node without an end stamp where other frames have one.
std::optional<StuckAt> findStuck(const FrameMap& frames, const Measurements& measurements,
                                 const FrameRange& lost, const FrameRange& window);

}  // namespace vdrdump
