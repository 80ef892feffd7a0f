#include "records/FloatText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

namespace zk::test {
namespace {

float floatOf(uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

testing::AssertionResult readsAsPrinted(float value) {
    char printed[kLongestFloatText + 2];
    const int length = std::snprintf(printed, sizeof(printed), "%f", static_cast<double>(value));
    std::string text(kLongestFloatText + 1, '#');
    text.resize(static_cast<size_t>(formatFloat(text.data(), value) - text.data()));
    if (text == printed && static_cast<size_t>(length) <= kLongestFloatText) {
        return testing::AssertionSuccess();
    }
    char bits[32];
    std::snprintf(bits, sizeof(bits), "%a", static_cast<double>(value));
    return testing::AssertionFailure() << bits << ": " << text << " instead of " << printed;
}

// Zeros, the smallest and largest numbers, infinities and no numbers are among them.
TEST(FloatTextTest, EveryExponentAndSign_ReadsAsPrinted) {
    std::mt19937 random(1);
    for (uint32_t signAndExponent = 0; signAndExponent < 512; ++signAndExponent) {
        for (const uint32_t mantissa : {0x000000U, 0x000001U, 0x2AAAAAU, 0x400000U, 0x7FFFFFU}) {
            ASSERT_TRUE(readsAsPrinted(floatOf(signAndExponent << 23 | mantissa)));
        }
        for (int i = 0; i < 100; ++i) {
            const auto mantissa = static_cast<uint32_t>(random()) & 0x7FFFFF;
            ASSERT_TRUE(readsAsPrinted(floatOf(signAndExponent << 23 | mantissa)));
        }
    }
}

// Only odd multiples of 1/128 lie exactly between two millionths.
TEST(FloatTextTest, TiesGoToTheEvenDigit_AndTheirNeighboursDoNot) {
    for (uint32_t i = 1; i < (1U << 24); i += i < 20000 ? 2 : 2222) {
        const float tie = static_cast<float>(i) / 128;
        ASSERT_TRUE(readsAsPrinted(tie));
        ASSERT_TRUE(readsAsPrinted(std::nextafterf(tie, INFINITY)));
        ASSERT_TRUE(readsAsPrinted(-std::nextafterf(tie, 0)));
    }
}

TEST(FloatTextTest, ArbitraryBits_ReadAsPrinted) {
    std::mt19937 random(2);
    for (int i = 0; i < 100000; ++i) {
        const auto bits = static_cast<uint32_t>(random());
        ASSERT_TRUE(readsAsPrinted(floatOf(bits)));
        // Values as a pipeline writes them, below about two million.
        ASSERT_TRUE(readsAsPrinted(std::ldexp(static_cast<float>(bits & 0xFFFFFF), -(i % 45))));
    }
}

}  // namespace
}  // namespace zk::test
