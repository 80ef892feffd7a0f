#include "recorder/ZkaVideoDataRecoderImpl.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "frameloss/FrameDropEvents.h"
#include "platform/CameraMemoryItemInfo.h"
#include "platform/Clock.h"
#include "platform/DfxMonitorAgency.h"
#include "platform/Log.h"
#include "platform/Properties.h"
#include "platform/frameDropOf.h"
#include "records/FieldTags.h"
#include "records/RecordLevel.h"
#include "records/makeName2Tag.h"
#include "registries/MemoryAllocTimeoutInfo.h"

namespace zk {
namespace {

constexpr long kCommercialBuild = 6;
constexpr int32_t kNoPreview = -1;   // scene mode
constexpr uint8_t kVideoStarts = 1;  // values of the field videoAction
constexpr uint8_t kVideoEnded = 2;

long userType() {
    char text[kPropertyValueMax] = {};
    property_get("ro.logsystem.usertype", text, "0");
    return std::strtol(text, nullptr, 0);
}

}  // namespace

ZkaVideoDataRecoderImpl::ZkaVideoDataRecoderImpl()
      : mVDRLevel(property_get_int32("vendor.camera.debug.VideoDataRecorderLevel", 1)),
        mName2Tag(makeName2Tag()),
        mFrameLoss(std::make_shared<FrameLoss>(mVDRLevel)) {
    const std::shared_ptr<Orn::IEventAgency> eventAgency =
            DfxMonitorAgency::GetInstance()->GetEventAgency();
    if (eventAgency == nullptr) {
        VDR_LOGE("%s is true!", "eventAgency == nullptr");
        return;
    }
    mEventClient = eventAgency->CreateEventClient("ZkaVideoDataRecoderImpl");
    if (mEventClient == nullptr) {
        VDR_LOGE("%s is true!", "mEventClient == nullptr");
    } else {
        SubscribeEvent({platform::kFrameDropEventId});
    }
    mFrameLoss->startDay(platform::wallClockSeconds());
    VDR_LOGI(
            "VDR::construct ZkaVideoDataRecoderImpl, mPreviewRecordStatus=%d, mVDRLevel=%d, "
            "mVDRStatus=%d, close VDR!",
            mBinDumpFile.isOn(), mVDRLevel, mVDRStatus.load());
}

ZkaVideoDataRecoderImpl::~ZkaVideoDataRecoderImpl() {
    processEnds();
}

void ZkaVideoDataRecoderImpl::processEnds() {
    mSystemStatus.tellToStop();
    VDR_LOG_AS("~ZkaVideoDataRecoderImpl", kLogInfo, "VDR::deconstruct ZkaVideoDataRecoderImpl!");
}

void ZkaVideoDataRecoderImpl::SubscribeEvent(const std::vector<uint32_t>& eventIds) {
    mEventClient->SetEventCallback(
            [this](const std::shared_ptr<Orn::IEvent>& event) { return ReceiveEvent(event); });
    if (const int ret = mEventClient->SubscribeEvents(eventIds); ret != 0) {
        VDR_LOG_DFX("SubscribeEvents failed, ret = %d", ret);
    } else {
        VDR_LOG_DFX("SubscribeEvents success");
    }
}

void ZkaVideoDataRecoderImpl::initialize(uint8_t videoDebugSupport, int32_t sceneMode) {
    const bool isForcedOn =
            property_get_int32("vendor.camera.debug.VideoDataRecorderStatus", 0) != 0;
    if (!isForcedOn && userType() == kCommercialBuild) {
        VDR_LOGI("VDR::initialize, product is commercial, close VDR!");
        mVDRStatus = false;
        return;
    }
    if (videoDebugSupport == 0) {
        VDR_LOGI("VDR::initialize videoDebugSupport=0, close VDR!");
        mVDRStatus = false;
        return;
    }
    if (sceneMode != kNoPreview) {
        const SpinLockGuard guard(mPreviewEventLock);
        if (!mPreviewStartTime.has_value()) {
            mPreviewStartTime = platform::wallClockMicroseconds();
            if (mEventClient == nullptr ||
                !DfxMonitorAgency::GetInstance()->sendEvent<ZkCamera::FrameDropPreviewStart>(
                        mEventClient, *mPreviewStartTime, sceneMode)) {
                VDR_LOG_DFX("%s send event failed at line:%d", __func__, __LINE__);
            }
        }
    }
    mVDRStatus = true;
    VDR_LOGI("VDR::initialize, open VDR(sceneMode:%d)!", sceneMode);
    const RecordLevel* const level = RecordLevel::find(mVDRLevel);
    if (level == nullptr) {
        VDR_LOGI("VDR::initialize ZkaVideoDataRecoderImpl, VDR level not match any, close VDR!");
        mVDRStatus = false;
        return;
    }
    mName2FuncMap = level->getName2FuncMap();
    VDR_LOGI("VDR::initialize ZkaVideoDataRecoderImpl, %s::getName2FuncMap()=%p!", level->name,
             static_cast<const void*>(mName2FuncMap));
    bindWriters();
    VDR_LOGI("VDR::initialize ZkaVideoDataRecoderImpl, mTag2WriteFunc.size=%d!",
             static_cast<int>(mTag2WriteFunc.size()));
    mFrameLoss->open();
    mLivePhoto.open();
    mBinDumpFile.setBinFile();
    mSystemStatus.SystemStatusInit(sceneMode);
    const FrameRecordPool::Sizes sizes = mFrameRecordPool.sizes();
    VDR_LOGI(
            "VDR::initialize(), mDataReadyPool.size()=%d, mDataDonePool.size()=%d, "
            "mDataProcessingPool.size()=%d!",
            static_cast<int>(sizes.ready), static_cast<int>(sizes.done),
            static_cast<int>(sizes.processing));
}

void ZkaVideoDataRecoderImpl::bindWriters() {
    const Name2FuncMap& name2FuncMap = *mName2FuncMap;
    for (const auto& [name, tag] : mName2Tag) {
        const auto writer = name2FuncMap.find(name);
        mTag2WriteFunc[tag].store(writer != name2FuncMap.end() ? writer->second : nullptr,
                                  std::memory_order_relaxed);
    }
}

void ZkaVideoDataRecoderImpl::unInitialize() {
    mFrameRecordPool.recycleAll();
    mBinDumpFile.appendStaged();
    mFrameLoss->stop();
    mVideoWindow.reset();
    mFrameLoss->resetExceeded();
    mChiFenceMap.clear();
    mChiFrameMap.clear();
    mAllocTimeouts.clear();
    {
        const SpinLockGuard guard(mPreviewEventLock);
        if (mPreviewStartTime.has_value()) {
            if (mEventClient == nullptr ||
                !DfxMonitorAgency::GetInstance()->sendEvent<ZkCamera::FrameDropPreviewEnd>(
                        mEventClient, *mPreviewStartTime)) {
                VDR_LOG_DFX("%s send event failed at line:%d", __func__, __LINE__);
            }
            mPreviewStartTime.reset();
        } else {
            VDR_LOG_DFX("bad mTimeStamp");
        }
    }
    mLivePhoto.clear();
    mSystemStatus.SystemStatusUnInit();
    const FrameRecordPool::Sizes sizes = mFrameRecordPool.sizes();
    VDR_LOGI(
            "VDR::unInitialize(), mDataReadyPool.size()=%d, mDataDonePool.size()=%d, "
            "mDataProcessingPool.size()=%d!",
            static_cast<int>(sizes.ready), static_cast<int>(sizes.done),
            static_cast<int>(sizes.processing));
}

// Sixty times a frame: whatever is rare stands in a function of its own, so that the usual way
// needs no room on the stack.
void ZkaVideoDataRecoderImpl::writeMaintain(uint32_t frameNumber, uint32_t tagId,
                                            const void* data) {
    const WriteFunc writer = tagId < tag::kCount && data != nullptr ? writerOf(tagId) : nullptr;
    if (writer == nullptr) {
        logRefusedWrite(frameNumber, tagId, data);
        return;
    }
    if (void* block = mFrameRecordPool.glance(frameNumber); block != nullptr) {
        writer(block, data);
    } else {
        writeAfterSearch(frameNumber, writer, data);
    }
}

void ZkaVideoDataRecoderImpl::logRefusedWrite(uint32_t frameNumber, uint32_t tagId,
                                              const void* data) {
    const auto id = static_cast<int>(tagId);
    const auto number = static_cast<int>(frameNumber);
    if (tagId >= tag::kCount || data == nullptr) {
        VDR_LOG_AS("writeMaintain", kLogError,
                   "VDR::writeMaintain, tagId is wrong or data is nullptr, tagId=%d, "
                   "frameNumber=%d!",
                   id, number);
    } else {
        VDR_LOG_AS("writeMaintain", kLogError,
                   "VDR::writeMaintain, fun is nullptr, tagId=%d, frameNumber=%d!", id, number);
    }
}

void ZkaVideoDataRecoderImpl::writeAfterSearch(uint32_t frameNumber, WriteFunc writer,
                                               const void* data) {
    if (void* block = mFrameRecordPool.find(frameNumber); block != nullptr) {
        writer(block, data);
    }
}

void ZkaVideoDataRecoderImpl::writeMaintains(uint32_t frameNumber, const uint32_t* tagIds,
                                             const void* const* datas, uint32_t count) {
    if (datas == nullptr) {
        VDR_LOGE("VDR::writeMaintains, data is nullptr, frameNumber=%d!",
                 static_cast<int>(frameNumber));
        return;
    }
    void* block = mFrameRecordPool.find(frameNumber);
    if (block == nullptr || count == 0) {
        return;
    }
    if (tagIds == nullptr) {
        VDR_LOGE("VDR::writeMaintains, tagIds is nullptr, frameNumber=%d!",
                 static_cast<int>(frameNumber));
        return;
    }
    for (uint32_t i = 0; i < count; ++i) {
        if (tagIds[i] >= tag::kCount) {
            VDR_LOGE("VDR::writeMaintains, tagId is wrong, tagId=%d, frameNumber=%d!",
                     static_cast<int>(tagIds[i]), static_cast<int>(frameNumber));
        } else if (const WriteFunc writer = writerOf(tagIds[i]); writer != nullptr) {
            writer(block, datas[i]);
        }
    }
}

void ZkaVideoDataRecoderImpl::VDRProcessing(uint32_t frameNumber) {
    mFrameRecordPool.take(frameNumber);
}

void ZkaVideoDataRecoderImpl::VDRDone(uint32_t frameNumber) {
    // The copy that the history will keep, which serves the live photos on its way.
    FrameStock::Place place = mFrameLoss->place();
    frameData withoutMemory;
    frameData& done = place != nullptr ? *place : withoutMemory;
    switch (mFrameRecordPool.complete(frameNumber, done)) {
        case FrameRecordPool::Copy::kNoSuchFrame:
            return;
        case FrameRecordPool::Copy::kFailed:
            VDR_LOGE("VDR::VDRDone, memcpy_s fail!");
            std::memset(done.bytes, 0, kFrameRecordSize);
            break;
        case FrameRecordPool::Copy::kDone:
            break;
    }
    mLivePhoto.store(frameNumber, done);
    if (place != nullptr) {
        mFrameLoss->frameLostProcess(std::move(place));
    } else {
        mFrameLoss->frameLostProcess(&withoutMemory);
    }
}

void ZkaVideoDataRecoderImpl::VDRDoneCount(uint32_t /*frameNumber*/, uint32_t* count) {
    if (count == nullptr) {
        VDR_LOGE("VDR::count is nullptr!");
        return;
    }
    *count = static_cast<uint32_t>(mFrameRecordPool.sizes().done);
}

void ZkaVideoDataRecoderImpl::VDRReport(uint32_t /*frameNumber*/) {
    if (!mBinDumpFile.isOn()) {
        mFrameRecordPool.reportOldest([](const void* /*record*/) {});
        return;
    }
    BinDumpFile::Turn turn(mBinDumpFile);
    mFrameRecordPool.reportOldest([&turn](const void* record) { turn.stage(record); });
}

void ZkaVideoDataRecoderImpl::getVDRInfo(uint32_t /*frameNumber*/, void** data) {
    if (data == nullptr) {
        VDR_LOGE("VDR::data is nullptr!");
        return;
    }
    *data = mFrameRecordPool.oldestDone();
}

void ZkaVideoDataRecoderImpl::getMP4Writable(bool* writable) {
    if (writable == nullptr) {
        VDR_LOGE("VDR::writable is nullptr!");
        return;
    }
    uint32_t frameNumber = kNoFrameNumber;
    *writable = mFrameRecordPool.oldestDoneFrameNumber(frameNumber) &&
                mVideoWindow.contains(frameNumber);
}

void ZkaVideoDataRecoderImpl::markWritable(uint32_t frameNumber, bool& writable) {
    writable = mVideoWindow.start(frameNumber);
    if (!writable) {
        return;
    }
    VDR_LOGI("VDR::markWritable, mFirstVideoFrameNum = %u!", frameNumber);
    mSystemStatus.startVideo(platform::wallClockSeconds());
    writeMaintain(frameNumber, tag::videoAction, &kVideoStarts);
}

void ZkaVideoDataRecoderImpl::markUnWritable(uint32_t frameNumber) {
    if (!mVideoWindow.end(frameNumber)) {
        return;
    }
    if (mEventClient == nullptr) {
        VDR_LOGE("%s is true!", "mEventClient == nullptr");
    } else {
        DfxMonitorAgency::GetInstance()->sendEvent<ZkCamera::FrameDropVideoEnd>(mEventClient);
    }
    VDR_LOGI("VDR::markUnWritable, mLastVideoFrameNum = %u!", frameNumber - 1);
    mSystemStatus.endVideo(platform::wallClockSeconds());
    writeMaintain(frameNumber, tag::videoAction, &kVideoEnded);
}

void ZkaVideoDataRecoderImpl::getVDRStatus(bool* status) {
    if (status == nullptr) {
        VDR_LOGE("VDR::getVDRStatus is nullptr!");
        return;
    }
    *status = mVDRStatus;
}

void ZkaVideoDataRecoderImpl::checkPreviewAndVideoStatus(uint32_t frameNumber,
                                                         bool* isPreviewOpen) {
    if (isPreviewOpen == nullptr) {
        VDR_LOGE("VDR::isPreviewOpen is nullptr!");
        return;
    }
    *isPreviewOpen = mBinDumpFile.isOn() || mVideoWindow.covers(frameNumber);
}

void ZkaVideoDataRecoderImpl::WriteMaintainForLivePhoto(uint32_t frameNumber, uint32_t tagId,
                                                        const void* data) {
    if (tagId >= tag::kCount || data == nullptr) {
        VDR_LOGE(
                "VDR::WriteMaintainForLivePhoto, tagId is wrong or data is nullptr, tagId=%d, "
                "frameNumber=%d!",
                static_cast<int>(tagId), static_cast<int>(frameNumber));
        return;
    }
    const WriteFunc writer = writerOf(tagId);
    if (writer == nullptr) {
        VDR_LOGE("VDR::WriteMaintainForLivePhoto, fun is nullptr, tagId=%d, frameNumber=%d!",
                 static_cast<int>(tagId), static_cast<int>(frameNumber));
        return;
    }
    mLivePhoto.write(frameNumber, writer, data);
}

void ZkaVideoDataRecoderImpl::CacheDataForLivePhoto(uint32_t frameNumber) {
    if (!mVDRStatus) {
        return;
    }
    frameData cached;
    switch (mFrameRecordPool.copy(frameNumber, cached)) {
        case FrameRecordPool::Copy::kNoSuchFrame:
            return;
        case FrameRecordPool::Copy::kFailed:
            VDR_LOGE("VDR::CacheDataForLivePhoto, memcpy_s fail!");
            std::memset(cached.bytes, 0, kFrameRecordSize);
            break;
        case FrameRecordPool::Copy::kDone:
            break;
    }
    mLivePhoto.store(frameNumber, cached);
}

void ZkaVideoDataRecoderImpl::DoneDataForLivePhoto(uint32_t frameNumber) {
    if (mVDRStatus) {
        mLivePhoto.DoneDataForLivePhoto(frameNumber);
    }
}

void ZkaVideoDataRecoderImpl::PostDataForLivePhoto(int32_t fd, std::string request) {
    mLivePhoto.PostDataForLivePhoto(mVDRStatus, fd, request);
}

void ZkaVideoDataRecoderImpl::RegisterCamDataCb(
        std::function<void(uint32_t, std::string)> callback) {
    mLivePhoto.RegisterCamDataCb(std::move(callback));
}

void ZkaVideoDataRecoderImpl::SetChiFenceMap(void* hFence, unsigned long chiFrameNum,
                                             uint8_t tagId) {
    mChiFenceMap.SetChiFenceMap(hFence, chiFrameNum, tagId);
}

void ZkaVideoDataRecoderImpl::GetChiFenceMap(void* hFence, unsigned long& chiFrameNum,
                                             uint8_t& tagId) {
    mChiFenceMap.GetChiFenceMap(hFence, chiFrameNum, tagId);
}

void ZkaVideoDataRecoderImpl::GetSystemStatus(SysStatusCollection& out) {
    mSystemStatus.GetSystemStatus(out);
}

void ZkaVideoDataRecoderImpl::SetChiFrameMap(uint32_t chiFrameNum, uint32_t frameNum) {
    mChiFrameMap.SetChiFrameMap(chiFrameNum, frameNum);
}

void ZkaVideoDataRecoderImpl::GetChiFrameMap(uint32_t chiFrameNum, uint32_t& frameNum) {
    mChiFrameMap.GetChiFrameMap(chiFrameNum, frameNum);
}

void ZkaVideoDataRecoderImpl::SetMemAllocTimeOutInfo(ZkCamera::CameraMemoryItemInfo info) {
    if (mVDRStatus) {
        mAllocTimeouts.SetMemAllocTimeOutInfo(info);
    }
}

void ZkaVideoDataRecoderImpl::GetMemAllocTimeOutInfo(MemoryAllocTimeoutInfo& out) {
    mAllocTimeouts.GetMemAllocTimeOutInfo(out);
}

void ZkaVideoDataRecoderImpl::SnapshotCountAddOne() {
    mSystemStatus.SnapshotCountAddOne();
}

int32_t ZkaVideoDataRecoderImpl::ReceiveEvent(const std::shared_ptr<Orn::IEvent>& event) {
    return mFrameLoss->ReceiveEvent(event);
}

}  // namespace zk
