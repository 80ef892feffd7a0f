#pragma once

#include <cstddef>
#include <cstdint>

namespace zk {

// Snapshot of the device's state, exchanged byte for byte with the camera pipeline; numbers are
// little-endian. The first 54 bytes are the frame record's `sysStatusInfo` field (tag 6). Most
// fields are unaligned: copy their bytes, take no reference.
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

#define VDR_FIELD_AT(field, at) \
    static_assert(offsetof(SysStatusCollection, field) == (at), "callers read " #field " there")
VDR_FIELD_AT(cpu0Freq, 0);
VDR_FIELD_AT(cpu4Freq, 4);
VDR_FIELD_AT(cpu7Freq, 8);
VDR_FIELD_AT(cpuUsage, 12);
VDR_FIELD_AT(loadAvg1, 14);
VDR_FIELD_AT(loadAvg5, 18);
VDR_FIELD_AT(loadAvg15, 22);
VDR_FIELD_AT(shellFrontTemp, 26);
VDR_FIELD_AT(shellBackTemp, 30);
VDR_FIELD_AT(shellFrameTemp, 34);
VDR_FIELD_AT(memFree, 38);
VDR_FIELD_AT(memAvailable, 42);
VDR_FIELD_AT(usedMem, 46);
VDR_FIELD_AT(sceneMode, 50);
VDR_FIELD_AT(thermalLevel, 52);
VDR_FIELD_AT(thermalEscapeState, 53);
VDR_FIELD_AT(videoRecordSeconds, 54);
VDR_FIELD_AT(snapshotCount, 58);
VDR_FIELD_AT(gpuFreq, 60);
VDR_FIELD_AT(gpuBusy, 64);
VDR_FIELD_AT(ambientTemp, 66);
VDR_FIELD_AT(foldState, 70);
VDR_FIELD_AT(panel1Brightness, 71);
VDR_FIELD_AT(panel0Brightness, 75);
VDR_FIELD_AT(usbOnline, 79);
#undef VDR_FIELD_AT

static_assert(sizeof(SysStatusCollection) == 80);

}  // namespace zk
