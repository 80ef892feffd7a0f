#include "demo/CameraSession.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include "platform/host/ThreadPoolControl.h"
#include "records/FieldTags.h"

namespace demo {
namespace {

constexpr uint64_t kSessionStart = 3600000000000;  // an hour after boot
constexpr uint32_t kRecordsKept = 4;               // done, and not consumed yet

constexpr char kVideoBuffers[] = "video_output_buffers";
constexpr uint32_t kVideoAllocationMs = 180;
constexpr char kSpareBuffers[] = "noise_reduction_spare_buffers";
// Asked for long before: the node has run on the buffers that it had.
constexpr uint32_t kSlowAllocationMs = 5320;
constexpr uint64_t kBufferBytes = uint64_t{48} << 20;

}  // namespace

CameraSession::CameraSession(zk::IVideoDataRecoder& recorder, const Options& options,
                             const SessionPlan& plan)
      : mRecorder(recorder),
        mOptions(options),
        mPlan(plan),
        mPipeline(options, plan),
        mFactory(options, plan),
        mWriter(recorder),
        mStatus(recorder, options, plan),
        mLivePhoto(recorder, plan),
        mChi(recorder),
        mNow(kSessionStart) {}

void CameraSession::play() {
    open();
    playFrames();
    mLivePhoto.request();
    close();
}

void CameraSession::open() {
    mRecorder.initialize(1, SessionPlan::kSceneMode);
    bool isOpen = false;
    mRecorder.getVDRStatus(&isOpen);
    if (!isOpen) {
        throw std::runtime_error("the recorder stays closed; its log says why");
    }
    mStatus.awaitFirstReading();
}

void CameraSession::close() {
    // Played faster than life, the text file may still be under way: a drop whose file is written
    // while the recorder stops can stay without an answer.
    zk::host::waitForThreadPool();
    mRecorder.unInitialize();
    zk::host::waitForThreadPool();
    mDrops.awaitAnswers();
}

void CameraSession::playFrames() {
    uint32_t entered = 0;
    while (entered < mPlan.frames.count() || !mUnderWay.empty()) {
        if (mOptions.realtime) {
            std::this_thread::sleep_for(std::chrono::nanoseconds(kFrameTime));
        }
        completeUntilNow();
        if (!mUnderWay.empty()) {
            const FrameFields& oldest = mUnderWay.front().fields;
            mDrops.watch(oldest.number, mNow - oldest.csl.stamp);
        }
        if (entered < mPlan.frames.count()) {
            enter(mPlan.frames.first + entered++);
        }
        mNow += kFrameTime;
    }
    uint32_t left = 0;
    for (mRecorder.VDRDoneCount(0, &left); left > 0; --left) {
        consume();
    }
}

void CameraSession::enter(uint32_t frame) {
    bool isWanted = false;
    mRecorder.checkPreviewAndVideoStatus(frame, &isWanted);
    if (isWanted) {
        mRecorder.VDRProcessing(frame);  // without it, writes to the frame do nothing
    }
    const NodePipeline::Passage passage = mPipeline.pass(frame, mNow);
    mUnderWay.push_back({mFactory.make(frame, mNow, passage, mStatus.at(frame)), passage.leftAt});
    const FrameFields& fields = mUnderWay.back().fields;
    mWriter.writeHead(fields);
    markVideo(frame);
    if (mPlan.livePhoto.contains(frame)) {
        mLivePhoto.takeFrame(fields);
    }
    if (frame == mPlan.snapshot) {
        mRecorder.SnapshotCountAddOne();
    }
    mChi.submit(frame);
}

void CameraSession::markVideo(uint32_t frame) {
    if (frame == mPlan.video.first) {
        mChi.reportAllocation(kVideoBuffers, kVideoAllocationMs, kBufferBytes);
        bool started = false;
        mRecorder.markWritable(frame, started);
    }
    if (frame == mPlan.video.last) {
        mRecorder.markUnWritable(frame);
    }
}

void CameraSession::completeUntilNow() {
    while (!mUnderWay.empty() && mUnderWay.front().leavesAt <= mNow) {
        complete(mUnderWay.front().fields);
        mUnderWay.pop_front();
    }
}

// Comes for every frame that has entered, for one that a node gave up too: a record that is never
// done stays taken until the session ends.
void CameraSession::complete(const FrameFields& fields) {
    const uint32_t frame = fields.number;
    if (mOptions.cause == Cause::kSlowAllocation && frame == mPlan.troubled) {
        mChi.reportAllocation(kSpareBuffers, kSlowAllocationMs, kBufferBytes);
    }
    mChi.takeBack(frame);
    mWriter.writeResults(fields);
    writeSlowAllocation(frame);
    mRecorder.VDRDone(frame);
    uint32_t done = 0;
    mRecorder.VDRDoneCount(frame, &done);
    if (done > kRecordsKept) {
        consume();
    }
}

void CameraSession::writeSlowAllocation(uint32_t frame) {
    zk::MemoryAllocTimeoutInfo info{};  // stays as it is where none was slow
    mRecorder.GetMemAllocTimeOutInfo(info);
    if (info.itemName[0] != '\0') {
        mRecorder.writeMaintain(frame, zk::tag::memoryAllocTimeoutInfo, &info);
        mSlowAllocation = info;
    }
}

// A recording takes the records of its frames along with them.
void CameraSession::consume() {
    bool isVideo = false;
    void* record = nullptr;
    mRecorder.getMP4Writable(&isVideo);
    mRecorder.getVDRInfo(0, &record);  // 4096 bytes, to be used until VDRReport
    mVideoRecords += isVideo && record != nullptr ? 1 : 0;
    mRecorder.VDRReport(0);
}

}  // namespace demo
