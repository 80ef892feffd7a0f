#include "fuzz/SequencePlayer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>

#include "platform/SyncManager.h"
#include "platform/host/ClockControl.h"
#include "platform/host/DeviceControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/LogControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"

namespace zk::fuzz {

namespace {

constexpr unsigned kLongestLivePhotoQueue = 180;  // records
constexpr std::ptrdiff_t kLongestHistory = 100;   // frames
constexpr uint32_t kForeignEvent = 0x4004;

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// Not the sampler's messages, since it has a thread of its own, nor those with an address or the
// level in them.
bool isRepeatable(const std::string& text) {
    return !contains(text, "SystemStatusProcess<") && !contains(text, "getName2FuncMap") &&
           !contains(text, "mVDRLevel=") && !contains(text, "need size:") &&
           !contains(text, "trigger promise, lostTimeStamp=");
}

std::string withoutLineNumber(std::string text) {
    const size_t begin = text.find('<');
    const size_t end = text.find('>');
    return begin < end && end != std::string::npos ? text.erase(begin, end - begin) : text;
}

void setSwitch(const char* name, bool isOn, const char* value) {
    host::setProperty(name, isOn ? value : "");
}

}  // namespace

SequencePlayer::SequencePlayer(FuzzDevice& device, int level, InputBytes input)
      : mDevice(device), mLevel(level), mInput(input), mIsLate(mInput.byte() % 8 == 7) {
    if (mIsLate) {
        host::stopThreadPool();
    }
    host::runTasksInline(!mIsLate);
    load();
}

SequencePlayer::~SequencePlayer() {
    unload();
    host::runTasksInline(false);
    host::restartThreadPool();
    host::waitForThreadPool();
    // Here and not at the beginning, since what stays behind looks like a leak to the fuzzer.
    mDevice.reset();
}

std::string SequencePlayer::play() {
    using Step = void (SequencePlayer::*)();
    using P = SequencePlayer;
    static constexpr Step kSteps[] = {
            &P::initialize,
            &P::unInitialize,
            &P::writeMaintain,
            &P::writeMaintains,
            &P::processing,
            &P::done,
            &P::doneCount,
            &P::report,
            &P::info,
            &P::mp4Writable,
            &P::markWritable,
            &P::markUnWritable,
            &P::status,
            &P::checkPreview,
            &P::writeForLivePhoto,
            &P::cacheForLivePhoto,
            &P::doneForLivePhoto,
            &P::postForLivePhoto,
            &P::registerCallback,
            &P::setFence,
            &P::getFence,
            &P::systemStatus,
            &P::setFrame,
            &P::getFrame,
            &P::setAllocation,
            &P::getAllocation,
            &P::countSnapshot,
            &P::manyFrames,
            &P::announce,
            &P::strangeEvent,
            &P::moveClock,
            &P::spoilFiles,
            &P::spoilServices,
            &P::moveSampler,
            &P::load,
    };
    while (!mInput.empty()) {
        host::startLogCapture();
        (this->*kSteps[mInput.byte() % std::size(kSteps)])();
        checkPools();
        checkLog();
    }
    finish();
    return std::move(mTranscript);
}

void SequencePlayer::finish() {
    host::startLogCapture();
    post("{\"endFrame\":4294967294,\"bufferSize\":4000000,\"id\":\"all\"}", 1000);
    checkLog();
    unload();
    host::failEveryOpen(false);
    host::failFileCall(host::FileCall::kOpen, 0);
    host::restartThreadPool();
    host::waitForThreadPool();
    checkBinFiles();
    checkTextFiles();
    note(mDevice.binDigest());
    for (const auto& [name, content] : mDevice.textFiles()) {
        // Tasks of one name that run at once leave a file that nobody can foretell.
        note(mLateTasks < 2 ? name + content : name);
    }
    for (const uint64_t stamp : mStamps) {
        const auto future = SyncManager::getInstance()->getFuture(stamp);
        const bool isSettled =
                future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
        note(isSettled ? static_cast<uint64_t>(future.get()) : stamp);
    }
    for (const auto& event : host::MonitoringService::instance().sentEvents()) {
        note(event->GetEventId());
    }
}

void SequencePlayer::load() {
    unload();
    const uint8_t kind = mInput.byte();
    mIsRecording = (kind & 1) != 0;
    host::setProperty("vendor.camera.debug.VideoDataRecorderLevel", std::to_string(mLevel));
    setSwitch("vendor.camera.debug.VideoDataRecorderPreviewStatus", mIsRecording, "1");
    setSwitch("ro.logsystem.usertype", (kind & 2) != 0, "0x6");
    setSwitch("vendor.camera.debug.VideoDataRecorderStatus", (kind & 4) != 0, "-1");
    auto& service = host::MonitoringService::instance();
    service.withholdAgency((kind & 0x18) == 0x18);
    service.withholdClient((kind & 0x28) == 0x28);
    service.setSubscribeResult((kind & 0x48) == 0x48 ? -1 : 0);
    host::withholdThermalObserver((kind & 0x80) != 0);
    mGate.emplace();
    mRecorder = std::make_unique<ZkaVideoDataRecoderImpl>();
}

void SequencePlayer::unload() {
    if (mRecorder == nullptr) {
        return;
    }
    mGate->open();
    mRecorder.reset();
    mGate.reset();
    mProcessing.clear();
    mDone = mStagedRecords = 0;
    mIsBinFileNamed = mIsSamplerWanted = mIsSamplerAlive = false;
    mSleeps = 0;
}

uint32_t SequencePlayer::frame() {
    constexpr std::array<uint32_t, 8> kSpecial = {0,         1,           10,          11,
                                                  INT32_MAX, 0x80000000U, 0xFFFFFFFEU, UINT32_MAX};
    constexpr uint8_t kNear = 200;
    const uint8_t kind = mInput.byte();
    if (kind < kNear) {
        return mFrame + kind - kNear / 2;
    }
    return kind - kNear < 8 ? kSpecial[kind - kNear] : mInput.take<uint32_t>();
}

void SequencePlayer::manyFrames() {
    const uint8_t count = mInput.byte() % 128;
    const uint8_t kind = mInput.byte();
    mFrame += (kind & 1) != 0 ? 2 : 1;
    for (int i = 0; i <= count && mFramesLeft > 0; ++i, ++mFrame, --mFramesLeft) {
        take(mFrame);
        mRecorder->writeMaintain(mFrame, 0, &mFrame);
        if ((kind & 2) != 0) {
            mRecorder->CacheDataForLivePhoto(mFrame);
            mRecorder->DoneDataForLivePhoto(mFrame);
        }
        if ((kind & 4) == 0) {
            complete(mFrame);
        }
        if ((kind & 8) == 0) {
            reportOldest(0);
        }
    }
}

void SequencePlayer::announce() {
    const uint8_t kind = mInput.byte();
    const uint64_t stamp =
            kind < 240 ? FuzzDevice::kNow + kind % 16 * uint64_t{1000000} : mInput.take<uint64_t>();
    const uint64_t high = kind % 32 == 31 ? uint64_t{1} << 32 : 0;
    mStamps.insert(stamp);
    host::MonitoringService::instance().announceFrameDrop(stamp, high + frame());
    host::MonitoringService::instance().waitUntilDelivered();
}

void SequencePlayer::strangeEvent() {
    class StrangeEvent : public Orn::IEventBase {
    public:
        uint32_t GetEventId() const override { return kForeignEvent; }
    };
    const bool isNull = mInput.byte() % 2 == 0;
    const int32_t result =
            mRecorder->ReceiveEvent(isNull ? nullptr : std::make_shared<StrangeEvent>());
    require(result == (isNull ? -22 : 0), "ReceiveEvent's result");
}

void SequencePlayer::moveClock() {
    const uint8_t kind = mInput.byte();
    mIsClockBroken = kind % 16 == 15;
    host::failClock(mIsClockBroken);
    if (kind < 64) {
        host::advanceWallClock(kind * int64_t{1000000});
    } else if (kind < 128) {
        host::advanceWallClock((kind - 96) * int64_t{86400000000});
    } else {
        // Half of all times: the largest stands for the machine's own clock.
        host::setWallClock(mInput.take<uint64_t>() / 2);
    }
}

void SequencePlayer::spoilFiles() {
    const uint8_t kind = mInput.byte();
    const int nth = kind / 8 % 8;
    switch (kind % 8) {
        case 0:
            mMayLoseFiles = true;
            host::failFileCall(host::FileCall::kOpen, nth);
            break;
        case 1:
            mMayLoseWrites = true;
            host::failFileCall(host::FileCall::kWrite, nth);
            break;
        case 2:
            host::failFileCall(host::FileCall::kClose, nth);
            break;
        case 3:
            host::failFileCall(host::FileCall::kChangeMode, nth);
            break;
        case 4:
            mMayLoseFiles = true;
            host::failEveryOpen(nth % 2 == 0);
            break;
        case 5:
            mMayLoseFiles = true;
            mDevice.removeFolders();
            break;
        default:
            mDevice.makeFolders();
            break;
    }
}

void SequencePlayer::spoilServices() {
    const uint8_t kind = mInput.byte();
    host::MonitoringService::instance().setSendResult((kind & 1) != 0 ? -1 : 0);
    host::withholdPromises((kind & 2) != 0);
    host::setFirstAppFrameNumber((kind & 4) != 0 ? mFrame : 0);
    if ((kind & 24) == 24 && !mStamps.empty()) {
        SyncManager::getInstance()->forget(*mStamps.begin());
    }
}

void SequencePlayer::moveSampler() {
    if (!mIsSamplerAlive) {
        return;
    }
    mGate->wakeSleeper();
    if (mIsSamplerWanted) {
        require(mGate->waitForSleep(++mSleeps), "the sampler goes on");
        return;
    }
    mIsSamplerAlive = false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (host::openCaptureCounters() > 0) {
        require(std::chrono::steady_clock::now() < deadline, "the sampler ends");
        std::this_thread::yield();
    }
}

void SequencePlayer::awaitSampler() {
    if (!mIsSamplerWanted && !mIsSamplerAlive) {
        require(mGate->waitForSleep(++mSleeps), "the sampler starts");
    }
    mIsSamplerWanted = mIsSamplerAlive = true;
}

void SequencePlayer::checkPools() {
    uint32_t count = 0;
    mRecorder->VDRDoneCount(0, &count);
    void* oldest = nullptr;
    mRecorder->getVDRInfo(0, &oldest);
    require(count == mDone, "the count of done records");
    require((oldest != nullptr) == (mDone > 0), "an oldest record exactly where one is done");
}

void SequencePlayer::checkLog() {
    bool isBinFileTouched = false;
    bool isTextFileTouched = false;
    for (const host::LogLine& line : host::capturedLog()) {
        unsigned ready = 0;
        unsigned done = 0;
        unsigned processing = 0;
        unsigned number = 0;
        const char* text = line.text.c_str();
        if (const char* sizes = std::strstr(text, "mDataReadyPool.size()=")) {
            const int found = std::sscanf(sizes,
                                          "mDataReadyPool.size()=%u, mDataDonePool.size()=%u, "
                                          "mDataProcessingPool.size()=%u!",
                                          &ready, &done, &processing);
            require(found == 3 && ready + done + processing == kBlocks &&
                            processing == mProcessing.size() && done == mDone,
                    "every block is in exactly one pool");
        } else if (const char* need = std::strstr(text, "postQueue need size:")) {
            require(std::sscanf(need, "postQueue need size:%u!", &number) == 1 &&
                            number <= kLongestLivePhotoQueue * kFrameRecordSize,
                    "180 records in the live-photo queue");
        } else if (const char* posted = std::strstr(text, "PostDataForLivePhoto, count=")) {
            require(std::sscanf(posted, "PostDataForLivePhoto, count=%u", &number) == 1 &&
                            number < kLongestLivePhotoQueue,
                    "180 records posted");
        }
        mLateTasks += contains(line.text, "enqueue on stopped") ? 1 : 0;
        isBinFileTouched |= contains(line.text, "unInitialize()");
        isTextFileTouched |= contains(line.text, "write succ");
        if (isRepeatable(line.text)) {
            note(withoutLineNumber(line.text));
        }
    }
    if (isBinFileTouched) {
        checkBinFiles();
    }
    if (isTextFileTouched) {
        checkTextFiles();
    }
}

void SequencePlayer::checkBinFiles() const {
    uint64_t bytes = 0;
    for (const auto& [name, size] : mDevice.binFiles()) {
        require(mMayLoseWrites || size % kFrameRecordSize == 0, "whole records in the dump file");
        bytes += size;
    }
    require(mMayLoseWrites || mMayLoseFiles || bytes == mAppendedRecords * kFrameRecordSize,
            "every reported record in a dump file");
}

void SequencePlayer::checkTextFiles() const {
    for (const auto& [name, content] : mDevice.textFiles()) {
        require(std::count(content.begin(), content.end(), '\n') <= kLongestHistory,
                "100 frames in a history");
    }
}

}  // namespace zk::fuzz
