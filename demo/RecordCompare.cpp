#include "demo/RecordCompare.h"

#include <algorithm>
#include <cinttypes>
#include <iterator>

#include "demo/FieldWrites.h"

namespace demo {

void RecordCompare::expectSame(const void* found, const zk::frameData& expected, const char* where,
                               Findings& findings) {
    const auto* const end = std::cend(expected.bytes);
    const auto* const differs =
            std::mismatch(std::cbegin(expected.bytes), end, static_cast<const uint8_t*>(found))
                    .first;
    const auto offset = static_cast<uint32_t>(differs - expected.bytes);
    findings.expect(differs == end, "%s: frame %" PRIu32 " differs at byte %" PRIu32 " (%s)", where,
                    expected.frameNumber(), offset, FieldWrites::fieldAt(offset));
}

}  // namespace demo
