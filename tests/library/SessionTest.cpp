#include <dlfcn.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "platform/SyncManager.h"
#include "platform/host/ClockControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/LogControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "recorder/IVideoDataRecoder.h"
#include "records/FieldTags.h"
#include "records/frameData.h"
#include "testing/FieldPlace.h"
#include "testing/SteppedLine.h"

namespace zk::test {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kFrames = 75;  // an odd number: the last record leaves with the session's end
constexpr uint32_t kLost = 41;
constexpr uint64_t kLossTime = 1700000000000000;

// Both levels have the same bytes, and the library reads its level when it is loaded.
class SessionTest : public testing::TestWithParam<int> {
protected:
    SessionTest() {
        std::string folder = testing::TempDir() + "vdr-session-XXXXXX";
        mRoot = mkdtemp(folder.data());
        fs::create_directories(mRoot / "data/vendor/camera");
        fs::create_directories(mRoot / "data/vendor/camera_frame_lost");
        host::setRootFolder(mRoot);
        host::setLogOutput(nullptr);
        host::setSleepHandler([](uint32_t) {  // the sampler's second, which unloading waits for
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        });
        host::setProperty("vendor.camera.debug.VideoDataRecorderLevel", std::to_string(GetParam()));
        host::setProperty("vendor.camera.debug.VideoDataRecorderPreviewStatus", "1");
        mLibrary = dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        void* const symbol = dlsym(mLibrary, "_ZN2zk27getVideoDataRecoderInstanceEv");
        mRecorder = reinterpret_cast<IVideoDataRecoder* (*)()>(symbol)();
    }

    ~SessionTest() override {
        dlclose(mLibrary);
        host::clearProperties();
        fs::remove_all(mRoot);
    }

    // Writes to every tag but the counts, twice to an array's. Returns what the record must be
    // then: the first and the last byte of each value are set, and tell frame and tag.
    frameData fillFrame(uint32_t frame) {
        frameData record{};
        std::memcpy(record.bytes, &frame, sizeof(frame));
        mRecorder->writeMaintain(frame, tag::frameNumber, record.bytes);
        for (uint32_t tag = tag::cslInfo; tag < tag::kCount; ++tag) {
            const FieldPlace& field = kFieldPlaces[tag];
            const bool isArray = field.capacity > 1;
            if (tag + 1 < tag::kCount && kFieldPlaces[tag + 1].capacity > 1) {
                continue;
            }
            for (size_t i = 0; i < (isArray ? 2 : 1); ++i) {
                uint8_t* const value = record.bytes + field.offset + i * field.size;
                value[0] = static_cast<uint8_t>(1 + (frame + tag + i) % 9);
                value[field.size - 1] = static_cast<uint8_t>(0x41 + (frame + i) % 7);
                mRecorder->writeMaintain(frame, tag, value);
            }
            if (isArray) {
                record.bytes[field.offset - 1] = 2;
            }
        }
        return record;
    }

    // The one file there.
    std::string contentOf(const char* folder) const {
        const fs::directory_iterator files(mRoot / folder);
        EXPECT_EQ(std::distance(begin(files), end(files)), 1) << folder;
        std::ifstream file(fs::directory_iterator(mRoot / folder)->path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    fs::path mRoot;
    void* mLibrary = nullptr;
    IVideoDataRecoder* mRecorder = nullptr;
};

TEST_P(SessionTest, Dumps_HoldEveryRecordAndTheLinesThatLedUpToTheLoss) {
    auto answer = SyncManager::getInstance()->getFuture(kLossTime);
    mRecorder->initialize(1, 0);
    std::string records;
    std::string lines;
    for (uint32_t frame = 1; frame <= kFrames; ++frame) {
        mRecorder->VDRProcessing(frame);
        const frameData record = fillFrame(frame);
        if (frame == kLost) {
            host::MonitoringService::instance().announceFrameDrop(kLossTime, kLost);
            host::MonitoringService::instance().waitUntilDelivered();
        }
        mRecorder->VDRDone(frame);
        mRecorder->VDRReport(frame);
        records.append(reinterpret_cast<const char*>(record.bytes), kFrameRecordSize);
        if (frame >= kLost - 30 && frame <= kLost) {
            char line[kFrameRecordSize] = "";
            ASSERT_TRUE(appendSteppedLine(record.bytes, line));
            lines += line;
        }
    }
    host::waitForThreadPool();
    mRecorder->unInitialize();
    EXPECT_TRUE(contentOf("data/vendor/camera") == records);
    EXPECT_EQ(contentOf("data/vendor/camera_frame_lost"), lines);
    ASSERT_EQ(answer.wait_for(std::chrono::seconds(10)), std::future_status::ready);
    EXPECT_EQ(answer.get(), VDR_SYNC_DONE);
    SyncManager::getInstance()->forget(kLossTime);
}

INSTANTIATE_TEST_SUITE_P(Level, SessionTest, testing::Values(1, 2));

}  // namespace
}  // namespace zk::test
