#include "testing/Sequence.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace zk::test {
namespace {

// The fuzzer's seeds, whole and beside the program, and what nobody has thought of.
TEST(SequenceTest, AnyCallsInAnyOrder_KeepTheRecordersPromises) {
    std::vector<std::vector<uint8_t>> inputs;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (const auto& seed : std::filesystem::directory_iterator(folder / "fuzz/seeds/sequence")) {
        std::ifstream file(seed.path(), std::ios::binary);
        inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    EXPECT_GE(inputs.size(), 14U);
    std::mt19937 random(20231114);
    for (int i = 0; i < 100; ++i) {
        inputs.emplace_back(100 + random() % 400);
        for (uint8_t& byte : inputs.back()) {
            byte = static_cast<uint8_t>(random());
        }
    }
    for (const std::vector<uint8_t>& input : inputs) {
        SCOPED_TRACE(&input - inputs.data());
        Sequence(input.data(), input.size()).play();
        ASSERT_FALSE(testing::Test::HasFailure());
    }
}

}  // namespace
}  // namespace zk::test
