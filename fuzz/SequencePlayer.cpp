#include "fuzz/SequencePlayer.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <thread>

#include "fuzz/require.h"
#include "platform/FrameDropNotification.h"
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

namespace fs = std::filesystem;

namespace {

constexpr size_t kBlocks = 80;
constexpr size_t kLongestLivePhotoQueue = 180;   // records
constexpr std::ptrdiff_t kLongestHistory = 100;  // frames
constexpr host::FileCall kFileCalls[] = {host::FileCall::kOpen, host::FileCall::kWrite,
                                         host::FileCall::kClose, host::FileCall::kChangeMode};

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

// Not the sampler's last words, since it has a thread of its own, nor those with an address or the
// level in them.
bool isRepeatable(const std::string& text) {
    return !contains(text, "quit async task") && !contains(text, "0x") &&
           !contains(text, "mVDRLevel=") && !contains(text, "trigger promise, lostTimeStamp=");
}

}  // namespace

SequencePlayer::SequencePlayer(int level, InputBytes input)
      : mLevel(level), mInput(input), mIsLate(mInput.byte() % 8 == 7) {
    if (mIsLate) {
        host::stopThreadPool();
    }
    host::runTasksInline(!mIsLate);
    load();
}

// Forgets what the fixture does not; at the end, since what stays looks like a leak to the fuzzer.
SequencePlayer::~SequencePlayer() {
    for (const host::FileCall call : kFileCalls) {
        host::failFileCall(call, 0);
    }
    host::clearProperties();
}

std::string SequencePlayer::play() {
    while (!mInput.empty()) {
        kSteps[mInput.byte() % kSteps.size()](*this);
        checkPools();
        checkLog();
    }
    post("{\"endFrame\":4294967294,\"bufferSize\":737280,\"id\":\"all\"}", kLongestLivePhotoQueue);
    awaitSampler();
    mSleep.open();
    destroyRecorder();
    host::failEveryOpen(false);
    host::failFileCall(host::FileCall::kOpen, 0);
    if (mIsLate) {
        host::restartThreadPool();
    }
    checkLog();
    for (const uint64_t stamp : mStamps) {
        note(settlement(stamp));
    }
    noteTextFiles();
    const std::string dump = checkBinFiles();
    noteBytes(dump.data(), dump.size());
    for (const auto& event : host::MonitoringService::instance().sentEvents()) {
        note(event->GetEventId());
    }
    return std::move(mTranscript);
}

void SequencePlayer::load() {
    const uint8_t kind = mInput.byte();
    const auto isMissing = [kind](int bits) { return (kind & bits) == bits; };
    host::clearProperties();
    useLevel(mLevel);
    mIsRecording = (kind & 1) != 0;
    if (mIsRecording) {
        switchRecordingOn();
    }
    host::setProperty("ro.logsystem.usertype", (kind & 2) != 0 ? "0x6" : "");
    host::setProperty("vendor.camera.debug.VideoDataRecorderStatus", (kind & 4) != 0 ? "-1" : "");
    auto& service = host::MonitoringService::instance();
    service.withholdAgency(isMissing(0x18));
    service.withholdClient(isMissing(0x28));
    service.setSubscribeResult(isMissing(0x48) ? -1 : 0);
    mIsSubscribed = !isMissing(0x18) && !isMissing(0x28) && !isMissing(0x48);
    host::withholdThermalObserver((kind & 0x80) != 0);
    recorder();
}

void SequencePlayer::reload() {
    if (mReloadsLeft-- <= 0) {
        return;
    }
    unInitialize();
    moveSampler();
    destroyRecorder();
    mIsBinFileNamed = false;
    load();
}

void SequencePlayer::initialize() {
    const uint8_t videoDebugSupport = mInput.byte() % 8;
    recorder().initialize(videoDebugSupport, mInput.take<int8_t>());
    bool isOpen = false;
    recorder().getVDRStatus(&isOpen);
    if (!isOpen) {
        return;
    }
    mIsBinFileNamed |= mIsRecording && !mIsClockBroken;
    mSleeps += mIsSamplerAlive ? 0 : 1;
    mIsSamplerWanted = mIsSamplerAlive = true;
    if (mAreFilesSpoiled) {
        awaitSampler();  // it opens files
    }
}

void SequencePlayer::unInitialize() {
    awaitSampler();
    mProcessing.clear();
    mDone = 0;
    mAppendedRecords += mIsBinFileNamed ? mStagedRecords : 0;
    mStagedRecords = 0;
    mIsSamplerWanted = false;
    recorder().unInitialize();
    if (mIsRecording) {
        checkBinFiles();
    }
}

void SequencePlayer::take(uint32_t frameNumber) {
    recorder().VDRProcessing(frameNumber);
    if (mProcessing.size() + mDone < kBlocks) {
        mProcessing.insert(frameNumber);
    }
}

void SequencePlayer::complete(uint32_t frameNumber) {
    recorder().VDRDone(frameNumber);
    mDone += mProcessing.erase(frameNumber);
}

