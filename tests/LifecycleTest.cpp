#include <algorithm>
#include <cstdio>

#include "platform/host/FileControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "records/VDRData1.h"
#include "records/VDRData2.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Lines = std::vector<std::string>;

const std::string kInitialize = "I initialize<LINE>: VDR::initialize";

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
        {"commercial", "6", "", 1, "", kCommercial},
        {"commercial in hex", "0x6", "", 1, "", kCommercial},
        {"commercial in octal", "06", "0", 1, "", kCommercial},
        {"commercial and unsupported", "6", "", 0, "", kCommercial},
        {"commercial, forced by any number", "6", "-2"},
        {"unsupported", "", "", 0, "", kUnsupported},
        {"unsupported though forced", "6", "1", 0, "", kUnsupported},
        {"level 3", "", "", 1, "3", kUnknownLevel},
        {"level 0, forced", "6", "1", 1, "0", kUnknownLevel},
        {"level -1", "", "", 1, "-1", kUnknownLevel},
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
        // An unknown level is found last: by then the opening has been told.
        const bool isToldOpen = refusal.empty() || refusal == kUnknownLevel;
        EXPECT_EQ(countLogged("open VDR(sceneMode:-1)!"), isToldOpen ? 1U : 0U);
        EXPECT_EQ(transcript("close VDR!"),
                  refusal.empty() ? Lines{} : Lines{kInitialize + refusal + ", close VDR!"});
        closeSession();
        mSleep.wakeSleeper();
        destroyRecorder();
    }
}

class LevelTest : public LifecycleTest, public testing::WithParamInterface<int> {};

TEST_P(LevelTest, SessionFromLoadToUnload_IsToldStepByStep) {
    useLevel(GetParam());
    switchRecordingOn();
    for (uint32_t number = 1; number <= 3; ++number) {
        recorder().VDRProcessing(number);
    }
    openSession(3);
    ASSERT_TRUE(mSleep.waitForSleep(1));  // a sampler that is late to start says so at its end
    closeSession();

    const std::string level = std::to_string(GetParam());
    char address[32];
    std::snprintf(address, sizeof(address), "%p",
                  static_cast<const void*>(GetParam() == 1 ? vdr1::VDRData1::getName2FuncMap()
                                                           : vdr2::VDRData2::getName2FuncMap()));
    const std::string pools = "(), mDataReadyPool.size()=";
    const Lines expected = {
            "I ZkaVideoDataRecoderImpl<LINE>: VDR::construct ZkaVideoDataRecoderImpl, "
            "mPreviewRecordStatus=1, mVDRLevel=" +
                    level + ", mVDRStatus=0, close VDR!",
            kInitialize + ", open VDR(sceneMode:3)!",
            kInitialize + " ZkaVideoDataRecoderImpl, vdr" + level + "::VDRData" + level +
                    "::getName2FuncMap()=" + address + "!",
            kInitialize + " ZkaVideoDataRecoderImpl, mTag2WriteFunc.size=39!",
            "D SystemStatusInit<LINE>: VDR::systemStatusInit, start async task, "
            "mSysStatusInited=1, mThreadStatus=0!",
            kInitialize + pools + "77, mDataDonePool.size()=0, mDataProcessingPool.size()=3!",
            "D SystemStatusUnInit<LINE>: VDR::SystemStatusUnInit, prepare to quit thread task, "
            "mSysStatusInited=0!",
            "I unInitialize<LINE>: VDR::unInitialize" + pools +
                    "80, mDataDonePool.size()=0, mDataProcessingPool.size()=0!"};
    EXPECT_EQ(transcript("VDR::"), expected);
    destroyRecorder();
    EXPECT_EQ(transcript("VDR::deconstruct"),
              Lines{"I ~ZkaVideoDataRecoderImpl<LINE>: VDR::deconstruct ZkaVideoDataRecoderImpl!"});
}

INSTANTIATE_TEST_SUITE_P(Levels, LevelTest, testing::Values(1, 2));

TEST_F(LifecycleTest, Close_WritesRecordsThenLossThenEndsThePreviewThenTheSampler) {
    switchRecordingOn();
    play("open 11-13 !12");
    host::runTasksInline(true);
    host::failEveryOpen(true);
    host::MonitoringService::instance().setSendResult(-1);
    forgetLog();
    closeSession();

    const Lines told = transcript("");
    auto at = told.begin();
    for (const char* part : {"saveDataToBinFile, ", "flush now, still write", "trigger promise",
                             "unInitialize send event failed", "SystemStatusUnInit, prepare",
                             "VDR::unInitialize(), mDataReadyPool"}) {
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
    EXPECT_TRUE(binFiles().empty());
    EXPECT_TRUE(isOpen());
    frame(5).done();  // its fields stay writable too
    EXPECT_EQ(frameNumberOf(oldestDone().data()), 5U);
    recorder().initialize(0, 0);
    EXPECT_FALSE(isOpen());
}

}  // namespace
}  // namespace zk::test
