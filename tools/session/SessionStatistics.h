#pragma once

#include "tools/record/Record.h"
#include "tools/session/FrameClock.h"
#include "tools/session/Range.h"
#include "tools/session/VideoWindows.h"

namespace vdrdump {

// What `info` tells of one camera session beyond its frame numbers. add() touches a dozen places
// of a record and nothing else.
struct SessionStatistics {
    Range<float> zoom;
    Range<float> load;
    Range<uint16_t> usage;
    Range<int32_t> frontTemp;
    Range<int32_t> backTemp;
    Range<int32_t> frameTemp;
    Range<uint32_t> memFree;
    Range<uint32_t> memAvailable;
    Range<uint32_t> usedMem;
    VideoWindows videos;
    FrameClock clock;

    void add(const Record& record) {
        constexpr size_t kStatus = offsetof(Layout, sysStatusInfo);
        using Status = vdr2::SysStatusInfo;
        if (record.known <= offsetof(Layout, videoAction)) {
            return;  // a damaged record that ends before
        }
        zoom.add(record.read<float>(offsetof(Layout, zoomRatio)));
        load.add(record.read<float>(kStatus + offsetof(Status, loadAvg1)));
        usage.add(record.read<uint16_t>(kStatus + offsetof(Status, cpuUsage)));
        frontTemp.add(record.read<int32_t>(kStatus + offsetof(Status, shellFrontTemp)));
        backTemp.add(record.read<int32_t>(kStatus + offsetof(Status, shellBackTemp)));
        frameTemp.add(record.read<int32_t>(kStatus + offsetof(Status, shellFrameTemp)));
        memFree.add(record.read<uint32_t>(kStatus + offsetof(Status, memFree)));
        memAvailable.add(record.read<uint32_t>(kStatus + offsetof(Status, memAvailable)));
        usedMem.add(record.read<uint32_t>(kStatus + offsetof(Status, usedMem)));
        if (!record.isNumbered()) {
            return;
        }
        clock.add(record.frame(), record.read<uint64_t>(offsetof(Layout, cslInfo) +
                                                        offsetof(vdr2::CslInfo, stamp)));
        if (const uint8_t action = record.bytes[offsetof(Layout, videoAction)]; action != 0) {
            videos.add(record.frame(), action);
        }
    }
};

}  // namespace vdrdump
