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

// The recorder is used without its class, so function types cannot match what they call.
#if defined(__clang__)
#define VDR_OF_UNNAMED_CLASS __attribute__((no_sanitize("function")))
#else
#define VDR_OF_UNNAMED_CLASS
#endif

// A process that has loaded the library on a device in a temporary folder, where the sampler does
// not sleep its whole second. Nothing of the recorder's own headers is used but the structs that
// cross the interface.
class LibraryTest : public testing::Test {
protected:
    LibraryTest() {
        std::string root = (std::filesystem::temp_directory_path() / "vdr-test-XXXXXX").string();
        mRoot = mkdtemp(root.data());
        host::setRootFolder(mRoot);
        host::setLogOutput(nullptr);
        host::startLogCapture();
        host::setSleepHandler([](uint32_t) { usleep(1000); });
    }

    ~LibraryTest() override {
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
        host::MonitoringService::instance().reset();  // the events sent are the library's objects
        if (mLibrary != nullptr) {
            dlclose(mLibrary);
            mLibrary = nullptr;
        }
    }

    // A place in the recorder's virtual table, which is what the camera process calls by.
    void* slot(size_t index) const {
        void* const* table = nullptr;
        std::memcpy(&table, mRecorder, sizeof(table));
        return table[index];
    }

    // Give the arguments' types as the interface has them: references and values differ.
    template <typename... Args>
    VDR_OF_UNNAMED_CLASS void call(size_t index, Args... args) const {
        using Operation = void (*)(void*, Args...);
        reinterpret_cast<Operation>(slot(index))(mRecorder, static_cast<Args>(args)...);
    }

    bool isOpen() const {
        bool isOpen = false;
        call<bool*>(14, &isOpen);  // getVDRStatus
        return isOpen;
    }

    bool isToBeRecorded(uint32_t number) const {
        bool answer = false;
        call<uint32_t, bool*>(15, number, &answer);  // checkPreviewAndVideoStatus
        return answer;
    }

    uint32_t doneCount() const {
        uint32_t count = 99;
        call<uint32_t, uint32_t*>(8, 0, &count);  // VDRDoneCount
        return count;
    }

    // A frame whose record holds its number.
    void take(uint32_t number) const {
        call<uint32_t>(6, number);                                     // VDRProcessing
        call<uint32_t, uint32_t, const void*>(4, number, 0, &number);  // writeMaintain
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
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(slot(0) != nullptr && slot(1) != nullptr && slot(0) != slot(1)) << "destructors";
    EXPECT_EQ(countLogged("VDR::deconstruct"), 0U);
    unload();
    EXPECT_EQ(countLogged("VDR::deconstruct"), 1U);
}

TEST_F(LibraryTest, FrameAndVideoSlots) {
    load();
    call<uint8_t, int32_t>(2, 1, 3);  // initialize
    EXPECT_TRUE(isOpen());
    take(7);
    const uint8_t camera = 2;
    const float zoom = 1.5F;
    const uint32_t tags[] = {2, 5};
    const void* const datas[] = {&camera, &zoom};
    call<uint32_t, const uint32_t*, const void* const*, uint32_t>(5, 7, tags, datas, 2);
    EXPECT_EQ(doneCount(), 0U);
    call<uint32_t>(7, 7);  // VDRDone
    EXPECT_EQ(doneCount(), 1U);
    void* record = nullptr;
    call<uint32_t, void**>(10, 7, &record);  // getVDRInfo
    ASSERT_NE(record, nullptr);
    std::vector<uint8_t> expected(kFrameRecordSize, 0);
    expected[0] = 7;
    expected[16] = camera;
    std::memcpy(&expected[19], &zoom, sizeof(zoom));
    EXPECT_EQ(std::memcmp(record, expected.data(), kFrameRecordSize), 0);

    bool isStarted = false;
    bool isInVideo = false;
    call<uint32_t, bool&>(12, 7, isStarted);  // markWritable
    EXPECT_TRUE(isStarted && isToBeRecorded(7) && isToBeRecorded(1000) && !isToBeRecorded(6));
    call<uint32_t>(13, 9);  // markUnWritable
    EXPECT_TRUE(isToBeRecorded(8) && !isToBeRecorded(9));
    call<bool*>(11, &isInVideo);  // getMP4Writable
    EXPECT_TRUE(isInVideo);

    call<uint32_t>(9, 7);  // VDRReport
    EXPECT_EQ(doneCount(), 0U);
    take(8);
    call(3);               // unInitialize
    call<uint32_t>(7, 8);  // VDRDone
    EXPECT_EQ(doneCount(), 0U);
}

TEST_F(LibraryTest, LivePhotoSlots) {
    load();
    call<uint8_t, int32_t>(2, 1, 3);  // initialize
    std::string reply;
    call<std::function<void(uint32_t, std::string)>>(  // RegisterCamDataCb
            20, [&reply](uint32_t code, const std::string& text) {
                reply = std::to_string(code) + " " + text;
            });
    take(41);
    call<uint32_t>(17, 41);  // CacheDataForLivePhoto
    const uint8_t camera = 2;
    call<uint32_t, uint32_t, const void*>(16, 41, 2, &camera);  // WriteMaintainForLivePhoto
    call<uint32_t>(18, 41);                                     // DoneDataForLivePhoto
    const int fd = memfd_create("live-photo", 0);
    ASSERT_EQ(ftruncate(fd, kFrameRecordSize), 0);
    call<int32_t, std::string>(  // PostDataForLivePhoto
            19, fd, R"({"id":"shot","startFrame":41,"endFrame":41,"bufferSize":4096})");
    uint8_t record[kFrameRecordSize] = {};
    EXPECT_EQ(pread(fd, record, sizeof(record), 0), ssize_t{kFrameRecordSize});
    close(fd);
    EXPECT_TRUE(record[0] == 41 && record[16] == camera);
    EXPECT_EQ(reply.rfind("80 ", 0), 0U) << reply;
    EXPECT_NE(reply.find("shot"), std::string::npos) << reply;
}

TEST_F(LibraryTest, RegistryAndStatusSlots) {
    load();
    call<uint8_t, int32_t>(2, 1, 3);                                       // initialize
    call<void*, unsigned long, uint8_t>(21, this, 1UL << 40, 9);           // SetChiFenceMap
    call<uint32_t, uint32_t>(24, 12, 34);                                  // SetChiFrameMap
    call<ZkCamera::CameraMemoryItemInfo>(26, {"preview", 6000, 1, 2048});  // SetMemAllocTimeOutInfo
    call(28);                                                              // SnapshotCountAddOne
    unsigned long chiFrame = 0;
    uint8_t tag = 0;
    uint32_t number = 0;
    MemoryAllocTimeoutInfo slow{};
    SysStatusCollection status{};
    call<void*, unsigned long&, uint8_t&>(22, this, chiFrame, tag);  // GetChiFenceMap
    call<uint32_t, uint32_t&>(25, 12, number);                       // GetChiFrameMap
    call<MemoryAllocTimeoutInfo&>(27, slow);                         // GetMemAllocTimeOutInfo
    call<SysStatusCollection&>(23, status);                          // GetSystemStatus
    EXPECT_TRUE(chiFrame == 1UL << 40 && tag == 9 && number == 34);
    EXPECT_STREQ(slow.itemName, "preview");
    EXPECT_EQ(uint32_t{slow.allocSizeKB}, 2U);
    EXPECT_EQ(uint16_t{status.snapshotCount}, 1);
    EXPECT_EQ(uint16_t{status.sceneMode}, 3);
}

}  // namespace
}  // namespace zk::test
