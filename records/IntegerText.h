#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Decimal text of integers, two digits at a step: lines and tables are mostly stamps of a dozen
// digits. Each function returns the end of what it wrote.
namespace zk {

namespace detail {

constexpr std::array<char, 200> makeDigitPairs() {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}

inline constexpr std::array<char, 200> kDigitPairs = makeDigitPairs();

}  // namespace detail

// Exactly two digits; `value` is below 100.
inline char* formatTwoDigits(char* out, uint32_t value) {
    std::memcpy(out, &detail::kDigitPairs[2 * size_t{value}], 2);
    return out + 2;
}

// Exactly four digits; `value` is below 10^4.
inline char* formatFourDigits(char* out, uint32_t value) {
    return formatTwoDigits(formatTwoDigits(out, value / 100), value % 100);
}

// Exactly eight digits; `value` is below 10^8.
inline char* formatEightDigits(char* out, uint32_t value) {
    return formatFourDigits(formatFourDigits(out, value / 10000), value % 10000);
}

namespace detail {

// No leading zeros; `value` is below 10^2.
inline char* formatUpToTwoDigits(char* out, uint32_t value) {
    if (value >= 10) {
        return formatTwoDigits(out, value);
    }
    *out = static_cast<char>('0' + value);
    return out + 1;
}

// No leading zeros; `value` is below 10^4.
inline char* formatUpToFourDigits(char* out, uint32_t value) {
    if (value < 100) {
        return formatUpToTwoDigits(out, value);
    }
    return formatTwoDigits(formatUpToTwoDigits(out, value / 100), value % 100);
}

// No leading zeros; `value` is below 10^8.
inline char* formatUpToEightDigits(char* out, uint32_t value) {
    if (value < 10000) {
        return formatUpToFourDigits(out, value);
    }
    return formatFourDigits(formatUpToFourDigits(out, value / 10000), value % 10000);
}

}  // namespace detail

// No leading zeros; at most 20 characters.
inline char* formatUnsigned(char* out, uint64_t value) {
    constexpr uint64_t kTenToThe8th = 100000000;
    const auto eightDigitsAt = [value](uint64_t unit) {
        return static_cast<uint32_t>(value / unit % kTenToThe8th);
    };
    if (value < kTenToThe8th) {
        return detail::formatUpToEightDigits(out, static_cast<uint32_t>(value));
    }
    if (value < kTenToThe8th * kTenToThe8th) {
        out = detail::formatUpToEightDigits(out, eightDigitsAt(kTenToThe8th));
    } else {
        out = detail::formatUpToEightDigits(out, eightDigitsAt(kTenToThe8th * kTenToThe8th));
        out = formatEightDigits(out, eightDigitsAt(kTenToThe8th));
    }
    return formatEightDigits(out, eightDigitsAt(1));
}

inline char* formatSigned(char* out, int64_t value) {
    if (value < 0) {
        *out++ = '-';
        return formatUnsigned(out, uint64_t{0} - static_cast<uint64_t>(value));
    }
    return formatUnsigned(out, static_cast<uint64_t>(value));
}

}  // namespace zk
