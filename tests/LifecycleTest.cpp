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
        {"level 0", "", "", 1, "0", kUnknownLevel},
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
    destroyRecorder();
    Lines told = transcript("VDR::");
    told.erase(std::remove_if(told.begin(), told.end(),
                              [](const std::string& line) { return line[0] == 'D'; }),
               told.end());
    ASSERT_EQ(told.size(), 7U);
    told[2].resize(told[2].find('=') + 1);  // an address follows

    const std::string level = std::to_string(GetParam());
    const std::string initialize = "I initialize<LINE>: VDR::initialize";
    const std::string pools = "(), mDataReadyPool.size()=";
    EXPECT_EQ(
            told,
            (Lines{"I ZkaVideoDataRecoderImpl<LINE>: VDR::construct ZkaVideoDataRecoderImpl, "
                   "mPreviewRecordStatus=1, mVDRLevel=" +
                           level + ", mVDRStatus=0, close VDR!",
                   initialize + ", open VDR(sceneMode:3)!",
                   initialize + " ZkaVideoDataRecoderImpl, vdr" + level + "::VDRData" + level +
                           "::getName2FuncMap()=",
                   initialize + " ZkaVideoDataRecoderImpl, mTag2WriteFunc.size=39!",
                   initialize + pools + "77, mDataDonePool.size()=0, mDataProcessingPool.size()=3!",
                   "I unInitialize<LINE>: VDR::unInitialize" + pools +
                           "80, mDataDonePool.size()=0, mDataProcessingPool.size()=0!",
                   "I ~ZkaVideoDataRecoderImpl<LINE>: VDR::deconstruct "
                   "ZkaVideoDataRecoderImpl!"}));
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
    EXPECT_EQ(dumps(kBinFolder), "");
    EXPECT_TRUE(isOpen());
    recorder().initialize(0, 0);
    EXPECT_FALSE(isOpen());
}

}  // namespace
}  // namespace zk::test
