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

testing::AssertionResult readsAsPrinted(float value) {
    char printed[kLongestFloatText + 2];
    const int length = std::snprintf(printed, sizeof(printed), "%f", static_cast<double>(value));
    std::string text(kLongestFloatText + 1, '#');
    text.resize(static_cast<size_t>(formatFloat(text.data(), value) - text.data()));
    if (text == printed && static_cast<size_t>(length) <= kLongestFloatText) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << text << " instead of " << printed;
}

// Zeros, the smallest and largest numbers, infinities and no numbers are among them.
TEST(FloatTextTest, EveryExponentAndSign_ReadsAsPrinted) {
    std::mt19937 random(1);
    for (uint32_t signAndExponent = 0; signAndExponent < 512; ++signAndExponent) {
        for (uint32_t i = 0; i < 300; ++i) {
            const uint32_t ends[] = {0x000000, 0x000001, 0x400000, 0x7FFFFF};
            const uint32_t mantissa = i < 4 ? ends[i] : static_cast<uint32_t>(random()) & 0x7FFFFF;
            const uint32_t bits = signAndExponent << 23 | mantissa;
            float value;
            std::memcpy(&value, &bits, sizeof(value));
            ASSERT_TRUE(readsAsPrinted(value));
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

}  // namespace
}  // namespace zk::test
