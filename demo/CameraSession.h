#pragma once

#include <cstdint>
#include <deque>
#include <optional>

#include "demo/ChiStack.h"
#include "demo/DeviceStatus.h"
#include "demo/DropMonitor.h"
#include "demo/FrameFactory.h"
#include "demo/FrameWriter.h"
#include "demo/LivePhotoShot.h"
#include "demo/NodePipeline.h"
#include "demo/Options.h"
#include "demo/SessionPlan.h"
#include "recorder/IVideoDataRecoder.h"
#include "registries/MemoryAllocTimeoutInfo.h"

namespace demo {

// One camera session as the pipeline plays it. A frame enters with every frame time; several are
// under way at once, more behind one that is held up:
//
//   enter ─────> VDRProcessing, the head of the record, fences, marks
//   complete ──> once it has left the last node: node stamps, costs, images; VDRDone
//   consume ───> some frames later, by whoever uses the records; VDRReport
//
// The pipeline keeps a clock of its own, so that stamps are those of 30 frames a second however
// fast the session is played. One thread.
class CameraSession {
public:
    // All must outlive this.
    CameraSession(zk::IVideoDataRecoder& recorder, const Options& options, const SessionPlan& plan);

    // Throws when the recorder stays closed.
    void play();

    const DropMonitor& drops() const { return mDrops; }
    const LivePhotoShot& livePhoto() const { return mLivePhoto; }
    const ChiStack& chi() const { return mChi; }
    uint32_t videoRecords() const { return mVideoRecords; }
    // As it was written into the record of the frame that the cause hit.
    const std::optional<zk::MemoryAllocTimeoutInfo>& slowAllocation() const {
        return mSlowAllocation;
    }

private:
    struct FrameUnderWay {
        FrameFields fields;
        uint64_t leavesAt;
    };

    void open();
    void close();
    void playFrames();
    void enter(uint32_t frame);
    void markVideo(uint32_t frame);
    void completeUntilNow();
    void complete(const FrameFields& fields);
    void writeSlowAllocation(uint32_t frame);
    void consume();

    zk::IVideoDataRecoder& mRecorder;
    const Options& mOptions;
    const SessionPlan& mPlan;
    NodePipeline mPipeline;
    FrameFactory mFactory;
    const FrameWriter mWriter;
    DeviceStatus mStatus;
    DropMonitor mDrops;
    LivePhotoShot mLivePhoto;
    ChiStack mChi;

    uint64_t mNow;  // the pipeline's clock, nanoseconds since boot
    std::deque<FrameUnderWay> mUnderWay;
    uint32_t mVideoRecords = 0;
    std::optional<zk::MemoryAllocTimeoutInfo> mSlowAllocation;
};

}  // namespace demo
