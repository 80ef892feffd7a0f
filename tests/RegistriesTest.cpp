#include <array>
#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/CameraMemoryItemInfo.h"
#include "platform/host/LogControl.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Lines = std::vector<std::string>;

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

TEST_F(RegistriesTest, FirstFenceRegistrationWins_AndIsTakenOnce) {
    int object = 0;
    recorder().SetChiFenceMap(nullptr, 0x500000001, 7);  // null is a fence like any other
    recorder().SetChiFenceMap(&object, 2, 8);
    recorder().SetChiFenceMap(nullptr, 3, 9);
    EXPECT_EQ(takeFence(nullptr), "21474836481/7");
    EXPECT_TRUE(transcript("enceMap").empty());
    EXPECT_EQ(takeFence(nullptr), "38654705783/88") << "outputs stay";
    EXPECT_EQ(transcript("enceMap"),
              (Lines{"E GetChiFenceMap<LINE>: VDR::getChiFenceMap fail. hfence=(nil), "
                     "chiFrameNum=119, tagId=88, fenceSize=1!"}));
    recorder().SetChiFenceMap(nullptr, 4, 10);  // free again
    recorder().SetChiFenceMap(nullptr, 5, 11);
    EXPECT_EQ(takeFence(nullptr), "4/10");
    EXPECT_EQ(takeFence(&object), "2/8");
}

TEST_F(RegistriesTest, FirstFrameRegistrationWins_AndIsTakenOnce) {
    recorder().SetChiFrameMap(UINT32_MAX, 1);
    recorder().SetChiFrameMap(UINT32_MAX, 2);
    recorder().SetChiFrameMap(0, 3);
    EXPECT_EQ(takeFrame(UINT32_MAX), 1U);
    EXPECT_EQ(takeFrame(UINT32_MAX), 99U) << "the output stays";
    EXPECT_EQ(transcript("rameMap"),
              (Lines{"E GetChiFrameMap<LINE>: VDR::getChiFrameMap fail. chiFrameNum=4294967295, "
                     "mChiFrameMap.size=1!"}));
    recorder().SetChiFrameMap(UINT32_MAX, 4);
    recorder().SetChiFrameMap(UINT32_MAX, 5);
    EXPECT_EQ(takeFrame(UINT32_MAX), 4U);
    EXPECT_EQ(takeFrame(0), 3U);
}

TEST_F(RegistriesTest, EntriesAreTakenExactlyOnceUnderContention) {
    constexpr uint32_t kKeys = 2000;
    constexpr uint32_t kSetters = 3;
    host::stopLogCapture();  // each look-up that comes too early is logged
    recorder();
    std::vector<std::atomic<int>> fencesTaken(kKeys);
    std::vector<std::atomic<int>> framesTaken(kKeys);
    std::atomic<uint32_t> taken{0};
    std::vector<std::thread> threads;
    for (uint32_t setter = 0; setter < kSetters; ++setter) {
        threads.emplace_back([&, setter] {
            for (uint32_t key = setter; key < kKeys; key += kSetters) {
                void* fence = reinterpret_cast<void*>(uintptr_t{key});
                recorder().SetChiFenceMap(fence, key, static_cast<uint8_t>(key));
                recorder().SetChiFrameMap(key, key);
            }
        });
        threads.emplace_back([&] {
            for (uint32_t key = 0; taken < 2 * kKeys; key = (key + 1) % kKeys) {
                unsigned long frame = kKeys;
                uint8_t tag = 0;
                recorder().GetChiFenceMap(reinterpret_cast<void*>(uintptr_t{key}), frame, tag);
                uint32_t number = kKeys;
                recorder().GetChiFrameMap(key, number);
                fencesTaken[key] += frame == key && tag == static_cast<uint8_t>(key) ? 1 : 0;
                framesTaken[key] += number == key ? 1 : 0;
                taken += (frame == kKeys ? 0U : 1U) + (number == kKeys ? 0U : 1U);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (uint32_t key = 0; key < kKeys; ++key) {
        ASSERT_EQ(fencesTaken[key], 1) << key;
        ASSERT_EQ(framesTaken[key], 1) << key;
    }
    EXPECT_EQ(taken, 2 * kKeys);
}

TEST_F(RegistriesTest, EndOfSessionEmptiesAll) {
    mSleep.open();
    openSession();
    recorder().SetChiFenceMap(nullptr, 1, 2);
    recorder().SetChiFrameMap(1, 2);
    recorder().SetMemAllocTimeOutInfo({"slow", 6000, 0, 0});
    closeSession();
    EXPECT_EQ(takeFence(nullptr), "38654705783/88");
    EXPECT_EQ(takeFrame(1), 99U);
    EXPECT_EQ(takeSlow(), std::string(47, '\xEE'));
}

TEST_F(RegistriesTest, AllocationOfMoreThanFiveSeconds_IsKept) {
    struct Row {
        const char* name;
        ZkCamera::CameraMemoryItemInfo info;
        bool isKept;
        std::string itemName;
        uint32_t sizeKB;
        uint16_t seconds;
        uint8_t type;
    };
    const std::string digits = "0123456789012345678901234567890123456789";
    const Row rows[] = {
            {"five seconds", {"a", 5000, 1, 1}, false, "", 0, 0, 0},
            {"a little more", {"a", 5001, 1, 1023}, true, "a", 0, 5, 1},
            {"truncates", {"", 9999, 300, 3221225472}, true, "", 3145728, 9, 44},
            {"39 characters", {digits.substr(1), 6000, 0, 0}, true, digits.substr(1), 0, 6, 0},
            {"60 characters", {digits + digits, 6000, 0, 0}, true, digits.substr(0, 39), 0, 6, 0},
            {"NUL inside", {{"a\0b", 3}, 6000, 0, 0}, true, {"a\0b", 3}, 0, 6, 0},
            {"largest",
             {"z", UINT32_MAX, UINT32_MAX, UINT64_MAX},
             true,
             "z",
             UINT32_MAX,
             static_cast<uint16_t>(4294967),
             255},
    };
    const std::string untouched(47, '\xEE');
    recorder().SetMemAllocTimeOutInfo({"closed", 9000, 0, 0});
    EXPECT_EQ(takeSlow(), untouched);
    mSleep.open();
    openSession();
    for (const Row& row : rows) {
        recorder().SetMemAllocTimeOutInfo(row.info);
    }
    for (const Row& row : rows) {
        if (row.isKept) {
            std::string expected = row.itemName;
            expected.resize(40);
            expected.append(reinterpret_cast<const char*>(&row.sizeKB), 4);
            expected.append(reinterpret_cast<const char*>(&row.seconds), 2);
            expected += static_cast<char>(row.type);
            EXPECT_EQ(takeSlow(), expected) << row.name;
        }
    }
    EXPECT_EQ(takeSlow(), untouched);
    EXPECT_EQ(countLogged("emAllocTimeOutInfo"), 0U);
}

}  // namespace
}  // namespace zk::test
