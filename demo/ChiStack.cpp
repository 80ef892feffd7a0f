#include "demo/ChiStack.h"

#include "platform/CameraMemoryItemInfo.h"

namespace demo {
namespace {

constexpr uint32_t kAhead = 7;  // frames by which the stack's numbers are ahead
constexpr uint8_t kPreviewFence = 1;
constexpr uint32_t kImageBuffer = 3;

}  // namespace

void ChiStack::submit(uint32_t frame) {
    mRecorder.SetChiFenceMap(fenceOf(frame), frame + kAhead, kPreviewFence);
    mRecorder.SetChiFrameMap(frame + kAhead, frame);
    ++mParked;
}

void ChiStack::takeBack(uint32_t frame) {
    unsigned long chiFrame = 0;
    uint8_t fenceTag = 0;
    mRecorder.GetChiFenceMap(fenceOf(frame), chiFrame, fenceTag);
    uint32_t pipelineFrame = 0;  // stays as it is where nothing was parked
    mRecorder.GetChiFrameMap(static_cast<uint32_t>(chiFrame), pipelineFrame);
    mTakenBack += pipelineFrame == frame ? 1 : 0;
}

void ChiStack::reportAllocation(const char* item, uint32_t milliseconds, uint64_t bytes) {
    ZkCamera::CameraMemoryItemInfo info;
    info.itemName = item;
    info.allocTimeMs = milliseconds;
    info.itemType = kImageBuffer;
    info.allocSize = bytes;
    mRecorder.SetMemAllocTimeOutInfo(info);
}

}  // namespace demo
