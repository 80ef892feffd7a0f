#include "records/FloatText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "records/IntegerText.h"

namespace zk {
namespace {

constexpr int kMantissaBits = 23;
constexpr uint32_t kMantissaMask = (1U << kMantissaBits) - 1;
constexpr uint32_t kImplicitBit = 1U << kMantissaBits;
constexpr int kExponentBias = 127 + kMantissaBits;  // value = mantissa * 2^(exponent - bias)
constexpr int kNotFinite = 255;                     // exponent field
constexpr int kLargestShift = 39;                   // 24 bits of mantissa then stay below 2^63
constexpr uint64_t kMillion = 1000000;

// Numbers of 2^63 and more, which are whole and, as every float, below 2^128.
char* formatLarge(char* out, uint32_t mantissa, int exponent) {
    constexpr uint64_t kTenToThe16th = 10000000000000000;
    const auto formatSixteenDigits = [](char* at, uint64_t value) {
        at = formatEightDigits(at, static_cast<uint32_t>(value / 100000000));
        return formatEightDigits(at, static_cast<uint32_t>(value % 100000000));
    };
    const unsigned __int128 whole = static_cast<unsigned __int128>(mantissa) << exponent;
    const unsigned __int128 front = whole / kTenToThe16th;
    const auto middle = static_cast<uint64_t>(front % kTenToThe16th);
    const auto first = static_cast<uint64_t>(front / kTenToThe16th);
    if (first != 0) {
        out = formatSixteenDigits(formatUnsigned(out, first), middle);
    } else {
        out = formatUnsigned(out, middle);
    }
    out = formatSixteenDigits(out, static_cast<uint64_t>(whole % kTenToThe16th));
    return std::copy_n(".000000", 7, out);
}

char* formatFraction(char* out, uint32_t millionths) {
    out = formatTwoDigits(out, millionths / 10000);
    return formatFourDigits(out, millionths % 10000);
}

}  // namespace

// A float is an integer times a power of two, so the number of millionths in it is an exact
// quotient of 64-bit integers; the remainder decides the rounding, ties to even. The C library is
// not asked: it would write the decimal point of the process's locale.
char* formatFloat(char* out, float value) {
    uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    const int exponentField = static_cast<int>((bits >> kMantissaBits) & 0xFF);
    const bool isNormal = exponentField != 0;
    const uint64_t mantissa = (bits & kMantissaMask) | (isNormal ? kImplicitBit : 0);
    const int exponent = (isNormal ? exponentField : 1) - kExponentBias;
    if ((bits >> 31) != 0) {
        *out++ = '-';
    }
    if (exponentField == kNotFinite) {
        return std::copy_n(mantissa == kImplicitBit ? "inf" : "nan", 3, out);
    }
    if (exponent > kLargestShift) {
        return formatLarge(out, static_cast<uint32_t>(mantissa), exponent);
    }

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

    out = formatUnsigned(out, whole);
    *out++ = '.';
    return formatFraction(out, static_cast<uint32_t>(millionths));
}

}  // namespace zk
