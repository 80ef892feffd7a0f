#pragma once

#include <cstdint>

#include "base/memberAt.h"
#include "records/VDRData1Layout.h"
#include "records/VDRData2Layout.h"

namespace zk {

// One slow allocation. Goes byte for byte into frame records and dump files, by the tag of the same
// name.
struct __attribute__((packed)) MemoryAllocTimeoutInfo {
    char itemName[40];      // NUL-terminated, unused bytes 0
    uint32_t allocSizeKB;   // KiB, truncated
    uint16_t allocTimeSec;  // whole seconds, truncated
    uint8_t itemType;       // low 8 bits of the allocation's type code
};

VDR_MEMBER_AT(MemoryAllocTimeoutInfo, itemName, 0, 40);
VDR_MEMBER_AT(MemoryAllocTimeoutInfo, allocSizeKB, 40, 4);
VDR_MEMBER_AT(MemoryAllocTimeoutInfo, allocTimeSec, 44, 2);
VDR_MEMBER_AT(MemoryAllocTimeoutInfo, itemType, 46, 1);
static_assert(sizeof(MemoryAllocTimeoutInfo) == 47);

#define VDR_SAME_MEMBER(member)                                                     \
    VDR_MEMBER_AS_IN(MemoryAllocTimeoutInfo, vdr1::MemoryAllocTimeoutInfo, member); \
    VDR_MEMBER_AS_IN(MemoryAllocTimeoutInfo, vdr2::MemoryAllocTimeoutInfo, member)
VDR_SAME_MEMBER(itemName);
VDR_SAME_MEMBER(allocSizeKB);
VDR_SAME_MEMBER(allocTimeSec);
VDR_SAME_MEMBER(itemType);
#undef VDR_SAME_MEMBER
static_assert(sizeof(MemoryAllocTimeoutInfo) == sizeof(vdr1::MemoryAllocTimeoutInfo) &&
              sizeof(MemoryAllocTimeoutInfo) == sizeof(vdr2::MemoryAllocTimeoutInfo));

}  // namespace zk
