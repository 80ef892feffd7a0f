#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/host/LogControl.h"
#include "records/frameData.h"
#include "records/makeFrameContent.h"
#include "testing/InputBytes.h"
#include "testing/SteppedLine.h"

// Any record, appended to any string, at both levels: the bytes of the C library's own formatting,
// and the error line exactly when the line did not fit.

using zk::kFrameRecordSize;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    enum Shape : uint8_t { kWholeRecord = 1, kOddAddress = 2, kFullDestination = 4 };
    zk::test::InputBytes input(data, size);
    const uint8_t shape = input.byte();
    const size_t prefix = (shape & kFullDestination) != 0
                                  ? kFrameRecordSize
                                  : input.take<uint16_t>() % kFrameRecordSize;
    // On the heap, and each ending with its memory, so that a byte too far is noticed.
    const size_t misplaced = (shape & kOddAddress) != 0 ? 1 : 0;
    const std::unique_ptr<uint8_t[]> memory(new uint8_t[misplaced + kFrameRecordSize]);
    uint8_t* const record = memory.get() + misplaced;
    std::memset(record, input.byte(), kFrameRecordSize);
    if ((shape & kWholeRecord) != 0) {
        input.takeTo(record, kFrameRecordSize);
    }
    while (!input.empty()) {  // patches
        const size_t offset = input.take<uint16_t>() % kFrameRecordSize;
        const size_t length = input.byte() % 64 + size_t{1};
        input.takeTo(record + offset, std::min(length, kFrameRecordSize - offset));
    }
    char expected[kFrameRecordSize] = {};
    std::memset(expected, 'x', prefix);
    const bool fits = zk::test::appendSteppedLine(record, expected);
    const std::unique_ptr<char[]> actual(new char[kFrameRecordSize]);
    zk::host::setLogOutput(nullptr);
    for (const int level : {1, 2}) {
        std::memset(actual.get(), 0, kFrameRecordSize);
        std::memset(actual.get(), 'x', prefix);
        zk::host::startLogCapture();
        zk::makeFrameContent(level, record, actual.get());
        if (zk::host::capturedLog().empty() != fits ||
            strnlen(actual.get(), kFrameRecordSize) == kFrameRecordSize ||
            std::strcmp(expected, actual.get()) != 0) {
            std::fprintf(stderr, "level %d, fits: %d\n%s\n%s\n", level, fits, expected,
                         actual.get());
            std::abort();
        }
    }
    return 0;
}
