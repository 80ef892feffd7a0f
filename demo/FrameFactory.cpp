#include "demo/FrameFactory.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace demo {
namespace {

constexpr uint64_t kFrameIntervalNs = 33333333;  // 30 frames a second
constexpr uint64_t kSensorStartNs = 5000000000;  // since boot

constexpr uint8_t kPreviewCapture = 1;
constexpr uint8_t kVideoCapture = 2;
constexpr uint8_t kLivePhotoCapture = 5;
constexpr uint8_t kVideoStarts = 1;
constexpr uint8_t kVideoHasEnded = 2;

uint64_t sensorStamp(uint32_t frame) {
    return kSensorStartNs + frame * kFrameIntervalNs;
}

// A number below `bound` that jumps from frame to frame the same way in every session.
uint32_t jitter(uint32_t frame, uint32_t salt, uint32_t bound) {
    uint32_t mixed = (frame + salt) * 2654435761U;
    mixed ^= mixed >> 15;
    return mixed * 2246822519U % bound;
}

// Goes from 0 up to `period` and down again.
uint32_t upAndDown(uint32_t frame, uint32_t period) {
    const uint32_t place = frame % (2 * period);
    return place < period ? place : 2 * period - place;
}

template <size_t Size>
void copyName(char (&name)[Size], std::string_view text) {
    std::copy_n(text.begin(), std::min(text.size(), Size - 1), name);
}

void fillCost(vdr1::AlgoCostTime& entry, std::string_view name, uint32_t cost) {
    copyName(entry.name, name);
    entry.cost = static_cast<uint8_t>(cost);
}

vdr1::FeatureInfo feature(uint32_t id, uint32_t frame, uint64_t stamp) {
    return {id, static_cast<uint8_t>(jitter(frame, id, 4)), stamp};
}

// Invented, yet of the size that a phone at work shows.
vdr1::SysStatusInfo steadyStatus(uint32_t frame) {
    const uint32_t warmth = std::min(frame % 3000, 1500U);
    vdr1::SysStatusInfo status{};
    status.cpu0Freq = 1017600 + 96000 * jitter(frame / 15, 1, 8);
    status.cpu4Freq = 1190400 + 115200 * jitter(frame / 15, 2, 8);
    status.cpu7Freq = 1401600 + 115200 * jitter(frame / 15, 3, 12);
    status.cpuUsage = static_cast<uint16_t>(18 + jitter(frame / 30, 4, 12));
    status.loadAvg1 = 4.0F + 0.25F * static_cast<float>(upAndDown(frame / 30, 8));
    status.loadAvg5 = 3.75F;
    status.loadAvg15 = 3.5F;
    status.shellFrontTemp = 31000 + 3 * warmth;
    status.shellBackTemp = 32000 + 4 * warmth;
    status.shellFrameTemp = 31500 + 2 * warmth;
    status.memFree = 1200000 - 256 * upAndDown(frame, 400);
    status.memAvailable = 4800000 - 512 * upAndDown(frame, 400);
    status.usedMem = 180000 + 64 * upAndDown(frame, 100);
    status.sceneMode = SessionPlan::kSceneMode;
    status.thermalLevel = static_cast<uint8_t>(warmth / 500);
    status.thermalEscapeState = 1;
    return status;
}

}  // namespace

FrameFactory::FrameFactory(const SessionPlan& plan, const StatusTrack& track, bool steady)
      : mPlan(plan), mTrack(track), mAllocations(plan), mSteady(steady) {}

vdr1::VDRData1 FrameFactory::record(uint32_t frame) const {
    vdr1::VDRData1 record{};
    fillHead(record, frame);
    fillDeviceStatus(record, frame);
    fillFeatures(record, frame);
    fillAlgorithms(record, frame);
    fillNodes(record, frame);
    fillMotionStamps(record, frame);
    fillExposure(record, frame);
    fillWhiteBalance(record, frame);
    if (const auto allocation = mAllocations.kept(frame)) {
        record.memoryAllocTimeoutInfo = *allocation;
    }
    return record;
}

void FrameFactory::fillHead(vdr1::VDRData1& record, uint32_t frame) const {
    const uint32_t zoomStep = upAndDown(frame, 45);  // 1.0 to 5.5 and back
    const bool recording = mPlan.video.contains(frame) && frame != mPlan.video.last;
    record.frameNumber = frame;
    record.cslInfo = {frame % 64, sensorStamp(frame)};
    record.masterCameraId = zoomStep >= 20 ? 2 : 0;  // the telephoto camera from 3.0 on
    record.manualCaptureTag = mPlan.isSnapshot(frame) ? 1 : 0;
    record.sensorModeIndex = recording ? 3 : 1;
    record.zoomRatio = 1.0F + 0.1F * static_cast<float>(zoomStep);
    record.captureType = mPlan.livePhoto.contains(frame) ? kLivePhotoCapture
                         : recording                     ? kVideoCapture
                                                         : kPreviewCapture;
    record.videoAction = frame == mPlan.video.last    ? kVideoHasEnded
                         : frame == mPlan.video.first ? kVideoStarts
                                                      : 0;
}

void FrameFactory::fillDeviceStatus(vdr1::VDRData1& record, uint32_t frame) const {
    if (mSteady) {
        record.sysStatusInfo = steadyStatus(frame);
    } else {
        const StatusTrack::Bytes status = mTrack.at(frame);
        std::memcpy(&record.sysStatusInfo, status.data(), status.size());
    }
}

