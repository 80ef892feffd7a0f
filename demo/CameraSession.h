#pragma once

#include <cstdint>
#include <optional>

#include "demo/ChiThread.h"
#include "demo/DropAnnouncer.h"
#include "demo/FieldWrites.h"
#include "demo/Findings.h"
#include "demo/FrameFactory.h"
#include "demo/LivePhotoShot.h"
#include "demo/SamplerWatch.h"
#include "demo/SessionPlan.h"
#include "demo/StatusTrack.h"
#include "recorder/IVideoDataRecoder.h"

namespace demo {

// One camera session as the pipeline plays it. Several frames are under way at once, each a few
// ticks behind the one before it:
//
//   tick   0: enter        2: fill     4: complete       8: report
//          head, fences,   lists       stamps, exposure, consumed by
//          marks                       done              the recorder
//
// One thread.
class CameraSession {
public:
    // All must outlive this. What goes wrong is taken down in `findings`.
    CameraSession(zk::IVideoDataRecoder& recorder, const Options& options, const SessionPlan& plan,
                  const FrameFactory& factory, StatusTrack& track, Findings& findings);

    void play();

    const ChiThread& chi() const { return mChi; }
    const DropAnnouncer& drops() const { return mDrops; }
    const LivePhotoShot& livePhoto() const { return mLivePhoto; }
    const SamplerWatch& sampler() const { return mSampler; }

private:
    bool open();
    void playFrames();
    void readStatus();
    void close();

    std::optional<uint32_t> frameAt(uint64_t tick, uint64_t delay) const;
    void playTick(uint64_t tick);
    void enter(uint32_t frame);
    void fill(uint32_t frame);
    void complete(uint32_t frame);
    void report(uint32_t frame);

    void noteStatus(uint32_t frame);
    void writeHead(uint32_t frame);
    void markVideo(uint32_t frame);
    void writeSlowAllocation(uint32_t frame);
    void writeTogether(uint32_t frame, const FieldWrites& writes);

    zk::IVideoDataRecoder& mRecorder;
    const SessionPlan& mPlan;
    const FrameFactory& mFactory;
    StatusTrack& mTrack;
    Findings& mFindings;
    const bool mRealtime;
    ChiThread mChi;
    DropAnnouncer mDrops;
    LivePhotoShot mLivePhoto;
    SamplerWatch mSampler;
};

}  // namespace demo
