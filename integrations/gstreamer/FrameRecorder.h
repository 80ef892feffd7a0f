#pragma once

#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "integrations/gstreamer/FrameReceiver.h"
#include "integrations/gstreamer/LossAnnouncer.h"
#include "recorder/IVideoDataRecoder.h"

namespace vdrgst {

// Takes frames into the recorder: a record when a frame is born, everything else on a thread of its
// own, so that no streaming thread waits for a disk or for the monitoring service.
//
// Threads: open and close one at a time; in between, what FrameReceiver says. Up to kMostWaiting
// frames wait for the disk; one more gets a record with nothing in it.
class FrameRecorder final : public FrameReceiver {
public:
    static constexpr size_t kMostWaiting = 1024;

    struct Statistics {
        uint32_t sessions = 0;
        uint64_t frames = 0;
        uint64_t lost = 0;
        uint64_t bare = 0;  // that found no room in the queue
        LossAnnouncer::Outcomes losses;
    };

    // `root`: the folder for nodes.txt. `recorder` must outlive this.
    FrameRecorder(zk::IVideoDataRecoder& recorder, const std::string& root);
    ~FrameRecorder();
    FrameRecorder(const FrameRecorder&) = delete;
    FrameRecorder& operator=(const FrameRecorder&) = delete;

    // False where the recorder stays closed; its log says why.
    bool open();
    // Every frame has been told. Returns when all is written, and the losses' promises are kept or
    // two seconds have passed.
    void close();

    // Final after close.
    Statistics statistics() const;

    void nodeAppeared(NodeIndex node, const std::string& name, bool isSink) override;
    void frameBorn(uint32_t number) override;
    void frameThrough(std::unique_ptr<FrameTrace> trace) override;
    std::unique_ptr<FrameTrace> spareTrace() override;

private:
    struct NodeNames {
        std::string name;
        char cost[6];  // as a record holds it
        bool isSink;
    };

    void work();
    void record(const FrameTrace& trace);
    void writeHead(const FrameTrace& trace);
    void writePassages(const FrameTrace& trace);
    void writeLosses(const FrameTrace& trace);
    void reportDone();

    zk::IVideoDataRecoder& mRecorder;
    std::FILE* const mNodesFile;
    std::thread mWorker;

    mutable std::mutex mMutex;  // guards all below
    std::condition_variable mToDo;
    bool mIsClosing = false;
    std::deque<std::unique_ptr<FrameTrace>> mThrough;
    std::vector<std::unique_ptr<FrameTrace>> mSpare;
    std::deque<NodeNames> mNodes;  // never shrinks, so that references stay good
    Statistics mStatistics;

    LossAnnouncer mAnnouncer;  // of the worker, and of close() once that has ended
};

}  // namespace vdrgst
