#pragma once

#include <cstddef>

namespace zk {

inline constexpr size_t kLongestFloatText = 47;  // characters, without a NUL

// Writes `value` exactly as "%f" prints it, without a NUL, and returns the end. `out` must have
// room for kLongestFloatText characters and a NUL. Reentrant.
char* formatFloat(char* out, float value);

}  // namespace zk
