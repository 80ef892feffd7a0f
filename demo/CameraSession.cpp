#include "demo/CameraSession.h"

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <thread>

#include "demo/ProgressBar.h"
#include "platform/host/ThreadPoolControl.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"

namespace demo {
namespace {

constexpr uint64_t kFillDelay = 2;  // ticks after the frame has entered
constexpr uint64_t kCompleteDelay = 4;
constexpr uint64_t kReportDelay = 8;
constexpr std::chrono::nanoseconds kTick(33333333);  // 30 frames a second

}  // namespace

CameraSession::CameraSession(zk::IVideoDataRecoder& recorder, const Options& options,
                             const SessionPlan& plan, const FrameFactory& factory,
                             StatusTrack& track, Findings& findings)
      : mRecorder(recorder),
        mPlan(plan),
        mFactory(factory),
        mTrack(track),
        mFindings(findings),
        mRealtime(options.realtime),
        mChi(recorder, plan),
        mLivePhoto(recorder, plan, factory),
        mSampler(recorder) {}

void CameraSession::play() {
    if (open()) {
        playFrames();
        mLivePhoto.request(mFindings);
        readStatus();
    }
    close();
}

bool CameraSession::open() {
    mRecorder.initialize(1, SessionPlan::kSceneMode);
    bool isOpen = false;
    mRecorder.getVDRStatus(&isOpen);
    // Frames carry the sampler's readings, so there must be one before the first.
    return mFindings.expect(isOpen, "the recorder stays closed") &&
           mFindings.expect(mSampler.awaitReading(SamplerWatch::Meanwhile::kIdle),
                            "no status reading came within three seconds");
}

void CameraSession::playFrames() {
    const uint32_t count = mPlan.frames.count();
    ProgressBar progress(count);
    auto nextTick = std::chrono::steady_clock::now();
    for (uint64_t tick = 0; tick < count + kReportDelay; ++tick) {
        if (mRealtime) {
            std::this_thread::sleep_until(nextTick);
            nextTick += kTick;
        }
        playTick(tick);
        progress.show(static_cast<uint32_t>(std::min<uint64_t>(tick + 1, count)));
    }
}

std::optional<uint32_t> CameraSession::frameAt(uint64_t tick, uint64_t delay) const {
    if (tick < delay || tick - delay >= mPlan.frames.count()) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(mPlan.frames.first + (tick - delay));
}

void CameraSession::playTick(uint64_t tick) {
    if (const auto frame = frameAt(tick, 0)) {
        enter(*frame);
    }
    if (const auto frame = frameAt(tick, kFillDelay)) {
        fill(*frame);
    }
    if (const auto frame = frameAt(tick, kCompleteDelay)) {
        complete(*frame);
    }
    if (const auto frame = frameAt(tick, kReportDelay)) {
        report(*frame);
    }
}

void CameraSession::enter(uint32_t frame) {
    bool isWanted = false;
    mRecorder.checkPreviewAndVideoStatus(frame, &isWanted);
    mFindings.expect(isWanted, "frame %" PRIu32 " is not to be recorded", frame);
    mRecorder.VDRProcessing(frame);
    noteStatus(frame);
    writeHead(frame);
    markVideo(frame);
    if (mPlan.livePhoto.contains(frame)) {
        mLivePhoto.takeFrame(frame);
    }
    mChi.submit(frame);
    writeSlowAllocation(frame);
    if (mPlan.isSnapshot(frame)) {
        mRecorder.SnapshotCountAddOne();
    }
    if (mPlan.isDrop(frame)) {
        mDrops.announce(frame);
    }
}

void CameraSession::noteStatus(uint32_t frame) {
    zk::SysStatusCollection snapshot{};
    mRecorder.GetSystemStatus(snapshot);
    StatusTrack::Bytes status{};
    std::memcpy(status.data(), &snapshot, status.size());
    mTrack.note(frame, status);
}

void CameraSession::writeHead(uint32_t frame) {
    vdr1::VDRData1 record = mFactory.record(frame);
    record.videoAction = 0;  // the recorder's own marks follow
    FieldWrites writes(record);
    writes.add(tag::frameNumber, tag::videoAction);
    writeTogether(frame, writes);
}

void CameraSession::markVideo(uint32_t frame) {
    if (frame == mPlan.video.first) {
        bool started = false;
        mRecorder.markWritable(frame, started);
        mFindings.expect(started, "the video recording does not start");
    }
    if (frame == mPlan.video.last) {
        mRecorder.markUnWritable(frame);
    }
}

void CameraSession::writeSlowAllocation(uint32_t frame) {
    zk::MemoryAllocTimeoutInfo info{};
    mRecorder.GetMemAllocTimeOutInfo(info);
    if (info.itemName[0] != '\0') {
        mRecorder.writeMaintain(frame, tag::memoryAllocTimeoutInfo, &info);
    }
}

void CameraSession::fill(uint32_t frame) {
    const vdr1::VDRData1 record = mFactory.record(frame);
    FieldWrites writes(record);
    writes.add(tag::featureRequestStateInfoCount, tag::nodeInfo);
    for (size_t i = 0; i < writes.tags().size(); ++i) {
        mRecorder.writeMaintain(frame, writes.tags()[i], writes.datas()[i]);
    }
}

void CameraSession::complete(uint32_t frame) {
    mChi.takeBack(frame);
    const vdr1::VDRData1 record = mFactory.record(frame);
    FieldWrites writes(record);
    writes.add(tag::setGmeNcsDep, tag::awbInfo_qawb_cap_sa);
    writeTogether(frame, writes);
    mRecorder.VDRDone(frame);
    mDrops.frameDone(frame);
}

void CameraSession::report(uint32_t frame) {
    mRecorder.VDRReport(frame);
}

void CameraSession::writeTogether(uint32_t frame, const FieldWrites& writes) {
    mRecorder.writeMaintains(frame, writes.tags().data(), writes.datas().data(),
                             static_cast<uint32_t>(writes.tags().size()));
}

void CameraSession::readStatus() {
    std::printf(
            "Frames are through. Waiting for the status sampler's next two readings, one\n"
            "second apart, and keeping one processor busy between them ...\n\n");
    std::fflush(stdout);
    mFindings.expect(mSampler.awaitBusyPeriod(), "the status sampler has stopped reading");
    mFindings.expect(mSampler.snapshot().snapshotCount == mPlan.snapshots(),
                     "%u snapshots were counted instead of %u", mSampler.snapshot().snapshotCount,
                     mPlan.snapshots());
    const uint32_t count = mPlan.frames.count();
    mFindings.expect(mChi.fencesTaken() == count && mChi.framesTaken() == count,
                     "%" PRIu32 " fences and %" PRIu32 " frame numbers came back, not %" PRIu32,
                     mChi.fencesTaken(), mChi.framesTaken(), count);
}

void CameraSession::close() {
    mRecorder.unInitialize();
    mDrops.recorderStopped();
    zk::host::waitForThreadPool();
    mDrops.awaitAnswers(mFindings);
}

}  // namespace demo
