#include "tools/record/RecordSchema.h"

// A dump does not say its level. That is no loss as long as both levels are laid out alike; the
// day they diverge, this stops compiling and vdrdump needs to be told the level.
#define VDR_SAME_PLACE(field)                                                             \
    static_assert(offsetof(vdr1::VDRData1, field) == offsetof(vdr2::VDRData2, field) &&   \
                          sizeof(vdr1::VDRData1::field) == sizeof(vdr2::VDRData2::field), \
                  #field " lies elsewhere at level 1");
#define VDR_SAME_ARRAY(field, count) VDR_SAME_PLACE(field)
VDR1_FIELDS(VDR_SAME_PLACE, VDR_SAME_ARRAY)
VDR2_FIELDS(VDR_SAME_PLACE, VDR_SAME_ARRAY)
static_assert(sizeof(vdr1::VDRData1) == sizeof(vdr2::VDRData2));

// The status in a record is the front of a snapshot, whose types tell which numbers are signed.
#define VDR_SAME_STATUS(member)                                        \
    static_assert(offsetof(vdr2::SysStatusInfo, member) ==             \
                          offsetof(zk::SysStatusCollection, member) && \
                  sizeof(vdr2::SysStatusInfo::member) == sizeof(zk::SysStatusCollection::member))
VDR_SAME_STATUS(cpu0Freq);
VDR_SAME_STATUS(cpu4Freq);
VDR_SAME_STATUS(cpu7Freq);
VDR_SAME_STATUS(cpuUsage);
VDR_SAME_STATUS(loadAvg1);
VDR_SAME_STATUS(loadAvg5);
VDR_SAME_STATUS(loadAvg15);
VDR_SAME_STATUS(shellFrontTemp);
VDR_SAME_STATUS(shellBackTemp);
VDR_SAME_STATUS(shellFrameTemp);
VDR_SAME_STATUS(memFree);
VDR_SAME_STATUS(memAvailable);
VDR_SAME_STATUS(usedMem);
VDR_SAME_STATUS(sceneMode);
VDR_SAME_STATUS(thermalLevel);
VDR_SAME_STATUS(thermalEscapeState);
