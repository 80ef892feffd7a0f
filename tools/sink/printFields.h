#pragma once

#include <string>
#include <vector>

namespace vdrdump {

// Prints what a record holds: names, types, units and meanings, of all fields or of those called
// `names`; with `namesOnly` the names alone, a line each, for completion. False when that fails.
bool printFields(const std::vector<std::string>& names, bool namesOnly);

}  // namespace vdrdump
