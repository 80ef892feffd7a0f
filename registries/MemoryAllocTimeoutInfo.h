#pragma once

#include <cstddef>
#include <cstdint>

namespace zk {

// One slow allocation. Goes byte for byte into frame records and dump files (tag 38).
struct __attribute__((packed)) MemoryAllocTimeoutInfo {
    char itemName[40];      // NUL-terminated, unused bytes 0
    uint32_t allocSizeKB;   // KiB, truncated
    uint16_t allocTimeSec;  // whole seconds, truncated
    uint8_t itemType;       // low 8 bits of the allocation's type code
};

static_assert(offsetof(MemoryAllocTimeoutInfo, itemName) == 0);
static_assert(offsetof(MemoryAllocTimeoutInfo, allocSizeKB) == 40);
static_assert(offsetof(MemoryAllocTimeoutInfo, allocTimeSec) == 44);
static_assert(offsetof(MemoryAllocTimeoutInfo, itemType) == 46);
static_assert(sizeof(MemoryAllocTimeoutInfo) == 47);

}  // namespace zk
