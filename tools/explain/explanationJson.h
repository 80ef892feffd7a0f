#pragma once

#include <string>

#include "tools/explain/Explanation.h"

namespace vdrdump {

// The same as data: an object with the list "losses".
std::string explanationJson(const Explanations& explanations, const NodeNames& names);

}  // namespace vdrdump
