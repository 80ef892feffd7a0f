#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/gstreamer/TracedPipeline.h"

namespace {

constexpr uint32_t kFirstFrame = 11;

#define SOURCE "videotestsrc num-buffers=40 ! video/x-raw,width=64,height=48,framerate=30/1 "

class PipelinesTest : public testing::Test {
protected:
    void SetUp() override {
        traced::forget();
        mLost = traced::statistic("lost");
    }
    uint64_t newlyLost() const { return traced::statistic("lost") - mLost; }

private:
    uint64_t mLost = 0;
};

// Every record is there, in order, with every element on its way and their stamps in order.
void expectWholeFrames(const std::vector<traced::Record>& records, size_t count,
                       const std::string& path) {
    ASSERT_EQ(records.size(), count);
    for (size_t i = 0; i < records.size(); ++i) {
        const traced::Record& record = records[i];
        ASSERT_EQ(record.number, kFirstFrame + i);
        ASSERT_EQ(record.path(), path) << record.number;
        for (const traced::Node& node : record.nodes) {
            uint64_t before = 0;
            for (int place = 0; place < 4; ++place) {
                const uint64_t stamp = node.info.stamps[place];
                // The source was there before its frame.
                ASSERT_TRUE(stamp != 0 || &node == &record.nodes.front()) << node.name;
                ASSERT_GE(stamp, before) << node.name << " of frame " << record.number;
                before = stamp;
            }
        }
    }
}

TEST_F(PipelinesTest, NothingIsLost_EveryFrameIsRecordedWithEveryElement) {
    const struct {
        const char* what;
        const char* description;
        const char* path;
        size_t frames;
    } rows[] = {
            {"raw", SOURCE "! fakesink name=sink", "videotestsrc capsfilter sink", 40},
            {"converters",
             SOURCE "! videoconvert ! video/x-raw,format=RGB ! videoscale ! "
                    "video/x-raw,width=32 ! queue ! fakesink name=sink",
             "videotestsrc capsfilter videoconvert capsfilter videoscale capsfilter queue sink",
             40},
            {"an encoder that puts frames into another order, to its end",
             SOURCE "! x264enc bframes=3 ! fakesink name=sink",
             "videotestsrc capsfilter x264enc sink", 40},
            {"encoder and decoder", SOURCE "! jpegenc ! jpegdec ! fakesink name=sink",
             "videotestsrc capsfilter jpegenc jpegdec sink", 40},
            {"a muxer", SOURCE "! jpegenc ! matroskamux ! fakesink name=sink",
             "videotestsrc capsfilter jpegenc matroskamux sink", 40},
            {"pieces of frames",
             SOURCE "! x264enc sliced-threads=true threads=4 ! h264parse ! "
                    "video/x-h264,alignment=nal,stream-format=byte-stream ! queue ! "
                    "fakesink name=sink",
             "videotestsrc capsfilter x264enc h264parse capsfilter queue sink", 40},
            {"pieces that are joined again",
             SOURCE "! x264enc ! h264parse ! "
                    "video/x-h264,alignment=nal,stream-format=byte-stream ! queue ! h264parse ! "
                    "video/x-h264,alignment=au ! fakesink name=sink",
             "videotestsrc capsfilter x264enc h264parse capsfilter queue h264parse capsfilter sink",
             40},
            {"packets, several of a frame",
             SOURCE "! x264enc ! rtph264pay mtu=100 ! fakesink name=sink",
             "videotestsrc capsfilter x264enc rtph264pay sink", 40},
            {"repeated frames",
             SOURCE "! videorate ! video/x-raw,framerate=90/1 ! videoconvert ! "
                    "fakesink name=sink",
             "videotestsrc capsfilter videorate capsfilter videoconvert sink", 40},
            {"branches", SOURCE "! tee name=t ! queue ! fakesink t. ! queue ! jpegenc ! fakesink",
             "videotestsrc capsfilter t queue queue", 40},
            {"beside sound that ends earlier",
             SOURCE "! multiqueue name=q ! fakesink name=sink "
                    "audiotestsrc num-buffers=5 ! audio/x-raw,rate=8000 ! q. "
                    "q. ! fakesink sync=true",
             "videotestsrc capsfilter q sink", 40},
            {"two cameras side by side",
             SOURCE "! multiqueue name=q ! fakesink " SOURCE "! q. q. ! fakesink",
             "videotestsrc capsfilter q fakesink", 80},
            {"no times, other memory",
             "fakesrc num-buffers=40 sizetype=fixed sizemax=4608 ! "
             "video/x-raw,format=I420,width=64,height=48,framerate=30/1 ! videoconvert ! "
             "video/x-raw,format=RGB ! queue ! fakesink name=sink",
             "capsfilter videoconvert capsfilter queue sink", 40},
            {"bins within bins",
             "( " SOURCE "! ( videoconvert ! ( queue ) ) ) ! fakesink name=sink",
             "videotestsrc capsfilter videoconvert queue sink", 40},
            {"more frames inside than the recorder has blocks",
             "videotestsrc num-buffers=150 ! video/x-raw,width=64,height=48,framerate=30/1 ! "
             "queue max-size-buffers=0 max-size-bytes=0 max-size-time=0 min-threshold-buffers=120 "
             "! fakesink name=sink async=false",
             "videotestsrc capsfilter queue sink", 150},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        traced::forget();
        {
            TracedPipeline pipeline(row.description);
            ASSERT_TRUE(pipeline.runsToItsEnd());
        }
        std::vector<traced::Record> records = traced::records();
        const std::string path = row.path;
        for (traced::Record& record : records) {
            // Names are numbered through the process; of branches the order is that of threads.
            std::vector<traced::Node> nodes;
            for (traced::Node& node : record.nodes) {
                node.name.resize(node.name.find_last_not_of("0123456789") + 1);
                if (row.what != std::string("branches") || nodes.size() < 3 ||
                    node.name == "queue") {
                    nodes.push_back(node);
                }
            }
            record.nodes = nodes;
        }
        expectWholeFrames(records, row.frames, path);
        EXPECT_EQ(newlyLost(), 0U);
    }
}

TEST_F(PipelinesTest, Branches_AFrameIsThroughWhenEverySinkHasIt) {
    Gate slowBranch;
    TracedPipeline pipeline(SOURCE
                            "! tee name=t ! queue ! fakesink name=fast async=false "
                            "t. ! queue name=slow max-size-time=0 ! identity name=stop ! "
                            "fakesink name=late async=false");
    pipeline.onBuffer("stop", [&](int) { slowBranch.pass(); });
    pipeline.onEndOfStream("fast", [&] { slowBranch.open(); });
    ASSERT_TRUE(pipeline.runsToItsEnd());
    pipeline.stop();
    const std::vector<traced::Record> records = traced::records();
    ASSERT_EQ(records.size(), 40U);
    for (const traced::Record& record : records) {
        EXPECT_NE(record.path().find("fast"), std::string::npos) << record.number;
        EXPECT_NE(record.path().find("late"), std::string::npos) << record.number;
        EXPECT_TRUE(record.nodes.back().isStamped(3)) << record.number;
    }
    EXPECT_EQ(newlyLost(), 0U);
}

TEST_F(PipelinesTest, FlushAndSeek_WhatIsThrownAwayIsRecordedAndNoLoss) {
    {
        // More buffers than the queue takes three times over.
        TracedPipeline pipeline(
                "videotestsrc num-buffers=200 ! "
                "video/x-raw,width=64,height=48,framerate=30/1 ! "
                "queue name=full ! identity ! fakesink name=sink");
        pipeline.setState(GST_STATE_PAUSED);
        ASSERT_TRUE(pipeline.seek(GST_SECOND));
        pipeline.setState(GST_STATE_PAUSED);
        ASSERT_TRUE(pipeline.seek(GST_SECOND / 2));
        ASSERT_TRUE(pipeline.runsToItsEnd());
    }
    const std::vector<traced::Record> records = traced::records();
    ASSERT_GT(records.size(), 2U);
    for (size_t i = 0; i < records.size(); ++i) {
        EXPECT_EQ(records[i].number, kFirstFrame + i);
    }
    EXPECT_TRUE(records.back().nodes.back().isStamped(3));
    EXPECT_EQ(records.back().nodes.back().name, "sink");
    EXPECT_EQ(newlyLost(), 0U);
    EXPECT_TRUE(traced::lostFrames().empty());
}

TEST_F(PipelinesTest, StoppedInMidStream_WhatIsUnderWayIsRecordedAndNoLoss) {
    {
        TracedPipeline pipeline(SOURCE "! queue ! fakesink name=sink");
        pipeline.setState(GST_STATE_PAUSED);
    }
    const std::vector<traced::Record> records = traced::records();
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records[0].nodes.back().name, "sink");
    EXPECT_EQ(newlyLost(), 0U);
}

