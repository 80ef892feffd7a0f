#include "records/IntegerText.h"

#include <gtest/gtest.h>

#include <string>

namespace zk::test {
namespace {

TEST(IntegerTextTest, EveryNumberOfDigits_IsPrintedWhole) {
    uint64_t power = 1;
    for (int digits = 1; digits <= 20; ++digits, power *= 10) {
        const uint64_t largest = digits == 20 ? UINT64_MAX : power * 10 - 1;
        for (const uint64_t value : {power - 1, power, power + power / 7, largest}) {
            char text[21] = {};
            char* end = formatUnsigned(text, value);
            EXPECT_EQ(std::string(text, end), std::to_string(value));
        }
    }
}

}  // namespace
}  // namespace zk::test
