#pragma once

#include <cstdint>
#include <memory>

#include "base/memberAt.h"
#include "platform/OrnEvent.h"

namespace ZkCamera {

// The monitoring service's announcement that a frame was dropped.
class FrameDropNotification : public Orn::IEventBase {
public:
    static constexpr uint32_t kEventId = 0x4005;

    FrameDropNotification(uint64_t timeStamp, uint64_t frameNumber)
          : mTimeStamp(timeStamp), mFrameNumber(frameNumber) {}
    uint32_t GetEventId() const override { return kEventId; }

    // A reference to the event as what its id says it is; null for any other id. Ends the process
    // where no shared reference holds the event.
    static std::shared_ptr<FrameDropNotification> from(Orn::IEvent& event) {
        if (event.GetEventId() != kEventId) {
            return nullptr;
        }
        return std::static_pointer_cast<FrameDropNotification>(
                static_cast<Orn::IEventBase&>(event).shared_from_this());
    }

    uint64_t mTimeStamp;    // of the drop, microseconds since the epoch; identifies the loss
    uint64_t mFrameNumber;  // of the dropped frame
};
VDR_CLASS_MEMBER_AT(FrameDropNotification, mTimeStamp, 64, 8);
VDR_CLASS_MEMBER_AT(FrameDropNotification, mFrameNumber, 72, 8);
static_assert(sizeof(FrameDropNotification) == 80);

}  // namespace ZkCamera
