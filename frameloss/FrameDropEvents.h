#pragma once

#include <cstdint>

#include "base/memberAt.h"
#include "platform/OrnEvent.h"

// What the recorder reports to the monitoring service, so that it can relate the frame drops that
// it observes to previews and recordings. Time stamps: microseconds since the epoch.
namespace ZkCamera {

class FrameDropVideoEnd : public Orn::IEventBase {
public:
    static constexpr uint32_t kEventId = 0x4002;

    uint32_t GetEventId() const override { return kEventId; }
};
static_assert(sizeof(FrameDropVideoEnd) == 64);

class FrameDropPreviewStart : public Orn::IEventBase {
public:
    static constexpr uint32_t kEventId = 0x4003;

    FrameDropPreviewStart(uint64_t timeStamp, int32_t sceneMode)
          : mTimeStamp(timeStamp), mSceneMode(sceneMode) {}
    uint32_t GetEventId() const override { return kEventId; }

    uint64_t mTimeStamp;
    int32_t mSceneMode;
};
VDR_CLASS_MEMBER_AT(FrameDropPreviewStart, mTimeStamp, 64, 8);
VDR_CLASS_MEMBER_AT(FrameDropPreviewStart, mSceneMode, 72, 4);
static_assert(sizeof(FrameDropPreviewStart) == 80);

class FrameDropPreviewEnd : public Orn::IEventBase {
public:
    static constexpr uint32_t kEventId = 0x4004;

    explicit FrameDropPreviewEnd(uint64_t timeStamp) : mTimeStamp(timeStamp) {}
    uint32_t GetEventId() const override { return kEventId; }

    uint64_t mTimeStamp;  // of the preview's start, so that the service can pair the two
};
VDR_CLASS_MEMBER_AT(FrameDropPreviewEnd, mTimeStamp, 64, 8);
static_assert(sizeof(FrameDropPreviewEnd) == 72);

}  // namespace ZkCamera
