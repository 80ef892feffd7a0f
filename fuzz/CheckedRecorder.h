#pragma once

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "fuzz/require.h"
#include "platform/host/DeviceControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/LogControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "tests/RecorderTest.h"

namespace zk::fuzz {

// A recorder at one level, an account of what it was told, and checks that what must hold holds
// whatever the caller does. Nothing depends on the order of threads: the sampler moves when told
// to, and text files are written at once or, if late, by the worker pool when the recorder is gone.
class CheckedRecorder : public test::RecorderTest {
public:
    CheckedRecorder(int level, bool isLate) : mLevel(level), mIsLate(isLate) {
        if (mIsLate) {
            host::stopThreadPool();
        }
        host::runTasksInline(!mIsLate);
    }

    // Forgets what the fixture does not; here, since what stays looks like a leak to the fuzzer.
    ~CheckedRecorder() override {
        for (const host::FileCall call : kFileCalls) {
            host::failFileCall(call, 0);
        }
        host::clearProperties();
    }

protected:
    static constexpr host::FileCall kFileCalls[] = {host::FileCall::kOpen, host::FileCall::kWrite,
                                                    host::FileCall::kClose,
                                                    host::FileCall::kChangeMode};

    static constexpr size_t kLivePhotoQueue = 180;  // records

    void load(uint8_t kind) {
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
        mIsSubscribed = !isSet(0x18) && !isSet(0x28) && !isSet(0x48);
        host::withholdThermalObserver(isSet(0x80));
        recorder();
    }

    void reload(uint8_t kind) {
        unInitialize();
        moveSampler();
        destroyRecorder();
        load(kind);
    }

    // The recorder goes with its sampler asleep, and late text files are written.
    void unload() {
        awaitSampler();
        mSleep.open();
        destroyRecorder();
        checkLog();  // in front of what the pool's threads say in any order
        if (mIsLate) {
            host::restartThreadPool();
        }
    }

    void initialize(uint8_t videoDebugSupport, int32_t sceneMode) {
        recorder().initialize(videoDebugSupport, sceneMode);
        bool isOpen = false;
        recorder().getVDRStatus(&isOpen);
        if (isOpen) {
            mSleeps += mIsSamplerAlive ? 0 : 1;
            mIsSamplerWanted = mIsSamplerAlive = true;
        }
        if (mAreFilesSpoiled) {
            awaitSampler();  // it opens files
        }
    }

    void unInitialize() {
        awaitSampler();
        mProcessing.clear();
        mDone = 0;
        mIsSamplerWanted = false;
        recorder().unInitialize();
    }

    void take(uint32_t frameNumber) {
        recorder().VDRProcessing(frameNumber);
        if (mProcessing.size() + mDone < kBlocks) {
            mProcessing.insert(frameNumber);
        }
    }

    void complete(uint32_t frameNumber) {
        recorder().VDRDone(frameNumber);
        mDone += mProcessing.erase(frameNumber);
    }

    void report(uint32_t frameNumber) {
        recorder().VDRReport(frameNumber);
        mDone -= mDone > 0 ? 1 : 0;
    }

    // Failing calls: of a kind, all opens, those that need folders; or no more failing folders.
    void spoilFiles(size_t what, int nth) {
        awaitSampler();
        mAreFilesSpoiled = true;
        mMayCutWrites |= what == 1;
        if (what < std::size(kFileCalls)) {
            host::failFileCall(kFileCalls[what], nth);
        } else if (what == 4) {
            host::failEveryOpen(nth % 2 == 0);
        } else if (what == 5) {
            std::filesystem::remove_all(onHost("/data/vendor"));
        } else {
            std::filesystem::create_directories(onHost(test::kBinFolder));
            std::filesystem::create_directories(onHost(test::kLossFolder));
        }
    }

    void moveSampler() {
        if (!mIsSamplerAlive) {
            return;
        }
        awaitSampler();
        mSleep.wakeSleeper();
        mSleeps += mIsSamplerWanted ? 1 : 0;
        mIsSamplerAlive = mIsSamplerWanted;
        while (!mIsSamplerAlive && host::openCaptureCounters() > 0) {
            std::this_thread::yield();
        }
        awaitSampler();
    }

