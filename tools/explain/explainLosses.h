#pragma once

#include "tools/explain/Explanation.h"
#include "tools/explain/gatherLosses.h"

namespace vdrdump {

// Looks at what was gathered around each loss. `ticksPerSecond` as in clocksOf.
Explanations explainLosses(const GatheredLosses& gathered, std::optional<double> ticksPerSecond);

}  // namespace vdrdump
