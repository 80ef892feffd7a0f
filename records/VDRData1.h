#pragma once

#include <cstddef>
#include <cstdint>

#include "records/FieldWriter.h"

// The fields of level 1 in layout order, which is also the order of the tags: SCALAR(field) or
// ARRAY(field, count field).
#define VDR1_FIELDS(SCALAR, ARRAY)                               \
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

namespace vdr1 {

// The compound fields, as far as the recorder knows them: where no name is given, the meaning
// belongs to the part of the pipeline that fills the field.

struct __attribute__((packed)) CslInfo {
    uint32_t value;
    uint64_t stamp;
};

// The first 54 bytes of a system status snapshot.
struct __attribute__((packed)) SysStatusInfo {
    uint32_t cpu0Freq;  // kHz
    uint32_t cpu4Freq;  // kHz
    uint32_t cpu7Freq;  // kHz
    uint16_t cpuUsage;  // percent of all processors together
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

struct __attribute__((packed)) FeatureInfo {
    uint32_t id;
    uint8_t state;
    uint64_t stamp;
};

struct __attribute__((packed)) AlgoCostTime {
    char name[6];  // NUL-terminated by the pipeline
    uint8_t cost;
};

struct __attribute__((packed)) NodeInfo {
    uint32_t ids[3];
    uint64_t stamps[4];
};

struct __attribute__((packed)) AeAfAwbInfo {
    uint32_t words[2];
    float ratios[6];
    uint32_t word2;
    int16_t short0;
    uint32_t words3[5];
    int16_t short1;
};

struct __attribute__((packed)) AwbCapInfo {
    float gains[9];
    uint32_t word;
};

struct __attribute__((packed)) AwbCapSaInfo {
    char name[15];  // NUL-terminated by the pipeline
    float value;
};

struct __attribute__((packed)) MemoryAllocTimeoutInfo {
    char itemName[40];  // NUL-terminated
    uint32_t allocSizeKB;
    uint16_t allocTimeSec;
    uint8_t itemType;
};

// One frame record of level 1: goes byte for byte into binary dump files and shared buffers, in
// the device's byte order (little-endian). Never access a field through a reference: most are
// unaligned, copy their bytes instead.
struct __attribute__((packed)) VDRData1 {
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

    // One writer per field, named after it.
#define VDR_DECLARE_SCALAR(field) static void write_##field(void* maintainData, const void* data);
#define VDR_DECLARE_ARRAY(field, count) VDR_DECLARE_SCALAR(field)
    VDR1_FIELDS(VDR_DECLARE_SCALAR, VDR_DECLARE_ARRAY)
#undef VDR_DECLARE_ARRAY
#undef VDR_DECLARE_SCALAR

    // Field name -> writer. Built when the library is loaded, never changed. Any thread.
    static const zk::Name2FuncMap* getName2FuncMap();

    // Appends the record at `srcData` (4096 bytes) as one line of comma-separated text to the
    // string in `destData` (a buffer of 4096 bytes). A line that does not fit is cut, loses its
    // newline and leaves an error in the log. Reentrant.
    static void makeFrameContent(const void* srcData, void* destData);
};

#define VDR_FIELD_AT(field, at, size)                                                     \
    static_assert(offsetof(VDRData1, field) == (at) && sizeof(VDRData1::field) == (size), \
                  "the layout of " #field " is a file format")
VDR_FIELD_AT(frameNumber, 0, 4);
VDR_FIELD_AT(cslInfo, 4, 12);
VDR_FIELD_AT(masterCameraId, 16, 1);
VDR_FIELD_AT(manualCaptureTag, 17, 1);
VDR_FIELD_AT(sensorModeIndex, 18, 1);
VDR_FIELD_AT(zoomRatio, 19, 4);
VDR_FIELD_AT(sysStatusInfo, 23, 54);
VDR_FIELD_AT(captureType, 77, 1);
VDR_FIELD_AT(videoAction, 78, 1);
VDR_FIELD_AT(featureRequestStateInfoCount, 79, 1);
VDR_FIELD_AT(featureRequestStateInfo, 80, 195);
VDR_FIELD_AT(featureMessageTypeInfoCount, 275, 1);
VDR_FIELD_AT(featureMessageTypeInfo, 276, 195);
VDR_FIELD_AT(pluginAlgoCostTimeCount, 471, 1);
VDR_FIELD_AT(pluginAlgoCostTime, 472, 210);
VDR_FIELD_AT(semantAlgoCostTimeCount, 682, 1);
VDR_FIELD_AT(semantAlgoCostTime, 683, 210);
VDR_FIELD_AT(nodeInfoCount, 893, 1);
VDR_FIELD_AT(nodeInfo, 894, 2640);
VDR_FIELD_AT(setGmeNcsDep, 3534, 8);
VDR_FIELD_AT(getGmeNcsDepGyro, 3542, 8);
VDR_FIELD_AT(getGmeNcsDepOis, 3550, 8);
VDR_FIELD_AT(getGmeNcsDepAccel, 3558, 8);
VDR_FIELD_AT(getGmeNcsDepMag, 3566, 8);
VDR_FIELD_AT(setEisV2NcsDep, 3574, 8);
VDR_FIELD_AT(getEisV2NcsDepGyro, 3582, 8);
VDR_FIELD_AT(getEisV2NcsDepOis, 3590, 8);
VDR_FIELD_AT(getEisV2NcsDepAccel, 3598, 8);
VDR_FIELD_AT(getEisV2NcsDepMag, 3606, 8);
VDR_FIELD_AT(setEisV3NcsDep, 3614, 8);
VDR_FIELD_AT(getEisV3NcsDepGyro, 3622, 8);
VDR_FIELD_AT(getEisV3NcsDepOis, 3630, 8);
VDR_FIELD_AT(getEisV3NcsDepAccel, 3638, 8);
VDR_FIELD_AT(getEisV3NcsDepMag, 3646, 8);
VDR_FIELD_AT(ae_af_awb_info, 3654, 60);
VDR_FIELD_AT(awbInfo_qawb_cap, 3714, 40);
VDR_FIELD_AT(awbInfo_qawb_cap_saCount, 3754, 1);
VDR_FIELD_AT(awbInfo_qawb_cap_sa, 3755, 190);
VDR_FIELD_AT(memoryAllocTimeoutInfo, 3945, 47);
#undef VDR_FIELD_AT

static_assert(sizeof(VDRData1) == 3992, "the rest of a 4096-byte block stays unused");

}  // namespace vdr1
