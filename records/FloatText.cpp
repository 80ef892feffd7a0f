#include "records/FloatText.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "records/IntegerText.h"

namespace zk {
namespace {

constexpr int kMantissaBits = 23;
constexpr uint32_t kMantissaMask = (1U << kMantissaBits) - 1;
constexpr uint32_t kImplicitBit = 1U << kMantissaBits;
constexpr int kExponentBias = 127 + kMantissaBits;  // value = mantissa * 2^(exponent - bias)
constexpr int kLargestShift = 39;                   // 24 bits of mantissa then stay below 2^63
constexpr uint64_t kMillion = 1000000;

// NaN, infinities and numbers of 2^63 and more: the C library knows them.
char* formatExtreme(char* out, float value) {
    char text[kLongestFloatText + 1];
    const int length = std::snprintf(text, sizeof(text), "%f", static_cast<double>(value));
    std::memcpy(out, text, static_cast<size_t>(length));
    return out + length;
}

char* formatFraction(char* out, uint32_t millionths) {
    out = formatTwoDigits(out, millionths / 10000);
    return formatFourDigits(out, millionths % 10000);
}

}  // namespace

// A float is an integer times a power of two, so the number of millionths in it is an exact
// quotient of 64-bit integers; the remainder decides the rounding, ties to even.
char* formatFloat(char* out, float value) {
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    const int exponentField = static_cast<int>((bits >> kMantissaBits) & 0xFF);
    if (exponentField > kExponentBias + kLargestShift) {
        return formatExtreme(out, value);
    }
    const bool isNormal = exponentField != 0;
    const uint64_t mantissa = (bits & kMantissaMask) | (isNormal ? kImplicitBit : 0);
    const int exponent = (isNormal ? exponentField : 1) - kExponentBias;

    uint64_t whole = 0;
    uint64_t millionths = 0;
    if (exponent >= 0) {
        whole = mantissa << exponent;
    } else if (exponent > -64) {
        const int shift = -exponent;
        const uint64_t scaled = mantissa * kMillion;  // below 2^44
        const uint64_t half = uint64_t{1} << (shift - 1);
        const uint64_t remainder = scaled & (half * 2 - 1);
        uint64_t total = scaled >> shift;
        total += remainder > half || (remainder == half && (total & 1) != 0) ? 1 : 0;
        whole = total / kMillion;
        millionths = total % kMillion;
    }  // else: less than half a millionth

    if ((bits >> 31) != 0) {
        *out++ = '-';
    }
    out = formatUnsigned(out, whole);
    *out++ = '.';
    return formatFraction(out, static_cast<uint32_t>(millionths));
}

}  // namespace zk
