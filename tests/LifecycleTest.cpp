#include <algorithm>

#include "platform/host/FileControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "tests/RecorderTest.h"

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
    const char* level = "";
    const char* refusal = "";
};

constexpr char kCommercial[] = ", product is commercial";
constexpr char kUnsupported[] = " videoDebugSupport=0";
constexpr char kUnknownLevel[] = " ZkaVideoDataRecoderImpl, VDR level not match any";
const Opening kOpenings[] = {
        {"unset"},
        {"commercial in hex", "0x6", "0", 1, "", kCommercial},
        {"commercial and unsupported", "6", "", 0, "", kCommercial},
        {"commercial, forced by any number", "6", "-2"},
        {"unsupported though forced", "6", "1", 0, "", kUnsupported},
        {"level 3", "", "", 1, "3", kUnknownLevel},
};

TEST_F(LifecycleTest, SwitchesAndLevel_DecideWhetherTheRecorderOpens) {
    for (const Opening& opening : kOpenings) {
        SCOPED_TRACE(opening.name);
        const std::string refusal = opening.refusal;
        host::setProperty("ro.logsystem.usertype", opening.userType);
        host::setProperty("vendor.camera.debug.VideoDataRecorderStatus", opening.forcedOn);
        host::setProperty("vendor.camera.debug.VideoDataRecorderLevel", opening.level);
        recorder().initialize(1, -1);
        forgetLog();
        recorder().initialize(opening.videoDebugSupport, -1);
        EXPECT_EQ(isOpen(), refusal.empty());
        EXPECT_EQ(transcript("close VDR!"), refusal.empty()
                                                    ? Lines{}
                                                    : Lines{"I initialize<LINE>: VDR::initialize" +
                                                            refusal + ", close VDR!"});
        destroyRecorder();
    }
}

TEST_F(LifecycleTest, SessionFromLoadToUnload_IsToldStepByStep) {
    useLevel(2);
    switchRecordingOn();
    for (uint32_t number = 1; number <= 3; ++number) {
        recorder().VDRProcessing(number);
    }
    openSession(3);
    Lines opening = transcript("VDR::");
    ASSERT_EQ(opening.size(), 6U);
    opening[2].resize(opening[2].find('=') + 1);  // an address follows
    const std::string initialize = "I initialize<LINE>: VDR::initialize";
    EXPECT_EQ(opening,
              (Lines{("I ZkaVideoDataRecoderImpl<LINE>: VDR::construct ZkaVideoDataRecoderImpl, "
                      "mPreviewRecordStatus=1, mVDRLevel=2, mVDRStatus=0, close VDR!"),
                     initialize + ", open VDR(sceneMode:3)!",
                     initialize + " ZkaVideoDataRecoderImpl, vdr2::VDRData2::getName2FuncMap()=",
                     initialize + " ZkaVideoDataRecoderImpl, mTag2WriteFunc.size=39!",
                     ("D SystemStatusInit<LINE>: VDR::systemStatusInit, start async task, "
                      "mSysStatusInited=1, mThreadStatus=0!"),
                     initialize + "(), mDataReadyPool.size()=77, mDataDonePool.size()=0, "
                                  "mDataProcessingPool.size()=3!"}));
    ASSERT_TRUE(mSleep.waitForSleep(1));
    play("11-13 !12");
    host::runTasksInline(true);
    host::failEveryOpen(true);
    host::MonitoringService::instance().setSendResult(-1);
    forgetLog();
    closeSession();
    destroyRecorder();
    const Lines told = transcript("");
    auto at = told.begin();
    for (const char* part :
         {"saveDataToBinFile, ", "flush now, still write", "flush now, trigger promise!",
          "unInitialize send event failed", "VDR::SystemStatusUnInit, prepare to quit",
          ("I unInitialize<LINE>: VDR::unInitialize(), mDataReadyPool.size()=80, "
           "mDataDonePool.size()=0, mDataProcessingPool.size()=0!"),
          "I ~ZkaVideoDataRecoderImpl<LINE>: VDR::deconstruct ZkaVideoDataRecoderImpl!"}) {
        at = std::find_if(at, told.end(), [part](const std::string& line) {
            return line.find(part) != std::string::npos;
        });
        ASSERT_NE(at, told.end()) << part;
    }
}

TEST_F(LifecycleTest, LevelAndRecordingSwitch_AreReadAtLoad_AndOnlyARefusalCloses) {
    recorder();
    useLevel(2);
    switchRecordingOn();
    play("open 1-2 stop");
    EXPECT_EQ(countLogged("vdr1::VDRData1::getName2FuncMap()"), 1U);
    EXPECT_EQ(dumps(kBinFolder), "");
    EXPECT_TRUE(isOpen());
    recorder().initialize(0, 0);
    EXPECT_FALSE(isOpen());
}

}  // namespace
}  // namespace zk::test
