#pragma once

#include <string>

#include "tools/explain/Explanation.h"

namespace vdrdump {

// Explanations as text: of several losses a line each first, then each in some fifteen lines.
std::string explanationText(const Explanations& explanations, const NodeNames& names);

}  // namespace vdrdump
