#pragma once

#include <optional>
#include <string>

namespace vdrdump {

// Runs gnuplot as a child with `script` as its input and gives what it wrote. None, with the reason
// on standard error and the picture's `name` in front, when gnuplot is missing or fails.
std::optional<std::string> runGnuplot(const std::string& script, const std::string& name);

}  // namespace vdrdump
