#include "registries/ChiFrameMap.h"

#include "platform/Log.h"

namespace zk {

void ChiFrameMap::SetChiFrameMap(uint32_t chiFrameNum, uint32_t frameNum) {
    const SpinLockGuard guard(mChiFrameLock);
    mChiFrameMap.set(chiFrameNum, frameNum);
}

void ChiFrameMap::GetChiFrameMap(uint32_t chiFrameNum, uint32_t& frameNum) {
    uint32_t mapSize = 0;
    {
        const SpinLockGuard guard(mChiFrameLock);
        if (const auto taken = mChiFrameMap.take(chiFrameNum)) {
            frameNum = *taken;
            return;
        }
        mapSize = static_cast<uint32_t>(mChiFrameMap.size());
    }
    VDR_LOGE("VDR::getChiFrameMap fail. chiFrameNum=%u, mChiFrameMap.size=%u!", chiFrameNum,
             mapSize);
}

void ChiFrameMap::clear() {
    const SpinLockGuard guard(mChiFrameLock);
    mChiFrameMap.clear();
}

}  // namespace zk
