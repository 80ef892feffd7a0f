#pragma once

#include <cstdint>

#include "base/SpinLock.h"
#include "registries/TakeOnceMap.h"

namespace zk {

// Parks the frame number and tag that belong to a fence, for whoever sees the fence first. A null
// fence is an ordinary one. No limit: an entry stays until it is taken or the session ends. Any
// thread, whether the recorder is open or not.
class ChiFenceMap {
public:
    // A fence that is parked already keeps its values.
    void SetChiFenceMap(void* hFence, unsigned long chiFrameNum, uint8_t tagId);
    // Takes them back; an unknown fence is logged and leaves the outputs alone.
    void GetChiFenceMap(void* hFence, unsigned long& chiFrameNum, uint8_t& tagId);
    void clear();

private:
    struct FenceMapInfo {
        uint64_t chiFrameNum;
        uint8_t tagId;
    };

    SpinLock mChiFenceLock;
    TakeOnceMap<void*, FenceMapInfo> mChiFenceMap VDR_GUARDED_BY(mChiFenceLock);
};

}  // namespace zk
