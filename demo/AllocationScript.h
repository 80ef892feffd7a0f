#pragma once

#include <cstdint>
#include <optional>

#include "demo/SessionPlan.h"
#include "platform/CameraMemoryItemInfo.h"
#include "records/VDRData1.h"

namespace demo {

// The allocations that the camera stack's memory manager reports during a session. Any thread.
class AllocationScript {
public:
    explicit AllocationScript(const SessionPlan& plan) : mFirstFrame(plan.frames.first) {}

    // What is reported at this frame: one too slow, or one just fast enough, every hundred frames.
    std::optional<ZkCamera::CameraMemoryItemInfo> offered(uint32_t frame) const;
    // What the recorder must make of it; nothing where it has to forget it.
    std::optional<vdr1::MemoryAllocTimeoutInfo> kept(uint32_t frame) const;

private:
    const uint32_t mFirstFrame;
};

}  // namespace demo
