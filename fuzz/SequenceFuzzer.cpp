#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "fuzz/CheckedRecorder.h"
#include "fuzz/InputBytes.h"
#include "platform/CameraMemoryItemInfo.h"
#include "platform/host/ClockControl.h"
#include "platform/host/FrameDropNotification.h"
#include "platform/host/SyncControl.h"
#include "records/FieldTags.h"
#include "records/VDRData1.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"

// Any sequence of calls, on a device where anything may fail: the recorder keeps its promises, and
// both record levels do exactly the same.

namespace zk::fuzz {
namespace {

#define VDR_SCALAR_SIZE(field) sizeof(vdr1::VDRData1::field),
#define VDR_ARRAY_SIZE(field, count) sizeof(vdr1::VDRData1::field[0]),
constexpr size_t kFieldSizes[] = {VDR1_FIELDS(VDR_SCALAR_SIZE, VDR_ARRAY_SIZE)};

class ForeignEvent : public Orn::IEventBase {
public:
    uint32_t GetEventId() const override { return 0x4004; }
};

// An input read as steps: calls with arguments of any kind, and what may happen to a device.
class Sequence : public CheckedRecorder {
public:
    Sequence(int level, InputBytes input)
          : CheckedRecorder(level, input.byte() % 8 == 7), mInput(input) {
        load(mInput.byte());
    }

    // Plays it and gives all that the recorder did.
    std::string play() {
        while (!mInput.empty()) {
            kSteps[mInput.byte() % std::size(kSteps)](*this);
            check();
        }
        const size_t queued =
                post("{\"endFrame\":4294967294,\"bufferSize\":4000000,\"id\":\"all\"}", 1000);
        require(queued <= kLivePhotoQueue, "180 records in the live-photo queue");
        host::failEveryOpen(false);
        host::failFileCall(host::FileCall::kOpen, 0);
        unload();
        for (const uint64_t stamp : mStamps) {
            note(settlement(stamp));
        }
        checkFiles();
        for (const auto& event : host::MonitoringService::instance().sentEvents()) {
            note(event->GetEventId());
        }
        return std::move(mTranscript);
    }

private:
    using S = Sequence;
    using Recorder = ZkaVideoDataRecoderImpl;
    static void (*const kSteps[35])(S&);

    uint8_t byte() { return mInput.byte(); }

    // A frame number near those of late, a special one, or any.
    uint32_t frame() {
        constexpr uint32_t kSpecial[] = {0,         1,           10,          11,
                                         INT32_MAX, 0x80000000U, 0xFFFFFFFEU, UINT32_MAX};
        const uint8_t kind = byte();
        if (kind < 200) {
            return mFrame + kind - 100;
        }
        return kind < 208 ? kSpecial[kind - 200] : mInput.take<uint32_t>();
    }

    uint32_t tag() {
        const uint8_t kind = byte();
        return kind < 250 ? kind % (tag::kCount + 1) : mInput.take<uint32_t>();
    }

    // Ends with its memory; as long as the tag's field.
    std::vector<uint8_t> fieldFor(uint32_t tag) {
        std::vector<uint8_t> field(tag < tag::kCount ? kFieldSizes[tag] : 1, byte());
        mInput.takeTo(field.data(), std::min<size_t>(field.size(), 8));
        std::replace(field.begin(), field.end(), uint8_t{'\n'}, uint8_t{'\t'});  // a line per frame
        return field;
    }

    // One of a few, or null.
    void* fence() {
        static char fences[255];
        const uint8_t kind = byte();
        return kind == 0 ? nullptr : &fences[kind - 1];
    }

    template <typename T>
    T* orNull(T* pointer) {
        return byte() % 16 == 0 ? nullptr : pointer;
    }

    void write(void (Recorder::*operation)(uint32_t, uint32_t, const void*)) {
        const uint32_t number = frame();
        const uint32_t tagId = tag();
        const bool isNull = byte() % 16 == 0;
        (recorder().*operation)(number, tagId, isNull ? nullptr : fieldFor(tagId).data());
    }

    void writeMaintains() {
        const uint32_t number = frame();
        const uint8_t kind = byte();
        std::vector<uint32_t> tagIds(kind % 8);
        std::vector<std::vector<uint8_t>> fields(tagIds.size());
        std::vector<const void*> datas(tagIds.size());
        for (size_t i = 0; i < tagIds.size(); ++i) {
            tagIds[i] = tag();
            fields[i] = fieldFor(tagIds[i]);
            datas[i] = orNull(fields[i].data());
        }
        recorder().writeMaintains(number, (kind & 0xC0) == 0xC0 ? nullptr : tagIds.data(),
                                  (kind & 0x30) == 0x30 ? nullptr : datas.data(), kind % 8);
    }

