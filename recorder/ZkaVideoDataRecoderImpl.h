#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "base/SpinLock.h"
#include "dump/BinDumpFile.h"
#include "frameloss/FrameLoss.h"
#include "livephoto/LivePhoto.h"
#include "platform/OrnEvent.h"
#include "recorder/FrameRecordPool.h"
#include "recorder/IVideoDataRecoder.h"
#include "recorder/VideoWindow.h"
#include "records/FieldTags.h"
#include "records/FieldWriter.h"
#include "registries/AllocTimeouts.h"
#include "registries/ChiFenceMap.h"
#include "registries/ChiFrameMap.h"
#include "sysstatus/SystemStatus.h"

namespace zk {

// The recorder: owns one object per subsystem, forwards to them, and orders what happens when a
// camera session opens and closes. Any thread; the monitoring service calls ReceiveEvent on its
// own.
class ZkaVideoDataRecoderImpl final : public IVideoDataRecoder {
public:
    // Allocates all record memory, reads the record level and the recording switch, and
    // subscribes to frame-drop announcements. The recorder stays closed.
    ZkaVideoDataRecoderImpl();
    // Only where no other thread is inside any more.
    ~ZkaVideoDataRecoderImpl() override;
    // The process ends, with other threads inside anything: tells the sampler to stop, touches
    // nothing else and waits for nobody.
    void processEnds();

    void initialize(uint8_t videoDebugSupport, int32_t sceneMode) override;
    void unInitialize() override;
    void writeMaintain(uint32_t frameNumber, uint32_t tagId, const void* data) override;
    void writeMaintains(uint32_t frameNumber, const uint32_t* tagIds, const void* const* datas,
                        uint32_t count) override;
    void VDRProcessing(uint32_t frameNumber) override;
    void VDRDone(uint32_t frameNumber) override;
    void VDRDoneCount(uint32_t frameNumber, uint32_t* count) override;
    void VDRReport(uint32_t frameNumber) override;
    void getVDRInfo(uint32_t frameNumber, void** data) override;
    void getMP4Writable(bool* writable) override;
    void markWritable(uint32_t frameNumber, bool& writable) override;
    void markUnWritable(uint32_t frameNumber) override;
    void getVDRStatus(bool* status) override;
    void checkPreviewAndVideoStatus(uint32_t frameNumber, bool* isPreviewOpen) override;
    void WriteMaintainForLivePhoto(uint32_t frameNumber, uint32_t tagId, const void* data) override;
    void CacheDataForLivePhoto(uint32_t frameNumber) override;
    void DoneDataForLivePhoto(uint32_t frameNumber) override;
    void PostDataForLivePhoto(int32_t fd, std::string request) override;
    void RegisterCamDataCb(std::function<void(uint32_t, std::string)> callback) override;
    void SetChiFenceMap(void* hFence, unsigned long chiFrameNum, uint8_t tagId) override;
    void GetChiFenceMap(void* hFence, unsigned long& chiFrameNum, uint8_t& tagId) override;
    void GetSystemStatus(SysStatusCollection& out) override;
    void SetChiFrameMap(uint32_t chiFrameNum, uint32_t frameNum) override;
    void GetChiFrameMap(uint32_t chiFrameNum, uint32_t& frameNum) override;
    void SetMemAllocTimeOutInfo(ZkCamera::CameraMemoryItemInfo info) override;
    void GetMemAllocTimeOutInfo(MemoryAllocTimeoutInfo& out) override;
    void SnapshotCountAddOne() override;

    // An event of the monitoring service, on its thread. -22 for null, 0 otherwise.
    int32_t ReceiveEvent(const std::shared_ptr<Orn::IEvent>& event);

private:
    void SubscribeEvent(const std::vector<uint32_t>& eventIds);
    // The line about a write without a usable tag, data or writer.
    __attribute__((noinline)) static void logRefusedWrite(uint32_t frameNumber, uint32_t tagId,
                                                          const void* data);
    // A field write to a frame that a glance did not show.
    __attribute__((noinline)) void writeAfterSearch(uint32_t frameNumber, WriteFunc writer,
                                                    const void* data);
    // Takes every tag's writer from mName2FuncMap.
    void bindWriters();
    WriteFunc writerOf(uint32_t tagId) const {
        return mTag2WriteFunc[tagId].load(std::memory_order_relaxed);
    }

    std::atomic<bool> mVDRStatus{false};  // open
    const int32_t mVDRLevel;              // record layout: 1 or 2, anything else keeps it closed

    BinDumpFile mBinDumpFile;
    FrameRecordPool mFrameRecordPool;
    VideoWindow mVideoWindow;

    const std::unordered_map<std::string, uint16_t> mName2Tag;
    std::atomic<const Name2FuncMap*> mName2FuncMap{nullptr};  // of the active level
    // Tag -> the active level's writer; null where the level lacks the field or nothing is bound.
    std::array<std::atomic<WriteFunc>, tag::kCount> mTag2WriteFunc{};

    const std::shared_ptr<FrameLoss> mFrameLoss;  // shared with its writers on the worker pool

    SystemStatus mSystemStatus;
    LivePhoto mLivePhoto;
    ChiFenceMap mChiFenceMap;
    ChiFrameMap mChiFrameMap;
    AllocTimeouts mAllocTimeouts;

    SpinLock mPreviewEventLock;  // held while an event is sent: the service gets them in order
    // Start of the running preview, microseconds since the epoch; its start event is sent.
    std::optional<uint64_t> mPreviewStartTime VDR_GUARDED_BY(mPreviewEventLock);

    // Set by the constructor only; null where the service was not there. Last, so that no event
    // arrives any more when the members above go.
    std::shared_ptr<Orn::IEventClient> mEventClient;
};

}  // namespace zk
