#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "fuzz/SequencePlayer.h"
#include "platform/CameraMemoryItemInfo.h"
#include "platform/host/LogControl.h"
#include "records/FieldTags.h"
#include "records/VDRData1.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"

// The operations of the interface, in its order, with arguments out of the input.

namespace zk::fuzz {

namespace {

#define VDR_SCALAR_SIZE(field) sizeof(vdr1::VDRData1::field),
#define VDR_ARRAY_SIZE(field, count) sizeof(vdr1::VDRData1::field[0]),
constexpr size_t kFieldSizes[] = {VDR1_FIELDS(VDR_SCALAR_SIZE, VDR_ARRAY_SIZE)};

template <typename T>
std::string bytesOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

}  // namespace

uint32_t SequencePlayer::tag() {
    const uint8_t kind = mInput.byte();
    return kind < 250 ? kind % (kTagCount + 1) : mInput.take<uint32_t>();
}

std::vector<uint8_t> SequencePlayer::fieldFor(uint32_t tag) {
    std::vector<uint8_t> field(tag < kTagCount ? kFieldSizes[tag] : 1, mInput.byte());
    mInput.takeTo(field.data(), std::min<size_t>(field.size(), 8));
    return field;
}

void SequencePlayer::take(uint32_t frameNumber) {
    mRecorder->VDRProcessing(frameNumber);
    if (mProcessing.size() + mDone < kBlocks) {
        mProcessing.insert(frameNumber);
    }
}

void SequencePlayer::complete(uint32_t frameNumber) {
    mRecorder->VDRDone(frameNumber);
    mDone += mProcessing.erase(frameNumber);
}

void SequencePlayer::reportOldest(uint32_t frameNumber) {
    mRecorder->VDRReport(frameNumber);
    if (mDone == 0) {
        return;
    }
    --mDone;
    if (mIsRecording && ++mStagedRecords == 2) {
        mAppendedRecords += mIsBinFileNamed ? 2 : 0;
        mStagedRecords = 0;
    }
}

void SequencePlayer::initialize() {
    const uint8_t videoDebugSupport = mInput.byte() % 8;
    mRecorder->initialize(videoDebugSupport, mInput.take<int8_t>());
    bool isOpen = false;
    mRecorder->getVDRStatus(&isOpen);
    if (isOpen) {
        mIsBinFileNamed |= mIsRecording && !mIsClockBroken;
        awaitSampler();
    }
}

void SequencePlayer::unInitialize() {
    mProcessing.clear();
    mDone = 0;
    mAppendedRecords += mIsBinFileNamed ? mStagedRecords : 0;
    mStagedRecords = 0;
    mIsSamplerWanted = false;
    mRecorder->unInitialize();
}

void SequencePlayer::writeMaintain() {
    const uint32_t number = frame();
    const uint32_t tagId = tag();
    const bool isNull = mInput.byte() % 16 == 0;
    mRecorder->writeMaintain(number, tagId, isNull ? nullptr : fieldFor(tagId).data());
}

void SequencePlayer::writeMaintains() {
    const uint32_t number = frame();
    const uint8_t kind = mInput.byte();
    const uint32_t count = kind % 8;
    std::vector<uint32_t> tagIds;
    std::vector<std::vector<uint8_t>> fields;
    std::vector<const void*> datas;
    for (uint32_t i = 0; i < count; ++i) {
        tagIds.push_back(tag());
        fields.push_back(fieldFor(tagIds.back()));
        datas.push_back(mInput.byte() % 16 == 0 ? nullptr : fields.back().data());
    }
    mRecorder->writeMaintains(number, (kind & 0xC0) == 0xC0 ? nullptr : tagIds.data(),
                              (kind & 0x30) == 0x30 ? nullptr : datas.data(), count);
}

void SequencePlayer::processing() {
    take(frame());
}

void SequencePlayer::done() {
    complete(frame());
}

void SequencePlayer::doneCount() {
    mRecorder->VDRDoneCount(frame(), nullptr);
}

void SequencePlayer::report() {
    reportOldest(frame());
}

void SequencePlayer::info() {
    mRecorder->getVDRInfo(frame(), nullptr);
    void* record = nullptr;
    mRecorder->getVDRInfo(frame(), &record);
    note(record == nullptr ? "none" : std::string(static_cast<char*>(record), kFrameRecordSize));
}

void SequencePlayer::mp4Writable() {
    bool isWritable = false;
    mRecorder->getMP4Writable(mInput.byte() % 16 == 0 ? nullptr : &isWritable);
    note(isWritable);
}

void SequencePlayer::markWritable() {
    bool isWritable = false;
    mRecorder->markWritable(frame(), isWritable);
    note(isWritable);
}

void SequencePlayer::markUnWritable() {
    mRecorder->markUnWritable(frame());
}

void SequencePlayer::status() {
    bool isOpen = false;
    mRecorder->getVDRStatus(mInput.byte() % 16 == 0 ? nullptr : &isOpen);
    note(isOpen);
}

void SequencePlayer::checkPreview() {
    bool isOpen = false;
    const uint32_t number = frame();
    mRecorder->checkPreviewAndVideoStatus(number, mInput.byte() % 16 == 0 ? nullptr : &isOpen);
    note(isOpen);
}

void SequencePlayer::writeForLivePhoto() {
    const uint32_t number = frame();
    const uint32_t tagId = tag();
    const bool isNull = mInput.byte() % 16 == 0;
    mRecorder->WriteMaintainForLivePhoto(number, tagId, isNull ? nullptr : fieldFor(tagId).data());
}

void SequencePlayer::cacheForLivePhoto() {
    mRecorder->CacheDataForLivePhoto(frame());
}

void SequencePlayer::doneForLivePhoto() {
    mRecorder->DoneDataForLivePhoto(frame());
}

void SequencePlayer::postForLivePhoto() {
    const uint8_t kind = mInput.byte();
    const size_t pages = kind % 8;
    if (kind >= 224) {
        post(mInput.text(kind % 32), pages);
        return;
    }
    const uint32_t start = frame();
    const uint32_t end = frame();
    const size_t size = pages * kFrameRecordSize + (kind % 16 == 15 ? frame() : 0);
    post("{\"id\":\"a\",\"startFrame\":" + std::to_string(start) + ",\"endFrame\":" +
                 std::to_string(end) + ",\"bufferSize\":" + std::to_string(size) + "}",
         pages);
}

void SequencePlayer::post(const std::string& request, size_t pages) {
    const int fd = pages == 0 ? -1 : memfd_create("buffer", 0);
    require(fd < 0 || ftruncate(fd, static_cast<off_t>(pages * kFrameRecordSize)) == 0,
            "ftruncate");
    mRecorder->PostDataForLivePhoto(fd, request);
    size_t records = 0;
    for (const host::LogLine& line : host::capturedLog()) {
        records += line.text.find("PostDataForLivePhoto, count=") != std::string::npos ? 1 : 0;
    }
    require(records <= pages, "as many records as the buffer holds");
    std::string content(records * kFrameRecordSize, '\0');
    require(fd < 0 || pread(fd, content.data(), content.size(), 0) ==
                              static_cast<ssize_t>(content.size()),
            "pread");
    note(content);
    if (fd >= 0) {
        close(fd);
    }
}

void SequencePlayer::registerCallback() {
    const uint8_t kind = mInput.byte();
    if (kind % 16 == 0) {
        mRecorder->RegisterCamDataCb(nullptr);
        return;
    }
    mRecorder->RegisterCamDataCb([this, kind](uint32_t code, const std::string& text) {
        note(code);
        note(text);
        if (kind % 4 == 1) {  // whoever is called may call, and may be replaced meanwhile
            mRecorder->RegisterCamDataCb([](uint32_t, const std::string&) {});
            mRecorder->DoneDataForLivePhoto(mFrame);
        }
    });
}

void SequencePlayer::setFence() {
    auto* fence = reinterpret_cast<void*>(uintptr_t{mInput.byte()});
    const auto chiFrameNum = mInput.take<uint64_t>();
    mRecorder->SetChiFenceMap(fence, chiFrameNum, mInput.byte());
}

void SequencePlayer::getFence() {
    unsigned long chiFrameNum = 0;
    uint8_t tagId = 0;
    mRecorder->GetChiFenceMap(reinterpret_cast<void*>(uintptr_t{mInput.byte()}), chiFrameNum,
                              tagId);
    note(chiFrameNum);
    note(tagId);
}

void SequencePlayer::systemStatus() {
    SysStatusCollection snapshot{};
    mRecorder->GetSystemStatus(snapshot);
    note(bytesOf(snapshot));
}

void SequencePlayer::setFrame() {
    const uint32_t chiFrameNum = frame();
    mRecorder->SetChiFrameMap(chiFrameNum, frame());
}

void SequencePlayer::getFrame() {
    uint32_t frameNumber = 0;
    mRecorder->GetChiFrameMap(frame(), frameNumber);
    note(frameNumber);
}

void SequencePlayer::setAllocation() {
    ZkCamera::CameraMemoryItemInfo info;
    info.itemName = mInput.text(mInput.byte() % 64);
    info.allocTimeMs = mInput.byte() % 2 == 0 ? 5001 : mInput.take<uint32_t>();
    info.itemType = mInput.byte();
    info.allocSize = mInput.take<uint64_t>();
    mRecorder->SetMemAllocTimeOutInfo(info);
}

void SequencePlayer::getAllocation() {
    MemoryAllocTimeoutInfo info{};
    mRecorder->GetMemAllocTimeOutInfo(info);
    note(bytesOf(info));
}

void SequencePlayer::countSnapshot() {
    mRecorder->SnapshotCountAddOne();
}

}  // namespace zk::fuzz
