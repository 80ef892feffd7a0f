#include "frameloss/FrameDropEvents.h"
#include "platform/FrameDropNotification.h"
#include "platform/host/ClockControl.h"
#include "platform/host/MonitoringService.h"
#include "platform/host/SyncControl.h"
#include "platform/host/ThreadPoolControl.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Lines = std::vector<std::string>;

// How the monitoring service's convention introduces a line of one of the recorder's operations.
std::string line(const std::string& operation, const std::string& text) {
    return "I " + operation + "<LINE>: [] zk::ZkaVideoDataRecoderImpl::" + operation + ":LINE " +
           text;
}

std::string received(const std::string& text) {
    return line("ReceiveEvent", "VDR::ReceiveEvent, " + text);
}

std::string sendFailed(const std::string& operation) {
    return line(operation, operation + " send event failed at line:LINE");
}

class MonitoringEventsTest : public RecorderTest {
protected:
    // The events sent so far: "start(time, scene) video-end end(time)".
    Lines sent() const {
        Lines events;
        for (const auto& event : mService.sentEvents()) {
            if (event->GetEventId() == 0x4003) {
                const auto& start = static_cast<const ZkCamera::FrameDropPreviewStart&>(*event);
                events.push_back("start(" + std::to_string(start.mTimeStamp) + ", " +
                                 std::to_string(start.mSceneMode) + ")");
            } else if (event->GetEventId() == 0x4004) {
                const auto& end = static_cast<const ZkCamera::FrameDropPreviewEnd&>(*event);
                events.push_back("end(" + std::to_string(end.mTimeStamp) + ")");
            } else {
                events.push_back(event->GetEventId() == 0x4002 ? "video-end" : "?");
            }
        }
        return events;
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
    host::advanceWallClock(1500000);
    playSession();
    openSession(-2);
    EXPECT_EQ(sent(), (Lines{"start(1700000000000000, 3)", "video-end", "end(1700000000000000)",
                             "start(1700000001500000, -2)"}));
    EXPECT_EQ(transcript("[]"), (Lines{line("SubscribeEvent", "SubscribeEvents failed, ret = -5"),
                                       line("unInitialize", "bad mTimeStamp")}));
    EXPECT_EQ(mService.lastClientName(), "ZkaVideoDataRecoderImpl");
}

TEST_F(MonitoringEventsTest, UnsentEvents_AreToldAndTheSessionGoesOn) {
    for (const std::string failing : {"eventAgency", "mEventClient", "Send"}) {
        SCOPED_TRACE(failing);
        const bool hasClient = failing == "Send";
        mService.reset();
        mService.withholdAgency(failing == "eventAgency");
        mService.withholdClient(failing == "mEventClient");
        mService.setSendResult(-1);
        destroyRecorder();
        forgetLog();
        playSession();
        const Lines nulls{"E ZkaVideoDataRecoderImpl<LINE>: " + failing + " == nullptr is true!",
                          "E markUnWritable<LINE>: mEventClient == nullptr is true!"};
        EXPECT_EQ(transcript("is true!"), hasClient ? Lines{} : nulls);
        EXPECT_EQ(countLogged("construct Zka"), failing == "eventAgency" ? 0U : 1U);
        EXPECT_EQ(transcript("send event"),
                  (Lines{sendFailed("initialize"), sendFailed("unInitialize")}));
        mService.setSendResult(0);
        playSession();
        EXPECT_EQ(sent().size(), hasClient ? 3U : 0U) << "the next preview starts anew";
    }
}

TEST_F(MonitoringEventsTest, OtherEventsAndLossesOfTheFirstTenFrames_AreIgnored) {
    openSession();
    EXPECT_EQ(recorder().ReceiveEvent(nullptr), -22);
    EXPECT_EQ(recorder().ReceiveEvent(std::make_shared<ZkCamera::FrameDropVideoEnd>()), 0);
    const std::string notification = "rec frame drop notification:77, ";
    EXPECT_EQ(receive(77, 10), 0);
    EXPECT_EQ(receive(77, 11), 0);
    EXPECT_EQ(transcript("ReceiveEvent"),
              (Lines{"W ReceiveEvent<LINE>: VDR::ReceiveEvent, unknown eventId = 16386",
                     received(notification + "10"),
                     received(notification + "10, mFrameNumber less than 10!"),
                     received(notification + "11"), received("suc get promise:77, 11")}));
    closeSession();
    receive(78, 4294967306);
    closeSession();
    EXPECT_EQ(lossFiles(), (Lines{"VIDEO_DEBUG_19700101_000000_00000010.txt",
                                  "VIDEO_DEBUG_19700101_000000_00000011.txt"}))
            << "judged by all of its bits, kept with the lower half";
}

TEST_F(MonitoringEventsTest, RepeatedAnnouncement_QueuesTheFrameUnlessItIsTheLastOne) {
    openSession();
    completeFrames(1, 40);
    for (const uint64_t frameNumber : {uint64_t{41}, uint64_t{41}, uint64_t{45}, uint64_t{41}}) {
        receive(77, frameNumber);
    }
    const std::string again = "promise already exist:77, ";
    EXPECT_EQ(transcript("already exist"),
              (Lines{received(again + "41"), received(again + "45"), received(again + "41")}));
    completeFrames(42, 71);
    EXPECT_EQ(countLogged("mFrameLostNumQueue>=2, 3, front=41 pop"), 1U);
    receive(77, 41 + (uint64_t{1} << 32));
    completeFrames(72, 75);
    EXPECT_EQ(countLogged("mFrameLostNumQueue>=2, 3, front=45 pop"), 1U) << "compared whole";
}

TEST_F(MonitoringEventsTest, AnnouncementWithSomebodyElsesPromise_HasNoAccount) {
    openSession();
    const auto taken = SyncManager::getInstance()->getPromise(kNow);
    announceLoss(41);
    completeFrames(31, 71);
    EXPECT_EQ(lossFiles(), Lines{"VIDEO_DEBUG_19700101_011134_00000041.txt"});
    closeSession();
    EXPECT_EQ(settlement(), "pending");
    EXPECT_EQ(countLogged("count:") + countLogged(", count="), 0U);
}

TEST_F(MonitoringEventsTest, NullPromises_AreSkipped) {
    host::withholdPromises(true);
    openSession();
    announceLoss(41, 1);
    completeFrames(101, 200);
    announceLoss(250, 2);
    EXPECT_EQ(countLogged("already reach the max:2, 250"), 1U);
    EXPECT_EQ(lossFiles().size(), 1U);
    closeSession();
    EXPECT_EQ(countLogged("flush now, trigger promise!"), 1U);
    host::stopThreadPool();
    announceLoss(41, 3000000);
    completeFrames(11, 71);
    closeSession();
    host::restartThreadPool();
    EXPECT_EQ(lossFiles().size(), 2U);
    EXPECT_EQ(countLogged("trigger promise, lostTimeStamp="), 1U);
}

// The device's own services are called through the positions in their virtual tables.
template <typename Result, typename... Args>
Result callSlot(void* object, size_t slot, Args... args) {
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<Result (*)(void*, Args...)>(table[slot])(object, args...);
}

TEST_F(MonitoringEventsTest, ServicesKeepTheirPlacesInTheVirtualTable) {
    const auto event = std::make_shared<ZkCamera::FrameDropPreviewEnd>(77U);
    EXPECT_EQ(callSlot<uint32_t>(event.get(), 0), 16388U);
    const auto client = mService.eventAgency()->CreateEventClient("slots");
    const std::vector<uint32_t> ids{0x4005};
    EXPECT_EQ(callSlot<int>(client.get(), 0, &ids), 0);
    int deliveries = 0;
    callSlot<void, Orn::EventCallback>(client.get(), 3,
                                       [&deliveries](const auto&) { return ++deliveries; });
    mService.announceFrameDrop(77, 41);
    mService.waitUntilDelivered();
    EXPECT_EQ(deliveries, 1);
    EXPECT_EQ((callSlot<int, std::shared_ptr<Orn::IEvent>>(client.get(), 4, event)), 0);
    EXPECT_EQ(sent(), Lines{"end(77)"});

    using Promise = std::pair<bool, std::shared_ptr<SyncManager::Promise>>;
    EXPECT_TRUE(callSlot<Promise>(SyncManager::getInstance(), 2, uint64_t{77}).first);
}

}  // namespace
}  // namespace zk::test
