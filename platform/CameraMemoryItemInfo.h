#pragma once

#include <cstdint>
#include <string>

namespace ZkCamera {

// One allocation as the camera stack's memory manager describes it.
struct CameraMemoryItemInfo {
    std::string itemName;
    uint32_t allocTimeMs = 0;  // how long the allocation took, milliseconds
    uint32_t itemType = 0;
    uint64_t allocSize = 0;  // bytes
};

}  // namespace ZkCamera
