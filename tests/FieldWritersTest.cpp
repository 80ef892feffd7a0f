#include <cstring>
#include <sstream>

#include "records/VDRData1.h"
#include "records/VDRData2.h"
#include "testing/FieldPlace.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

class FieldWritersTest : public RecorderTest, public testing::WithParamInterface<int> {
protected:
    // Writes the tag's field, for a list the element behind `count` others where there is room,
    // and compares the whole record.
    void expectWritten(uint32_t tagId, size_t count) {
        const auto& [name, offset, size, capacity] = kFieldPlaces[tagId];
        std::vector<uint8_t> source(size);  // ends where its memory does
        for (size_t i = 0; i < size; ++i) {
            source[i] = static_cast<uint8_t>(i + 101);
        }
        recorder().VDRProcessing(7);
        std::vector<uint8_t> expected(kFrameRecordSize, 0);
        if (capacity > 1) {
            recorder().writeMaintain(7, tagId - 1, &count);
            expected[offset - 1] = static_cast<uint8_t>(count + (count < capacity ? 1 : 0));
        }
        if (count < capacity) {
            std::memcpy(&expected[offset + count * size], source.data(), size);
        }
        recorder().writeMaintain(7, tagId, source.data());
        recorder().VDRDone(7);
        EXPECT_EQ(oldestDone(), expected) << name << ", count " << count;
        recorder().VDRReport(7);
    }
};

TEST_P(FieldWritersTest, Tag_ReachesItsFieldAndNothingElseChanges) {
    useLevel(GetParam());
    openSession(-1);
    for (uint32_t tagId = 0; tagId < tag::kCount; ++tagId) {
        const size_t capacity = kFieldPlaces[tagId].capacity;
        expectWritten(tagId, 0);
        if (capacity > 1) {
            for (const size_t count : {size_t{1}, capacity - 1, capacity, size_t{255}}) {
                expectWritten(tagId, count);
            }
        }
    }
    const uint32_t tags[] = {tag::awbInfo_qawb_cap_sa, tag::memoryAllocTimeoutInfo};
    const void* const nulls[] = {nullptr, nullptr};
    recorder().VDRProcessing(7);
    recorder().writeMaintains(7, tags, nulls, 2);
    EXPECT_EQ(countLogged("VDR::maintainData == nullptr || data == nullptr!"), 2U);
}

// Both levels write the same bytes today; the address tells whose writers are bound.
TEST_P(FieldWritersTest, Level_HasItsOwnWriters) {
    const bool isFirst = GetParam() == 1;
    const Name2FuncMap* const writers =
            isFirst ? vdr1::VDRData1::getName2FuncMap() : vdr2::VDRData2::getName2FuncMap();
    useLevel(GetParam());
    openSession(-1);
    std::ostringstream bound;
    bound << "getName2FuncMap()=" << static_cast<const void*>(writers);
    EXPECT_EQ(countLogged(bound.str()), 1U);
    EXPECT_EQ(writers->size(), tag::kCount);
    EXPECT_EQ(writers->at("zoomRatio"),
              isFirst ? vdr1::VDRData1::write_zoomRatio : vdr2::VDRData2::write_zoomRatio);
}

INSTANTIATE_TEST_SUITE_P(Levels, FieldWritersTest, testing::Values(1, 2));

}  // namespace
}  // namespace zk::test
