#include "demo/AllocationScript.h"

#include <algorithm>
#include <string>

namespace demo {
namespace {

constexpr uint32_t kInterval = 100;             // frames
constexpr uint32_t kFastOffset = 50;            // frames after the slow one
constexpr uint32_t kLongestForgottenMs = 5000;  // what took longer is kept

}  // namespace

std::optional<ZkCamera::CameraMemoryItemInfo> AllocationScript::offered(uint32_t frame) const {
    const uint32_t phase = (frame - mFirstFrame) % kInterval;
    if (phase != 0 && phase != kFastOffset) {
        return std::nullopt;
    }
    ZkCamera::CameraMemoryItemInfo info;
    // Longer than the 39 characters that a record has room for.
    info.itemName = "frame_" + std::to_string(frame) + "_preview_output_buffer_pool_of_camera_0";
    info.allocTimeMs = phase == 0 ? kLongestForgottenMs + 1 + frame % 7000 : kLongestForgottenMs;
    info.itemType = 0x100 + frame % 16;
    info.allocSize = (uint64_t{8} << 20) + uint64_t{frame % 4096} * 1536;
    return info;
}

std::optional<vdr1::MemoryAllocTimeoutInfo> AllocationScript::kept(uint32_t frame) const {
    const std::optional<ZkCamera::CameraMemoryItemInfo> info = offered(frame);
    if (!info || info->allocTimeMs <= kLongestForgottenMs) {
        return std::nullopt;
    }
    vdr1::MemoryAllocTimeoutInfo expected{};
    const size_t length = std::min(info->itemName.size(), sizeof(expected.itemName) - 1);
    std::copy_n(info->itemName.begin(), length, expected.itemName);
    expected.allocSizeKB = static_cast<uint32_t>(info->allocSize / 1024);
    expected.allocTimeSec = static_cast<uint16_t>(info->allocTimeMs / 1000);
    expected.itemType = static_cast<uint8_t>(info->itemType);
    return expected;
}

}  // namespace demo