void SequencePlayer::reportOldest(uint32_t frameNumber) {
    recorder().VDRReport(frameNumber);
    if (mDone == 0) {
        return;
    }
    --mDone;
    if (mIsRecording && ++mStagedRecords == 2) {
        mAppendedRecords += mIsBinFileNamed ? 2 : 0;
        mStagedRecords = 0;
    }
}

void SequencePlayer::announce() {
    const uint8_t kind = mInput.byte();
    const uint64_t stamp =
            kind < 240 ? kNow + kind % 16 * uint64_t{1000000} : mInput.take<uint64_t>();
    const uint64_t high = kind % 32 == 31 ? uint64_t{1} << 32 : 0;
    mStamps.insert(stamp);
    const auto event = std::make_shared<ZkCamera::FrameDropNotification>(stamp, high + frame());
    if (mIsSubscribed) {
        recorder().ReceiveEvent(event);
    }
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
    const int what = kind % 8;
    const int nth = kind / 8 % 8;
    awaitSampler();
    mAreFilesSpoiled = true;
    mMayLoseFiles |= what == 0 || what == 4 || what == 5;
    mMayLoseWrites |= what == 1;
    if (what < 4) {
        host::failFileCall(kFileCalls[what], nth);
    } else if (what == 4) {
        host::failEveryOpen(nth % 2 == 0);
    } else if (what == 5) {
        fs::remove_all(onHost("/data/vendor"));
    } else {
        fs::create_directories(onHost(test::kBinFolder));
        fs::create_directories(onHost(test::kLossFolder));
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
    awaitSampler();
    mSleep.wakeSleeper();
    if (mIsSamplerWanted) {
        ++mSleeps;
        awaitSampler();
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
    require(mSleep.waitForSleep(mSleeps), "the sampler goes on");
}

void SequencePlayer::checkPools() {
    uint32_t count = 0;
    recorder().VDRDoneCount(0, &count);
    void* oldest = nullptr;
    recorder().getVDRInfo(0, &oldest);
    require(count == mDone, "the count of done records");
    require((oldest != nullptr) == (mDone > 0), "an oldest record exactly where one is done");
}

// Of what has been said since the last time.
void SequencePlayer::checkLog() {
    for (const host::LogLine& line : host::capturedLog()) {
        const size_t prefix = line.text.find(':');
        const char* text = &line.text[prefix == std::string::npos ? 0 : prefix];
        unsigned ready = 0;
        unsigned done = 0;
        unsigned processing = 0;
        unsigned number = 0;
        if (std::sscanf(text,
                        ": VDR::%*[unIitalze](), mDataReadyPool.size()=%u, mDataDonePool.size()=%u,"
                        " mDataProcessingPool.size()=%u",
                        &ready, &done, &processing) > 0) {
            require(ready + done + processing == kBlocks && processing == mProcessing.size() &&
                            done == mDone,
                    "every block is in exactly one pool");
        } else if (std::sscanf(text, ": VDR::PostDataForLivePhoto, count=%u", &number) == 1) {
            require(number == mPosted++ && mPosted <= kLongestLivePhotoQueue,
                    "180 records in the live-photo queue");
        } else if (const size_t need = line.text.find("need size:"); need != std::string::npos) {
            std::sscanf(&line.text[need], "need size:%u", &number);
            require(number <= kLongestLivePhotoQueue * kFrameRecordSize,
                    "180 records in the live-photo queue, none posted");
        }
        mLateTasks += contains(line.text, "enqueue on stopped") ? 1 : 0;
        if (isRepeatable(line.text)) {
            note(text);
        }
    }
    forgetLog();
}

std::string SequencePlayer::checkBinFiles() {
    std::string content;
    for (const std::string& name : binFiles()) {
        const fs::path path = onHost(test::kBinFolder) / name;
        const size_t size = fs::file_size(path);
        require(mMayLoseWrites || size % kFrameRecordSize == 0, "whole records in the dump file");
        content.resize(content.size() + size);
        std::ifstream(path, std::ios::binary)
                .read(&content[content.size() - size], static_cast<std::streamsize>(size));
    }
    require(mMayLoseWrites || mMayLoseFiles ||
                    content.size() == mAppendedRecords * kFrameRecordSize,
            "every reported record in a dump file");
    return content;
}

void SequencePlayer::noteTextFiles() {
    for (const std::string& name : lossFiles()) {
        const std::string content = readFile(onHost(test::kLossFolder) / name);
        require(std::count(content.begin(), content.end(), '\n') <= kLongestHistory,
                "100 frames in a history");
        // Tasks of one name that run at once leave a file that nobody can foretell.
        note(mLateTasks < 2 ? name + '\n' + content : name);
    }
}

void SequencePlayer::noteBytes(const void* bytes, size_t size) {
    note(std::hash<std::string_view>()({static_cast<const char*>(bytes), size}));
}

}  // namespace zk::fuzz