    // The sampler has come to rest. It may lag behind as long as nothing shows where it is.
    void awaitSampler() { require(mSleep.waitForSleep(mSleeps), "the sampler goes on"); }

    // After each call.
    void check() {
        uint32_t count = 0;
        recorder().VDRDoneCount(0, &count);
        void* oldest = nullptr;
        recorder().getVDRInfo(0, &oldest);
        require(count == mDone, "the count of done records");
        require((oldest != nullptr) == (mDone > 0), "an oldest record exactly where one is done");
        checkLog();
    }

    // Of what has been said since the last time. Gives the number of records posted.
    size_t checkLog() {
        size_t posted = 0;
        for (const host::LogLine& line : host::capturedLog()) {
            // From its beginning: what a request says is printed further behind.
            const std::string said = line.text.substr(line.text.find('>') + 1);
            if (contains(said, "nitialize(), mDataReadyPool.size()=") &&
                !isAt(said, ": VDR::PostData")) {
                const size_t done = numberBehind(line.text, "mDataDonePool.size()=");
                const size_t processing = numberBehind(line.text, "mDataProcessingPool.size()=");
                const size_t ready = numberBehind(line.text, "mDataReadyPool.size()=");
                require(ready + done + processing == kBlocks && done == mDone &&
                                processing == mProcessing.size(),
                        "every block is in exactly one pool");
            }
            require(!isAt(said, ": VDR::PostDataForLivePhoto, buffer:") ||
                            numberBehind(said, "need size:") <= kLivePhotoQueue * kFrameRecordSize,
                    "180 records in the live-photo queue");
            posted += isAt(said, ": VDR::PostDataForLivePhoto, count=") ? 1 : 0;
            mLateTasks += contains(line.text, "enqueue on stopped") ? 1 : 0;
            // Not the sampler's last words, since it has a thread of its own, nor addresses or the
            // level.
            if (!contains(line.text, "quit async task") && !contains(line.text, "0x") &&
                !contains(line.text, "mVDRLevel=") &&
                !contains(line.text, "trigger promise, lostTimeStamp=")) {
                note(said);
            }
        }
        forgetLog();
        return posted;
    }

    // When the recorder is gone.
    void checkFiles() {
        for (const auto& [name, content] : files(test::kBinFolder)) {
            require(mMayCutWrites || content.size() % kFrameRecordSize == 0,
                    "whole records in the dump file");
            note(name);
            note(content.data(), content.size());
        }
        for (const auto& [name, content] : files(test::kLossFolder)) {
            require(std::count(content.begin(), content.end(), '\n') <= kLongestHistory,
                    "100 frames in a history");
            // Tasks of one name that run at once leave a file that nobody can foretell.
            note(name);
            note(mLateTasks < 2 ? content : "");
        }
    }

    void note(const std::string& text) { mTranscript += text + '\n'; }
    void note(uint64_t number) { note(std::to_string(number)); }
    void note(const void* bytes, size_t size) {
        note(std::hash<std::string_view>()({static_cast<const char*>(bytes), size}));
    }

    std::string mTranscript;  // of what was handed out, said and written
    bool mIsSubscribed = false;

private:
    static constexpr size_t kBlocks = 80;
    static constexpr std::ptrdiff_t kLongestHistory = 100;  // frames

    void TestBody() override {}
    static bool contains(const std::string& text, const char* part) {
        return text.find(part) != std::string::npos;
    }

    static bool isAt(const std::string& text, const char* start) {
        return text.rfind(start, 0) == 0;
    }
    // 0 where the text does not say.
    static size_t numberBehind(const std::string& text, const char* part) {
        const size_t at = text.find(part);
        return at == std::string::npos
                       ? 0
                       : std::strtoul(text.c_str() + at + std::strlen(part), nullptr, 10);
    }

    const int mLevel;
    const bool mIsLate;
    size_t mLateTasks = 0;
    std::set<uint32_t> mProcessing;
    size_t mDone = 0;
    bool mAreFilesSpoiled = false;
    bool mMayCutWrites = false;
    bool mIsSamplerWanted = false;
    bool mIsSamplerAlive = false;
    int mSleeps = 0;  // that the sampler falls into
};

}  // namespace zk::fuzz