void FrameFactory::fillFeatures(vdr1::VDRData1& record, uint32_t frame) {
    record.featureRequestStateInfoCount = static_cast<uint8_t>(2 + frame % 3);
    for (uint32_t i = 0; i < record.featureRequestStateInfoCount; ++i) {
        record.featureRequestStateInfo[i] =
                feature(0x1001 + i, frame, sensorStamp(frame) + uint64_t{400000} * (i + 1));
    }
    record.featureMessageTypeInfoCount = static_cast<uint8_t>(1 + frame % 2);
    for (uint32_t i = 0; i < record.featureMessageTypeInfoCount; ++i) {
        record.featureMessageTypeInfo[i] =
                feature(0x2001 + i, frame, sensorStamp(frame) + uint64_t{900000} * (i + 1));
    }
}

void FrameFactory::fillAlgorithms(vdr1::VDRData1& record, uint32_t frame) {
    static constexpr std::string_view kPlugins[] = {"EIS", "BOKEH", "BEAUT", "HDR", "MFNR"};
    static constexpr std::string_view kSemantics[] = {"FACE", "SKY", "HAIR", "PLANT"};
    record.pluginAlgoCostTimeCount = static_cast<uint8_t>(3 + frame % 3);
    for (uint32_t i = 0; i < record.pluginAlgoCostTimeCount; ++i) {
        fillCost(record.pluginAlgoCostTime[i], kPlugins[i], 2 + jitter(frame, 16 + i, 14));
    }
    record.semantAlgoCostTimeCount = static_cast<uint8_t>(1 + frame % 4);
    for (uint32_t i = 0; i < record.semantAlgoCostTimeCount; ++i) {
        fillCost(record.semantAlgoCostTime[i], kSemantics[i], 1 + jitter(frame, 32 + i, 9));
    }
}

void FrameFactory::fillNodes(vdr1::VDRData1& record, uint32_t frame) {
    record.nodeInfoCount = static_cast<uint8_t>(5 + frame % 3);
    uint64_t stamp = sensorStamp(frame);
    for (uint32_t i = 0; i < record.nodeInfoCount; ++i) {
        // Queued, started, finished, handed on.
        const uint64_t started = stamp + 200000 + jitter(frame, 64 + i, 300000);
        const uint64_t finished = started + 1500000 + jitter(frame, 96 + i, 2500000);
        record.nodeInfo[i] = {{1 + i / 4, 0x10000 + i, frame % 8},
                              {stamp, started, finished, finished + 50000}};
        stamp = finished + 50000;
    }
}

void FrameFactory::fillMotionStamps(vdr1::VDRData1& record, uint32_t frame) {
    uint64_t stamps[15];
    static_assert(sizeof(stamps) == offsetof(vdr1::VDRData1, ae_af_awb_info) -
                                            offsetof(vdr1::VDRData1, setGmeNcsDep),
                  "the stamps of the three consumers lie side by side");
    for (uint32_t i = 0; i < 15; ++i) {
        const uint32_t consumer = i / 5;
        stamps[i] = sensorStamp(frame) - 2000000 + uint64_t{250000} * consumer +
                    uint64_t{1000} * (i % 5) + jitter(frame, 128 + i, 900);
    }
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + offsetof(vdr1::VDRData1, setGmeNcsDep),
                stamps, sizeof(stamps));
}

void FrameFactory::fillExposure(vdr1::VDRData1& record, uint32_t frame) {
    vdr1::AeAfAwbInfo info{};
    info.words[0] = 8000 + 100 * upAndDown(frame, 60);     // exposure time
    info.words[1] = 100 + 10 * jitter(frame / 30, 5, 40);  // sensitivity
    for (uint32_t i = 0; i < 6; ++i) {
        info.ratios[i] = 1.0F + 0.125F * static_cast<float>(jitter(frame, 160 + i, 16));
    }
    info.word2 = 40 + upAndDown(frame, 30);                                    // luma target
    info.short0 = static_cast<int16_t>(-300 + static_cast<int>(frame % 600));  // lens position
    for (uint32_t i = 0; i < 5; ++i) {
        info.words3[i] = 256 + jitter(frame, 176 + i, 768);
    }
    info.short1 = static_cast<int16_t>(-12 + static_cast<int>(frame % 24));
    record.ae_af_awb_info = info;
}

void FrameFactory::fillWhiteBalance(vdr1::VDRData1& record, uint32_t frame) {
    static constexpr std::string_view kScenes[] = {"skin", "blue_sky", "greenery", "indoor_warm"};
    vdr1::AwbCapInfo info{};
    for (uint32_t i = 0; i < 9; ++i) {
        info.gains[i] = (i % 4 == 0 ? 1.0F : -0.25F) +
                        0.015625F * static_cast<float>(jitter(frame, 192 + i, 32));
    }
    info.word = 3200 + 10 * upAndDown(frame, 300);  // colour temperature in kelvin
    record.awbInfo_qawb_cap = info;
    record.awbInfo_qawb_cap_saCount = static_cast<uint8_t>(1 + frame % 4);
    for (uint32_t i = 0; i < record.awbInfo_qawb_cap_saCount; ++i) {
        vdr1::AwbCapSaInfo entry{};
        copyName(entry.name, kScenes[i]);
        entry.value = 0.0625F * static_cast<float>(jitter(frame, 208 + i, 16));
        record.awbInfo_qawb_cap_sa[i] = entry;
    }
}

}  // namespace demo
