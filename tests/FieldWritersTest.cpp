#include <cstring>

#include "platform/Log.h"
#include "records/FieldTags.h"
#include "records/FieldWriter.h"
#include "records/VDRData1.h"
#include "records/VDRData2.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

struct Field {
    const char* name;
    size_t size;             // bytes; of one element for a list
    size_t maxElements = 0;  // 0: no list; a list's count is the field before it

    bool isList() const { return maxElements > 0; }
};

// By tag. The fields lie in the record in this order, one behind the other.
constexpr Field kFields[] = {
        {"frameNumber", 4},
        {"cslInfo", 12},
        {"masterCameraId", 1},
        {"manualCaptureTag", 1},
        {"sensorModeIndex", 1},
        {"zoomRatio", 4},
        {"sysStatusInfo", 54},
        {"captureType", 1},
        {"videoAction", 1},
        {"featureRequestStateInfoCount", 1},
        {"featureRequestStateInfo", 13, 15},
        {"featureMessageTypeInfoCount", 1},
        {"featureMessageTypeInfo", 13, 15},
        {"pluginAlgoCostTimeCount", 1},
        {"pluginAlgoCostTime", 7, 30},
        {"semantAlgoCostTimeCount", 1},
        {"semantAlgoCostTime", 7, 30},
        {"nodeInfoCount", 1},
        {"nodeInfo", 44, 60},
        {"setGmeNcsDep", 8},
        {"getGmeNcsDepGyro", 8},
        {"getGmeNcsDepOis", 8},
        {"getGmeNcsDepAccel", 8},
        {"getGmeNcsDepMag", 8},
        {"setEisV2NcsDep", 8},
        {"getEisV2NcsDepGyro", 8},
        {"getEisV2NcsDepOis", 8},
        {"getEisV2NcsDepAccel", 8},
        {"getEisV2NcsDepMag", 8},
        {"setEisV3NcsDep", 8},
        {"getEisV3NcsDepGyro", 8},
        {"getEisV3NcsDepOis", 8},
        {"getEisV3NcsDepAccel", 8},
        {"getEisV3NcsDepMag", 8},
        {"ae_af_awb_info", 60},
        {"awbInfo_qawb_cap", 40},
        {"awbInfo_qawb_cap_saCount", 1},
        {"awbInfo_qawb_cap_sa", 19, 10},
        {"memoryAllocTimeoutInfo", 47},
};
constexpr uint32_t kTags = sizeof(kFields) / sizeof(kFields[0]);

size_t offsetOf(uint32_t tag) {
    size_t offset = 0;
    for (uint32_t i = 0; i < tag; ++i) {
        offset += kFields[i].size * (kFields[i].isList() ? kFields[i].maxElements : 1);
    }
    return offset;
}

class FieldWritersTest : public RecorderTest, public testing::WithParamInterface<int> {
protected:
    static const Name2FuncMap& writers() {
        return *(GetParam() == 1 ? vdr1::VDRData1::getName2FuncMap()
                                 : vdr2::VDRData2::getName2FuncMap());
    }

    static WriteFunc writer(const char* name) {
        const auto found = writers().find(name);
        return found != writers().end() ? found->second : nullptr;
    }
};

TEST_P(FieldWritersTest, Field_IsCopiedToItsPlaceAndNothingElseChanges) {
    ASSERT_EQ(writers().size(), kTags);
    for (uint32_t tag = 0; tag < kTags; ++tag) {
        const Field& field = kFields[tag];
        ASSERT_NE(writer(field.name), nullptr) << field.name;
        std::vector<size_t> counts = {0};
        if (field.isList()) {
            counts = {0, 1, field.maxElements - 1, field.maxElements, 255};
        }
        for (const size_t count : counts) {
            SCOPED_TRACE(field.name + (" with count " + std::to_string(count)));
            // One byte off, like most fields; the sources end where their memory does.
            std::vector<uint8_t> memory(kFrameRecordSize + 1, 0xA5);
            std::vector<uint8_t> source(field.size + 1);
            for (size_t i = 0; i < source.size(); ++i) {
                source[i] = static_cast<uint8_t>(i + 1);
            }
            uint8_t* const record = memory.data() + 1;
            size_t offset = offsetOf(tag);
            if (field.isList()) {
                record[offsetOf(tag - 1)] = static_cast<uint8_t>(count);
            }
            std::vector<uint8_t> expected = memory;
            if (!field.isList() || count < field.maxElements) {
                if (field.isList()) {
                    expected[1 + offsetOf(tag - 1)] = static_cast<uint8_t>(count + 1);
                    offset += count * field.size;
                }
                std::memcpy(&expected[1 + offset], &source[1], field.size);
            }
            writer(field.name)(record, &source[1]);
            EXPECT_EQ(memory, expected);
        }
    }
    EXPECT_TRUE(transcript("").empty());
}

TEST_P(FieldWritersTest, NullPointer_IsToldUnderTheWritersNameAndWritesNothing) {
    for (const Field& field : kFields) {
        SCOPED_TRACE(field.name);
        ASSERT_NE(writer(field.name), nullptr);
        std::vector<uint8_t> record(kFrameRecordSize, 0xA5);
        const std::vector<uint8_t> source(field.size);
        forgetLog();
        writer(field.name)(record.data(), nullptr);
        writer(field.name)(nullptr, source.data());
        const std::string line = std::string("E () write_") + field.name +
                                 "<LINE>: VDR::maintainData == nullptr || data == nullptr!";
        EXPECT_EQ(transcript(""), (std::vector<std::string>{line, line}));
        EXPECT_EQ(record, std::vector<uint8_t>(kFrameRecordSize, 0xA5));
    }
}

TEST_P(FieldWritersTest, Tag_ReachesItsField) {
    useLevel(GetParam());
    openSession(-1);
    recorder().VDRProcessing(1);
    std::vector<uint8_t> expected(kFrameRecordSize, 0);
    for (uint32_t tag = 0; tag < kTags; ++tag) {
        const Field& field = kFields[tag];
        const bool isCount = tag + 1 < kTags && kFields[tag + 1].isList();
        // A count of 2 puts the element that follows third.
        const std::vector<uint8_t> source(field.size,
                                          isCount ? uint8_t{2} : static_cast<uint8_t>(tag + 100));
        recorder().writeMaintain(1, tag, source.data());
        const size_t index = field.isList() ? 2 : 0;
        std::memcpy(&expected[offsetOf(tag) + index * field.size], source.data(), field.size);
        if (field.isList()) {
            expected[offsetOf(tag - 1)] = 3;
        }
    }
    recorder().VDRDone(1);
    EXPECT_EQ(oldestDone(), expected);
}

INSTANTIATE_TEST_SUITE_P(Levels, FieldWritersTest, testing::Values(1, 2));

}  // namespace
}  // namespace zk::test
