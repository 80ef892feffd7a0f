#include "testing/SteppedLine.h"

#include <cstring>
#include <vector>

#include "platform/BoundedMemory.h"
#include "records/frameData.h"

namespace zk::test {
namespace {

using ulong = unsigned long;
using ulonglong = unsigned long long;

// A step of the line; leaves the function where it fails.
#define VDR_STEP(...)                                                                           \
    do {                                                                                        \
        const size_t length = std::strlen(line);                                                \
        if (snprintf_s(line + length, kFrameRecordSize - length, kFrameRecordSize - 1 - length, \
                       __VA_ARGS__) < 0) {                                                      \
            return false;                                                                       \
        }                                                                                       \
    } while (false)

bool stepHead(const vdr1::VDRData1& r, char* line) {
    const vdr1::SysStatusInfo& s = r.sysStatusInfo;
    VDR_STEP("%lu,", ulong{r.frameNumber});
    VDR_STEP("%lu,%llu,", ulong{r.cslInfo.value}, ulonglong{r.cslInfo.stamp});
    VDR_STEP("%u,", r.masterCameraId);
    VDR_STEP("%u,", r.manualCaptureTag);
    VDR_STEP("%u,", r.sensorModeIndex);
    VDR_STEP("%f,", double{r.zoomRatio});
    VDR_STEP("%lu,%lu,%lu,%u,%f,%f,%f,%lu,%lu,%lu,%lu,%lu,%lu,%u,%u,%u,", ulong{s.cpu0Freq},
             ulong{s.cpu4Freq}, ulong{s.cpu7Freq}, s.cpuUsage, double{s.loadAvg1},
             double{s.loadAvg5}, double{s.loadAvg15}, ulong{s.shellFrontTemp},
             ulong{s.shellBackTemp}, ulong{s.shellFrameTemp}, ulong{s.memFree},
             ulong{s.memAvailable}, ulong{s.usedMem}, s.sceneMode, s.thermalLevel,
             s.thermalEscapeState);
    VDR_STEP("%u,", r.captureType);
    VDR_STEP("%u,", r.videoAction);
    return true;
}

bool stepFeatures(uint8_t count, const vdr1::FeatureInfo* features, char* line) {
    VDR_STEP("%u,", count);
    for (size_t i = 0; i < count; ++i) {
        VDR_STEP("%lu,%u,%llu,", ulong{features[i].id}, features[i].state,
                 ulonglong{features[i].stamp});
    }
    return true;
}

bool stepCosts(uint8_t count, const vdr1::AlgoCostTime* costs, char* line) {
    VDR_STEP("%u,", count);
    for (size_t i = 0; i < count; ++i) {
        VDR_STEP("%s,%u,", costs[i].name, costs[i].cost);
    }
    return true;
}

bool stepNodes(const vdr1::VDRData1& r, char* line) {
    VDR_STEP("%u,", r.nodeInfoCount);
    const vdr1::NodeInfo* const nodes = r.nodeInfo;  // of which the count may be too large
    for (size_t i = 0; i < r.nodeInfoCount; ++i) {
        const vdr1::NodeInfo& n = nodes[i];
        VDR_STEP("%lu,%lu,%lu,%llu,%llu,%llu,%llu,", ulong{n.ids[0]}, ulong{n.ids[1]},
                 ulong{n.ids[2]}, ulonglong{n.stamps[0]}, ulonglong{n.stamps[1]},
                 ulonglong{n.stamps[2]}, ulonglong{n.stamps[3]});
    }
    return true;
}

bool stepStamps(const vdr1::VDRData1& r, char* line) {
    const ulonglong stamps[] = {r.setGmeNcsDep,       r.getGmeNcsDepGyro,    r.getGmeNcsDepOis,
                                r.getGmeNcsDepAccel,  r.getGmeNcsDepMag,     r.setEisV2NcsDep,
                                r.getEisV2NcsDepGyro, r.getEisV2NcsDepOis,   r.getEisV2NcsDepAccel,
                                r.getEisV2NcsDepMag,  r.setEisV3NcsDep,      r.getEisV3NcsDepGyro,
                                r.getEisV3NcsDepOis,  r.getEisV3NcsDepAccel, r.getEisV3NcsDepMag};
    for (const ulonglong stamp : stamps) {
        VDR_STEP("%llu,", stamp);
    }
    return true;
}

bool stepTail(const vdr1::VDRData1& r, char* line) {
    const vdr1::AeAfAwbInfo& a = r.ae_af_awb_info;
    VDR_STEP("%ld,%ld,%f,%f,%f,%f,%f,%f,%lu,%d,%lu,%lu,%lu,%lu,%lu,%d,", long{a.words[0]},
             long{a.words[1]}, double{a.ratios[0]}, double{a.ratios[1]}, double{a.ratios[2]},
             double{a.ratios[3]}, double{a.ratios[4]}, double{a.ratios[5]}, ulong{a.word2},
             a.short0, ulong{a.words3[0]}, ulong{a.words3[1]}, ulong{a.words3[2]},
             ulong{a.words3[3]}, ulong{a.words3[4]}, a.short1);
    const vdr1::AwbCapInfo& g = r.awbInfo_qawb_cap;
    VDR_STEP("%f,%f,%f,%f,%f,%f,%f,%f,%f,%lu,", double{g.gains[0]}, double{g.gains[1]},
             double{g.gains[2]}, double{g.gains[3]}, double{g.gains[4]}, double{g.gains[5]},
             double{g.gains[6]}, double{g.gains[7]}, double{g.gains[8]}, ulong{g.word});
    VDR_STEP("%u,", r.awbInfo_qawb_cap_saCount);
    const vdr1::AwbCapSaInfo* const items = r.awbInfo_qawb_cap_sa;
    for (size_t i = 0; i < r.awbInfo_qawb_cap_saCount; ++i) {
        VDR_STEP("%s,%f,", items[i].name, double{items[i].value});
    }
    const vdr1::MemoryAllocTimeoutInfo& m = r.memoryAllocTimeoutInfo;
    VDR_STEP("%s,%lu,%u,%u,", m.itemName, ulong{m.allocSizeKB}, m.allocTimeSec, m.itemType);
    VDR_STEP("\n");
    return true;
}

}  // namespace

bool formatSteppedLine(const vdr1::VDRData1& r, char* line) {
    return stepHead(r, line) &&
           stepFeatures(r.featureRequestStateInfoCount, r.featureRequestStateInfo, line) &&
           stepFeatures(r.featureMessageTypeInfoCount, r.featureMessageTypeInfo, line) &&
           stepCosts(r.pluginAlgoCostTimeCount, r.pluginAlgoCostTime, line) &&
           stepCosts(r.semantAlgoCostTimeCount, r.semantAlgoCostTime, line) && stepNodes(r, line) &&
           stepStamps(r, line) && stepTail(r, line);
}

bool appendSteppedLine(const void* block, char* line) {
    constexpr size_t kMostBehind = size_t{UINT8_MAX} * sizeof(vdr1::NodeInfo);
    if (strnlen(line, kFrameRecordSize) == kFrameRecordSize) {
        line[kFrameRecordSize - 1] = '\0';
        return false;
    }
    static_assert(alignof(vdr1::VDRData1) == 1);
    std::vector<uint8_t> bytes(kFrameRecordSize + kMostBehind);
    std::memcpy(bytes.data(), block, kFrameRecordSize);
    return formatSteppedLine(*reinterpret_cast<const vdr1::VDRData1*>(bytes.data()), line);
}

}  // namespace zk::test
