#include <algorithm>
#include <cstddef>

#include "platform/CameraMemoryItemInfo.h"
#include "platform/host/FileControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "records/VDRData1.h"
#include "registries/MemoryAllocTimeoutInfo.h"
#include "sysstatus/SysStatusCollection.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

class LifecycleTest : public RecorderTest {
protected:
    bool isOpen() {
        bool status = false;
        recorder().getVDRStatus(&status);
        return status;
    }
};

struct Opening {
    const char* name;
    const char* userType = "";
    const char* forcedOn = "";
    uint8_t videoDebugSupport = 1;
    const char* refusal = "";
};

constexpr char kCommercial[] = ", product is commercial";
constexpr char kUnsupported[] = " videoDebugSupport=0";
const Opening kOpenings[] = {
        {"unset"},
        {"commercial in hex", "0x6", "0", 1, kCommercial},
        {"commercial and unsupported", "6", "", 0, kCommercial},
        {"commercial, forced by any number", "6", "-2"},
        {"unsupported though forced", "6", "1", 0, kUnsupported},
};

// Of one recorder, which is open each time.
TEST_F(LifecycleTest, SwitchesAtEachOpening_DecideWhetherItStaysOpenAndAPreviewIsTold) {
    for (const Opening& opening : kOpenings) {
        SCOPED_TRACE(opening.name);
        const std::string refusal = opening.refusal;
        host::clearProperties();
        recorder().initialize(1, -1);
        host::setProperty("ro.logsystem.usertype", opening.userType);
        host::setProperty("vendor.camera.debug.VideoDataRecorderStatus", opening.forcedOn);
        forgetLog();
        recorder().initialize(opening.videoDebugSupport, 0);
        EXPECT_EQ(isOpen(), refusal.empty());
        EXPECT_EQ(transcript("close VDR!"), refusal.empty()
                                                    ? Lines{}
                                                    : Lines{"I initialize<LINE>: VDR::initialize" +
                                                            refusal + ", close VDR!"});
        EXPECT_EQ(host::MonitoringService::instance().sentEvents().empty(), !refusal.empty());
        closeSession();
        host::MonitoringService::instance().reset();
    }
}

TEST_F(LifecycleTest, UnknownLevel_IsFoundOutWhenOpen_AndHasNeitherFileNorSampler) {
    useLevel(3);
    switchRecordingOn();
    play("open 1-3 stop");
    const std::string initialize = "I initialize<LINE>: VDR::initialize";
    EXPECT_EQ(
            transcript("VDR::initialize"),
            (Lines{initialize + ", open VDR(sceneMode:0)!",
                   initialize + " ZkaVideoDataRecoderImpl, VDR level not match any, close VDR!"}));
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(dumps(kBinFolder), "");
    EXPECT_EQ(countLogged("async task"), 0U);
}

TEST_F(LifecycleTest, SessionFromLoadToUnload_IsToldStepByStep) {
    useLevel(2);
    switchRecordingOn();
    for (uint32_t number = 1; number <= 3; ++number) {
        recorder().VDRProcessing(number);
    }
    openSession(3);
    ASSERT_TRUE(mSleep.waitForSleep(1));
    play("11-13 !12");
    host::runTasksInline(true);
    host::failEveryOpen(true);
    host::MonitoringService::instance().setSendResult(-1);
    closeSession();
    destroyRecorder();
    const Lines told = transcript("");
    auto at = told.begin();
    const std::string initialize = "I initialize<LINE>: VDR::initialize";
    const Lines expected = {
            "I ZkaVideoDataRecoderImpl<LINE>: VDR::construct ZkaVideoDataRecoderImpl, "
            "mPreviewRecordStatus=1, mVDRLevel=2, mVDRStatus=0, close VDR!",
            initialize + ", open VDR(sceneMode:3)!",
            initialize + " ZkaVideoDataRecoderImpl, vdr2::VDRData2::getName2FuncMap()=0x",
            initialize + " ZkaVideoDataRecoderImpl, mTag2WriteFunc.size=39!",
            "D SystemStatusInit<LINE>: VDR::systemStatusInit, start async task",
            initialize +
                    "(), mDataReadyPool.size()=77, mDataDonePool.size()=0, "
                    "mDataProcessingPool.size()=3!",
            "saveDataToBinFile, ",
            "flush now, still write",
            "flush now, trigger promise!",
            "unInitialize send event failed",
            "VDR::SystemStatusUnInit, prepare to quit",
            "I unInitialize<LINE>: VDR::unInitialize(), mDataReadyPool.size()=80, "
            "mDataDonePool.size()=0, mDataProcessingPool.size()=0!",
            "I ~ZkaVideoDataRecoderImpl<LINE>: VDR::deconstruct"};
    for (const std::string& line : expected) {
        at = std::find_if(at, told.end(), [&line](const std::string& said) {
            return said.find(line) != std::string::npos;
        });
        ASSERT_NE(at, told.end()) << line;
    }
}

TEST_F(LifecycleTest, LevelAndRecordingSwitch_AreReadAtLoad) {
    recorder();
    useLevel(2);
    switchRecordingOn();
    play("open 1-2 stop");
    EXPECT_EQ(countLogged("vdr1::VDRData1::getName2FuncMap()"), 1U);
    EXPECT_EQ(dumps(kBinFolder), "");
    EXPECT_TRUE(isOpen()) << "only a refusal closes";
}

TEST_F(LifecycleTest, ClosedRecorder_GoesOnWithWhatItHas) {
    constexpr size_t kMasterCameraIdAt = offsetof(vdr1::VDRData1, masterCameraId);
    openSession(5);
    recorder().SetMemAllocTimeOutInfo({"slow", 6000, 1, 4096});
    frame(1).done();
    frame(2);
    recorder().CacheDataForLivePhoto(2);
    std::string reply;
    recorder().RegisterCamDataCb([&](uint32_t, const std::string& text) { reply = text; });
    recorder().initialize(0, 0);
    frame(3).done();
    frame(4);
    recorder().CacheDataForLivePhoto(4);
    recorder().DoneDataForLivePhoto(3);
    recorder().PostDataForLivePhoto(-1, R"({"id":"shot 1"})");
    EXPECT_EQ(countLogged("returnState 0, id shot 1, munmapRet -1!"), 1U);
    EXPECT_FALSE(reply.empty());
    const uint8_t camera = 7;
    recorder().WriteMaintainForLivePhoto(2, tag::masterCameraId, &camera);
    recorder().SnapshotCountAddOne();
    recorder().VDRReport(0);
    EXPECT_EQ(frameNumberOf(oldestDone().data()), 3U);
    SysStatusCollection status{};
    recorder().GetSystemStatus(status);
    EXPECT_EQ(status.sceneMode + status.snapshotCount, 5 + 1);
    MemoryAllocTimeoutInfo slow{};
    recorder().GetMemAllocTimeOutInfo(slow);
    EXPECT_STREQ(slow.itemName, "slow");
    openSession();
    for (const uint32_t number : {2U, 3U, 4U}) {
        recorder().DoneDataForLivePhoto(number);
    }
    const std::string photo = takeLivePhoto(2, 9, 3 * kFrameRecordSize);
    EXPECT_EQ(photo[kMasterCameraIdAt], camera);
    EXPECT_EQ(frameNumberOf(&photo[kFrameRecordSize]), 3U) << "stored when it was done";
    EXPECT_EQ(frameNumberOf(&photo[2 * kFrameRecordSize]), 0U);
}

}  // namespace
}  // namespace zk::test
