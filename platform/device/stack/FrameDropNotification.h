#pragma once

#include "platform/OrnEvent.h"

// In the place of the camera stack's own header: what platform/device/ takes for granted of it.
namespace ZkCamera {

class FrameDropNotification : public Orn::IEventBase {
public:
    uint64_t mTimeStamp;
    uint64_t mFrameNumber;
};

}  // namespace ZkCamera
