#include <array>
#include <cstring>
#include <map>

#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

// By tag, in bytes; of one element for a list. The fields lie in the record one behind the other.
constexpr std::array<size_t, 39> kSizes = {4, 12, 1, 1, 1, 4,  54, 1, 1,  1,  13, 1,  13,
                                           1, 7,  1, 7, 1, 44, 8,  8, 8,  8,  8,  8,  8,
                                           8, 8,  8, 8, 8, 8,  8,  8, 60, 40, 1,  19, 47};
// By tag; a list's count is the field before it.
const std::map<size_t, size_t> kMaxElements = {{10, 15}, {12, 15}, {14, 30},
                                               {16, 30}, {18, 60}, {37, 10}};

class FieldWritersTest : public RecorderTest, public testing::WithParamInterface<int> {
protected:
    // Writes the tag's field at its offset, for a list the element behind `count` others where
    // there is room, and compares the whole record.
    void expectWritten(uint32_t tag, size_t offset, size_t capacity, size_t count) {
        std::vector<uint8_t> source(kSizes[tag]);  // ends where its memory does
        for (size_t i = 0; i < source.size(); ++i) {
            source[i] = static_cast<uint8_t>(i + 101);
        }
        recorder().VDRProcessing(7);
        std::vector<uint8_t> expected(kFrameRecordSize, 0);
        if (capacity > 1) {
            recorder().writeMaintain(7, tag - 1, &count);
            expected[offset - 1] = static_cast<uint8_t>(count + (count < capacity ? 1 : 0));
        }
        if (count < capacity) {
            std::memcpy(&expected[offset + count * source.size()], source.data(), source.size());
        }
        recorder().writeMaintain(7, tag, source.data());
        recorder().VDRDone(7);
        EXPECT_EQ(oldestDone(), expected) << "tag " << tag << ", count " << count;
        recorder().VDRReport(7);
    }
};

TEST_P(FieldWritersTest, Tag_ReachesItsFieldAndNothingElseChanges) {
    useLevel(GetParam());
    openSession(-1);
    size_t offset = 0;
    for (uint32_t tag = 0; tag < kSizes.size(); ++tag) {
        const auto list = kMaxElements.find(tag);
        const size_t capacity = list != kMaxElements.end() ? list->second : 1;
        expectWritten(tag, offset, capacity, 0);
        if (capacity > 1) {
            for (const size_t count : {size_t{1}, capacity - 1, capacity, size_t{255}}) {
                expectWritten(tag, offset, capacity, count);
            }
        }
        offset += kSizes[tag] * capacity;
    }
    const uint32_t tags[] = {37, 38};
    const void* const nulls[] = {nullptr, nullptr};
    recorder().VDRProcessing(7);
    recorder().writeMaintains(7, tags, nulls, 2);
    EXPECT_EQ(countLogged("VDR::maintainData == nullptr || data == nullptr!"), 2U);
}

INSTANTIATE_TEST_SUITE_P(Levels, FieldWritersTest, testing::Values(1, 2));

}  // namespace
}  // namespace zk::test
