#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "fuzz/SequencePlayer.h"
#include "fuzz/require.h"
#include "platform/CameraMemoryItemInfo.h"
#include "records/FieldTags.h"
#include "records/VDRData1.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"

// The steps of a sequence, with arguments out of the input.

namespace zk::fuzz {

namespace {

#define VDR_SCALAR_SIZE(field) sizeof(vdr1::VDRData1::field),
#define VDR_ARRAY_SIZE(field, count) sizeof(vdr1::VDRData1::field[0]),
constexpr size_t kFieldSizes[] = {VDR1_FIELDS(VDR_SCALAR_SIZE, VDR_ARRAY_SIZE)};

void* fence(uint8_t number) {
    return reinterpret_cast<void*>(uintptr_t{number});
}

class ForeignEvent : public Orn::IEventBase {
public:
    uint32_t GetEventId() const override { return 0x4004; }
};

}  // namespace

using P = SequencePlayer;
using R = ZkaVideoDataRecoderImpl;

// The operations of the interface in its order, then what else happens: seeds name steps by their
// places.
const std::vector<P::Step> P::kSteps = {
        [](P& p) { p.initialize(); },
        [](P& p) { p.unInitialize(); },
        [](P& p) { p.write(&R::writeMaintain); },
        [](P& p) { p.writeMaintains(); },
        [](P& p) { p.take(p.frame()); },
        [](P& p) { p.complete(p.frame()); },
        [](P& p) { p.recorder().VDRDoneCount(p.frame(), nullptr); },
        [](P& p) { p.reportOldest(p.frame()); },
        [](P& p) {
            p.recorder().getVDRInfo(p.frame(), nullptr);
            void* record = nullptr;
            p.recorder().getVDRInfo(p.frame(), &record);
            p.noteBytes(record, record == nullptr ? 0 : kFrameRecordSize);
        },
        [](P& p) {
            bool isWritable = false;
            p.recorder().getMP4Writable(p.orNull(&isWritable));
            p.note(isWritable);
        },
        [](P& p) {
            bool isWritable = false;
            p.recorder().markWritable(p.frame(), isWritable);
            p.note(isWritable);
        },
        [](P& p) { p.recorder().markUnWritable(p.frame()); },
        [](P& p) {
            bool isOpen = false;
            p.recorder().getVDRStatus(p.orNull(&isOpen));
            p.note(isOpen);
        },
        [](P& p) {
            bool isOpen = false;
            const uint32_t number = p.frame();
            p.recorder().checkPreviewAndVideoStatus(number, p.orNull(&isOpen));
            p.note(isOpen);
        },
        [](P& p) { p.write(&R::WriteMaintainForLivePhoto); },
        [](P& p) { p.recorder().CacheDataForLivePhoto(p.frame()); },
        [](P& p) { p.recorder().DoneDataForLivePhoto(p.frame()); },
        [](P& p) { p.postForLivePhoto(); },
        [](P& p) { p.registerCallback(); },
        [](P& p) {
            void* hFence = fence(p.mInput.byte());
            const auto chiFrameNum = p.mInput.take<uint64_t>();
            p.recorder().SetChiFenceMap(hFence, chiFrameNum, p.mInput.byte());
        },
        [](P& p) {
            unsigned long chiFrameNum = 0;
            uint8_t tagId = 0;
            p.recorder().GetChiFenceMap(fence(p.mInput.byte()), chiFrameNum, tagId);
            p.note(chiFrameNum);
            p.note(tagId);
        },
        [](P& p) {
            p.awaitSampler();
            SysStatusCollection snapshot{};
            p.recorder().GetSystemStatus(snapshot);
            p.noteBytes(&snapshot, sizeof(snapshot));
        },
        [](P& p) {
            const uint32_t chiFrameNum = p.frame();
            p.recorder().SetChiFrameMap(chiFrameNum, p.frame());
        },
        [](P& p) {
            uint32_t frameNumber = 0;
            p.recorder().GetChiFrameMap(p.frame(), frameNumber);
            p.note(frameNumber);
        },
        [](P& p) { p.setAllocation(); },
        [](P& p) {
            MemoryAllocTimeoutInfo info{};
            p.recorder().GetMemAllocTimeOutInfo(info);
            p.noteBytes(&info, sizeof(info));
        },
        [](P& p) { p.recorder().SnapshotCountAddOne(); },
        [](P& p) { p.manyFrames(); },
        [](P& p) { p.announce(); },
        [](P& p) {
            const bool isNull = p.mInput.byte() % 2 == 0;
            p.recorder().ReceiveEvent(isNull ? nullptr : std::make_shared<ForeignEvent>());
        },
        [](P& p) { p.moveClock(); },
        [](P& p) { p.spoilFiles(); },
        [](P& p) { p.spoilServices(); },
        [](P& p) { p.moveSampler(); },
        [](P& p) { p.reload(); },
};

uint32_t SequencePlayer::frame() {
    constexpr uint32_t kSpecial[] = {0, 1, 10, 11, INT32_MAX, 0x80000000U, 0xFFFFFFFEU, UINT32_MAX};
    constexpr uint8_t kNear = 200;
    const uint8_t kind = mInput.byte();
    if (kind < kNear) {
        return mFrame + kind - kNear / 2;
    }
    return kind - kNear < 8 ? kSpecial[kind - kNear] : mInput.take<uint32_t>();
}

uint32_t SequencePlayer::tag() {
    const uint8_t kind = mInput.byte();
    return kind < 250 ? kind % (kTagCount + 1) : mInput.take<uint32_t>();
}

std::vector<uint8_t> SequencePlayer::fieldFor(uint32_t tag) {
    std::vector<uint8_t> field(tag < kTagCount ? kFieldSizes[tag] : 1, mInput.byte());
    mInput.takeTo(field.data(), std::min<size_t>(field.size(), 8));
    std::replace(field.begin(), field.end(), uint8_t{'\n'}, uint8_t{'\t'});  // a line per frame
    return field;
}

void SequencePlayer::write(void (R::*operation)(uint32_t, uint32_t, const void*)) {
    const uint32_t number = frame();
    const uint32_t tagId = tag();
    const bool isNull = mInput.byte() % 16 == 0;
    (recorder().*operation)(number, tagId, isNull ? nullptr : fieldFor(tagId).data());
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
        datas.push_back(orNull(fields.back().data()));
    }
    recorder().writeMaintains(number, (kind & 0xC0) == 0xC0 ? nullptr : tagIds.data(),
                              (kind & 0x30) == 0x30 ? nullptr : datas.data(), count);
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
    mPosted = 0;
    recorder().PostDataForLivePhoto(fd, request);
    checkLog();
    require(mPosted <= pages, "as many records as the buffer holds");
    frameData record;
    for (size_t i = 0; i < mPosted; ++i) {
        require(read(fd, record.bytes, kFrameRecordSize) == kFrameRecordSize, "read");
        noteBytes(record.bytes, kFrameRecordSize);
    }
    if (fd >= 0) {
        close(fd);
    }
}

