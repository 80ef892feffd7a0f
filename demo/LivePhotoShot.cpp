#include "demo/LivePhotoShot.h"

#include <json/json.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <utility>

#include "demo/FieldWrites.h"
#include "demo/RecordCompare.h"
#include "platform/host/DeviceControl.h"

namespace demo {
namespace {

constexpr char kRequestId[] = "vdr_demo live photo";
constexpr uint32_t kResultCode = 80;

// The application numbers frames from the session's start; both wrap at 32 bits.
uint32_t appFrame(uint32_t frame) {
    return frame + LivePhotoShot::kFirstAppFrame;
}

}  // namespace

LivePhotoShot::LivePhotoShot(zk::IVideoDataRecoder& recorder, const SessionPlan& plan,
                             const FrameFactory& factory)
      : mRecorder(recorder), mPlan(plan), mFactory(factory) {
    zk::host::setFirstAppFrameNumber(kFirstAppFrame);
    mRecorder.RegisterCamDataCb([reply = mReply](uint32_t code, std::string text) {
        *reply = {code, std::move(text)};
    });
}

void LivePhotoShot::takeFrame(uint32_t frame) {
    const vdr1::VDRData1 record = mFactory.record(frame);
    FieldWrites writes(record);
    writes.add(tag::ae_af_awb_info, tag::awbInfo_qawb_cap_sa);
    mRecorder.CacheDataForLivePhoto(frame);
    for (size_t i = 0; i < writes.tags().size(); ++i) {
        mRecorder.WriteMaintainForLivePhoto(frame, writes.tags()[i], writes.datas()[i]);
    }
    mRecorder.DoneDataForLivePhoto(frame);
}

void LivePhotoShot::request(Findings& findings) {
    const uint32_t size = mPlan.requested.count() * static_cast<uint32_t>(zk::kFrameRecordSize);
    const int fd = memfd_create("vdr_demo_live_photo", MFD_CLOEXEC);
    if (!findings.expect(fd >= 0 && ftruncate(fd, size) == 0, "no shared buffer to be had")) {
        return;
    }
    mRecorder.PostDataForLivePhoto(fd, requestText(size));
    void* buffer = mmap(nullptr, size, PROT_READ, MAP_SHARED, fd, 0);
    close(fd);
    checkReply(findings);
    if (findings.expect(buffer != MAP_FAILED, "the shared buffer cannot be read")) {
        checkBuffer(static_cast<const uint8_t*>(buffer), findings);
        munmap(buffer, size);
    }
}

std::string LivePhotoShot::requestText(uint32_t bufferSize) const {
    Json::Value root(Json::objectValue);
    root["id"] = kRequestId;
    root["startFrame"] = appFrame(mPlan.requested.first);
    root["endFrame"] = appFrame(mPlan.requested.last);
    root["bufferSize"] = bufferSize;
    return root.toStyledString();
}

void LivePhotoShot::checkReply(Findings& findings) const {
    Json::Value root;
    const std::string& text = mReply->text;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    const bool parsed = reader->parse(text.data(), text.data() + text.size(), &root, nullptr) &&
                        root.isObject();
    if (findings.expect(parsed, "the live photo was not answered with a JSON object")) {
        findings.expect(mReply->code == kResultCode && root["state"] == Json::Value(1) &&
                                root["id"] == Json::Value(kRequestId),
                        "the live photo was answered with code %" PRIu32 ", %s", mReply->code,
                        text.c_str());
    }
}

void LivePhotoShot::checkBuffer(const uint8_t* buffer, Findings& findings) {
    for (uint32_t i = 0; i < mPlan.requested.count(); ++i) {
        const uint8_t* record = buffer + i * zk::kFrameRecordSize;
        mFramesReceived.push_back(zk::frameNumberOf(record));
        RecordCompare::expectSame(record, expectedCopy(mPlan.requested.first + i), "live photo",
                                  findings);
    }
}

// The head, which the record had when it was cached, and what was added to the copy.
zk::frameData LivePhotoShot::expectedCopy(uint32_t frame) const {
    const vdr1::VDRData1 record = mFactory.record(frame);
    const auto* bytes = reinterpret_cast<const uint8_t*>(&record);
    zk::frameData copy{};
    std::copy_n(bytes, FieldWrites::offsetOf(tag::featureRequestStateInfoCount), copy.bytes);
    const uint32_t added = FieldWrites::offsetOf(tag::ae_af_awb_info);
    std::copy(bytes + added, bytes + FieldWrites::offsetOf(tag::memoryAllocTimeoutInfo),
              copy.bytes + added);
    return copy;
}

}  // namespace demo
