#include "benchmarks/SampleFrame.h"

#include <cstring>

namespace zk::bench {
namespace {

using vdr1::VDRData1;

constexpr Elements kTypical = {3, 0, 4, 0, 12, 0};
constexpr Elements kFull = {15, 15, 30, 30, 60, 10};
constexpr uint64_t kNanosecondsSinceBoot = 81234567890123;
constexpr uint64_t kShortStamp = 41234;

struct Source {
    size_t offset;
    size_t size;
};
#define VDR_SCALAR_SOURCE(field) {offsetof(VDRData1, field), sizeof(VDRData1::field)},
#define VDR_ARRAY_SOURCE(field, count) {offsetof(VDRData1, field), sizeof(VDRData1::field[0])},
constexpr Source kSources[tag::kCount] = {VDR1_FIELDS(VDR_SCALAR_SOURCE, VDR_ARRAY_SOURCE)};

// How often the pipeline writes each tag into a frame. Counts come with their elements, and the
// zoom is corrected once: 64 writes in all.
constexpr int kTimesWritten[tag::kCount] = {
        1, 1, 1, 1,  1, 2, 1, 1, 1,                     // frameNumber to videoAction
        0, 3, 0, 3,  0, 4, 0, 4, 0, 12,                 // arrays: features, messages, costs, nodes
        1, 1, 1, 1,  1, 1, 1, 1, 1, 1,  1, 1, 1, 1, 1,  // stamps of sensor data
        1, 1, 0, 10, 1,                                 // exposure, white balance, slow allocation
};

void fillStatus(vdr1::SysStatusInfo& status) {
    status = {};
    status.cpu0Freq = 1804800;
    status.cpu4Freq = 2419200;
    status.cpu7Freq = 2841600;
    status.cpuUsage = 37;
    status.loadAvg1 = 4.25F;
    status.loadAvg5 = 3.87F;
    status.loadAvg15 = 3.5F;
    status.shellFrontTemp = 38200;
    status.shellBackTemp = 39100;
    status.shellFrameTemp = 37400;
    status.memFree = 412340;
    status.memAvailable = 3512340;
    status.usedMem = 182;
    status.thermalLevel = 3;
}

void fillBalance(VDRData1& record) {
    for (int i = 0; i < 6; ++i) {
        record.ae_af_awb_info.ratios[i] = 0.37F * static_cast<float>(i + 1);
    }
    record.ae_af_awb_info.words[0] = 33333;
    record.ae_af_awb_info.short0 = -120;
    record.ae_af_awb_info.short1 = 88;
    for (int i = 0; i < 9; ++i) {
        record.awbInfo_qawb_cap.gains[i] = 1.9123F + static_cast<float>(i) / 8;
    }
    for (int i = 0; i < 10; ++i) {
        std::memcpy(record.awbInfo_qawb_cap_sa[i].name, "skin", 5);
        record.awbInfo_qawb_cap_sa[i].value = 0.125F * static_cast<float>(i);
    }
    std::memcpy(record.memoryAllocTimeoutInfo.itemName, "PreviewBuffer", 14);
    record.memoryAllocTimeoutInfo.allocSizeKB = 12288;
    record.memoryAllocTimeoutInfo.allocTimeSec = 6;
}

void fillArrays(VDRData1& record, uint64_t stamp) {
    for (uint32_t i = 0; i < 15; ++i) {
        record.featureRequestStateInfo[i] = {200 + i, 2, stamp + i};
        record.featureMessageTypeInfo[i] = {300 + i, 1, stamp + i};
    }
    for (uint8_t i = 0; i < 30; ++i) {
        record.pluginAlgoCostTime[i] = {"hdr01", i};
        record.semantAlgoCostTime[i] = {"seg02", i};
    }
    for (uint32_t i = 0; i < 60; ++i) {
        record.nodeInfo[i] = {{i, 12, 3},
                              {stamp, stamp + 4000 + i, stamp + 9000 + i, stamp + 12000 + i}};
    }
}

}  // namespace

vdr1::VDRData1 sampleRecord(const Elements& elements, uint64_t stamp) {
    VDRData1 record{};
    record.frameNumber = 1234;
    record.cslInfo = {1228, stamp};
    record.masterCameraId = 2;
    record.sensorModeIndex = 5;
    record.zoomRatio = 1.5F;
    record.captureType = 1;
    fillStatus(record.sysStatusInfo);
    fillArrays(record, stamp);
    fillBalance(record);
    record.featureRequestStateInfoCount = elements.features;
    record.featureMessageTypeInfoCount = elements.messages;
    record.pluginAlgoCostTimeCount = elements.pluginCosts;
    record.semantAlgoCostTimeCount = elements.semantCosts;
    record.nodeInfoCount = elements.nodes;
    record.awbInfo_qawb_cap_saCount = elements.balances;
    record.setGmeNcsDep = record.setEisV2NcsDep = record.setEisV3NcsDep = stamp;
    record.getGmeNcsDepGyro = record.getEisV2NcsDepGyro = record.getEisV3NcsDepGyro = stamp + 17;
    record.getGmeNcsDepOis = record.getEisV2NcsDepOis = record.getEisV3NcsDepOis = stamp + 170;
    return record;
}

vdr1::VDRData1 typicalRecord() {
    return sampleRecord(kTypical, kNanosecondsSinceBoot);
}

vdr1::VDRData1 fullRecord() {
    return sampleRecord(kFull, kShortStamp);
}

frameData asBlock(const vdr1::VDRData1& record) {
    frameData block{};
    std::memcpy(block.bytes, &record, sizeof(record));
    return block;
}

size_t sizeOfWrite(uint32_t tagId) {
    return kSources[tagId].size;
}

SampleFrame::SampleFrame() : mRecord(sampleRecord(kFull, kNanosecondsSinceBoot)) {
    for (uint32_t tagId = 0; tagId < tag::kCount; ++tagId) {
        mTags[tagId] = tagId;
        mDatas[tagId] = reinterpret_cast<const uint8_t*>(&mRecord) + kSources[tagId].offset;
        for (int i = 0; i < kTimesWritten[tagId]; ++i) {
            mWrites.push_back({tagId, mDatas[tagId]});
            mWrittenBytes += sizeOfWrite(tagId);
        }
    }
}

}  // namespace zk::bench
