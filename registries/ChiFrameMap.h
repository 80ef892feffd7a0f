#pragma once

#include <cstdint>

#include "base/SpinLock.h"
#include "registries/TakeOnceMap.h"

namespace zk {

// Parks the frame number that belongs to a frame number of the camera stack. No limit: an entry
// stays until it is taken or the session ends. Any thread, whether the recorder is open or not.
class ChiFrameMap {
public:
    // A number that is parked already keeps its value.
    void SetChiFrameMap(uint32_t chiFrameNum, uint32_t frameNum);
    // Takes it back; an unknown number is logged and leaves the output alone.
    void GetChiFrameMap(uint32_t chiFrameNum, uint32_t& frameNum);
    void clear();

private:
    SpinLock mChiFrameLock;
    TakeOnceMap<uint32_t, uint32_t> mChiFrameMap VDR_GUARDED_BY(mChiFrameLock);
};

}  // namespace zk
