#include <array>
#include <cstring>
#include <map>

#include "records/FieldTags.h"
#include "records/FieldWriter.h"
#include "records/VDRData1.h"
#include "records/VDRData2.h"
#include "tests/LogTranscript.h"
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

bool isList(size_t tag) {
    return kMaxElements.count(tag) != 0;
}

size_t offsetOf(size_t tag) {
    size_t offset = 0;
    for (size_t i = 0; i < tag; ++i) {
        offset += kSizes[i] * (isList(i) ? kMaxElements.at(i) : 1);
    }
    return offset;
}

class FieldWritersTest : public RecorderTest, public testing::WithParamInterface<int> {
protected:
    // Writes the tag's field, for a list the element behind `count` others, and compares the
    // whole record.
    void expectWritten(uint32_t tag, size_t count) {
        std::vector<uint8_t> source(kSizes[tag]);  // ends where its memory does
        for (size_t i = 0; i < source.size(); ++i) {
            source[i] = static_cast<uint8_t>(i + 101);
        }
        recorder().VDRProcessing(7);
        std::vector<uint8_t> expected(kFrameRecordSize, 0);
        size_t offset = offsetOf(tag);
        if (isList(tag)) {
            recorder().writeMaintain(7, tag - 1, &count);
            const bool isFull = count >= kMaxElements.at(tag);
            expected[offset - 1] = static_cast<uint8_t>(count + (isFull ? 0 : 1));
            offset = isFull ? kFrameRecordSize : offset + count * kSizes[tag];
        }
        if (offset < kFrameRecordSize) {
            std::memcpy(&expected[offset], source.data(), source.size());
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
    for (uint32_t tag = 0; tag < kSizes.size(); ++tag) {
        expectWritten(tag, 0);
        if (isList(tag)) {
            const size_t full = kMaxElements.at(tag);
            for (const size_t count : {size_t{1}, full - 1, full, size_t{255}}) {
                expectWritten(tag, count);
            }
        }
    }
    EXPECT_EQ(countLogged("write_"), 0U);
}

TEST_P(FieldWritersTest, NullPointer_IsToldUnderTheWritersNameAndWritesNothing) {
    const Name2FuncMap& writers = *(GetParam() == 1 ? vdr1::VDRData1::getName2FuncMap()
                                                    : vdr2::VDRData2::getName2FuncMap());
    ASSERT_EQ(writers.size(), kSizes.size());
    for (const auto& [name, writer] : writers) {
        std::vector<uint8_t> record(kFrameRecordSize, 0xA5);
        forgetLog();
        writer(record.data(), nullptr);
        writer(nullptr, record.data());
        const std::string line =
                "E () write_" + name + "<LINE>: VDR::maintainData == nullptr || data == nullptr!";
        EXPECT_EQ(transcript(""), (std::vector<std::string>{line, line}));
        EXPECT_EQ(record, std::vector<uint8_t>(kFrameRecordSize, 0xA5));
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, FieldWritersTest, testing::Values(1, 2));

}  // namespace
}  // namespace zk::test
