#pragma once

#include <bitset>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/RingQueue.h"
#include "base/SpinLock.h"
#include "records/FieldWriter.h"
#include "records/frameData.h"

namespace zk {

class SharedBuffer;
struct LivePhotoRequest;

// Frame records for live photos: a store of the newest record per frame number modulo 180, from
// which marked frames are queued, 180 at most, and posted to the application on request. Any
// thread; posting copies under the lock and does everything slow outside it.
class LivePhoto {
public:
    using CamDataCb = std::function<void(uint32_t, std::string)>;

    // A session opens: memory for the store and the queue, so that no frame of it waits for any.
    void open();
    // Replaces whatever the store held in the frame's place.
    void store(uint32_t frameNumber, const frameData& record);
    // Writes a field into the stored record; nothing where there is none.
    void write(uint32_t frameNumber, WriteFunc writer, const void* data);
    // Queues a copy of the stored record, and drops the oldest one of a full queue.
    void DoneDataForLivePhoto(uint32_t frameNumber);
    // Serves a request: the queued frames from its start to its end go into the buffer behind
    // `fd`, and the reply to the callback. A closed recorder answers state 0.
    void PostDataForLivePhoto(bool isOpen, int32_t fd, const std::string& request);
    void RegisterCamDataCb(CamDataCb callback);
    // Empties the store and the queue; the callback stays.
    void clear();

private:
    static constexpr size_t kFrames = 180;
    static constexpr uint32_t kResultCode = 80;

    struct Post {
        size_t count = 0;              // of the records that were asked for
        RingQueue<frameData> records;  // all of them, or none where memory is refused
        RingQueue<uint32_t> droppedFrames;
    };
    // Drops queued frames before `start` for good and copies those up to `end`.
    Post select(uint32_t start, uint32_t end);
    // Puts what the request asks for into the buffer. 1, or 0 where that failed.
    int32_t fill(SharedBuffer& buffer, const LivePhotoRequest& request);

    alignas(kCacheLine) SpinLock mLivePhotoLock;
    // Kept once allocated: when a session opens, or with the first record of a closed recorder.
    std::unique_ptr<frameData[]> mLivePhotoDataMap VDR_GUARDED_BY(mLivePhotoLock);
    std::bitset<kFrames> mIsStored VDR_GUARDED_BY(mLivePhotoLock);
    RingQueue<frameData> mOfflineVDRDataOut VDR_GUARDED_BY(mLivePhotoLock);  // oldest in front

    SpinLock mResultCamDataCbLock;
    CamDataCb mResultCamDataCb VDR_GUARDED_BY(mResultCamDataCbLock);
};

}  // namespace zk
