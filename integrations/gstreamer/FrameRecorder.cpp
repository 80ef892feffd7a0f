#include "integrations/gstreamer/FrameRecorder.h"

#include <algorithm>
#include <cinttypes>
#include <iterator>
#include <utility>

#include "platform/host/ThreadPoolControl.h"
#include "records/FieldTags.h"
#include "records/VDRData1Layout.h"
#include "sysstatus/SysStatusCollection.h"

namespace vdrgst {

namespace tag = zk::tag;

namespace {

constexpr uint64_t kNanosecondsPerMillisecond = 1'000'000;
constexpr int32_t kSceneMode = 0;  // a preview as any other

// Both record levels have these fields in this layout.
vdr1::NodeInfo nodeInfoOf(const Passage& passage, uint32_t session) {
    return {{session, passage.node + 1, 0},
            {passage.queuedAt, passage.startedAt, passage.finishedAt, passage.handedOnAt}};
}

uint8_t milliseconds(uint64_t nanoseconds) {
    const uint64_t rounded =
            (nanoseconds + kNanosecondsPerMillisecond / 2) / kNanosecondsPerMillisecond;
    return static_cast<uint8_t>(std::min<uint64_t>(rounded, UINT8_MAX));
}

}  // namespace

FrameRecorder::FrameRecorder(zk::IVideoDataRecoder& recorder, const std::string& root)
      : mRecorder(recorder), mNodesFile(std::fopen((root + "/nodes.txt").c_str(), "w")) {
    if (mNodesFile != nullptr) {
        std::setvbuf(mNodesFile, nullptr, _IOLBF, BUFSIZ);
        std::fputs(
                "# pipeline, element, 0, name; in costs the element's number stands behind #\n"
                "clock nanoseconds\n",
                mNodesFile);
    }
}

FrameRecorder::~FrameRecorder() {
    if (mWorker.joinable()) {
        close();
    }
    if (mNodesFile != nullptr) {
        std::fclose(mNodesFile);
    }
}

bool FrameRecorder::open() {
    mRecorder.initialize(1, kSceneMode);
    bool isOpen = false;
    mRecorder.getVDRStatus(&isOpen);
    if (!isOpen) {
        return false;
    }
    const std::lock_guard guard(mMutex);
    ++mStatistics.sessions;
    mIsClosing = false;
    mWorker = std::thread([this] { work(); });
    return true;
}

void FrameRecorder::close() {
    {
        const std::lock_guard guard(mMutex);
        mIsClosing = true;
        mToDo.notify_one();
    }
    mWorker.join();
    mRecorder.unInitialize();
    // Whoever stops a pipeline may end the process next.
    zk::host::waitForThreadPool();
    mAnnouncer.awaitOutcomes();
    const std::lock_guard guard(mMutex);
    mStatistics.losses = mAnnouncer.outcomes();
}

FrameRecorder::Statistics FrameRecorder::statistics() const {
    const std::lock_guard guard(mMutex);
    return mStatistics;
}

void FrameRecorder::nodeAppeared(NodeIndex node, const std::string& givenName, bool isSink) {
    std::string name = givenName;
    // Each has one line in nodes.txt, and records are columns between commas.
    std::replace_if(
            name.begin(), name.end(),
            [](char letter) { return static_cast<unsigned char>(letter) < ' ' || letter == ','; },
            '_');
    const std::lock_guard guard(mMutex);
    NodeNames& names = mNodes.emplace_back(NodeNames{name, {}, isSink});
    const std::string number = '#' + std::to_string(node + 1);
    const std::string cost =
            name.size() < sizeof(names.cost)
                    ? name
                    : name.substr(0, sizeof(names.cost) - 1 -
                                             std::min(number.size(), sizeof(names.cost) - 1)) +
                              number;
    cost.copy(names.cost, sizeof(names.cost) - 1);
    if (mNodesFile != nullptr) {
        std::fprintf(mNodesFile, "%" PRIu32 " %" PRIu32 " 0 %s\n", mStatistics.sessions, node + 1,
                     name.c_str());
    }
}

void FrameRecorder::frameBorn(uint32_t number) {
    mRecorder.VDRProcessing(number);
}

void FrameRecorder::frameThrough(std::unique_ptr<FrameTrace> trace) {
    const std::lock_guard guard(mMutex);
    ++mStatistics.frames;
    mStatistics.lost += trace->losses.empty() ? 0 : 1;
    if (mThrough.size() >= kMostWaiting) {
        ++mStatistics.bare;
        mRecorder.VDRDone(trace->number);
        mSpare.push_back(std::move(trace));
        return;
    }
    mThrough.push_back(std::move(trace));
    mToDo.notify_one();
}

std::unique_ptr<FrameTrace> FrameRecorder::spareTrace() {
    const std::lock_guard guard(mMutex);
    if (mSpare.empty()) {
        return std::make_unique<FrameTrace>();
    }
    std::unique_ptr<FrameTrace> trace = std::move(mSpare.back());
    mSpare.pop_back();
    trace->reset();
    return trace;
}

void FrameRecorder::work() {
    std::unique_lock lock(mMutex);
    while (true) {
        mToDo.wait(lock, [this] { return mIsClosing || !mThrough.empty(); });
        if (mThrough.empty()) {
            return;
        }
        std::unique_ptr<FrameTrace> trace = std::move(mThrough.front());
        mThrough.pop_front();
        lock.unlock();
        record(*trace);
        lock.lock();
        mSpare.push_back(std::move(trace));
    }
}

void FrameRecorder::record(const FrameTrace& trace) {
    // With more frames under way than the recorder has blocks, it had none when this one was born.
    mRecorder.VDRProcessing(trace.number);
    writeHead(trace);
    writePassages(trace);
    writeLosses(trace);
    if (!trace.losses.empty()) {
        mAnnouncer.lost(trace.number);
    }
    mRecorder.VDRDone(trace.number);
    reportDone();
}

void FrameRecorder::writeHead(const FrameTrace& trace) {
    const auto time = static_cast<uint64_t>(std::max<int64_t>(trace.presentation, 0));
    const vdr1::CslInfo csl = {static_cast<uint32_t>(time / kNanosecondsPerMillisecond),
                               trace.bornAt};
    zk::SysStatusCollection status;
    mRecorder.GetSystemStatus(status);
    static constexpr uint32_t kTags[] = {tag::frameNumber, tag::cslInfo, tag::sysStatusInfo};
    const void* const datas[] = {&trace.number, &csl, &status};
    mRecorder.writeMaintains(trace.number, kTags, datas, std::size(kTags));
}

void FrameRecorder::writePassages(const FrameTrace& trace) {
    for (const Passage& passage : trace.passages) {
        const vdr1::NodeInfo node = nodeInfoOf(passage, mStatistics.sessions);
        mRecorder.writeMaintain(trace.number, tag::nodeInfo, &node);
    }
    const std::lock_guard guard(mMutex);
    for (const Passage& passage : trace.passages) {
        const NodeNames& names = mNodes[passage.node];
        // Sinks mostly wait for their clock, which is no work.
        if (!passage.hasWorkTime || names.isSink) {
            continue;
        }
        vdr1::AlgoCostTime cost = {};
        std::copy(std::begin(names.cost), std::end(names.cost), cost.name);
        cost.cost = milliseconds(passage.workTime);
        mRecorder.writeMaintain(trace.number, tag::pluginAlgoCostTime, &cost);
    }
}

void FrameRecorder::writeLosses(const FrameTrace& trace) {
    for (const Loss& loss : trace.losses) {
        const vdr1::FeatureInfo message = {loss.node + 1, static_cast<uint8_t>(loss.kind),
                                           loss.foundAt};
        mRecorder.writeMaintain(trace.number, tag::featureMessageTypeInfo, &message);
    }
}

void FrameRecorder::reportDone() {
    uint32_t done = 0;
    mRecorder.VDRDoneCount(0, &done);
    while (done-- > 0) {
        mRecorder.VDRReport(0);
    }
}

}  // namespace vdrgst
