#pragma once

#include "tools/explain/Findings.h"

namespace vdrdump {

// What of the findings most likely lost the frame. `isMeasured`: there are values to compare.
//
//   the frame got stuck in a node > a slow allocation in the frame itself > what stands out, the
//   more specific of what the same time shows in > a slow allocation around > heat and what else
//   slowed all nodes > what changed > a node that
//   cannot keep up > what stands out behind the loss > nothing
Cause likeliestCause(const Findings& findings, bool isMeasured);

}  // namespace vdrdump
