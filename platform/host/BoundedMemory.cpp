#include "platform/BoundedMemory.h"

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

extern "C" int memcpy_s(void* dest, size_t destMax, const void* src, size_t count) {
    if (dest == nullptr || src == nullptr) {
        return EINVAL;
    }
    const auto to = reinterpret_cast<uintptr_t>(dest);
    const auto from = reinterpret_cast<uintptr_t>(src);
    const uintptr_t distance = to > from ? to - from : from - to;
    if (count > destMax || distance < count) {
        return ERANGE;
    }
    std::memcpy(dest, src, count);
    return 0;
}

extern "C" int memset_s(void* dest, size_t destMax, int c, size_t count) {
    if (dest == nullptr) {
        return EINVAL;
    }
    if (count > destMax) {
        return ERANGE;
    }
    std::memset(dest, c, count);
    return 0;
}

extern "C" int snprintf_s(char* dest, size_t destMax, size_t count, const char* format, ...) {
    if (dest == nullptr || destMax == 0 || format == nullptr) {
        return -1;
    }
    const size_t longest = count < destMax - 1 ? count : destMax - 1;
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(dest, longest + 1, format, args);
    va_end(args);
    return length >= 0 && static_cast<size_t>(length) <= longest ? length : -1;
}

extern "C" int sscanf_s(const char* buffer, const char* format, ...) {
    if (buffer == nullptr || format == nullptr) {
        return -1;
    }
    va_list args;
    va_start(args, format);
    const int stored = std::vsscanf(buffer, format, args);
    va_end(args);
    return stored;
}
