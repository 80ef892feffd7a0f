#pragma once

#include <string>

namespace vdrdump {

// An argument as a shell takes it, fit to be shown: what printablePath() escapes stands in $'...',
// in which bash reads it back.
std::string shellWord(const std::string& argument);

}  // namespace vdrdump
