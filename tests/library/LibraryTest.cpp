#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <type_traits>

#include "platform/CameraMemoryItemInfo.h"
#include "platform/OrnEvent.h"
#include "platform/SyncManager.h"
#include "platform/host/LogControl.h"
#include "recorder/IVideoDataRecoder.h"

namespace zk::test {
namespace {

using Recorder = IVideoDataRecoder;

// By which place in the virtual table an operation is called: there, and not by its name, the
// camera process finds the recorder's, and the recorder the camera stack's.
template <typename Operation>
size_t placeOf(Operation operation) {
    size_t offset = 0;  // and one on some processors, where it tells that the operation is virtual
    std::memcpy(&offset, &operation, sizeof(offset));
    return offset / sizeof(void*);
}

// Of a recorder's operation with these arguments.
template <typename... Args>
size_t slotOf(std::enable_if_t<true, void (Recorder::*)(Args...)> operation) {
    return placeOf(operation);
}

TEST(LibraryTest, OperationsKeepTheirPlacesAndArguments) {
    using U = uint32_t;
    using Reply = std::function<void(U, std::string)>;
    const size_t places[] = {
            slotOf<uint8_t, int32_t>(&Recorder::initialize),
            slotOf<>(&Recorder::unInitialize),
            slotOf<U, U, const void*>(&Recorder::writeMaintain),
            slotOf<U, const U*, const void* const*, U>(&Recorder::writeMaintains),
            slotOf<U>(&Recorder::VDRProcessing),
            slotOf<U>(&Recorder::VDRDone),
            slotOf<U, U*>(&Recorder::VDRDoneCount),
            slotOf<U>(&Recorder::VDRReport),
            slotOf<U, void**>(&Recorder::getVDRInfo),
            slotOf<bool*>(&Recorder::getMP4Writable),
            slotOf<U, bool&>(&Recorder::markWritable),
            slotOf<U>(&Recorder::markUnWritable),
            slotOf<bool*>(&Recorder::getVDRStatus),
            slotOf<U, bool*>(&Recorder::checkPreviewAndVideoStatus),
            slotOf<U, U, const void*>(&Recorder::WriteMaintainForLivePhoto),
            slotOf<U>(&Recorder::CacheDataForLivePhoto),
            slotOf<U>(&Recorder::DoneDataForLivePhoto),
            slotOf<int32_t, std::string>(&Recorder::PostDataForLivePhoto),
            slotOf<Reply>(&Recorder::RegisterCamDataCb),
            slotOf<void*, unsigned long, uint8_t>(&Recorder::SetChiFenceMap),
            slotOf<void*, unsigned long&, uint8_t&>(&Recorder::GetChiFenceMap),
            slotOf<SysStatusCollection&>(&Recorder::GetSystemStatus),
            slotOf<U, U>(&Recorder::SetChiFrameMap),
            slotOf<U, U&>(&Recorder::GetChiFrameMap),
            slotOf<ZkCamera::CameraMemoryItemInfo>(&Recorder::SetMemAllocTimeOutInfo),
            slotOf<MemoryAllocTimeoutInfo&>(&Recorder::GetMemAllocTimeOutInfo),
            slotOf<>(&Recorder::SnapshotCountAddOne),
    };
    for (size_t i = 0; i < std::size(places); ++i) {
        EXPECT_EQ(places[i], i + 2) << "behind the destructors";
    }
}

TEST(LibraryTest, ServicesAreCalledAtTheirPlaces) {
    EXPECT_EQ(placeOf(&Orn::IEvent::GetEventId), 0U);
    EXPECT_EQ(placeOf(&Orn::IEventClient::SubscribeEvents), 0U);
    EXPECT_EQ(placeOf(&Orn::IEventClient::SetEventCallback), 3U);
    EXPECT_EQ(placeOf(&Orn::IEventClient::SendEvent), 4U);
    EXPECT_EQ(placeOf(&SyncManager::getPromise), 2U);
}

TEST(LibraryTest, Loading_ConstructsTheRecorderAndUnloadingLeavesItThere) {
    host::setLogOutput(nullptr);
    host::startLogCapture();
    void* const library = dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    void* const symbol = dlsym(library, "_ZN2zk27getVideoDataRecoderInstanceEv");
    ASSERT_NE(symbol, nullptr) << dlerror();
    const auto told = host::capturedLog();
    ASSERT_FALSE(told.empty());
    EXPECT_NE(told.back().text.find("VDR::construct"), std::string::npos);
    dlclose(library);
    bool isOpen = true;
    reinterpret_cast<Recorder* (*)()>(symbol)()->getVDRStatus(&isOpen);
    EXPECT_FALSE(isOpen);
    EXPECT_EQ(host::capturedLog().size(), told.size());
    host::stopLogCapture();
}

// What it says when the process ends, and when: in the library's exit handler.
TEST(LibraryTest, EndOfTheProcess_IsTold) {
    const auto loadAndExit = [] {
        host::setLogOutput(stderr);
        std::exit(dlopen(VDR_LIBRARY, RTLD_NOW | RTLD_LOCAL) != nullptr ? 0 : 1);
    };
    EXPECT_EXIT(loadAndExit(), testing::ExitedWithCode(0),
                "~ZkaVideoDataRecoderImpl<[0-9]+>: VDR::deconstruct ZkaVideoDataRecoderImpl!");
}

}  // namespace
}  // namespace zk::test
