#include "frameloss/FrameDropEvents.h"
#include "platform/host/ClockControl.h"
#include "platform/host/FrameDropNotification.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/PropertyControl.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "testing/RecorderTest.h"

namespace zk::test {
namespace {

// How the monitoring service's convention introduces a line of one of the recorder's operations.
std::string line(const std::string& operation, const std::string& text) {
    return "I " + operation + "<LINE>: [] zk::ZkaVideoDataRecoderImpl::" + operation + ":LINE " +
           text;
}

class MonitoringEventsTest : public RecorderTest {
protected:
    // The ids of the events sent so far: previews start with 16387 and end with 16388.
    std::string sent() const {
        std::string ids;
        for (const auto& event : mService.sentEvents()) {
            ids += std::to_string(event->GetEventId()) + " ";
        }
        return ids;
    }

    // A preview with a video recording in it.
    void playSession() {
        openSession(4);
        bool writable = false;
        recorder().markWritable(5, writable);
        recorder().markUnWritable(6);
        recorder().markUnWritable(7);
        closeSession();
    }

    int32_t receive(uint64_t timeStamp, uint64_t frameNumber) {
        return recorder().ReceiveEvent(
                std::make_shared<ZkCamera::FrameDropNotification>(timeStamp, frameNumber));
    }

    host::MonitoringService& mService = host::MonitoringService::instance();
};

TEST_F(MonitoringEventsTest, PreviewAndVideo_AreReportedOnce_SubscribedOrNot) {
    mService.setSubscribeResult(-5);
    openSession(-1);  // no preview
    closeSession();
    openSession(3);
    recorder().initialize(0, 3);  // refused, and the preview goes on
    host::setProperty("ro.logsystem.usertype", "6");
    recorder().initialize(1, 3);
    host::setProperty("ro.logsystem.usertype", "");
    host::advanceWallClock(1500000);
    playSession();
    openSession(-2);
    ASSERT_EQ(sent(), "16387 16386 16388 16387 ");
    const auto events = mService.sentEvents();
    for (const auto& [event, stamp, scene] :
         {std::tuple(size_t{0}, kNow, 3), {3, kNow + 1500000, -2}}) {
        const auto& start = static_cast<const ZkCamera::FrameDropPreviewStart&>(*events[event]);
        EXPECT_EQ(start.mTimeStamp, stamp);
        EXPECT_EQ(start.mSceneMode, scene);
    }
    EXPECT_EQ(static_cast<const ZkCamera::FrameDropPreviewEnd&>(*events[2]).mTimeStamp, kNow);
    EXPECT_EQ(transcript("[]"), (Lines{line("SubscribeEvent", "SubscribeEvents failed, ret = -5"),
                                       line("unInitialize", "bad mTimeStamp")}));
    EXPECT_EQ(mService.lastClientName(), "ZkaVideoDataRecoderImpl");
}

TEST_F(MonitoringEventsTest, UnsentEvents_AreToldAndTheSessionGoesOn) {
    for (const std::string failing : {"eventAgency", "mEventClient", "Send"}) {
        SCOPED_TRACE(failing);
        const bool hasClient = failing == "Send";
        mService.withholdAgency(failing == "eventAgency");
        mService.withholdClient(failing == "mEventClient");
        mService.setSendResult(-1);
        destroyRecorder();
        forgetLog();
        playSession();
        EXPECT_EQ(countLogged("VDR::construct"), failing == "eventAgency" ? 0U : 1U);
        EXPECT_EQ(transcript("E "),
                  hasClient ? Lines{}
                            : (Lines{"E ZkaVideoDataRecoderImpl<LINE>: " + failing +
                                             " == nullptr is true!",
                                     "E markUnWritable<LINE>: mEventClient == nullptr is true!"}));
        const std::string failed = " send event failed at line:LINE";
        EXPECT_EQ(transcript("send event"), (Lines{line("initialize", "initialize" + failed),
                                                   line("unInitialize", "unInitialize" + failed)}));
    }
    mService.setSendResult(0);
    playSession();
    EXPECT_EQ(sent(), "16387 16386 16388 ") << "the next preview starts anew";
}

TEST_F(MonitoringEventsTest, OtherEventsAndLossesOfTheFirstTenFrames_AreIgnored) {
    openSession();
    EXPECT_EQ(recorder().ReceiveEvent(nullptr), -22);
    EXPECT_EQ(recorder().ReceiveEvent(std::make_shared<ZkCamera::FrameDropVideoEnd>()), 0);
    receive(77, 10);
    receive(77, 11);
    const std::string notification = "VDR::ReceiveEvent, rec frame drop notification:77, ";
    EXPECT_EQ(transcript("ReceiveEvent"),
              (Lines{"W ReceiveEvent<LINE>: VDR::ReceiveEvent, unknown eventId = 16386",
                     line("ReceiveEvent", notification + "10"),
                     line("ReceiveEvent", notification + "10, mFrameNumber less than 10!"),
                     line("ReceiveEvent", notification + "11"),
                     line("ReceiveEvent", "VDR::ReceiveEvent, suc get promise:77, 11")}));
    closeSession();
    receive(78, 4294967306);
    closeSession();
    EXPECT_EQ(dumps(kLossFolder), "10:; 11:")
            << "judged by all of its bits, kept with the lower half";
}

TEST_F(MonitoringEventsTest, RepeatedAnnouncement_QueuesTheFrameUnlessItIsTheLastOne) {
    openSession();
    completeFrames(1, 40);
    for (const uint64_t frameNumber : {41U, 41U, 45U, 41U}) {
        receive(77, frameNumber);
    }
    const std::string again = "VDR::ReceiveEvent, promise already exist:77, ";
    EXPECT_EQ(transcript("already exist"),
              (Lines{line("ReceiveEvent", again + "41"), line("ReceiveEvent", again + "45"),
                     line("ReceiveEvent", again + "41")}));
    completeFrames(42, 71);
    EXPECT_EQ(countLogged("mFrameLostNumQueue>=2, 3, front=41 pop"), 1U);
    receive(77, 41 + (uint64_t{1} << 32));
    completeFrames(72, 75);
    EXPECT_EQ(countLogged("mFrameLostNumQueue>=2, 3, front=45 pop"), 1U) << "compared whole";
}

// Where a loss is refused, at the stop, and by the last writer.
TEST_F(MonitoringEventsTest, NullPromises_AreSkipped) {
    host::withholdPromises(true);
    play("open !41 101-200 !250");
    EXPECT_EQ(dumps(kLossFolder), "41: 101-200");
    closeSession();
    host::stopThreadPool();
    play("!41 11-71 stop");
    host::restartThreadPool();
    EXPECT_EQ(dumps(kLossFolder), "41: 11-41");
    EXPECT_EQ(countLogged("already reach the max"), 1U);
    EXPECT_EQ(countLogged("trigger promise"), 2U);
}

}  // namespace
}  // namespace zk::test
