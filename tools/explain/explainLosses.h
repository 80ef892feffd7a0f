#pragma once

#include "tools/explain/Explanation.h"
#include "tools/explain/gatherLosses.h"

namespace vdrdump {

// Looks at what was gathered around each loss.
Explanations explainLosses(const GatheredLosses& gathered);

}  // namespace vdrdump
