#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "demo/FrameWriter.h"
#include "demo/SessionPlan.h"
#include "recorder/IVideoDataRecoder.h"

namespace demo {

// A live photo from both ends: the pipeline that caches its frames, and the application that asks
// for some of them in a shared buffer. One thread.
class LivePhotoShot {
public:
    // `recorder` and `plan` must outlive this, but for the callback that it registers, which owns
    // what it needs.
    LivePhotoShot(zk::IVideoDataRecoder& recorder, const SessionPlan& plan);

    // Caches the frame, whose head has been written, and completes the copy.
    void takeFrame(const FrameFields& fields);
    // Asks for the planned frames. Throws when there is no shared buffer to be had.
    void request();

    // Valid after request(). 1: the recorder has filled the buffer.
    int replyState() const;
    const std::vector<uint32_t>& framesReceived() const { return mFramesReceived; }

private:
    std::string requestText(uint32_t bufferSize) const;

    zk::IVideoDataRecoder& mRecorder;
    const SessionPlan& mPlan;
    const FrameWriter mWriter;
    const std::shared_ptr<std::string> mReply = std::make_shared<std::string>();
    std::vector<uint32_t> mFramesReceived;
};

}  // namespace demo