TEST_F(PipelinesTest, PlayedAgain_IsRecordedFromTheFirstNumberAgain) {
    TracedPipeline pipeline(SOURCE "! queue ! fakesink name=sink");
    for (int round = 0; round < 2; ++round) {
        traced::forget();
        ASSERT_TRUE(pipeline.runsToItsEnd());
        pipeline.setState(GST_STATE_READY);
        expectWholeFrames(traced::records(), 40, traced::records().at(0).path());
        EXPECT_EQ(traced::records().at(0).nodes.back().name, "sink");
    }
    EXPECT_EQ(newlyLost(), 0U);
}

TEST_F(PipelinesTest, TwoAtOnce_TheSecondGetsALineInTheLogAndNothing) {
    const uint64_t before = traced::statistic("pipelines");
    Gate running;
    TracedPipeline first(SOURCE "! identity name=stop ! fakesink name=sinkOfFirst");
    first.onBuffer("stop", [&](int) { running.pass(); });
    std::thread player([&] { EXPECT_TRUE(first.runsToItsEnd()); });
    running.awaitSomebody();
    {
        TracedPipeline second(SOURCE "! fakesink name=sinkOfSecond");
        g_object_set(second.element("sinkOfSecond"), "async", FALSE, nullptr);
        EXPECT_TRUE(second.runsToItsEnd());
    }
    running.open();
    player.join();
    first.stop();
    EXPECT_EQ(traced::statistic("pipelines"), before + 1);
    for (const traced::Record& record : traced::records()) {
        EXPECT_EQ(record.nodes.back().name, "sinkOfFirst");
    }
    EXPECT_EQ(traced::records().size(), 40U);
    EXPECT_NE(traced::log().find("is not recorded while another pipeline is"), std::string::npos);

    traced::forget();
    {
        TracedPipeline third(SOURCE "! fakesink name=sinkOfThird");
        EXPECT_TRUE(third.runsToItsEnd());
    }
    ASSERT_EQ(traced::records().size(), 40U);
    EXPECT_EQ(traced::records().back().nodes.back().name, "sinkOfThird");
}