void SequencePlayer::registerCallback() {
    const uint8_t kind = mInput.byte();
    if (kind % 16 == 0) {
        recorder().RegisterCamDataCb(nullptr);
        return;
    }
    recorder().RegisterCamDataCb([this, kind](uint32_t code, const std::string& text) {
        note(code);
        note(text);
        if (kind % 4 == 1) {  // whoever is called may call, and may be replaced meanwhile
            recorder().RegisterCamDataCb([](uint32_t, const std::string&) {});
            recorder().DoneDataForLivePhoto(mFrame);
        }
    });
}

void SequencePlayer::setAllocation() {
    ZkCamera::CameraMemoryItemInfo info;
    info.itemName = mInput.text(mInput.byte() % 64);
    info.allocTimeMs = mInput.byte() % 2 == 0 ? 5001 : mInput.take<uint32_t>();
    info.itemType = mInput.byte();
    info.allocSize = mInput.take<uint64_t>();
    recorder().SetMemAllocTimeOutInfo(info);
}

void SequencePlayer::manyFrames() {
    const uint8_t count = mInput.byte() % 128;
    const uint8_t kind = mInput.byte();
    mFrame += (kind & 1) != 0 ? 2 : 1;
    for (int i = 0; i <= count && mFramesLeft > 0; ++i, ++mFrame, --mFramesLeft) {
        take(mFrame);
        recorder().writeMaintain(mFrame, 0, &mFrame);
        if ((kind & 2) != 0) {
            recorder().CacheDataForLivePhoto(mFrame);
            recorder().DoneDataForLivePhoto(mFrame);
        }
        if ((kind & 4) == 0) {
            complete(mFrame);
        }
        if ((kind & 8) == 0) {
            reportOldest(0);
        }
    }
}

}  // namespace zk::fuzz
