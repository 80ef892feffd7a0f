#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "demo/Findings.h"
#include "demo/FrameFactory.h"
#include "demo/SessionPlan.h"
#include "recorder/IVideoDataRecoder.h"
#include "records/frameData.h"

namespace demo {

// A live photo from both ends: the pipeline that caches its frames, and the application that asks
// for some of them in a shared buffer. One thread.
class LivePhotoShot {
public:
    // All must outlive this, but for the callback that it registers, which owns what it needs.
    LivePhotoShot(zk::IVideoDataRecoder& recorder, const SessionPlan& plan,
                  const FrameFactory& factory);

    // Caches the frame, which has been given its head only, and completes the copy.
    void takeFrame(uint32_t frame);
    // Asks for the planned frames and compares the buffer with what they must hold.
    void request(Findings& findings);

    const std::string& reply() const { return mReply->text; }
    const std::vector<uint32_t>& framesReceived() const { return mFramesReceived; }
    static constexpr uint32_t kFirstAppFrame = 1000;

private:
    struct Reply {
        uint32_t code = 0;
        std::string text;
    };

    std::string requestText(uint32_t bufferSize) const;
    void checkReply(Findings& findings) const;
    void checkBuffer(const uint8_t* buffer, Findings& findings);
    zk::frameData expectedCopy(uint32_t frame) const;

    zk::IVideoDataRecoder& mRecorder;
    const SessionPlan& mPlan;
    const FrameFactory& mFactory;
    const std::shared_ptr<Reply> mReply = std::make_shared<Reply>();
    std::vector<uint32_t> mFramesReceived;
};

}  // namespace demo
