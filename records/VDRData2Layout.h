#pragma once

#include <cstdint>

#include "base/memberAt.h"

// The fields of level 2 in layout order, which is also the order of the tags: SCALAR(field) or
// ARRAY(field, count field).
#define VDR2_FIELDS(SCALAR, ARRAY)                               \
    SCALAR(frameNumber)                                          \
    SCALAR(cslInfo)                                              \
    SCALAR(masterCameraId)                                       \
    SCALAR(manualCaptureTag)                                     \
    SCALAR(sensorModeIndex)                                      \
    SCALAR(zoomRatio)                                            \
    SCALAR(sysStatusInfo)                                        \
    SCALAR(captureType)                                          \
    SCALAR(videoAction)                                          \
    SCALAR(featureRequestStateInfoCount)                         \
    ARRAY(featureRequestStateInfo, featureRequestStateInfoCount) \
    SCALAR(featureMessageTypeInfoCount)                          \
    ARRAY(featureMessageTypeInfo, featureMessageTypeInfoCount)   \
    SCALAR(pluginAlgoCostTimeCount)                              \
    ARRAY(pluginAlgoCostTime, pluginAlgoCostTimeCount)           \
    SCALAR(semantAlgoCostTimeCount)                              \
    ARRAY(semantAlgoCostTime, semantAlgoCostTimeCount)           \
    SCALAR(nodeInfoCount)                                        \
    ARRAY(nodeInfo, nodeInfoCount)                               \
    SCALAR(setGmeNcsDep)                                         \
    SCALAR(getGmeNcsDepGyro)                                     \
    SCALAR(getGmeNcsDepOis)                                      \
    SCALAR(getGmeNcsDepAccel)                                    \
    SCALAR(getGmeNcsDepMag)                                      \
    SCALAR(setEisV2NcsDep)                                       \
    SCALAR(getEisV2NcsDepGyro)                                   \
    SCALAR(getEisV2NcsDepOis)                                    \
    SCALAR(getEisV2NcsDepAccel)                                  \
    SCALAR(getEisV2NcsDepMag)                                    \
    SCALAR(setEisV3NcsDep)                                       \
    SCALAR(getEisV3NcsDepGyro)                                   \
    SCALAR(getEisV3NcsDepOis)                                    \
    SCALAR(getEisV3NcsDepAccel)                                  \
    SCALAR(getEisV3NcsDepMag)                                    \
    SCALAR(ae_af_awb_info)                                       \
    SCALAR(awbInfo_qawb_cap)                                     \
    SCALAR(awbInfo_qawb_cap_saCount)                             \
    ARRAY(awbInfo_qawb_cap_sa, awbInfo_qawb_cap_saCount)         \
    SCALAR(memoryAllocTimeoutInfo)

