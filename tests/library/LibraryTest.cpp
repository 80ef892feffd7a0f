#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/CameraMemoryItemInfo.h"
#include "platform/host/ClockControl.h"
#include "platform/host/FileControl.h"
#include "platform/host/LogControl.h"
#include "platform/host/MonitoringService.h"
#include "records/frameData.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"

namespace zk::test {
namespace {

// The places in the recorder's virtual table, which is what the camera process calls by.
enum Slot : size_t {
    kCompleteDestructor,
    kDeletingDestructor,
    kInitialize,
    kUnInitialize,
    kWriteMaintain,
    kWriteMaintains,
    kVDRProcessing,
    kVDRDone,
    kVDRDoneCount,
    kVDRReport,
    kGetVDRInfo,
    kGetMP4Writable,
    kMarkWritable,
    kMarkUnWritable,
    kGetVDRStatus,
    kCheckPreviewAndVideoStatus,
    kWriteMaintainForLivePhoto,
    kCacheDataForLivePhoto,
    kDoneDataForLivePhoto,
    kPostDataForLivePhoto,
    kRegisterCamDataCb,
    kSetChiFenceMap,
    kGetChiFenceMap,
    kGetSystemStatus,
    kSetChiFrameMap,
    kGetChiFrameMap,
    kSetMemAllocTimeOutInfo,
    kGetMemAllocTimeOutInfo,
    kSnapshotCountAddOne,
};

// The recorder is used without its class, so function types cannot match what they call.
#if defined(__clang__)
#define VDR_OF_UNNAMED_CLASS __attribute__((no_sanitize("function")))
#else
#define VDR_OF_UNNAMED_CLASS
#endif

// A process that has loaded the library on a device in a temporary folder. Nothing of the
// recorder's own headers is used but the structs that cross the interface.
class LibraryTest : public testing::Test {
protected:
    LibraryTest() {
        std::string root = (std::filesystem::temp_directory_path() / "vdr-test-XXXXXX").string();
        mRoot = mkdtemp(root.data());
        std::filesystem::create_directories(mRoot.string() + "/data/vendor/camera");
        host::setRootFolder(mRoot);
        host::setLogOutput(nullptr);
        host::startLogCapture();
    }

    ~LibraryTest() override {
        host::MonitoringService::instance().reset();  // the events sent are the library's objects
        unload();
        host::setSleepHandler(nullptr);
        host::stopLogCapture();
        std::filesystem::remove_all(mRoot);
    }

    VDR_OF_UNNAMED_CLASS void load() {
        mLibrary = dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(mLibrary, nullptr) << dlerror();
        void* const symbol = dlsym(mLibrary, "_ZN2zk27getVideoDataRecoderInstanceEv");
        ASSERT_NE(symbol, nullptr) << dlerror();
        mRecorder = reinterpret_cast<void* (*)()>(symbol)();
        ASSERT_NE(mRecorder, nullptr);
    }

    void unload() {
        if (mLibrary != nullptr) {
            dlclose(mLibrary);
            mLibrary = nullptr;
        }
    }

    // Loads the library and opens the recorder; the sampler does not sleep its whole second.
    void loadAndOpen() {
        host::setSleepHandler([](uint32_t) { usleep(1000); });
        load();
        ASSERT_FALSE(HasFatalFailure());
        call<uint8_t, int32_t>(kInitialize, 1, 3);
    }

    void* slot(size_t index) const {
        void* const* table = nullptr;
        std::memcpy(&table, mRecorder, sizeof(table));
        return table[index];
    }

    // Give the arguments' types as the interface has them: references and values differ.
    template <typename... Args>
    VDR_OF_UNNAMED_CLASS void call(Slot index, Args... args) const {
        using Operation = void (*)(void*, Args...);
        reinterpret_cast<Operation>(slot(index))(mRecorder, static_cast<Args>(args)...);
    }

    bool ask(Slot question) const {
        bool answer = false;
        call<bool*>(question, &answer);
        return answer;
    }

    bool isToBeRecorded(uint32_t number) const {
        bool answer = false;
        call<uint32_t, bool*>(kCheckPreviewAndVideoStatus, number, &answer);
        return answer;
    }

    uint32_t doneCount() const {
        uint32_t count = 99;
        call<uint32_t, uint32_t*>(kVDRDoneCount, 0, &count);
        return count;
    }

    // A frame whose record holds its number.
    void take(uint32_t number) const {
        call<uint32_t>(kVDRProcessing, number);
        call<uint32_t, uint32_t, const void*>(kWriteMaintain, number, 0, &number);
    }

