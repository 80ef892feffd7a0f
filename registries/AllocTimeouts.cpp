#include "registries/AllocTimeouts.h"

#include <algorithm>

#include "platform/BoundedMemory.h"
#include "platform/Log.h"

namespace zk {
namespace {

constexpr uint32_t kSlowFromMs = 5001;
constexpr size_t kLongestName = sizeof(MemoryAllocTimeoutInfo::itemName) - 1;

}  // namespace

void AllocTimeouts::SetMemAllocTimeOutInfo(const ZkCamera::CameraMemoryItemInfo& info) {
    if (info.allocTimeMs < kSlowFromMs) {
        return;
    }
    MemoryAllocTimeoutInfo record{};
    record.allocTimeSec = static_cast<uint16_t>(info.allocTimeMs / 1000);
    record.allocSizeKB = static_cast<uint32_t>(info.allocSize >> 10);
    record.itemType = static_cast<uint8_t>(info.itemType);
    const int error = memcpy_s(record.itemName, kLongestName, info.itemName.data(),
                               std::min(info.itemName.size(), kLongestName));
    record.itemName[kLongestName] = '\0';
    if (error != 0) {
        VDR_LOGE("VDR::setMemAllocTimeOutInfo, memcpy_s fail, err=%d!", error);
    }
    const SpinLockGuard guard(mAllocTimeOutLock);
    mAllocTimeOutInfoQueue.push_back(record);
}

void AllocTimeouts::GetMemAllocTimeOutInfo(MemoryAllocTimeoutInfo& out) {
    int error = 0;
    {
        const SpinLockGuard guard(mAllocTimeOutLock);
        if (mAllocTimeOutInfoQueue.empty()) {
            return;
        }
        error = memcpy_s(&out, sizeof(out), &mAllocTimeOutInfoQueue.front(), sizeof(out));
        mAllocTimeOutInfoQueue.pop_front();
    }
    if (error != 0) {
        VDR_LOGE("VDR::getMemAllocTimeOutInfo, memcpy_s fail!");
    }
}

void AllocTimeouts::clear() {
    const SpinLockGuard guard(mAllocTimeOutLock);
    mAllocTimeOutInfoQueue.clear();
}

}  // namespace zk
