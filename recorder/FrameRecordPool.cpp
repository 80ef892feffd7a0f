#include "recorder/FrameRecordPool.h"

#include <cstdlib>

#include "platform/BoundedMemory.h"
#include "platform/Log.h"

namespace zk {

FrameRecordPool::FrameRecordPool() {
    mDataBufferList.reserve(kBlocks);
    const SpinLockGuard guard(mDataPoolLock);
    const bool hasRoom = mDataReadyPool.reserve(kBlocks) && mDataDonePool.reserve(kBlocks);
    for (size_t i = 0; i < kBlocks; ++i) {
        void* block = hasRoom ? std::malloc(kFrameRecordSize) : nullptr;
        if (block == nullptr) {
            VDR_LOG_AS("ZkaVideoDataRecoderImpl", kLogError,
                       "VDR::failed to alloc VDR data buffer for write!");
            continue;
        }
        memset_s(block, kFrameRecordSize, 0, kFrameRecordSize);
        mDataBufferList.push_back(block);
        mDataReadyPool.push_back(block);
    }
}

FrameRecordPool::~FrameRecordPool() {
    const SpinLockGuard guard(mDataPoolLock);
    mDataDonePool.clear();
    mDataProcessingPool.clear();
    mDataReadyPool.clear();
    for (void*& block : mDataBufferList) {
        std::free(block);
        block = nullptr;
    }
}

void FrameRecordPool::take(uint32_t frameNumber) {
    const SpinLockGuard guard(mDataPoolLock);
    if (mDataReadyPool.empty() || mDataProcessingPool.find(frameNumber) != nullptr) {
        return;
    }
    mDataProcessingPool.insert(frameNumber, mDataReadyPool.front());
    mDataReadyPool.pop_front();
}

void* FrameRecordPool::find(uint32_t frameNumber) {
    if (const FrameBlockMap::Sight sight = mDataProcessingPool.look(frameNumber); sight.isClear) {
        return sight.block;
    }
    const SpinLockGuard guard(mDataPoolLock);
    return mDataProcessingPool.find(frameNumber);
}

FrameRecordPool::Copy FrameRecordPool::copyBlock(const void* block, frameData& out) {
    return memcpy_s(out.bytes, kFrameRecordSize, block, kFrameRecordSize) == 0 ? Copy::kDone
                                                                               : Copy::kFailed;
}

FrameRecordPool::Copy FrameRecordPool::copy(uint32_t frameNumber, frameData& out) {
    const SpinLockGuard guard(mDataPoolLock);
    const void* block = mDataProcessingPool.find(frameNumber);
    return block != nullptr ? copyBlock(block, out) : Copy::kNoSuchFrame;
}

FrameRecordPool::Copy FrameRecordPool::complete(uint32_t frameNumber, frameData& out) {
    const SpinLockGuard guard(mDataPoolLock);
    void* block = mDataProcessingPool.find(frameNumber);
    if (block == nullptr) {
        return Copy::kNoSuchFrame;
    }
    mDataDonePool.push_back(block);
    mDataProcessingPool.erase(frameNumber);
    return copyBlock(block, out);
}

void FrameRecordPool::freeOldest() {
    void* block = mDataDonePool.front();
    memset_s(block, kFrameRecordSize, 0, kFrameRecordSize);
    mDataReadyPool.push_back(block);
    mDataDonePool.pop_front();
}

void* FrameRecordPool::oldestDone() {
    const SpinLockGuard guard(mDataPoolLock);
    return mDataDonePool.empty() ? nullptr : mDataDonePool.front();
}

bool FrameRecordPool::oldestDoneFrameNumber(uint32_t& frameNumber) {
    const SpinLockGuard guard(mDataPoolLock);
    if (mDataDonePool.empty()) {
        return false;
    }
    frameNumber = frameNumberOf(mDataDonePool.front());
    return true;
}

void FrameRecordPool::recycleAll() {
    const SpinLockGuard guard(mDataPoolLock);
    mDataDonePool.reset();
    mDataProcessingPool.clear();
    mDataReadyPool.reset();
    for (void* block : mDataBufferList) {
        memset_s(block, kFrameRecordSize, 0, kFrameRecordSize);
        mDataReadyPool.push_back(block);
    }
}

FrameRecordPool::Sizes FrameRecordPool::sizes() {
    const SpinLockGuard guard(mDataPoolLock);
    return {mDataReadyPool.size(), mDataProcessingPool.size(), mDataDonePool.size()};
}

}  // namespace zk