    static size_t countLogged(const std::string& part) {
        size_t count = 0;
        for (const host::LogLine& line : host::capturedLog()) {
            count += line.text.find(part) != std::string::npos ? 1 : 0;
        }
        return count;
    }

private:
    std::filesystem::path mRoot;
    void* mLibrary = nullptr;
    void* mRecorder = nullptr;
};

TEST_F(LibraryTest, Loading_ConstructsTheRecorderAndUnloadingDestroysIt) {
    load();
    EXPECT_EQ(countLogged("VDR::construct"), 1U);
    EXPECT_FALSE(ask(kGetVDRStatus));
    EXPECT_NE(slot(kCompleteDestructor), nullptr);
    EXPECT_NE(slot(kDeletingDestructor), nullptr);
    EXPECT_NE(slot(kCompleteDestructor), slot(kDeletingDestructor));
    EXPECT_EQ(countLogged("VDR::deconstruct"), 0U);
    unload();
    EXPECT_EQ(countLogged("VDR::deconstruct"), 1U);
}

TEST_F(LibraryTest, FrameSlots) {
    loadAndOpen();
    EXPECT_TRUE(ask(kGetVDRStatus));
    take(7);
    const uint8_t camera = 2;
    const float zoom = 1.5F;
    const uint32_t tags[] = {2, 5};
    const void* const datas[] = {&camera, &zoom};
    call<uint32_t, const uint32_t*, const void* const*, uint32_t>(kWriteMaintains, 7, tags, datas,
                                                                  2);
    EXPECT_EQ(doneCount(), 0U);
    call<uint32_t>(kVDRDone, 7);
    EXPECT_EQ(doneCount(), 1U);

    void* record = nullptr;
    call<uint32_t, void**>(kGetVDRInfo, 7, &record);
    ASSERT_NE(record, nullptr);
    std::vector<uint8_t> expected(kFrameRecordSize, 0);
    expected[0] = 7;
    expected[16] = camera;
    std::memcpy(&expected[19], &zoom, sizeof(zoom));
    EXPECT_EQ(std::memcmp(record, expected.data(), kFrameRecordSize), 0);
    call<uint32_t>(kVDRReport, 7);
    EXPECT_EQ(doneCount(), 0U);

    take(8);
    call(kUnInitialize);
    call<uint32_t>(kVDRDone, 8);
    EXPECT_EQ(doneCount(), 0U);
}

TEST_F(LibraryTest, VideoSlots) {
    loadAndOpen();
    bool writable = false;
    call<uint32_t, bool&>(kMarkWritable, 100, writable);
    EXPECT_TRUE(writable);
    EXPECT_TRUE(isToBeRecorded(100) && isToBeRecorded(1000) && !isToBeRecorded(99));
    call<uint32_t>(kMarkUnWritable, 200);
    EXPECT_TRUE(isToBeRecorded(199) && !isToBeRecorded(200));
    take(199);
    EXPECT_FALSE(ask(kGetMP4Writable));
    call<uint32_t>(kVDRDone, 199);
    EXPECT_TRUE(ask(kGetMP4Writable));
}

TEST_F(LibraryTest, LivePhotoSlots) {
    loadAndOpen();
    std::string reply;
    call<std::function<void(uint32_t, std::string)>>(
            kRegisterCamDataCb, [&reply](uint32_t code, const std::string& text) {
                reply = std::to_string(code) + " " + text;
            });
    take(41);
    call<uint32_t>(kCacheDataForLivePhoto, 41);
    const uint8_t camera = 2;
    call<uint32_t, uint32_t, const void*>(kWriteMaintainForLivePhoto, 41, 2, &camera);
    call<uint32_t>(kDoneDataForLivePhoto, 41);

    const int fd = memfd_create("live-photo", 0);
    ASSERT_EQ(ftruncate(fd, kFrameRecordSize), 0);
    call<int32_t, std::string>(kPostDataForLivePhoto, fd,
                               R"({"id":"shot","startFrame":41,"endFrame":41,"bufferSize":4096})");
    uint8_t record[kFrameRecordSize] = {};
    EXPECT_EQ(pread(fd, record, sizeof(record), 0), ssize_t{kFrameRecordSize});
    close(fd);
    EXPECT_EQ(record[0], 41);
    EXPECT_EQ(record[16], camera);
    EXPECT_EQ(reply.rfind("80 ", 0), 0U) << reply;
    EXPECT_NE(reply.find("shot"), std::string::npos) << reply;
}

TEST_F(LibraryTest, RegistrySlots) {
    loadAndOpen();
    int fence = 0;
    call<void*, unsigned long, uint8_t>(kSetChiFenceMap, &fence, 1UL << 40, 9);
    call<uint32_t, uint32_t>(kSetChiFrameMap, 12, 34);
    unsigned long chiFrame = 0;
    uint8_t tag = 0;
    uint32_t number = 0;
    call<void*, unsigned long&, uint8_t&>(kGetChiFenceMap, &fence, chiFrame, tag);
    call<uint32_t, uint32_t&>(kGetChiFrameMap, 12, number);
    EXPECT_EQ(chiFrame, 1UL << 40);
    EXPECT_EQ(tag, 9);
    EXPECT_EQ(number, 34U);
}

TEST_F(LibraryTest, StatusSlots) {
    loadAndOpen();
    call(kSnapshotCountAddOne);
    SysStatusCollection status{};
    call<SysStatusCollection&>(kGetSystemStatus, status);
    EXPECT_EQ(uint16_t{status.snapshotCount}, 1);
    EXPECT_EQ(uint16_t{status.sceneMode}, 3);

    ZkCamera::CameraMemoryItemInfo slow;
    slow.itemName = "preview";
    slow.allocTimeMs = 6000;
    slow.allocSize = 2048;
    call<ZkCamera::CameraMemoryItemInfo>(kSetMemAllocTimeOutInfo, slow);
    MemoryAllocTimeoutInfo kept{};
    call<MemoryAllocTimeoutInfo&>(kGetMemAllocTimeOutInfo, kept);
    EXPECT_STREQ(kept.itemName, "preview");
    EXPECT_EQ(uint32_t{kept.allocSizeKB}, 2U);
}

}  // namespace
}  // namespace zk::test