    void postAny() {
        const uint8_t kind = byte();
        const size_t pages = kind % 8;
        if (kind >= 224) {
            post(mInput.text(kind % 32), pages);
            return;
        }
        const std::string start = std::to_string(frame());
        const std::string end = std::to_string(frame());
        const size_t size = pages * kFrameRecordSize + (kind % 16 == 15 ? frame() : 0);
        post("{\"id\":\"a\",\"startFrame\":" + start + ",\"endFrame\":" + end +
                     ",\"bufferSize\":" + std::to_string(size) + "}",
             pages);
    }

    // Into a buffer of so many pages; without any, into no buffer. Gives the number of records.
    size_t post(const std::string& request, size_t pages) {
        checkLog();
        const int fd = pages == 0 ? -1 : memfd_create("buffer", 0);
        require(fd < 0 || ftruncate(fd, static_cast<off_t>(pages * kFrameRecordSize)) == 0, "fd");
        recorder().PostDataForLivePhoto(fd, request);
        const size_t posted = checkLog();
        frameData record;
        for (size_t i = 0; i < posted; ++i) {
            require(read(fd, record.bytes, kFrameRecordSize) == kFrameRecordSize,
                    "as many records as the buffer holds");
            note(record.bytes, kFrameRecordSize);
        }
        close(fd);
        return posted;
    }

    void registerCallback() {
        const uint8_t kind = byte();
        if (kind % 16 == 0) {
            recorder().RegisterCamDataCb(nullptr);
            return;
        }
        recorder().RegisterCamDataCb([this, kind](uint32_t code, const std::string& text) {
            note(std::to_string(code) + text);
            if (kind % 4 == 1) {  // whoever is called may call, and may be replaced meanwhile
                recorder().RegisterCamDataCb([](uint32_t, const std::string&) {});
                recorder().DoneDataForLivePhoto(mFrame);
            }
        });
    }

    void setAllocation() {
        ZkCamera::CameraMemoryItemInfo info;
        info.itemName = mInput.text(byte() % 64);
        info.allocTimeMs = byte() % 2 == 0 ? 5001 : mInput.take<uint32_t>();
        info.itemType = byte();
        info.allocSize = mInput.take<uint64_t>();
        recorder().SetMemAllocTimeOutInfo(info);
    }

    void manyFrames() {
        const uint8_t length = byte();
        const uint8_t kind = byte();
        mFrame += (kind & 1) != 0 ? 2 : 1;
        // Often few, since they take most of the time.
        const int count = length < 128 ? length + 1 : length % 16 + 1;
        for (int i = 0; i < count && mFramesLeft > 0; ++i, ++mFrame, --mFramesLeft) {
            take(mFrame);
            recorder().writeMaintain(mFrame, tag::frameNumber, &mFrame);
            if ((kind & 2) != 0) {
                recorder().CacheDataForLivePhoto(mFrame);
                recorder().DoneDataForLivePhoto(mFrame);
            }
            if ((kind & 4) == 0) {
                complete(mFrame);
            }
            if ((kind & 8) == 0) {
                report(0);
            }
        }
    }

    // On this thread, so that nobody waits for the service's.
    void announce() {
        const uint8_t kind = byte();
        const uint64_t stamp =
                kind < 240 ? kNow + kind % 16 * uint64_t{1000000} : mInput.take<uint64_t>();
        const uint64_t number = (kind % 32 == 31 ? uint64_t{1} << 32 : 0) + frame();
        mStamps.insert(stamp);
        if (mIsSubscribed) {
            recorder().ReceiveEvent(
                    std::make_shared<ZkCamera::FrameDropNotification>(stamp, number));
        }
    }

    void moveClock() {
        const uint8_t kind = byte();
        host::failClock(kind % 16 == 15);
        if (kind < 64) {
            host::advanceWallClock(kind * int64_t{1000000});
        } else if (kind < 128) {
            host::advanceWallClock((kind - 96) * int64_t{86400000000});
        } else {
            // Half of all times: the largest stands for the machine's own clock.
            host::setWallClock(mInput.take<uint64_t>() / 2);
        }
    }

    void spoilServices() {
        const uint8_t kind = byte();
        host::MonitoringService::instance().setSendResult((kind & 1) != 0 ? -1 : 0);
        host::withholdPromises((kind & 2) != 0);
        host::setFirstAppFrameNumber((kind & 4) != 0 ? mFrame : 0);
        if ((kind & 24) == 24 && !mStamps.empty()) {
            SyncManager::getInstance()->forget(*mStamps.begin());
        }
    }

