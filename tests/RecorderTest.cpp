#include "tests/RecorderTest.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include "platform/SyncManager.h"
#include "platform/host/ClockControl.h"
#include "platform/host/DeviceControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"

namespace zk::test {

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kStamps = 15;
constexpr uint32_t kTagFirstStamp = 19;
constexpr size_t kFirstStampAt = 3534;

uint64_t stampOf(uint32_t frameNumber, uint64_t index) {
    return (frameNumber + index * 1000003) * UINT64_C(0x9E3779B97F4A7C15);
}

// " 11-40 42-50"
std::string ranges(const std::vector<uint32_t>& numbers) {
    std::string text;
    for (size_t i = 0, first = 0; i < numbers.size(); ++i) {
        if (i + 1 == numbers.size() || numbers[i + 1] != numbers[i] + 1) {
            text += " " + std::to_string(numbers[first]);
            text += i > first ? "-" + std::to_string(numbers[i]) : "";
            first = i + 1;
        }
    }
    return text;
}

}  // namespace

RecorderTest::RecorderTest() {
    std::string root = (fs::temp_directory_path() / "vdr-test-XXXXXX").string();
    mRoot = mkdtemp(root.data());
    removeDumps();
    setenv("TZ", "UTC", 1);
    tzset();
    host::setRootFolder(mRoot);
    host::clearProperties();
    host::setWallClock(kNow);
    host::setLogOutput(nullptr);
    host::startLogCapture();
}

RecorderTest::~RecorderTest() {
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
    mSleep.open();  // destruction waits for the sampler
    mRecorder.reset();
    mSleep.close();
}

RecorderTest::Frame::Frame(IVideoDataRecoder& recorder, uint32_t number)
      : mRecorder(recorder), mNumber(number) {
    mRecorder.VDRProcessing(number);
    write(0, number);
}

RecorderTest::Frame& RecorderTest::Frame::stamp() {
    for (uint32_t i = 0; i < kStamps; ++i) {
        write(kTagFirstStamp + i, stampOf(mNumber, i));
    }
    return *this;
}

uint32_t RecorderTest::checkStamps(const void* record) {
    const uint32_t number = frameNumberOf(record);
    uint64_t stamps[kStamps];
    std::memcpy(stamps, static_cast<const char*>(record) + kFirstStampAt, sizeof(stamps));
    for (uint32_t i = 0; i < kStamps; ++i) {
        EXPECT_EQ(stamps[i], stampOf(number, i)) << "frame " << number;
    }
    return number;
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

uint32_t RecorderTest::doneCount() {
    uint32_t count = UINT32_MAX;
    recorder().VDRDoneCount(0, &count);
    return count;
}

void RecorderTest::meet(std::atomic<uint32_t>& arrivals, uint32_t threads) {
    const uint32_t all = (arrivals++ / threads + 1) * threads;
    while (arrivals < all) {
        std::this_thread::yield();
    }
}

void RecorderTest::announceLoss(uint64_t frameNumber, uint64_t timeStamp) {
    recorder();
    host::MonitoringService::instance().announceFrameDrop(timeStamp, frameNumber);
    host::MonitoringService::instance().waitUntilDelivered();
}

std::string RecorderTest::settlement(uint64_t timeStamp) {
    host::waitForThreadPool();
    const auto future = SyncManager::getInstance()->getFuture(timeStamp);
    if (future.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        return "pending";
    }
    return future.get() == VDR_SYNC_DONE ? "done" : "limited";
}

void RecorderTest::play(const std::string& script) {
    std::istringstream words(script);
    for (std::string word; words >> word;) {
        if (word == "open") {
            openSession();
        } else if (word == "stop") {
            closeSession();
        } else if (word == "pause") {
            host::advanceWallClock(500000);
        } else if (word[0] == '!') {
            announceLoss(std::stoull(word.substr(1)), kNow + mLosses++);
        } else {
            const size_t last = word.find('-') + 1;  // 0: there is no other end
            completeFrames(static_cast<uint32_t>(std::stoul(word)),
                           static_cast<uint32_t>(std::stoul(word.substr(last))));
        }
    }
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

std::string RecorderTest::dumps(const char* deviceFolder) const {
    host::waitForThreadPool();
    std::string text;
    for (const std::string& name : filesIn(deviceFolder)) {
        const std::string content = readFile(onHost(deviceFolder) / name);
        const bool isBin = name.back() == 'n';
        EXPECT_TRUE(!isBin || content.size() % kFrameRecordSize == 0) << name;
        std::vector<uint32_t> frames;
        for (size_t at = 0; at < content.size();) {
            const char* record = &content[at];
            frames.push_back(isBin ? frameNumberOf(record)
                                   : static_cast<uint32_t>(std::atoll(record)));
            at = isBin ? at + kFrameRecordSize
                       : std::min(content.find('\n', at), content.size()) + 1;
        }
        text += text.empty() ? "" : "; ";
        text += std::to_string(std::atoi(&name[name.rfind('_') + 1])) + ":" + ranges(frames);
    }
    return text;
}

void RecorderTest::removeDumps() const {
    for (const char* folder : {kBinFolder, kLossFolder}) {
        fs::remove_all(onHost(folder));
        fs::create_directories(onHost(folder));
    }
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
