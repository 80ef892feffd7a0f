#pragma once

#include <deque>

#include "base/SpinLock.h"
#include "platform/CameraMemoryItemInfo.h"
#include "registries/MemoryAllocTimeoutInfo.h"

namespace zk {

// Memory allocations that took more than five seconds, first in, first out, without a limit until
// the session ends. Any thread.
class AllocTimeouts {
public:
    void SetMemAllocTimeOutInfo(const ZkCamera::CameraMemoryItemInfo& info);
    // Takes the oldest; `out` stays untouched where there is none.
    void GetMemAllocTimeOutInfo(MemoryAllocTimeoutInfo& out);
    void clear();

private:
    SpinLock mAllocTimeOutLock;
    std::deque<MemoryAllocTimeoutInfo> mAllocTimeOutInfoQueue VDR_GUARDED_BY(mAllocTimeOutLock);
};

}  // namespace zk