TEST_F(PipelinesTest, Record_TellsCosts) {
    {
        TracedPipeline pipeline(SOURCE
                                "! identity name=slow sleep-time=7000 ! "
                                "videoconvert name=converter12 ! fakesink");
        ASSERT_TRUE(pipeline.runsToItsEnd());
    }
    const traced::Record record = traced::records().at(20);
    ASSERT_EQ(record.costs.size(), 3U);  // none of source and sink
    EXPECT_STREQ(record.costs[1].name, "slow");
    EXPECT_GE(record.costs[1].cost, 7);
    // What does not fit is told apart by the element's number.
    const std::string number = '#' + std::to_string(record.nodes.at(3).info.ids[1]);
    EXPECT_EQ(record.nodes.at(3).name, "converter12");
    EXPECT_EQ(record.costs[2].name,
              std::string("converter12").substr(0, 5 - number.size()) + number);
}

TEST_F(PipelinesTest, Record_TellsTheStateOfTheDevice) {
    uint32_t memory = 0;
    // The sampler has a thread of its own, which a busy machine may start late.
    for (int attempt = 0; attempt < 50 && memory == 0; ++attempt) {
        traced::forget();
        {
            TracedPipeline pipeline(SOURCE "! identity sleep-time=5000 ! fakesink");
            ASSERT_TRUE(pipeline.runsToItsEnd());
        }
        memory = traced::records().back().status.memAvailable;
    }
    EXPECT_GT(memory, 0U);
}

}  // namespace
