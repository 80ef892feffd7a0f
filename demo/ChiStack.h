#pragma once

#include <array>
#include <cstdint>

#include "recorder/IVideoDataRecoder.h"

namespace demo {

// The camera stack below the pipeline. It numbers frames in its own way, and parks with the
// recorder what belongs to a fence or a number, for the pipeline to take back later. On a device
// this is another thread: the recorder's operations may be called from any.
class ChiStack {
public:
    // `recorder` must outlive this.
    explicit ChiStack(zk::IVideoDataRecoder& recorder) : mRecorder(recorder) {}

    void submit(uint32_t frame);
    // At most 64 frames after its submission.
    void takeBack(uint32_t frame);
    // The memory manager tells of every allocation; the recorder keeps those of more than 5 s.
    void reportAllocation(const char* item, uint32_t milliseconds, uint64_t bytes);

    uint32_t parked() const { return mParked; }
    uint32_t takenBack() const { return mTakenBack; }

private:
    void* fenceOf(uint32_t frame) { return &mFences[frame % mFences.size()]; }

    zk::IVideoDataRecoder& mRecorder;
    std::array<uint8_t, 64> mFences{};  // reused: only their addresses matter
    uint32_t mParked = 0;
    uint32_t mTakenBack = 0;
};

}  // namespace demo
