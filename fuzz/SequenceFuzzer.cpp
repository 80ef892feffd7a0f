#include <gtest/gtest.h>

#include "testing/Sequence.h"

// Any sequence of calls, on a device where anything may fail.

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    GTEST_FLAG_SET(break_on_failure, true);  // ends the fuzzer's run
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    zk::test::Sequence(data, size).play();
    return 0;
}
