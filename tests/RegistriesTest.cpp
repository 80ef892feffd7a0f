#include <cstring>

#include "platform/CameraMemoryItemInfo.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

class RegistriesTest : public RecorderTest {
protected:
    // "frame/tag" of the fence; what was there before where it is unknown.
    std::string takeFence(void* fence) {
        unsigned long frame = 0x900000077;
        uint8_t tag = 88;
        recorder().GetChiFenceMap(fence, frame, tag);
        return std::to_string(frame) + "/" + std::to_string(tag);
    }
    uint32_t takeFrame(uint32_t chiFrame) {
        uint32_t frame = 99;
        recorder().GetChiFrameMap(chiFrame, frame);
        return frame;
    }
    // The record's bytes; a block of 0xEE where there is none.
    std::string takeSlow() {
        MemoryAllocTimeoutInfo out;
        std::memset(&out, 0xEE, sizeof(out));
        recorder().GetMemAllocTimeOutInfo(out);
        return {reinterpret_cast<const char*>(&out), sizeof(out)};
    }
};

TEST_F(RegistriesTest, FirstRegistrationWins_AndIsTakenOnce) {
    int object = 0;
    openSession();
    for (const uint32_t round : {1U, 2U}) {                          // what was taken is free again
        recorder().SetChiFenceMap(nullptr, 0x100000000 + round, 7);  // a fence like any other
        recorder().SetChiFenceMap(nullptr, 9, 9);
        recorder().SetChiFrameMap(UINT32_MAX, round);
        recorder().SetChiFrameMap(UINT32_MAX, 9);
        EXPECT_EQ(takeFence(nullptr), std::to_string(0x100000000 + round) + "/7");
        EXPECT_EQ(takeFrame(UINT32_MAX), round);
    }
    recorder().SetChiFenceMap(&object, 2, 8);
    recorder().SetChiFrameMap(0, 3);
    EXPECT_EQ(takeFence(nullptr), "38654705783/88") << "outputs stay";
    EXPECT_EQ(takeFrame(UINT32_MAX), 99U);
    EXPECT_EQ(transcript("E "),
              (Lines{"E GetChiFenceMap<LINE>: VDR::getChiFenceMap fail. hfence=(nil), "
                     "chiFrameNum=119, tagId=88, fenceSize=1!",
                     "E GetChiFrameMap<LINE>: VDR::getChiFrameMap fail. "
                     "chiFrameNum=4294967295, mChiFrameMap.size=1!"}));
    recorder().SetMemAllocTimeOutInfo({"slow", 6000, 0, 0});
    const std::string nothing = std::string(sizeof(MemoryAllocTimeoutInfo), '\xEE');
    closeSession();  // forgets all three
    EXPECT_EQ(takeFence(&object), "38654705783/88");
    EXPECT_EQ(takeFrame(0), 99U);
    EXPECT_EQ(takeSlow(), nothing);
}

TEST_F(RegistriesTest, AllocationOfMoreThanFiveSeconds_IsKept) {
    const std::string digits = "0123456789012345678901234567890123456789";
    const std::string sixSeconds("\0\0\0\0\6\0\0", 7);
    struct Row {
        ZkCamera::CameraMemoryItemInfo info;
        std::string itemName;
        std::string sizeTimeType;  // 4, 2 and 1 bytes
    };
    const Row rows[] = {
            {{"a little more", 5001, 1, 1023}, "a little more", {"\0\0\0\0\5\0\1", 7}},
            {{"truncates", 9999, 300, 3221225472}, "truncates", {"\0\0\x30\0\x9\0\x2C", 7}},
            {{digits + digits, 6000, 0, 0}, digits.substr(0, 39), sixSeconds},
            {{"largest", UINT32_MAX, 0, UINT64_MAX}, "largest", {"\xFF\xFF\xFF\xFF\x37\x89\0", 7}},
    };
    recorder().SetMemAllocTimeOutInfo({"closed", 9000, 0, 0});
    openSession();
    recorder().SetMemAllocTimeOutInfo({"five seconds", 5000, 1, 1});
    for (const Row& row : rows) {
        recorder().SetMemAllocTimeOutInfo(row.info);
    }
    for (const Row& row : rows) {
        std::string expected = row.itemName;
        expected.resize(40);
        EXPECT_EQ(takeSlow(), expected + row.sizeTimeType) << row.itemName;
    }
}

}  // namespace
}  // namespace zk::test