    InputBytes mInput;
    uint32_t mFrame = 1000;  // numbers are drawn around it
    int mFramesLeft = 200;   // of manyFrames, so that no sequence takes for ever
    int mReloadsLeft = 2;
    std::set<uint64_t> mStamps;  // of announcements
};

// The operations of the interface in its order, then what else happens: seeds name steps by their
// places.
void (*const Sequence::kSteps[35])(Sequence&) = {
        [](S& s) {
            const uint8_t videoDebugSupport = s.byte() % 8;
            s.initialize(videoDebugSupport, s.mInput.take<int8_t>());
        },
        [](S& s) { s.unInitialize(); },
        [](S& s) { s.write(&Recorder::writeMaintain); },
        [](S& s) { s.writeMaintains(); },
        [](S& s) { s.take(s.frame()); },
        [](S& s) { s.complete(s.frame()); },
        [](S& s) { s.recorder().VDRDoneCount(s.frame(), nullptr); },
        [](S& s) { s.report(s.frame()); },
        [](S& s) {
            s.recorder().getVDRInfo(s.frame(), nullptr);
            void* record = nullptr;
            s.recorder().getVDRInfo(s.frame(), &record);
            s.note(record, record == nullptr ? 0 : kFrameRecordSize);
        },
        [](S& s) {
            bool isWritable = false;
            s.recorder().getMP4Writable(s.orNull(&isWritable));
            s.note(isWritable);
        },
        [](S& s) {
            bool isWritable = false;
            s.recorder().markWritable(s.frame(), isWritable);
            s.note(isWritable);
        },
        [](S& s) { s.recorder().markUnWritable(s.frame()); },
        [](S& s) {
            bool isOpen = false;
            s.recorder().getVDRStatus(s.orNull(&isOpen));
            s.note(isOpen);
        },
        [](S& s) {
            bool isOpen = false;
            const uint32_t number = s.frame();
            s.recorder().checkPreviewAndVideoStatus(number, s.orNull(&isOpen));
            s.note(isOpen);
        },
        [](S& s) { s.write(&Recorder::WriteMaintainForLivePhoto); },
        [](S& s) { s.recorder().CacheDataForLivePhoto(s.frame()); },
        [](S& s) { s.recorder().DoneDataForLivePhoto(s.frame()); },
        [](S& s) { s.postAny(); },
        [](S& s) { s.registerCallback(); },
        [](S& s) {
            void* fence = s.fence();
            const auto chiFrameNum = s.mInput.take<uint64_t>();
            s.recorder().SetChiFenceMap(fence, chiFrameNum, s.byte());
        },
        [](S& s) {
            unsigned long chiFrameNum = 0;
            uint8_t tagId = 0;
            void* fence = s.fence();
            s.recorder().GetChiFenceMap(fence, chiFrameNum, tagId);
            s.note(std::to_string(chiFrameNum) + ' ' + std::to_string(tagId));
        },
        [](S& s) {
            s.awaitSampler();
            SysStatusCollection snapshot{};
            s.recorder().GetSystemStatus(snapshot);
            s.note(&snapshot, sizeof(snapshot));
        },
        [](S& s) {
            const uint32_t chiFrameNum = s.frame();
            s.recorder().SetChiFrameMap(chiFrameNum, s.frame());
        },
        [](S& s) {
            uint32_t frameNumber = 0;
            s.recorder().GetChiFrameMap(s.frame(), frameNumber);
            s.note(frameNumber);
        },
        [](S& s) { s.setAllocation(); },
        [](S& s) {
            MemoryAllocTimeoutInfo info{};
            s.recorder().GetMemAllocTimeOutInfo(info);
            s.note(&info, sizeof(info));
        },
        [](S& s) { s.recorder().SnapshotCountAddOne(); },
        [](S& s) { s.manyFrames(); },
        [](S& s) { s.announce(); },
        [](S& s) {
            s.recorder().ReceiveEvent(s.byte() % 2 == 0 ? nullptr
                                                        : std::make_shared<ForeignEvent>());
        },
        [](S& s) { s.moveClock(); },
        [](S& s) {
            const uint8_t kind = s.byte();
            s.spoilFiles(kind % 8, kind / 8 % 8);
        },
        [](S& s) { s.spoilServices(); },
        [](S& s) { s.moveSampler(); },
        [](S& s) {
            const uint8_t kind = s.byte();
            if (s.mReloadsLeft-- > 0) {
                s.reload(kind);
            }
        },
};

}  // namespace
}  // namespace zk::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace zk::fuzz;
    constexpr int kUnknownLevel = 3;
    constexpr size_t kShown = 300;  // characters

    InputBytes input(data, size);
    const bool isLevelUnknown = input.byte() % 16 == 15;
    // A quarter of the inputs is enough to compare the levels, and twice as slow.
    if (isLevelUnknown || size % 4 != 0) {
        Sequence(isLevelUnknown ? kUnknownLevel : size % 2 == 0 ? 2 : 1, input).play();
        return 0;
    }
    const std::string first = Sequence(1, input).play();
    const std::string second = Sequence(2, input).play();
    if (first != second) {
        const auto differs =
                std::mismatch(first.begin(), first.end(), second.begin(), second.end()).first;
        const size_t at = static_cast<size_t>(differs - first.begin());
        const size_t from = at - std::min(at, kShown);
        fail("the levels differ:\n" + first.substr(from, 2 * kShown) + "\n----\n" +
             second.substr(from, 2 * kShown));
    }
    return 0;
}
