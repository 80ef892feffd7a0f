#pragma once

#include <cstdint>

#include "base/memberAt.h"
#include "records/VDRData1Layout.h"
#include "records/VDRData2Layout.h"

namespace zk {

// Snapshot of the device's state, exchanged byte for byte with the camera pipeline; numbers are
// little-endian. The first 54 bytes are the frame record's `sysStatusInfo` field. Most fields
// are unaligned: copy their bytes, take no reference.
struct __attribute__((packed)) SysStatusCollection {
    int32_t cpu0Freq;   // kHz
    int32_t cpu4Freq;   // kHz
    int32_t cpu7Freq;   // kHz
    uint16_t cpuUsage;  // percent of all processors together that this process took
    float loadAvg1;
    float loadAvg5;
    float loadAvg15;
    int32_t shellFrontTemp;  // temperatures as the driver states them
    int32_t shellBackTemp;
    int32_t shellFrameTemp;
    uint32_t memFree;             // kB
    uint32_t memAvailable;        // kB
    uint32_t usedMem;             // held by captures, as the capture counter states it
    uint16_t sceneMode;           // low 16 bits of what the session was opened with
    uint8_t thermalLevel;         // 0 to 15
    uint8_t thermalEscapeState;   // 0 to 3
    uint32_t videoRecordSeconds;  // since the sampler was started
    uint16_t snapshotCount;
    int32_t gpuFreq;   // Hz
    uint16_t gpuBusy;  // percent
    int32_t ambientTemp;
    uint8_t foldState;
    int32_t panel1Brightness;
    int32_t panel0Brightness;
    uint8_t usbOnline;  // 1 while a charger or cable is present
};

VDR_MEMBER_AT(SysStatusCollection, cpu0Freq, 0, 4);
VDR_MEMBER_AT(SysStatusCollection, cpu4Freq, 4, 4);
VDR_MEMBER_AT(SysStatusCollection, cpu7Freq, 8, 4);
VDR_MEMBER_AT(SysStatusCollection, cpuUsage, 12, 2);
VDR_MEMBER_AT(SysStatusCollection, loadAvg1, 14, 4);
VDR_MEMBER_AT(SysStatusCollection, loadAvg5, 18, 4);
VDR_MEMBER_AT(SysStatusCollection, loadAvg15, 22, 4);
VDR_MEMBER_AT(SysStatusCollection, shellFrontTemp, 26, 4);
VDR_MEMBER_AT(SysStatusCollection, shellBackTemp, 30, 4);
VDR_MEMBER_AT(SysStatusCollection, shellFrameTemp, 34, 4);
VDR_MEMBER_AT(SysStatusCollection, memFree, 38, 4);
VDR_MEMBER_AT(SysStatusCollection, memAvailable, 42, 4);
VDR_MEMBER_AT(SysStatusCollection, usedMem, 46, 4);
VDR_MEMBER_AT(SysStatusCollection, sceneMode, 50, 2);
VDR_MEMBER_AT(SysStatusCollection, thermalLevel, 52, 1);
VDR_MEMBER_AT(SysStatusCollection, thermalEscapeState, 53, 1);
VDR_MEMBER_AT(SysStatusCollection, videoRecordSeconds, 54, 4);
VDR_MEMBER_AT(SysStatusCollection, snapshotCount, 58, 2);
VDR_MEMBER_AT(SysStatusCollection, gpuFreq, 60, 4);
VDR_MEMBER_AT(SysStatusCollection, gpuBusy, 64, 2);
VDR_MEMBER_AT(SysStatusCollection, ambientTemp, 66, 4);
VDR_MEMBER_AT(SysStatusCollection, foldState, 70, 1);
VDR_MEMBER_AT(SysStatusCollection, panel1Brightness, 71, 4);
VDR_MEMBER_AT(SysStatusCollection, panel0Brightness, 75, 4);
VDR_MEMBER_AT(SysStatusCollection, usbOnline, 79, 1);
static_assert(sizeof(SysStatusCollection) == 80);

#define VDR_SAME_MEMBER(member)                                         \
    VDR_MEMBER_AS_IN(SysStatusCollection, vdr1::SysStatusInfo, member); \
    VDR_MEMBER_AS_IN(SysStatusCollection, vdr2::SysStatusInfo, member)
VDR_SAME_MEMBER(cpu0Freq);
VDR_SAME_MEMBER(cpu4Freq);
VDR_SAME_MEMBER(cpu7Freq);
VDR_SAME_MEMBER(cpuUsage);
VDR_SAME_MEMBER(loadAvg1);
VDR_SAME_MEMBER(loadAvg5);
VDR_SAME_MEMBER(loadAvg15);
VDR_SAME_MEMBER(shellFrontTemp);
VDR_SAME_MEMBER(shellBackTemp);
VDR_SAME_MEMBER(shellFrameTemp);
VDR_SAME_MEMBER(memFree);
VDR_SAME_MEMBER(memAvailable);
VDR_SAME_MEMBER(usedMem);
VDR_SAME_MEMBER(sceneMode);
VDR_SAME_MEMBER(thermalLevel);
VDR_SAME_MEMBER(thermalEscapeState);
#undef VDR_SAME_MEMBER
static_assert(offsetof(SysStatusCollection, videoRecordSeconds) == sizeof(vdr1::SysStatusInfo) &&
              offsetof(SysStatusCollection, videoRecordSeconds) == sizeof(vdr2::SysStatusInfo));

}  // namespace zk
