#include "demo/LivePhotoShot.h"

#include <json/json.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <system_error>
#include <utility>

#include "platform/host/DeviceControl.h"
#include "records/frameData.h"

namespace demo {
namespace {

// The application counts frames from here on.
constexpr uint32_t kFirstAppFrame = 1000;

uint32_t appFrame(uint32_t frame) {
    return frame + kFirstAppFrame;
}

}  // namespace

LivePhotoShot::LivePhotoShot(zk::IVideoDataRecoder& recorder, const SessionPlan& plan)
      : mRecorder(recorder), mPlan(plan), mWriter(recorder) {
    zk::host::setFirstAppFrameNumber(kFirstAppFrame);
    // Called by the recorder: nothing may be thrown here.
    mRecorder.RegisterCamDataCb(
            [reply = mReply](uint32_t /*code*/, std::string text) { reply->swap(text); });
}

void LivePhotoShot::takeFrame(const FrameFields& fields) {
    mRecorder.CacheDataForLivePhoto(fields.number);
    mWriter.writeToLivePhoto(fields);
    mRecorder.DoneDataForLivePhoto(fields.number);
}

void LivePhotoShot::request() {
    const uint32_t size = mPlan.requested.count() * static_cast<uint32_t>(zk::kFrameRecordSize);
    const int fd = memfd_create("vdr_demo_live_photo", MFD_CLOEXEC);
    void* buffer = MAP_FAILED;
    if (fd >= 0 && ftruncate(fd, size) == 0) {
        buffer = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
    }
    if (buffer == MAP_FAILED) {
        throw std::system_error(errno, std::generic_category(), "live photo's shared buffer");
    }
    mRecorder.PostDataForLivePhoto(fd, requestText(size));  // replies before it returns
    for (uint32_t i = 0; i < mPlan.requested.count(); ++i) {
        const uint8_t* record = static_cast<const uint8_t*>(buffer) + i * zk::kFrameRecordSize;
        mFramesReceived.push_back(zk::frameNumberOf(record));
    }
    munmap(buffer, size);
    close(fd);
}

int LivePhotoShot::replyState() const {
    Json::Value reply;
    std::istringstream(*mReply) >> reply;
    return reply["state"].asInt();
}

std::string LivePhotoShot::requestText(uint32_t bufferSize) const {
    Json::Value root(Json::objectValue);
    root["id"] = "vdr_demo live photo";
    root["startFrame"] = appFrame(mPlan.requested.first);
    root["endFrame"] = appFrame(mPlan.requested.last);
    root["bufferSize"] = bufferSize;
    return root.toStyledString();
}

}  // namespace demo
