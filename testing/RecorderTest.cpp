#include "testing/RecorderTest.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>
#include <sstream>
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
#include "records/VDRData1.h"

namespace zk::test {

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kStamps = 15;
constexpr size_t kFirstStampAt = offsetof(vdr1::VDRData1, setGmeNcsDep);

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
    mSleep.open();
    mRecorder.reset();
    EXPECT_TRUE(waitForSamplersEnd());
    mSleep.close();
}

size_t RecorderTest::samplers() {
    size_t count = 0;
    std::error_code gone;  // threads end while they are listed
    for (const auto& thread : fs::directory_iterator("/proc/self/task", gone)) {
        std::string name;
        std::getline(std::ifstream(thread.path() / "comm"), name);
        count += name == "VDRSampler" ? 1 : 0;
    }
    return count;
}

bool RecorderTest::waitForSamplersEnd() {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (samplers() > 0) {
        if (std::chrono::steady_clock::now() > giveUp) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

RecorderTest::Frame::Frame(IVideoDataRecoder& recorder, uint32_t number)
      : mRecorder(recorder), mNumber(number) {
    mRecorder.VDRProcessing(number);
    write(tag::frameNumber, number);
}

RecorderTest::Frame& RecorderTest::Frame::stamp() {
    for (uint32_t i = 0; i < kStamps; ++i) {
        write(tag::setGmeNcsDep + i, stampOf(mNumber, i));
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
    static uint8_t untouched[kFrameRecordSize];
    void* record = untouched;
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

std::string RecorderTest::takeLivePhoto(uint32_t first, uint32_t last, size_t size) {
    std::string buffer(size, '\0');
    const int fd = memfd_create("buffer", MFD_CLOEXEC);
    EXPECT_EQ(ftruncate(fd, static_cast<off_t>(size)), 0);
    recorder().PostDataForLivePhoto(fd, R"({"id":"photo","startFrame":)" + std::to_string(first) +
                                                R"(,"endFrame":)" + std::to_string(last) +
                                                R"(,"bufferSize":)" + std::to_string(size) + "}");
    EXPECT_EQ(pread(fd, buffer.data(), size, 0), static_cast<ssize_t>(size));
    close(fd);
    return buffer;
}

fs::path RecorderTest::onHost(const std::string& devicePath) const {
    return mRoot.string() + devicePath;
}

void RecorderTest::layFile(const std::string& devicePath, const std::string& content) const {
    fs::create_directories(onHost(devicePath).parent_path());
    std::ofstream(onHost(devicePath), std::ios::binary) << content;
}

std::string RecorderTest::readFile(const std::string& devicePath) const {
    std::ostringstream content;
    content << std::ifstream(onHost(devicePath), std::ios::binary).rdbuf();
    return content.str();
}

std::map<std::string, std::string> RecorderTest::files(const char* deviceFolder) const {
    host::waitForThreadPool();
    std::map<std::string, std::string> contents;
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(onHost(deviceFolder), missing)) {
        const std::string name = entry.path().filename();
        contents[name] =
                entry.is_regular_file() ? readFile(deviceFolder + ('/' + name)) : std::string();
    }
    return contents;
}

std::string RecorderTest::dumps(const char* deviceFolder) const {
    std::string text;
    for (const auto& [name, content] : files(deviceFolder)) {
        std::vector<uint32_t> frames;
        if (deviceFolder == kBinFolder) {
            EXPECT_EQ(content.size() % kFrameRecordSize, 0U) << name;
            for (size_t at = 0; at < content.size(); at += kFrameRecordSize) {
                frames.push_back(frameNumberOf(&content[at]));
            }
        } else {
            std::istringstream lines(content);
            for (std::string line; std::getline(lines, line);) {
                frames.push_back(static_cast<uint32_t>(std::strtoll(line.c_str(), nullptr, 10)));
            }
        }
        text += text.empty() ? "" : "; ";
        text += std::to_string(std::strtol(&name[name.rfind('_') + 1], nullptr, 10)) + ":" +
                ranges(frames);
    }
    return text;
}

void RecorderTest::removeDumps() const {
    for (const char* folder : {kBinFolder, kLossFolder}) {
        fs::remove_all(onHost(folder));
        fs::create_directories(onHost(folder));
    }
}

Lines RecorderTest::transcript(const std::string& part) {
    static const std::regex lineNumber("<(\\d+)>");
    Lines lines;
    for (const host::LogLine& logged : host::capturedLog()) {
        const std::string tag = logged.tag == "VDRPERF" ? "" : "(" + logged.tag + ") ";
        std::string line =
                std::string(1, "??VDIWEF"[logged.priority & 7]) + " " + tag + logged.text;
        if (line.find(part) == std::string::npos) {
            continue;
        }
        // The monitoring service's convention repeats the number in the text.
        if (std::smatch number; std::regex_search(line, number, lineNumber)) {
            line = std::regex_replace(line, std::regex("([<:])" + number.str(1) + "\\b"), "$1LINE");
        }
        lines.push_back(line);
    }
    return lines;
}

void RecorderTest::forgetLog() {
    host::startLogCapture();
}

}  // namespace zk::test
