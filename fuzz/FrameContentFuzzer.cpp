#include <memory>

#include "fuzz/InputBytes.h"
#include "fuzz/require.h"
#include "platform/host/LogControl.h"
#include "records/frameData.h"
#include "records/makeFrameContent.h"
#include "tests/ReferenceLine.h"

// Any record, appended to any string, at both levels: the bytes of the C library's own formatting,
// and the error line exactly when the line did not fit.

namespace {

using zk::kFrameRecordSize;
using zk::fuzz::InputBytes;
using zk::test::ReferenceLine;

enum Shape : uint8_t {
    kWholeRecord = 1,      // the input is the record; else it is patches on a filled record
    kOddAddress = 2,       // the record starts at an odd address
    kFullDestination = 4,  // no NUL in the destination
};

void fillRecord(InputBytes& input, uint8_t shape, uint8_t* record) {
    std::memset(record, input.byte(), kFrameRecordSize);
    if ((shape & kWholeRecord) != 0) {
        input.takeTo(record, kFrameRecordSize);
        return;
    }
    while (!input.empty()) {
        const size_t offset = input.take<uint16_t>() % kFrameRecordSize;
        const size_t length = input.byte() % 64 + size_t{1};
        input.takeTo(record + offset, std::min(length, kFrameRecordSize - offset));
    }
}

[[noreturn]] void fail(int level, const char* expected, const char* actual) {
    zk::fuzz::fail("level " + std::to_string(level) + ":\nexpected " + expected + "\nactual   " +
                   actual);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    InputBytes input(data, size);
    const uint8_t shape = input.byte();
    const size_t prefix = (shape & kFullDestination) != 0
                                  ? kFrameRecordSize
                                  : input.take<uint16_t>() % kFrameRecordSize;
    // On the heap, and each ending with its memory, so that a byte too far is noticed.
    const size_t misplaced = (shape & kOddAddress) != 0 ? 1 : 0;
    const std::unique_ptr<uint8_t[]> memory(new uint8_t[misplaced + kFrameRecordSize]);
    uint8_t* record = memory.get() + misplaced;
    fillRecord(input, shape, record);

    char expected[kFrameRecordSize] = {};
    std::memset(expected, 'x', prefix);
    const bool fits = ReferenceLine::render(record, expected);
    const std::unique_ptr<char[]> actual(new char[kFrameRecordSize]);
    zk::host::setLogOutput(nullptr);
    for (const int level : {1, 2}) {
        std::memset(actual.get(), 0, kFrameRecordSize);
        std::memset(actual.get(), 'x', prefix);
        zk::host::startLogCapture();
        zk::makeFrameContent(level, record, actual.get());
        if (zk::host::capturedLog().empty() != fits) {
            fail(level, expected, fits ? "an error line" : "no error line");
        }
        if (strnlen(actual.get(), kFrameRecordSize) == kFrameRecordSize ||
            std::strcmp(expected, actual.get()) != 0) {
            fail(level, expected, actual.get());
        }
    }
    return 0;
}
