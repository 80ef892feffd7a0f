#pragma once

#include <cstddef>

// The device's bounds-checked memory and string functions. Reentrant; nothing is written past
// `destMax`.

extern "C" {
// 0, or an error number when a pointer is null, `count` exceeds `destMax` or the ranges overlap;
// the destination is then unspecified within `destMax`.
int memcpy_s(void* dest, size_t destMax, const void* src, size_t count);
int memset_s(void* dest, size_t destMax, int c, size_t count);
// Length written, or -1 when the text is longer than `count` or `destMax - 1` characters (the
// destination then holds a NUL-terminated beginning of it) or an argument is bad.
int snprintf_s(char* dest, size_t destMax, size_t count, const char* format, ...)
        __attribute__((format(printf, 4, 5)));
// Number of values stored, or -1 when the input ends before the first one. Text conversions
// (%s, %c, %[) take their buffer's size as an argument of its own on the device; use none here.
int sscanf_s(const char* buffer, const char* format, ...) __attribute__((format(scanf, 2, 3)));
}
