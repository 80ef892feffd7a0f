#include "livephoto/LivePhoto.h"

#include <algorithm>
#include <new>
#include <utility>

#include "livephoto/LivePhotoRequest.h"
#include "livephoto/SharedBuffer.h"
#include "platform/BoundedMemory.h"
#include "platform/Log.h"
#include "platform/ORNProxy.h"

// Every line about a post carries the operation's name, whatever function writes it.
#define VDR_LOG_POST(priority, format, ...)                                            \
    VDR_LOG_AS("PostDataForLivePhoto", priority, "VDR::PostDataForLivePhoto, " format, \
               ##__VA_ARGS__)

namespace zk {

void LivePhoto::open() {
    // Before the lock: camera threads may be waiting for it.
    std::unique_ptr<frameData[]> places(new (std::nothrow) frameData[kFrames]);
    RingQueue<frameData> queue;
    queue.reserve(kFrames);
    const SpinLockGuard guard(mLivePhotoLock);
    if (mLivePhotoDataMap == nullptr) {
        mLivePhotoDataMap = std::move(places);
    }
    if (mOfflineVDRDataOut.capacity() == 0) {
        mOfflineVDRDataOut = std::move(queue);
    }
}

void LivePhoto::store(uint32_t frameNumber, const frameData& record) {
    const size_t place = frameNumber % kFrames;
    const SpinLockGuard guard(mLivePhotoLock);
    if (mLivePhotoDataMap == nullptr) {
        mLivePhotoDataMap.reset(new (std::nothrow) frameData[kFrames]);
        if (mLivePhotoDataMap == nullptr) {
            return;
        }
    }
    memcpy_s(mLivePhotoDataMap[place].bytes, kFrameRecordSize, record.bytes, kFrameRecordSize);
    mIsStored.set(place);
}

void LivePhoto::write(uint32_t frameNumber, WriteFunc writer, const void* data) {
    const size_t place = frameNumber % kFrames;
    const SpinLockGuard guard(mLivePhotoLock);
    if (mIsStored[place]) {
        writer(mLivePhotoDataMap[place].bytes, data);
    }
}

void LivePhoto::DoneDataForLivePhoto(uint32_t frameNumber) {
    const size_t place = frameNumber % kFrames;
    bool isFull = false;
    {
        const SpinLockGuard guard(mLivePhotoLock);
        if (!mIsStored[place]) {
            return;
        }
        isFull = mOfflineVDRDataOut.size() >= kFrames;
        if (isFull) {
            mOfflineVDRDataOut.pop_front();
        }
        if (mOfflineVDRDataOut.reserve(kFrames)) {
            mOfflineVDRDataOut.push_back(mLivePhotoDataMap[place]);
        }
    }
    if (isFull) {
        VDR_LOGD("VDR::DoneDataForLivePhoto, mOfflineVDRDataOut size larger than 180!");
    }
}

LivePhoto::Post LivePhoto::select(uint32_t start, uint32_t end) {
    // Wraps around: an end just before the start gives none, any earlier one gives all.
    const size_t wanted = end - start + 1;
    Post post;
    post.records.reserve(std::min(wanted, kFrames));  // before the lock, like the rest
    post.droppedFrames.reserve(kFrames);
    const SpinLockGuard guard(mLivePhotoLock);
    while (!mOfflineVDRDataOut.empty() && mOfflineVDRDataOut.front().frameNumber() < start) {
        post.droppedFrames.push_back(mOfflineVDRDataOut.front().frameNumber());
        mOfflineVDRDataOut.pop_front();
    }
    post.count = std::min(wanted, mOfflineVDRDataOut.size());
    if (post.records.capacity() >= post.count) {
        post.records.append(mOfflineVDRDataOut, post.count);
    }
    return post;
}

int32_t LivePhoto::fill(SharedBuffer& buffer, const LivePhotoRequest& request) {
    const uint32_t first = Orn::Adapter::Common::ORNProxy::GetInstance()->GetFirstAppFrameNumber();
    const uint32_t start = request.startFrame - first;
    const uint32_t end = request.endFrame - first;
    VDR_LOG_POST(kLogDebug,
                 "firstAppFrameNum=%u, stratFrame=%u, endFrame=%u, bufferSize=%u, id=%s!", first,
                 start, end, request.bufferSize, request.id.c_str());
    Post post = select(start, end);
    for (; !post.droppedFrames.empty(); post.droppedFrames.pop_front()) {
        VDR_LOG_POST(kLogDebug, "pop out data, chiFrameNum=%u!", post.droppedFrames.front());
    }
    const size_t needed = post.count * kFrameRecordSize;
    if (post.records.size() != post.count) {
        VDR_LOG_POST(kLogError, "no memory for %u bytes of records!",
                     static_cast<uint32_t>(needed));
        return 0;
    }
    bool isServed = buffer.holds(needed);
    for (uint32_t i = 0; isServed && !post.records.empty(); ++i) {
        const frameData& record = post.records.front();
        isServed = buffer.write(i * kFrameRecordSize, record.bytes, kFrameRecordSize);
        if (isServed) {
            VDR_LOG_POST(kLogDebug, "count=%u, chiFrameNum=%u!", i, record.frameNumber());
            post.records.pop_front();
        }
    }
    if (!isServed) {
        VDR_LOG_POST(kLogError, "buffer:%p, apk apply size:%u, postQueue need size:%u!",
                     buffer.address(), request.bufferSize, static_cast<uint32_t>(needed));
    }
    return isServed ? 1 : 0;
}

void LivePhoto::PostDataForLivePhoto(bool isOpen, int32_t fd, const std::string& requestText) {
    const LivePhotoRequest request = LivePhotoRequest::parse(requestText);
    int32_t state = 0;
    int munmapRet = -1;
    if (isOpen) {
        SharedBuffer buffer(fd, request.bufferSize);
        if (!buffer.isDuplicated()) {
            return;
        }
        state = fill(buffer, request);
        munmapRet = buffer.unmap();
    }
    const std::string outStr = livePhotoReply(request.id, state);
    CamDataCb callback;
    {
        const SpinLockGuard guard(mResultCamDataCbLock);
        callback = mResultCamDataCb;
    }
    if (callback) {
        callback(kResultCode, outStr);
        VDR_LOG_POST(kLogDebug, "mResultCamDataCb execute!");
    }
    VDR_LOG_POST(kLogDebug, "outStr: %s, returnState %d, id %s, munmapRet %d!", outStr.c_str(),
                 state, request.id.c_str(), munmapRet);
}

void LivePhoto::RegisterCamDataCb(CamDataCb callback) {
    if (!callback) {
        VDR_LOGE("VDR::%s, func is nullptr", __func__);
        return;
    }
    {
        const SpinLockGuard guard(mResultCamDataCbLock);
        mResultCamDataCb.swap(callback);
    }
    VDR_LOGD("VDR::%s success!", __func__);
}

void LivePhoto::clear() {
    const SpinLockGuard guard(mLivePhotoLock);
    mIsStored.reset();
    mOfflineVDRDataOut.clear();
}

}  // namespace zk
