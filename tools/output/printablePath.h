#pragma once

#include <string>

namespace vdrdump {

// A path as outputs show it. Whatever bytes it has, it breaks no line, no terminal and no encoding:
// control characters, a backslash, and what is no UTF-8 become "\xNN".
std::string printablePath(const std::string& path);

}  // namespace vdrdump