namespace vdr2 {

// The compound fields, as far as the recorder knows them: where no name is given, the meaning
// belongs to the part of the pipeline that fills the field.

struct __attribute__((packed)) CslInfo {
    uint32_t value;
    uint64_t stamp;
};
VDR_MEMBER_AT(CslInfo, value, 0, 4);
VDR_MEMBER_AT(CslInfo, stamp, 4, 8);
static_assert(sizeof(CslInfo) == 12);

// The first 54 bytes of a system status snapshot.
struct __attribute__((packed)) SysStatusInfo {
    uint32_t cpu0Freq;  // kHz
    uint32_t cpu4Freq;  // kHz
    uint32_t cpu7Freq;  // kHz
    uint16_t cpuUsage;  // percent of all processors together that the camera process took
    float loadAvg1;
    float loadAvg5;
    float loadAvg15;
    uint32_t shellFrontTemp;
    uint32_t shellBackTemp;
    uint32_t shellFrameTemp;
    uint32_t memFree;       // kB
    uint32_t memAvailable;  // kB
    uint32_t usedMem;
    uint16_t sceneMode;
    uint8_t thermalLevel;
    uint8_t thermalEscapeState;
};
VDR_MEMBER_AT(SysStatusInfo, cpu0Freq, 0, 4);
VDR_MEMBER_AT(SysStatusInfo, cpu4Freq, 4, 4);
VDR_MEMBER_AT(SysStatusInfo, cpu7Freq, 8, 4);
VDR_MEMBER_AT(SysStatusInfo, cpuUsage, 12, 2);
VDR_MEMBER_AT(SysStatusInfo, loadAvg1, 14, 4);
VDR_MEMBER_AT(SysStatusInfo, loadAvg5, 18, 4);
VDR_MEMBER_AT(SysStatusInfo, loadAvg15, 22, 4);
VDR_MEMBER_AT(SysStatusInfo, shellFrontTemp, 26, 4);
VDR_MEMBER_AT(SysStatusInfo, shellBackTemp, 30, 4);
VDR_MEMBER_AT(SysStatusInfo, shellFrameTemp, 34, 4);
VDR_MEMBER_AT(SysStatusInfo, memFree, 38, 4);
VDR_MEMBER_AT(SysStatusInfo, memAvailable, 42, 4);
VDR_MEMBER_AT(SysStatusInfo, usedMem, 46, 4);
VDR_MEMBER_AT(SysStatusInfo, sceneMode, 50, 2);
VDR_MEMBER_AT(SysStatusInfo, thermalLevel, 52, 1);
VDR_MEMBER_AT(SysStatusInfo, thermalEscapeState, 53, 1);
static_assert(sizeof(SysStatusInfo) == 54);

struct __attribute__((packed)) FeatureInfo {
    uint32_t id;
    uint8_t state;
    uint64_t stamp;
};
VDR_MEMBER_AT(FeatureInfo, id, 0, 4);
VDR_MEMBER_AT(FeatureInfo, state, 4, 1);
VDR_MEMBER_AT(FeatureInfo, stamp, 5, 8);
static_assert(sizeof(FeatureInfo) == 13);

struct __attribute__((packed)) AlgoCostTime {
    char name[6];  // NUL-terminated by the pipeline
    uint8_t cost;
};
VDR_MEMBER_AT(AlgoCostTime, name, 0, 6);
VDR_MEMBER_AT(AlgoCostTime, cost, 6, 1);
static_assert(sizeof(AlgoCostTime) == 7);

struct __attribute__((packed)) NodeInfo {
    uint32_t ids[3];
    uint64_t stamps[4];
};
VDR_MEMBER_AT(NodeInfo, ids, 0, 12);
VDR_MEMBER_AT(NodeInfo, stamps, 12, 32);
static_assert(sizeof(NodeInfo) == 44);

struct __attribute__((packed)) AeAfAwbInfo {
    uint32_t words[2];
    float ratios[6];
    uint32_t word2;
    int16_t short0;
    uint32_t words3[5];
    int16_t short1;
};
VDR_MEMBER_AT(AeAfAwbInfo, words, 0, 8);
VDR_MEMBER_AT(AeAfAwbInfo, ratios, 8, 24);
VDR_MEMBER_AT(AeAfAwbInfo, word2, 32, 4);
VDR_MEMBER_AT(AeAfAwbInfo, short0, 36, 2);
VDR_MEMBER_AT(AeAfAwbInfo, words3, 38, 20);
VDR_MEMBER_AT(AeAfAwbInfo, short1, 58, 2);
static_assert(sizeof(AeAfAwbInfo) == 60);

struct __attribute__((packed)) AwbCapInfo {
    float gains[9];
    uint32_t word;
};
VDR_MEMBER_AT(AwbCapInfo, gains, 0, 36);
VDR_MEMBER_AT(AwbCapInfo, word, 36, 4);
static_assert(sizeof(AwbCapInfo) == 40);

struct __attribute__((packed)) AwbCapSaInfo {
    char name[15];  // NUL-terminated by the pipeline
    float value;
};
VDR_MEMBER_AT(AwbCapSaInfo, name, 0, 15);
VDR_MEMBER_AT(AwbCapSaInfo, value, 15, 4);
static_assert(sizeof(AwbCapSaInfo) == 19);

struct __attribute__((packed)) MemoryAllocTimeoutInfo {
    char itemName[40];  // NUL-terminated
    uint32_t allocSizeKB;
    uint16_t allocTimeSec;
    uint8_t itemType;
};
VDR_MEMBER_AT(MemoryAllocTimeoutInfo, itemName, 0, 40);
VDR_MEMBER_AT(MemoryAllocTimeoutInfo, allocSizeKB, 40, 4);
VDR_MEMBER_AT(MemoryAllocTimeoutInfo, allocTimeSec, 44, 2);
VDR_MEMBER_AT(MemoryAllocTimeoutInfo, itemType, 46, 1);
static_assert(sizeof(MemoryAllocTimeoutInfo) == 47);

// One frame record of level 2: goes byte for byte into binary dump files and shared buffers, in
// the device's byte order (little-endian). Never access a field through a reference: most are
// unaligned, copy their bytes instead.
struct __attribute__((packed)) VDRData2Layout {
    uint32_t frameNumber;
    CslInfo cslInfo;
    uint8_t masterCameraId;
    uint8_t manualCaptureTag;
    uint8_t sensorModeIndex;
    float zoomRatio;
    SysStatusInfo sysStatusInfo;
    uint8_t captureType;
    uint8_t videoAction;  // 1 where a video recording starts, 2 where it has ended
    uint8_t featureRequestStateInfoCount;
    FeatureInfo featureRequestStateInfo[15];
    uint8_t featureMessageTypeInfoCount;
    FeatureInfo featureMessageTypeInfo[15];
    uint8_t pluginAlgoCostTimeCount;
    AlgoCostTime pluginAlgoCostTime[30];
    uint8_t semantAlgoCostTimeCount;
    AlgoCostTime semantAlgoCostTime[30];
    uint8_t nodeInfoCount;
    NodeInfo nodeInfo[60];
    // Stamps of the sensor data that three motion consumers depend on: when the dependency was
    // set, and when each sensor's data was obtained.
    uint64_t setGmeNcsDep;
    uint64_t getGmeNcsDepGyro;
    uint64_t getGmeNcsDepOis;
    uint64_t getGmeNcsDepAccel;
    uint64_t getGmeNcsDepMag;
    uint64_t setEisV2NcsDep;
    uint64_t getEisV2NcsDepGyro;
    uint64_t getEisV2NcsDepOis;
    uint64_t getEisV2NcsDepAccel;
    uint64_t getEisV2NcsDepMag;
    uint64_t setEisV3NcsDep;
    uint64_t getEisV3NcsDepGyro;
    uint64_t getEisV3NcsDepOis;
    uint64_t getEisV3NcsDepAccel;
    uint64_t getEisV3NcsDepMag;
    AeAfAwbInfo ae_af_awb_info;
    AwbCapInfo awbInfo_qawb_cap;
    uint8_t awbInfo_qawb_cap_saCount;
    AwbCapSaInfo awbInfo_qawb_cap_sa[10];
    MemoryAllocTimeoutInfo memoryAllocTimeoutInfo;
};

VDR_MEMBER_AT(VDRData2Layout, frameNumber, 0, 4);
VDR_MEMBER_AT(VDRData2Layout, cslInfo, 4, 12);
VDR_MEMBER_AT(VDRData2Layout, masterCameraId, 16, 1);
VDR_MEMBER_AT(VDRData2Layout, manualCaptureTag, 17, 1);
VDR_MEMBER_AT(VDRData2Layout, sensorModeIndex, 18, 1);
VDR_MEMBER_AT(VDRData2Layout, zoomRatio, 19, 4);
VDR_MEMBER_AT(VDRData2Layout, sysStatusInfo, 23, 54);
VDR_MEMBER_AT(VDRData2Layout, captureType, 77, 1);
VDR_MEMBER_AT(VDRData2Layout, videoAction, 78, 1);
VDR_MEMBER_AT(VDRData2Layout, featureRequestStateInfoCount, 79, 1);
VDR_MEMBER_AT(VDRData2Layout, featureRequestStateInfo, 80, 195);
VDR_MEMBER_AT(VDRData2Layout, featureMessageTypeInfoCount, 275, 1);
VDR_MEMBER_AT(VDRData2Layout, featureMessageTypeInfo, 276, 195);
VDR_MEMBER_AT(VDRData2Layout, pluginAlgoCostTimeCount, 471, 1);
VDR_MEMBER_AT(VDRData2Layout, pluginAlgoCostTime, 472, 210);
VDR_MEMBER_AT(VDRData2Layout, semantAlgoCostTimeCount, 682, 1);
VDR_MEMBER_AT(VDRData2Layout, semantAlgoCostTime, 683, 210);
VDR_MEMBER_AT(VDRData2Layout, nodeInfoCount, 893, 1);
VDR_MEMBER_AT(VDRData2Layout, nodeInfo, 894, 2640);
VDR_MEMBER_AT(VDRData2Layout, setGmeNcsDep, 3534, 8);
VDR_MEMBER_AT(VDRData2Layout, getGmeNcsDepGyro, 3542, 8);
VDR_MEMBER_AT(VDRData2Layout, getGmeNcsDepOis, 3550, 8);
VDR_MEMBER_AT(VDRData2Layout, getGmeNcsDepAccel, 3558, 8);
VDR_MEMBER_AT(VDRData2Layout, getGmeNcsDepMag, 3566, 8);
VDR_MEMBER_AT(VDRData2Layout, setEisV2NcsDep, 3574, 8);
VDR_MEMBER_AT(VDRData2Layout, getEisV2NcsDepGyro, 3582, 8);
VDR_MEMBER_AT(VDRData2Layout, getEisV2NcsDepOis, 3590, 8);
VDR_MEMBER_AT(VDRData2Layout, getEisV2NcsDepAccel, 3598, 8);
VDR_MEMBER_AT(VDRData2Layout, getEisV2NcsDepMag, 3606, 8);
VDR_MEMBER_AT(VDRData2Layout, setEisV3NcsDep, 3614, 8);
VDR_MEMBER_AT(VDRData2Layout, getEisV3NcsDepGyro, 3622, 8);
VDR_MEMBER_AT(VDRData2Layout, getEisV3NcsDepOis, 3630, 8);
VDR_MEMBER_AT(VDRData2Layout, getEisV3NcsDepAccel, 3638, 8);
VDR_MEMBER_AT(VDRData2Layout, getEisV3NcsDepMag, 3646, 8);
VDR_MEMBER_AT(VDRData2Layout, ae_af_awb_info, 3654, 60);
VDR_MEMBER_AT(VDRData2Layout, awbInfo_qawb_cap, 3714, 40);
VDR_MEMBER_AT(VDRData2Layout, awbInfo_qawb_cap_saCount, 3754, 1);
VDR_MEMBER_AT(VDRData2Layout, awbInfo_qawb_cap_sa, 3755, 190);
VDR_MEMBER_AT(VDRData2Layout, memoryAllocTimeoutInfo, 3945, 47);
static_assert(sizeof(VDRData2Layout) == 3992, "the rest of a 4096-byte block stays unused");

}  // namespace vdr2
