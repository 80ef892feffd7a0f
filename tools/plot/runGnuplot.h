#pragma once

#include <string>

namespace vdrdump {

// Runs gnuplot as a child with `script` as its input and `path` as its output. False, with the
// reason on standard error and no file left, when gnuplot is missing or fails.
bool runGnuplot(const std::string& script, const std::string& path);

}  // namespace vdrdump
