#include "testing/Sequence.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "platform/CameraMemoryItemInfo.h"
#include "platform/SyncManager.h"
#include "platform/host/ClockControl.h"
#include "platform/host/DeviceControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/FrameDropNotification.h"
#include "platform/host/LogControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"
#include "testing/FieldPlace.h"

namespace zk::test {
namespace {

constexpr int kUnknownLevel = 3;
constexpr size_t kLivePhotoQueue = 180;          // records
constexpr std::ptrdiff_t kLongestHistory = 100;  // frames
constexpr uint64_t kLastIgnoredLoss = 10;        // frame number

constexpr host::FileCall kFileCalls[] = {host::FileCall::kOpen, host::FileCall::kWrite,
                                         host::FileCall::kClose, host::FileCall::kChangeMode};

class ForeignEvent : public Orn::IEventBase {
public:
    uint32_t GetEventId() const override { return 0x4004; }
};

}  // namespace

Sequence::Sequence(const uint8_t* bytes, size_t size) : mInput(bytes, size) {
    mLevel = byte() % 16 == 15 ? kUnknownLevel : size % 2 == 0 ? 2 : 1;
    mIsLate = byte() % 8 == 7;
    if (mIsLate) {
        host::stopThreadPool();
    }
    host::runTasksInline(!mIsLate);
    load(byte());
}

// Forgets what the fixture does not; here, since what stays looks like a leak to a fuzzer.
Sequence::~Sequence() {
    for (const host::FileCall call : kFileCalls) {
        host::failFileCall(call, 0);
    }
    host::withholdPromises(false);
    host::clearProperties();
}

void Sequence::play() {
    while (!mInput.empty()) {
        kSteps[byte() % std::size(kSteps)](*this);
        checkPools();
        checkLog();
    }
    post(R"({"endFrame":4294967294,"bufferSize":4000000,"id":"all"})", 1000);
    host::failEveryOpen(false);
    stop();
    destroyRecorder();
    checkLog();
    if (mIsLate) {
        host::restartThreadPool();
    }
    checkFiles();
    checkLosses();
}

uint32_t Sequence::frameNumber() {
    constexpr uint32_t kSpecial[] = {0, 1, 10, 11, INT32_MAX, 0x80000000U, 0xFFFFFFFEU, UINT32_MAX};
    const uint8_t kind = byte();
    if (kind < 200) {
        return mFrame + kind - 100;
    }
    return kind < 208 ? kSpecial[kind - 200] : mInput.take<uint32_t>();
}

uint32_t Sequence::tagId() {
    const uint8_t kind = byte();
    return kind < 250 ? kind % (tag::kCount + 1) : mInput.take<uint32_t>();
}

std::vector<uint8_t> Sequence::fieldFor(uint32_t tag) {
    std::vector<uint8_t> field(tag < tag::kCount ? kFieldPlaces[tag].size : 1, byte());
    mInput.takeTo(field.data(), std::min<size_t>(field.size(), 8));
    std::replace(field.begin(), field.end(), uint8_t{'\n'}, uint8_t{'\t'});  // a line per frame
    return field;
}

void* Sequence::fence() {
    static char fences[255];
    const uint8_t kind = byte();
    return kind == 0 ? nullptr : &fences[kind - 1];
}

void Sequence::load(uint8_t kind) {
    const auto isSet = [kind](int bits) { return (kind & bits) == bits; };
    host::clearProperties();
    useLevel(mLevel);
    if (isSet(1)) {
        switchRecordingOn();
    }
    host::setProperty("ro.logsystem.usertype", isSet(2) ? "0x6" : "");
    host::setProperty("vendor.camera.debug.VideoDataRecorderStatus", isSet(4) ? "-1" : "");
    auto& service = host::MonitoringService::instance();
    service.withholdAgency(isSet(0x18));
    service.withholdClient(isSet(0x28));
    service.setSubscribeResult(isSet(0x48) ? -1 : 0);
    host::withholdThermalObserver(isSet(0x80));
    recorder();
}

void Sequence::reload(uint8_t kind) {
    stop();
    destroyRecorder();
    load(kind);
}

void Sequence::write(void (Recorder::*operation)(uint32_t, uint32_t, const void*)) {
    const uint32_t number = frameNumber();
    const uint32_t tag = tagId();
    const bool isNull = byte() % 16 == 0;
    (recorder().*operation)(number, tag, isNull ? nullptr : fieldFor(tag).data());
}

void Sequence::writeMaintains() {
    const uint32_t number = frameNumber();
    const uint8_t kind = byte();
    std::vector<uint32_t> tags(kind % 8);
    std::vector<std::vector<uint8_t>> fields(tags.size());
    std::vector<const void*> datas(tags.size());
    for (size_t i = 0; i < tags.size(); ++i) {
        tags[i] = tagId();
        fields[i] = fieldFor(tags[i]);
        datas[i] = orNull(fields[i].data());
    }
    recorder().writeMaintains(number, (kind & 0xC0) == 0xC0 ? nullptr : tags.data(),
                              (kind & 0x30) == 0x30 ? nullptr : datas.data(), kind % 8);
}

void Sequence::postAny() {
    const uint8_t kind = byte();
    const size_t pages = kind % 8;
    if (kind >= 224) {
        post(mInput.text(kind % 32), pages);
        return;
    }
    const std::string start = std::to_string(frameNumber());
    const std::string end = std::to_string(frameNumber());
    const size_t size = pages * kFrameRecordSize + (kind % 16 == 15 ? frameNumber() : 0);
    post(R"({"id":"a","startFrame":)" + start + R"(,"endFrame":)" + end + R"(,"bufferSize":)" +
                 std::to_string(size) + "}",
         pages);
}

void Sequence::post(const std::string& request, size_t pages) {
    const int fd = pages == 0 ? -1 : memfd_create("buffer", 0);
    EXPECT_TRUE(fd < 0 || ftruncate(fd, static_cast<off_t>(pages * kFrameRecordSize)) == 0);
    recorder().PostDataForLivePhoto(fd, request);
    close(fd);
}

void Sequence::registerCallback() {
    const uint8_t kind = byte();
    if (kind % 16 == 0) {
        recorder().RegisterCamDataCb(nullptr);
        return;
    }
    recorder().RegisterCamDataCb([this, kind](uint32_t code, const std::string&) {
        EXPECT_EQ(code, 80U);
        if (kind % 4 == 1) {  // whoever is called may call, and may be replaced meanwhile
            recorder().RegisterCamDataCb([](uint32_t, const std::string&) {});
            recorder().DoneDataForLivePhoto(mFrame);
        }
    });
}

void Sequence::setAllocation() {
    ZkCamera::CameraMemoryItemInfo info;
    info.itemName = mInput.text(byte() % 64);
    info.allocTimeMs = byte() % 2 == 0 ? 5001 : mInput.take<uint32_t>();
    info.itemType = byte();
    info.allocSize = mInput.take<uint64_t>();
    recorder().SetMemAllocTimeOutInfo(info);
}

void Sequence::manyFrames() {
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
void Sequence::announce() {
    const uint8_t kind = byte();
    const uint64_t stamp =
            kind < 240 ? kNow + kind % 16 * uint64_t{1000000} : mInput.take<uint64_t>();
    const uint64_t number = (kind % 32 == 31 ? uint64_t{1} << 32 : 0) + frameNumber();
    recorder().ReceiveEvent(std::make_shared<ZkCamera::FrameDropNotification>(stamp, number));
    if (number > kLastIgnoredLoss) {
        mLosses.insert(stamp);
    }
}

void Sequence::moveClock() {
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

// Failing calls: of a kind, all opens, those that need folders; or no more failing folders.
void Sequence::spoilFiles(uint8_t kind) {
    const size_t what = kind % 8;
    const int nth = kind / 8 % 8;
    mMayCutWrites |= what == 1;
    if (what < std::size(kFileCalls)) {
        host::failFileCall(kFileCalls[what], nth);
    } else if (what == 4) {
        host::failEveryOpen(nth % 2 == 0);
    } else if (what == 5) {
        std::filesystem::remove_all(onHost("/data/vendor"));
    } else {
        std::filesystem::create_directories(onHost(kBinFolder));
        std::filesystem::create_directories(onHost(kLossFolder));
    }
}

void Sequence::spoilServices(uint8_t kind) {
    host::MonitoringService::instance().setSendResult((kind & 1) != 0 ? -1 : 0);
    host::withholdPromises((kind & 2) != 0);
    host::setFirstAppFrameNumber((kind & 4) != 0 ? mFrame : 0);
    if ((kind & 24) == 24 && !mLosses.empty()) {
        SyncManager::getInstance()->forget(*mLosses.begin());
        mMayLosePromises = true;
    }
    mMayLosePromises |= (kind & 2) != 0;
}

void Sequence::checkLog() {
    for (const host::LogLine& line : host::capturedLog()) {
        checkSizes(line.text);
        unsigned needed = 0;
        if (const size_t at = line.text.find("postQueue need size:"); at != std::string::npos) {
            std::sscanf(&line.text[at], "postQueue need size:%u", &needed);
        }
        EXPECT_LE(needed, kLivePhotoQueue * kFrameRecordSize) << line.text;
    }
    forgetLog();
}

void Sequence::checkFiles() const {
    for (const auto& [name, content] : files(kBinFolder)) {
        EXPECT_TRUE(mMayCutWrites || content.size() % kFrameRecordSize == 0) << name;
    }
    for (const auto& [name, content] : files(kLossFolder)) {
        EXPECT_LE(std::count(content.begin(), content.end(), '\n'), kLongestHistory) << name;
    }
}

void Sequence::checkLosses() {
    for (const uint64_t loss : mLosses) {
        EXPECT_TRUE(mMayLosePromises || settlement(loss) != "pending") << loss;
    }
}

// The operations of the interface in its order, then what else happens: seeds name steps by their
// places.
void (*const Sequence::kSteps[35])(Sequence&) = {
        [](S& s) {
            const uint8_t videoDebugSupport = s.byte() % 8;
            s.recorder().initialize(videoDebugSupport, s.mInput.take<int8_t>());
        },
        [](S& s) { s.stop(); },
        [](S& s) { s.write(&Recorder::writeMaintain); },
        [](S& s) { s.writeMaintains(); },
        [](S& s) { s.take(s.frameNumber()); },
        [](S& s) { s.complete(s.frameNumber()); },
        [](S& s) { s.recorder().VDRDoneCount(s.frameNumber(), nullptr); },
        [](S& s) { s.report(s.frameNumber()); },
        [](S& s) { s.recorder().getVDRInfo(s.frameNumber(), nullptr); },
        [](S& s) {
            bool isWritable = false;
            s.recorder().getMP4Writable(s.orNull(&isWritable));
        },
        [](S& s) {
            bool isWritable = false;
            s.recorder().markWritable(s.frameNumber(), isWritable);
        },
        [](S& s) { s.recorder().markUnWritable(s.frameNumber()); },
        [](S& s) {
            bool isOpen = false;
            s.recorder().getVDRStatus(s.orNull(&isOpen));
        },
        [](S& s) {
            bool isOpen = false;
            const uint32_t number = s.frameNumber();
            s.recorder().checkPreviewAndVideoStatus(number, s.orNull(&isOpen));
        },
        [](S& s) { s.write(&Recorder::WriteMaintainForLivePhoto); },
        [](S& s) { s.recorder().CacheDataForLivePhoto(s.frameNumber()); },
        [](S& s) { s.recorder().DoneDataForLivePhoto(s.frameNumber()); },
        [](S& s) { s.postAny(); },
        [](S& s) { s.registerCallback(); },
        [](S& s) {
            void* const fence = s.fence();
            const auto chiFrame = s.mInput.take<uint64_t>();
            s.recorder().SetChiFenceMap(fence, chiFrame, s.byte());
        },
        [](S& s) {
            unsigned long chiFrame = 0;
            uint8_t tag = 0;
            s.recorder().GetChiFenceMap(s.fence(), chiFrame, tag);
        },
        [](S& s) {
            SysStatusCollection snapshot{};
            s.recorder().GetSystemStatus(snapshot);
        },
        [](S& s) {
            const uint32_t chiFrame = s.frameNumber();
            s.recorder().SetChiFrameMap(chiFrame, s.frameNumber());
        },
        [](S& s) {
            uint32_t number = 0;
            s.recorder().GetChiFrameMap(s.frameNumber(), number);
        },
        [](S& s) { s.setAllocation(); },
        [](S& s) {
            MemoryAllocTimeoutInfo info{};
            s.recorder().GetMemAllocTimeOutInfo(info);
        },
        [](S& s) { s.recorder().SnapshotCountAddOne(); },
        [](S& s) { s.manyFrames(); },
        [](S& s) { s.announce(); },
        [](S& s) {
            const bool isNull = s.byte() % 2 == 0;
            s.recorder().ReceiveEvent(isNull ? nullptr : std::make_shared<ForeignEvent>());
        },
        [](S& s) { s.moveClock(); },
        [](S& s) { s.spoilFiles(s.byte()); },
        [](S& s) { s.spoilServices(s.byte()); },
        [](S& s) { s.mSleep.wakeSleeper(); },
        [](S& s) {
            const uint8_t kind = s.byte();
            if (s.mReloadsLeft-- > 0) {
                s.reload(kind);
            }
        },
};

}  // namespace zk::test
