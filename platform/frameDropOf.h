#pragma once

#include <cstdint>

namespace Orn {
class IEvent;
}

namespace zk::platform {

// The monitoring service's announcement that a frame was dropped (ZkCamera::FrameDropNotification).
inline constexpr uint32_t kFrameDropEventId = 0x4005;

// What `event` announces, where its id says that it is an announcement; false, with both untouched,
// for any other event. The time stamp counts microseconds since the epoch and identifies the loss.
// Ends the process where no shared reference holds the event. Any thread.
bool frameDropOf(Orn::IEvent& event, uint64_t& timeStamp, uint64_t& frameNumber);

}  // namespace zk::platform
