#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

#include "demo/AllocationScript.h"
#include "recorder/IVideoDataRecoder.h"

namespace demo {

// The camera stack below the pipeline, on a thread of its own: for every frame it parks a fence
// and a frame number with the recorder, which the pipeline's thread takes back later, and reports
// the allocations of its memory manager. All public operations are for the pipeline's thread.
class ChiThread {
public:
    // `recorder` must outlive this.
    ChiThread(zk::IVideoDataRecoder& recorder, const SessionPlan& plan);
    ~ChiThread();
    ChiThread(const ChiThread&) = delete;
    ChiThread& operator=(const ChiThread&) = delete;

    // Returns once the stack has done its part for the frame, so that every session runs alike.
    void submit(uint32_t frame);
    // Counts what comes back as it was parked. At most 64 frames after its submission.
    void takeBack(uint32_t frame);

    uint32_t framesParked() const { return mParked; }
    uint32_t fencesTaken() const { return mFencesTaken; }
    uint32_t framesTaken() const { return mFramesTaken; }

private:
    struct Fence {
        uint32_t frame;
    };

    void run();
    void park(uint32_t frame);
    Fence& fenceOf(uint32_t frame) { return mFences[frame % mFences.size()]; }

    zk::IVideoDataRecoder& mRecorder;
    const AllocationScript mAllocations;
    std::array<Fence, 64> mFences{};  // reused: only their addresses matter
    uint32_t mParked = 0;
    uint32_t mFencesTaken = 0;
    uint32_t mFramesTaken = 0;

    std::mutex mMutex;
    std::condition_variable mChanged;
    std::optional<uint32_t> mSubmitted;  // taken off once it is done
    bool mQuit = false;

    std::thread mThread;  // last: it uses what stands above
};

}  // namespace demo
