#pragma once

#include "tools/explain/Measurements.h"

namespace vdrdump {

// The values that stand out in the window, highest excess first: above all others, above the median
// by 3.5 scaled median deviations, and by so much that it can delay a frame.
std::vector<Comparison> standingOut(const Measurements& measurements, const FrameRange& window,
                                    const StampClocks& clocks);

}  // namespace vdrdump
