#pragma once

#include <cstdint>

#include "base/memberAt.h"
#include "platform/OrnEvent.h"
#include "platform/frameDropOf.h"

namespace ZkCamera {

// The monitoring service's announcement that a frame was dropped.
class FrameDropNotification : public Orn::IEventBase {
public:
    FrameDropNotification(uint64_t timeStamp, uint64_t frameNumber)
          : mTimeStamp(timeStamp), mFrameNumber(frameNumber) {}
    uint32_t GetEventId() const override { return zk::platform::kFrameDropEventId; }

    uint64_t mTimeStamp;    // of the drop, microseconds since the epoch; identifies the loss
    uint64_t mFrameNumber;  // of the dropped frame
};
VDR_CLASS_MEMBER_AT(FrameDropNotification, mTimeStamp, 64, 8);
VDR_CLASS_MEMBER_AT(FrameDropNotification, mFrameNumber, 72, 8);
static_assert(sizeof(FrameDropNotification) == 80);

}  // namespace ZkCamera
