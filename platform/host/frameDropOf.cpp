#include "platform/frameDropOf.h"

#include <memory>

#include "platform/host/FrameDropNotification.h"

bool zk::platform::frameDropOf(Orn::IEvent& event, uint64_t& timeStamp, uint64_t& frameNumber) {
    if (event.GetEventId() != kFrameDropEventId) {
        return false;
    }
    const auto notification = std::static_pointer_cast<ZkCamera::FrameDropNotification>(
            static_cast<Orn::IEventBase&>(event).shared_from_this());
    timeStamp = notification->mTimeStamp;
    frameNumber = notification->mFrameNumber;
    return true;
}
