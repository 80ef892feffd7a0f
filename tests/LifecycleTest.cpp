#include <cstdio>

#include "platform/Log.h"
#include "platform/host/FileControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "records/FieldTags.h"
#include "records/VDRData1.h"
#include "records/VDRData2.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

constexpr uint32_t kBlocks = 80;

class LifecycleTest : public RecorderTest {
protected:
    bool isOpen() {
        bool status = false;
        recorder().getVDRStatus(&status);
        return status;
    }

    uint32_t doneCount() {
        uint32_t count = 0;
        recorder().VDRDoneCount(0, &count);
        return count;
    }

    // Every field of the record is written, with ones; lists have one element.
    void soil(uint32_t number) {
        const std::vector<uint8_t> ones(kFrameRecordSize, 0xFF);
        recorder().VDRProcessing(number);
        for (uint32_t tag = kTagCount; tag-- > 0;) {  // a list before its count, which fills it
            recorder().writeMaintain(number, tag, ones.data());
        }
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

void PrintTo(const Opening& row, std::ostream* out) {
    *out << row.name;
}

class OpeningTest : public LifecycleTest, public testing::WithParamInterface<Opening> {};

TEST_P(OpeningTest, SwitchesAndLevel_DecideWhetherTheRecorderOpens) {
    host::setProperty("ro.logsystem.usertype", GetParam().userType);
    host::setProperty("vendor.camera.debug.VideoDataRecorderStatus", GetParam().forcedOn);
    host::setProperty("vendor.camera.debug.VideoDataRecorderLevel", GetParam().level);
    recorder();
    forgetLog();
    recorder().initialize(GetParam().videoDebugSupport, -1);

    const std::string refusal = GetParam().refusal;
    EXPECT_EQ(isOpen(), refusal.empty());
    std::vector<std::string> told = transcript("VDR::");
    if (!refusal.empty()) {
        EXPECT_EQ(told.back(), "I initialize<LINE>: VDR::initialize" + refusal + ", close VDR!");
        told.pop_back();
        // An unknown level is found last: by then the opening has been told.
        const bool isLevel = refusal.find("level") != std::string::npos;
        EXPECT_EQ(told.size(), isLevel ? 1U : 0U);
    }
    if (!told.empty()) {
        EXPECT_EQ(told[0], "I initialize<LINE>: VDR::initialize, open VDR(sceneMode:-1)!");
    }
}

constexpr char kCommercial[] = ", product is commercial";
constexpr char kUnsupported[] = " videoDebugSupport=0";
constexpr char kUnknownLevel[] = " ZkaVideoDataRecoderImpl, VDR level not match any";
const Opening kOpenings[] = {
        {"Unset"},
        {"OtherUserType", "3"},
        {"Commercial", "6", "", 1, "", kCommercial},
        {"CommercialInHex", "0x6", "", 1, "", kCommercial},
        {"CommercialInOctal", "06", "0", 1, "", kCommercial},
        {"CommercialAndUnsupported", "6", "", 0, "", kCommercial},
        {"CommercialForced", "6", "1"},
        {"CommercialForcedByAnyNumber", "6", "-2"},
        {"Unsupported", "", "", 0, "", kUnsupported},
        {"UnsupportedThoughForced", "6", "1", 0, "", kUnsupported},
        {"SupportedByAnyNumber", "", "", 255},
        {"Level2", "", "", 1, "2"},
        {"Level3", "", "", 1, "3", kUnknownLevel},
        {"Level0Forced", "6", "1", 1, "0", kUnknownLevel},
        {"LevelMinus1", "", "", 1, "-1", kUnknownLevel},
};
INSTANTIATE_TEST_SUITE_P(Table, OpeningTest, testing::ValuesIn(kOpenings),
                         [](const auto& row) { return row.param.name; });

class LevelTest : public LifecycleTest, public testing::WithParamInterface<int> {};

TEST_P(LevelTest, SessionFromLoadToUnload_IsToldStepByStep) {
    useLevel(GetParam());
    switchRecordingOn();
    openSession(3);
    ASSERT_TRUE(mSleep.waitForSleep(1));  // a sampler that is late to start says so at its end
    for (uint32_t number = 1; number <= 3; ++number) {
        frame(number);
    }
    recorder().VDRDone(2);
    openSession(4);
    closeSession();

    const std::string level = std::to_string(GetParam());
    char address[32];
    std::snprintf(address, sizeof(address), "%p",
                  static_cast<const void*>(GetParam() == 1 ? vdr1::VDRData1::getName2FuncMap()
                                                           : vdr2::VDRData2::getName2FuncMap()));
    const std::string chosen = "I initialize<LINE>: VDR::initialize ZkaVideoDataRecoderImpl, vdr" +
                               level + "::VDRData" + level + "::getName2FuncMap()=" + address + "!";
    const std::string bound =
            "I initialize<LINE>: VDR::initialize ZkaVideoDataRecoderImpl, "
            "mTag2WriteFunc.size=39!";
    const std::vector<std::string> expected = {
            "I ZkaVideoDataRecoderImpl<LINE>: VDR::construct ZkaVideoDataRecoderImpl, "
            "mPreviewRecordStatus=1, mVDRLevel=" +
                    level + ", mVDRStatus=0, close VDR!",
            "I initialize<LINE>: VDR::initialize, open VDR(sceneMode:3)!",
            chosen,
            bound,
            "D SystemStatusInit<LINE>: VDR::systemStatusInit, start async task, "
            "mSysStatusInited=1, mThreadStatus=0!",
            "I initialize<LINE>: VDR::initialize(), mDataReadyPool.size()=80, "
            "mDataDonePool.size()=0, mDataProcessingPool.size()=0!",
            "I initialize<LINE>: VDR::initialize, open VDR(sceneMode:4)!",
            chosen,
            bound,
            "I initialize<LINE>: VDR::initialize(), mDataReadyPool.size()=77, "
            "mDataDonePool.size()=1, mDataProcessingPool.size()=2!",
            "D SystemStatusUnInit<LINE>: VDR::SystemStatusUnInit, prepare to quit thread task, "
            "mSysStatusInited=0!",
            "I unInitialize<LINE>: VDR::unInitialize(), mDataReadyPool.size()=80, "
            "mDataDonePool.size()=0, mDataProcessingPool.size()=0!"};
    EXPECT_EQ(transcript("VDR::"), expected);
    mSleep.open();
    destroyRecorder();
    EXPECT_EQ(countLogged("~ZkaVideoDataRecoderImpl<", kLogInfo), 1U);
    EXPECT_EQ(countLogged(": VDR::deconstruct ZkaVideoDataRecoderImpl!"), 1U);
}

INSTANTIATE_TEST_SUITE_P(Levels, LevelTest, testing::Values(1, 2));

TEST_F(LifecycleTest, Close_WritesRecordsThenLossThenEndsThePreviewThenTheSampler) {
    switchRecordingOn();
    openSession(0);
    completeFrames(11, 13);
    announceLoss(12);
    host::runTasksInline(true);
    host::failEveryOpen(true);
    host::MonitoringService::instance().setSendResult(-1);
    forgetLog();
    closeSession();

    const std::vector<std::string> told = transcript("");
    size_t at = 0;
    for (const char* part : {"saveDataToBinFile, ", "flush now, still write", "trigger promise",
                             "unInitialize send event failed", "SystemStatusUnInit, prepare",
                             "VDR::unInitialize(), mDataReadyPool"}) {
        while (at < told.size() && told[at].find(part) == std::string::npos) {
            ++at;
        }
        ASSERT_LT(at, told.size()) << part;
    }
}

TEST_F(LifecycleTest, OnlyARefusedInitialize_ClosesTheRecorder) {
    openSession();
    closeSession();
    EXPECT_TRUE(isOpen());
    frame(5).done();  // its fields stay writable too
    EXPECT_EQ(frameNumberOf(oldestDone().data()), 5U);
    recorder().initialize(0, 0);
    EXPECT_FALSE(isOpen());
}

TEST_F(LifecycleTest, LevelAndRecordingSwitch_AreReadOnceAtLoad) {
    recorder();
    useLevel(2);
    switchRecordingOn();
    openSession();
    EXPECT_EQ(countLogged("vdr1::VDRData1::getName2FuncMap()"), 1U);
    completeFrames(1, 2);
    closeSession();
    EXPECT_TRUE(binFiles().empty());
}

TEST_F(LifecycleTest, Close_TakesEveryBlockBackAndClearsIt) {
    openSession();
    for (uint32_t number = 1; number <= kBlocks; ++number) {
        soil(number);
    }
    for (uint32_t number = 1; number <= 50; ++number) {
        recorder().VDRDone(number);
    }
    for (int i = 0; i < 20; ++i) {
        recorder().VDRReport(0);
    }
    closeSession();
    recorder().VDRDone(60);  // was being filled, and is forgotten
    EXPECT_EQ(doneCount(), 0U);

    for (uint32_t number = 1; number <= kBlocks + 1; ++number) {
        recorder().VDRProcessing(number);
        recorder().VDRDone(number);
    }
    EXPECT_EQ(doneCount(), kBlocks);
    const std::vector<uint8_t> empty(kFrameRecordSize, 0);
    for (uint32_t i = 0; i < kBlocks; ++i, recorder().VDRReport(0)) {
        ASSERT_EQ(oldestDone(), empty) << "block " << i;
    }
}

TEST_F(LifecycleTest, FirstUseOfABlock_FindsItClear) {
    for (uint32_t number = 1; number <= kBlocks; ++number, recorder().VDRReport(0)) {
        recorder().VDRProcessing(number);
        recorder().VDRDone(number);
        ASSERT_EQ(oldestDone(), std::vector<uint8_t>(kFrameRecordSize, 0));
    }
}

}  // namespace
}  // namespace zk::test
