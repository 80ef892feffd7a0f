#include <algorithm>

#include "fuzz/InputBytes.h"
#include "fuzz/SequencePlayer.h"
#include "fuzz/require.h"

// Any sequence of calls, on a device where anything may fail: the recorder keeps its promises, and
// both record levels do exactly the same.

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace zk::fuzz;
    constexpr int kUnknownLevel = 3;
    constexpr size_t kShown = 300;  // characters

    InputBytes input(data, size);
    if (const bool isLevelUnknown = input.byte() % 16 == 15; isLevelUnknown) {
        SequencePlayer(kUnknownLevel, input).play();
        return 0;
    }
    const std::string first = SequencePlayer(1, input).play();
    const std::string second = SequencePlayer(2, input).play();
    if (first != second) {
        const auto differs =
                std::mismatch(first.begin(), first.end(), second.begin(), second.end());
        const auto at = static_cast<size_t>(differs.first - first.begin());
        const size_t from = at > kShown ? at - kShown : 0;
        fail("the levels differ:\n" + first.substr(from, 2 * kShown) + "\n----\n" +
             second.substr(from, 2 * kShown));
    }
    return 0;
}
