#pragma once

#include "tools/explain/Answer.h"

namespace vdrdump {

// `namesSession`: there are losses of several.
LossLines lossLines(const Explanation& explanation, const NodeNames& names, bool namesSession);

}  // namespace vdrdump
