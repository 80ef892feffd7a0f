#include "platform/frameDropOf.h"

#include <FrameDropNotification.h>

#include <memory>

// To be adapted: the header's name, and how the notification is read, where its two numbers are no
// members that can be seen.

namespace zk::platform {

bool frameDropOf(Orn::IEvent& event, uint64_t& timeStamp, uint64_t& frameNumber) {
    if (event.GetEventId() != kFrameDropEventId) {
        return false;
    }
    const auto notification = std::static_pointer_cast<ZkCamera::FrameDropNotification>(
            static_cast<Orn::IEventBase&>(event).shared_from_this());
    timeStamp = notification->mTimeStamp;
    frameNumber = notification->mFrameNumber;
    return true;
}

}  // namespace zk::platform
