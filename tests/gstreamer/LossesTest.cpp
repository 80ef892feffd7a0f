#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/gstreamer/TracedPipeline.h"

namespace {

constexpr uint32_t kFirstFrame = 11;

#define SOURCE "videotestsrc num-buffers=80 ! video/x-raw,width=64,height=48,framerate=30/1 "

enum Kind : uint8_t { kOvertaken = 1, kTooLate = 2, kFailed = 3 };

class LossesTest : public testing::Test {
protected:
    void SetUp() override {
        traced::forget();
        mAnnounced = traced::statistic("announced");
        mDone = traced::statistic("done");
    }

    // One announcement, and the promise kept; in every lost frame's record where it was lost.
    static void expectLosses(Kind kind, const std::string& element, std::set<uint32_t> frames) {
        for (const traced::Record& record : traced::records()) {
            const bool isLost = frames.erase(record.number) > 0;
            ASSERT_EQ(record.messages.size(), isLost ? 1U : 0U) << record.number;
            if (isLost) {
                const uint8_t state = record.messages[0].state;
                EXPECT_EQ(state, kind) << record.number;
                EXPECT_EQ(record.nodes.back().name, element) << record.number;
                const uint32_t id = record.messages[0].id;
                EXPECT_EQ(id, record.nodes.back().info.ids[1]);
            }
        }
        EXPECT_TRUE(frames.empty()) << *frames.begin() << " has no record";
    }
    void expectAnnounced(const std::vector<uint32_t>& frames) const {
        EXPECT_EQ(traced::statistic("announced") - mAnnounced, frames.size());
        EXPECT_EQ(traced::statistic("done") - mDone, frames.size());
        EXPECT_EQ(traced::lostFrames(), frames);
    }

private:
    uint64_t mAnnounced = 0;
    uint64_t mDone = 0;
};

std::set<uint32_t> range(uint32_t first, uint32_t last) {
    std::set<uint32_t> numbers;
    for (uint32_t number = first; number <= last; ++number) {
        numbers.insert(number);
    }
    return numbers;
}

TEST_F(LossesTest, LeakyQueue_OvertakenFramesAreOneLoss) {
    Gate stall;
    {
        TracedPipeline pipeline(SOURCE
                                "! identity name=paces ! "
                                "queue name=leaky leaky=downstream max-size-buffers=3 "
                                "max-size-bytes=0 max-size-time=0 ! "
                                "identity name=stalls ! fakesink async=false");
        pipeline.onBuffer("paces", [&](int number) {
            if (number == 1) {
                stall.awaitSomebody();
            }
        });
        pipeline.onBuffer("stalls", [&](int) { stall.pass(); });
        pipeline.onEndOfStream("leaky", [&] { stall.open(); });
        ASSERT_TRUE(pipeline.runsToItsEnd());
    }
    // The first frame was in the element that stalls, the newest three or two, beside the end of
    // the stream, in the queue.
    const std::vector<traced::Record> records = traced::records();
    ASSERT_EQ(records.size(), 80U);
    uint32_t last = kFirstFrame + 79;
    while (records[last - kFirstFrame].messages.empty()) {
        --last;
    }
    EXPECT_GE(last, kFirstFrame + 79 - 3);
    expectLosses(kOvertaken, "leaky", range(kFirstFrame + 1, last));
    expectAnnounced({kFirstFrame + 1});
    const traced::Node& queue = records[1].nodes.back();
    EXPECT_TRUE(queue.isStamped(0));
    EXPECT_FALSE(queue.isStamped(2) || queue.isStamped(3)) << "it never left";
}

TEST_F(LossesTest, LateSink_WhatItDropsIsLostThere_AndTheRecordsBeforeTellWhy) {
    {
        TracedPipeline pipeline(SOURCE
                                "! identity name=judge ! fakesink name=late sync=true "
                                "qos=true max-lateness=-1");
        GstElement* const sink = pipeline.element("late");
        // All frames are late; which of them are too late for the sink is decided here.
        pipeline.beLateBy(3600 * GST_SECOND);
        pipeline.onBuffer("judge", [sink](int number) {
            const bool isTooLate = (number >= 20 && number < 25) || number == 40;
            g_object_set(sink, "max-lateness", isTooLate ? gint64{1} : gint64{-1}, nullptr);
        });
        ASSERT_TRUE(pipeline.runsToItsEnd());
    }
    std::set<uint32_t> lost = range(31, 35);
    lost.insert(51);
    expectLosses(kTooLate, "late", lost);
    expectAnnounced({31});  // the second loss is too near: it is in the records behind the first
}

TEST_F(LossesTest, LossesFarApart_AreAnnouncedEach) {
    {
        TracedPipeline pipeline(SOURCE "! identity name=judge ! identity name=drops ! fakesink");
        GstElement* const element = pipeline.element("drops");
        pipeline.onBuffer("judge", [element](int number) {
            const bool drops = number == 10 || number == 50;
            g_object_set(element, "drop-probability", drops ? 1.0 : 0.0, nullptr);
        });
        ASSERT_TRUE(pipeline.runsToItsEnd());
    }
    expectLosses(kOvertaken, "drops", {21, 61});
    expectAnnounced({21, 61});
}

TEST_F(LossesTest, DecoderThatSkips_LosesFrames) {
    {
        TracedPipeline pipeline(SOURCE
                                "! jpegenc ! jpegdec name=decoder ! identity name=judge ! "
                                "fakesink name=sink");
        pipeline.onBuffer("judge", [&pipeline](int number) {
            if (number == 30) {
                pipeline.complainOfLateness("judge", GST_SECOND, GST_SECOND / 20);
            }
        });
        ASSERT_TRUE(pipeline.runsToItsEnd());
    }
    std::set<uint32_t> lost;
    for (const traced::Record& record : traced::records()) {
        if (record.nodes.back().name != "sink") {
            lost.insert(record.number);
        }
    }
    ASSERT_FALSE(lost.empty());
    EXPECT_GT(*lost.begin(), 41U);
    expectLosses(kTooLate, "decoder", lost);
    expectAnnounced({*lost.begin()});
}

TEST_F(LossesTest, ErrorInMidStream_TheFrameThatMetItIsLost) {
    {
        TracedPipeline pipeline(SOURCE "! queue ! identity name=breaks error-after=20 ! fakesink");
        EXPECT_FALSE(pipeline.runsToItsEnd());
    }
    const std::vector<uint32_t> lost = traced::lostFrames();
    ASSERT_EQ(lost.size(), 1U);
    const std::vector<traced::Record> records = traced::records();
    ASSERT_GT(records.size(), lost[0] - kFirstFrame);
    EXPECT_EQ(records[lost[0] - kFirstFrame].nodes.back().name, "breaks");
    ASSERT_EQ(records[lost[0] - kFirstFrame].messages.size(), 1U);
    const uint8_t state = records[lost[0] - kFirstFrame].messages[0].state;
    EXPECT_EQ(state, kFailed);
    expectAnnounced(lost);
}

TEST_F(LossesTest, FramesDroppedByDesign_AreNone) {
    {
        TracedPipeline pipeline(SOURCE
                                "! videorate ! video/x-raw,framerate=10/1 ! "
                                "identity name=middle ! valve name=gate ! fakesink");
        GstElement* const gate = pipeline.element("gate");
        pipeline.onBuffer("middle", [gate](int number) {
            g_object_set(gate, "drop", number >= 5 && number < 15, nullptr);
        });
        ASSERT_TRUE(pipeline.runsToItsEnd());
    }
    EXPECT_EQ(traced::records().size(), 80U);
    expectLosses(kOvertaken, "", {});
    expectAnnounced({});
}

}  // namespace
