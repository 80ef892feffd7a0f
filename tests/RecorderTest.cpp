#include "tests/RecorderTest.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/host/ClockControl.h"
#include "platform/host/DeviceControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"

namespace zk::test {

namespace fs = std::filesystem;

RecorderTest::RecorderTest() {
    std::string root = (fs::temp_directory_path() / "vdr-test-XXXXXX").string();
    mRoot = mkdtemp(root.data());
    fs::create_directories(mRoot.string() + kBinFolder);
    fs::create_directories(mRoot.string() + kLossFolder);
    setenv("TZ", "UTC", 1);
    tzset();
    host::setRootFolder(mRoot);
    host::clearProperties();
    host::setWallClock(kNow);
    host::setLogOutput(nullptr);
    host::startLogCapture();
}

RecorderTest::~RecorderTest() {
    mSleep.open();
    host::restartThreadPool();
    host::waitForThreadPool();
    destroyRecorder();
    host::runTasksInline(false);
    host::MonitoringService::instance().reset();
    host::forgetPromises();
    host::failClock(false);
    host::failEveryOpen(false);
    host::withholdThermalObserver(false);
    host::setThermalStateWord(0);
    host::setCaptureMemory(0);
    host::setFirstAppFrameNumber(0);
    host::stopLogCapture();
    fs::remove_all(mRoot);
}

void RecorderTest::useLevel(int level) {
    host::setProperty("vendor.camera.debug.VideoDataRecorderLevel", std::to_string(level));
}

void RecorderTest::switchRecordingOn() {
    host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus", "1");
}

ZkaVideoDataRecoderImpl& RecorderTest::recorder() {
    if (mRecorder == nullptr) {
        mRecorder = std::make_unique<ZkaVideoDataRecoderImpl>();
    }
    return *mRecorder;
}

void RecorderTest::destroyRecorder() {
    mRecorder.reset();
}

RecorderTest::Frame::Frame(IVideoDataRecoder& recorder, uint32_t number)
      : mRecorder(recorder), mNumber(number) {
    mRecorder.VDRProcessing(number);
    write(0, number);
}

void RecorderTest::completeFrames(uint32_t first, uint32_t last) {
    for (uint64_t number = first; number <= last; ++number) {
        frame(static_cast<uint32_t>(number)).done();
        recorder().VDRReport(0);
    }
}

std::vector<uint8_t> RecorderTest::oldestDone() {
    void* record = nullptr;
    recorder().getVDRInfo(0, &record);
    const auto* bytes = static_cast<const uint8_t*>(record);
    return bytes != nullptr ? std::vector<uint8_t>(bytes, bytes + kFrameRecordSize)
                            : std::vector<uint8_t>();
}

void RecorderTest::announceLoss(uint64_t frameNumber, uint64_t timeStamp) {
    recorder();
    host::MonitoringService::instance().announceFrameDrop(timeStamp, frameNumber);
    host::MonitoringService::instance().waitUntilDelivered();
}

std::shared_future<VdrSyncCode> RecorderTest::promiseOf(uint64_t timeStamp) {
    return SyncManager::getInstance()->getFuture(timeStamp);
}

std::string RecorderTest::settlement(uint64_t timeStamp) {
    host::waitForThreadPool();
    const std::shared_future<VdrSyncCode> future = promiseOf(timeStamp);
    if (future.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        return "pending";
    }
    return future.get() == VDR_SYNC_DONE ? "done" : "limited";
}

fs::path RecorderTest::onHost(const std::string& devicePath) const {
    return mRoot.string() + devicePath;
}

void RecorderTest::layFile(const std::string& devicePath, const std::string& content) const {
    fs::create_directories(onHost(devicePath).parent_path());
    std::ofstream(onHost(devicePath), std::ios::binary) << content;
}

std::string RecorderTest::readFile(const fs::path& path) const {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

std::vector<std::string> RecorderTest::filesIn(const std::string& deviceFolder) const {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(onHost(deviceFolder), error)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> RecorderTest::lossFiles() const {
    host::waitForThreadPool();
    return filesIn(kLossFolder);
}

std::vector<uint32_t> RecorderTest::framesInLossFile(const std::string& name) const {
    std::istringstream content(readFile(onHost(kLossFolder) / name));
    std::vector<uint32_t> frames;
    for (std::string line; std::getline(content, line);) {
        frames.push_back(static_cast<uint32_t>(std::strtoul(line.c_str(), nullptr, 10)));
    }
    return frames;
}

std::vector<std::string> RecorderTest::binFiles() const {
    return filesIn(kBinFolder);
}

std::string RecorderTest::readBinFile(const std::string& name) const {
    return readFile(onHost(kBinFolder) / name);
}

std::vector<std::string> RecorderTest::logged(const std::string& part, int priority) {
    std::vector<std::string> texts;
    for (const host::LogLine& line : host::capturedLog()) {
        if (line.text.find(part) != std::string::npos &&
            (priority == 0 || line.priority == priority)) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

size_t RecorderTest::countLogged(const std::string& part, int priority) {
    return logged(part, priority).size();
}

void RecorderTest::forgetLog() {
    host::startLogCapture();
}

}  // namespace zk::test
