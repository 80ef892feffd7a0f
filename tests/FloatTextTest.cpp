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

void expectAsPrinted(float value) {
    char printed[kLongestFloatText + 2];
    std::snprintf(printed, sizeof(printed), "%f", static_cast<double>(value));
    std::string text(kLongestFloatText + 1, '#');
    text.resize(static_cast<size_t>(formatFloat(text.data(), value) - text.data()));
    ASSERT_EQ(text, printed);
}

// Every exponent and sign: zeros, the smallest and largest numbers, infinities and no numbers. And
// odd multiples of 1/128, which alone lie exactly between two millionths, with their neighbours.
TEST(FloatTextTest, AnyNumber_ReadsAsPrinted) {
    std::mt19937 random(1);
    for (uint32_t i = 0; i < 512 * 300 && !HasFatalFailure(); ++i) {
        const uint32_t ends[] = {0x000000, 0x000001, 0x400000, 0x7FFFFF};
        const uint32_t mantissa =
                i < 4 * 512 ? ends[i / 512] : static_cast<uint32_t>(random()) & 0x7FFFFF;
        const uint32_t bits = i << 23 | mantissa;
        float value;
        std::memcpy(&value, &bits, sizeof(value));
        expectAsPrinted(value);
    }
    for (uint32_t i = 1; i < (1U << 24) && !HasFatalFailure(); i += i < 20000 ? 2 : 2222) {
        const float tie = static_cast<float>(i) / 128;
        for (const float value : {tie, std::nextafterf(tie, INFINITY), -std::nextafterf(tie, 0)}) {
            expectAsPrinted(value);
        }
    }
}

}  // namespace
}  // namespace zk::test
