#pragma once

#include <cstddef>

namespace zk {

inline constexpr size_t kLongestFloatText = 47;  // characters, without a NUL

// Writes `value` exactly as "%f" prints it where the decimal point is a point, whatever the
// process's locale, without a NUL, and returns the end. `out` must have room for kLongestFloatText
// characters. Reentrant.
char* formatFloat(char* out, float value);

}  // namespace zk
