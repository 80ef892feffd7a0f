#pragma once

#include "platform/OrnEvent.h"

namespace ZkCamera {

class FrameDropNotification : public Orn::IEventBase {
public:
    uint64_t mTimeStamp;
    uint64_t mFrameNumber;
};

}  // namespace ZkCamera
