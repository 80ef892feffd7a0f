#include "registries/ChiFenceMap.h"

#include "platform/Log.h"

namespace zk {

void ChiFenceMap::SetChiFenceMap(void* hFence, unsigned long chiFrameNum, uint8_t tagId) {
    const SpinLockGuard guard(mChiFenceLock);
    mChiFenceMap.set(hFence, {chiFrameNum, tagId});
}

void ChiFenceMap::GetChiFenceMap(void* hFence, unsigned long& chiFrameNum, uint8_t& tagId) {
    uint32_t fenceSize = 0;
    {
        const SpinLockGuard guard(mChiFenceLock);
        if (const auto info = mChiFenceMap.take(hFence)) {
            chiFrameNum = info->chiFrameNum;
            tagId = info->tagId;
            return;
        }
        fenceSize = static_cast<uint32_t>(mChiFenceMap.size());
    }
    VDR_LOGE("VDR::getChiFenceMap fail. hfence=%p, chiFrameNum=%u, tagId=%u, fenceSize=%u!", hFence,
             static_cast<uint32_t>(chiFrameNum), tagId, fenceSize);
}

void ChiFenceMap::clear() {
    const SpinLockGuard guard(mChiFenceLock);
    mChiFenceMap.clear();
}

}  // namespace zk
