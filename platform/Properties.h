#pragma once

#include <cstdint>

// The device's system properties. Any thread.

extern "C" {
// Copies the property's text into `value`, at most 91 characters and a NUL, or `defaultValue`
// where the property is unset or empty. Returns the length copied.
int property_get(const char* key, char* value, const char* defaultValue);
// The property as a number (decimal or 0x...), or `defaultValue` where it is unset or no number.
int32_t property_get_int32(const char* key, int32_t defaultValue);
}

namespace zk {
inline constexpr int kPropertyValueMax = 92;  // bytes, the terminating NUL included
}
