#include "benchmarks/Device.h"

#include <cstdlib>
#include <ctime>

#include "platform/host/ClockControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/LogControl.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/ThreadPoolControl.h"

namespace zk::bench {

namespace fs = std::filesystem;

namespace {

constexpr uint64_t kNow = 1700000000000000;  // microseconds, 2023-11-14 22:13:20 UTC

}  // namespace

Device::Device() : mRecorder(getVideoDataRecoderInstance()) {
    std::string root = (fs::temp_directory_path() / "vdr-bench-XXXXXX").string();
    mRoot = mkdtemp(root.data());
    removeDumps();
    setenv("TZ", "UTC", 1);
    tzset();
    host::setRootFolder(mRoot);
    host::setLogOutput(nullptr);
    host::setWallClock(kNow);
    host::runTasksInline(true);
    host::setSleepHandler([this](uint32_t) { sleepUntilTheEnd(); });
    host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus", "1");
    mRecordingRecorder = std::make_unique<ZkaVideoDataRecoderImpl>();
    mRecordingRecorder->initialize(1, 0);
    mRecorder->initialize(1, 0);
}

Device::~Device() {
    mRecorder->unInitialize();
    mRecordingRecorder->unInitialize();
    {
        const std::lock_guard guard(mMutex);
        mIsEnding = true;
        mChanged.notify_all();
    }
    mRecordingRecorder.reset();
    host::setSleepHandler(nullptr);
    fs::remove_all(mRoot);
}

fs::path Device::binFile() const {
    return mRoot.string() + kBinFolder + "/VIDEO_DEBUG_20231114_221320.bin";
}

void Device::removeDumps() {
    for (const char* folder : {kBinFolder, kLossFolder}) {
        fs::remove_all(mRoot.string() + folder);
        fs::create_directories(mRoot.string() + folder);
    }
}

void Device::sleepUntilTheEnd() {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [this] { return mIsEnding; });
}

}  // namespace zk::bench
