#include "recorder/FrameBlockMap.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace zk::test {
namespace {

constexpr uint32_t kFrames = 64;

// Numbers whose places lie close together around the table's end, so that entries move a lot.
uint32_t numberOf(uint32_t frame) {
    constexpr uint32_t kInverseGoldenRatio = 340573321;
    const uint32_t place = (250 + frame % 8) & 0xFF;
    return (place << 24 | frame) * kInverseGoldenRatio;
}

// How often a frame's entry was changed: odd while it is there. Its block is then a number that
// tells frame and change.
struct History {
    std::atomic<uint64_t> begun{0};
    std::atomic<uint64_t> ended{0};
};

void* blockOf(uint32_t frame, uint64_t change) {
    return reinterpret_cast<void*>((change * kFrames + frame) * 16 + 16);
}

// Whether the frame was like this at some time between these two numbers of changes.
bool wasSo(uint32_t frame, const void* block, uint64_t from, uint64_t to) {
    for (uint64_t change = from; change <= to; ++change) {
        if (block == (change % 2 == 1 ? blockOf(frame, change) : nullptr)) {
            return true;
        }
    }
    return false;
}

TEST(FrameBlockMapTest, LookWithoutALock_FindsWhatWasThereBeforeOrAfterAChange) {
    constexpr uint32_t kChanges = 200000;
    const auto map = std::make_unique<FrameBlockMap>();
    std::vector<History> histories(kFrames);
    std::atomic<bool> isChanging{true};
    std::atomic<uint64_t> clear{0};  // looks
    std::atomic<uint64_t> shown{0};  // glances
    std::vector<std::thread> lookers;
    for (unsigned seed = 1; seed <= 3; ++seed) {
        lookers.emplace_back([&, random = std::minstd_rand(seed)]() mutable {
            while (isChanging) {
                const auto frame = static_cast<uint32_t>(random()) % kFrames;
                const uint64_t from = histories[frame].ended;
                const FrameBlockMap::Sight sight = map->look(numberOf(frame));
                const uint64_t to = histories[frame].begun;
                void* const glanced = map->glance(numberOf(frame));
                const uint64_t toGlance = histories[frame].begun;
                if (glanced != nullptr) {
                    ++shown;
                    ASSERT_TRUE(wasSo(frame, glanced, from, toGlance)) << "frame " << frame;
                }
                if (sight.isClear) {
                    ++clear;
                    ASSERT_TRUE(wasSo(frame, sight.block, from, to)) << "frame " << frame;
                }
            }
        });
    }
    std::minstd_rand random(4);
    for (uint32_t i = 0; i < kChanges || clear == 0 || shown == 0; ++i) {
        const auto frame = static_cast<uint32_t>(random()) % kFrames;
        const uint64_t change = ++histories[frame].begun;
        if (change % 2 == 1) {
            map->insert(numberOf(frame), blockOf(frame, change));
        } else {
            map->erase(numberOf(frame));
        }
        ASSERT_EQ(map->find(numberOf(frame)), change % 2 == 1 ? blockOf(frame, change) : nullptr);
        histories[frame].ended = change;
    }
    isChanging = false;
    for (std::thread& looker : lookers) {
        looker.join();
    }
}

}  // namespace
}  // namespace zk::test
