// Pages for bugs: what stands in them, that they are whole, and that no name in a dump gets out of
// its place.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <sstream>

#include "tests/vdrdump/MadeSession.h"
#include "tests/vdrdump/Markup.h"
#include "tests/vdrdump/Program.h"
#include "tools/explain/clocksOf.h"
#include "tools/output/shellWord.h"
#include "tools/report/Timeline.h"
#include "tools/report/inlineSvg.h"

namespace vdrdump::test {
namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

MadeSession slowNode() {
    MadeSession session;
    session.work = 170;  // five frames wait behind frame 100
    return session;
}

TEST(Report, HoldsTheAnswerAPictureAndTheRecords) {
    const TempFolder folder;
    const std::string dump = folder.file("session.bin", binaryOf(slowNode().frames(20, 160, 1)));
    const std::string page = folder.path("loss.html");
    const Program program = run({"report", dump, "--lost", "100", "-o", page});
    ASSERT_EQ(program.status, 0) << program.err;
    EXPECT_EQ(program.out + program.err, "");
    const Markup markup(contentsOf(page));
    ASSERT_EQ(markup.fault(), "");

    std::istringstream answer(run({"explain", dump, "--lost", "100"}).out);
    for (std::string line; std::getline(answer, line);) {
        const std::string text = line[0] == ' ' ? line.substr(16) : line;
        EXPECT_TRUE(contains(markup.text(), text)) << text;
    }
    // Frames 90 to 110, and folded 40 to 130.
    EXPECT_EQ(markup.ofClass("node"), 2 * MadeSession::kNodes);
    EXPECT_EQ(markup.ofClass("bar"), (21 + 91) * MadeSession::kNodes);
    EXPECT_EQ(markup.ofClass("record"), 91U);
    EXPECT_TRUE(contains(markup.text(), "frame 100 in node 0x7:0x66:0x0, from 18."));
    EXPECT_TRUE(contains(markup.text(), "vdrdump report " + dump + " --lost 100 -o " + page));
    EXPECT_EQ(markup.ofClass("panels"), 1U);
    EXPECT_EQ(markup.ofKind("script") + markup.ofKind("img") + markup.ofKind("link"), 0U);
    const std::string again = run({"report", dump, "--lost", "100"}).out;
    EXPECT_EQ(again.size() + page.size() + 4, contentsOf(page).size()) << "but for -o PAGE";
}

TEST(Report, SaysWhatItLacksWithoutGnuplot) {
    const std::string dump = binaryOf(slowNode().frames(90, 110, 1));
    const Program program = run({"report", "--lost", "100"}, dump, "/nonexistent");
    EXPECT_EQ(program.status, 0);
    EXPECT_TRUE(contains(program.err, "gnuplot"));
    const Markup markup(program.out);
    EXPECT_EQ(markup.fault(), "");
    EXPECT_TRUE(contains(markup.text(), "they need gnuplot"));
    EXPECT_EQ(markup.ofClass("panels"), 0U);
    EXPECT_EQ(markup.ofClass("bar"), 21 * MadeSession::kNodes);
}

TEST(Report, NoNameGetsOutOfItsPlace) {
    const std::string evil = "</title><script>alert('1')</script>\"><b onclick=\"x\">&amp;&bogus;";
    const TempFolder folder;
    MadeSession session = slowNode();
    session.also = [](Frame& each) {
        std::memcpy(each.pluginAlgoCostTime[0].name, "<b>&'", 6);
        std::strncpy(each.memoryAllocTimeoutInfo.itemName, "]]><script>\"&lt;", 39);
        each.memoryAllocTimeoutInfo.allocTimeSec = each.frameNumber == 99 ? 3 : 0;
    };
    std::vector<Frame> frames = session.frames(60, 140, 1);
    const std::string names = folder.file("na'mes", "7/102/0 " + evil + "\n7/103/0 a\xff\x01\n");
    const std::string dump = folder.file("<i>&\xff\n'\".bin", binaryOf(frames));
    const Program program = run({"report", dump, "--lost", "100", "--names", names});
    ASSERT_EQ(program.status, 0) << program.err;
    const Markup markup(program.out);
    EXPECT_EQ(markup.fault(), "");
    EXPECT_EQ(markup.ofKind("script") + markup.ofKind("b") + markup.ofKind("i"), 0U);
    EXPECT_EQ(program.out.find('\xff'), std::string::npos);
    EXPECT_TRUE(contains(markup.text(), "frame 100 in node " + evil + " (0x7:0x66:0x0)"));
    EXPECT_TRUE(contains(markup.text(), "\"]]><script>\"&lt;\""));
}

TEST(Report, ListsSeveralLossesAndShowsEach) {
    std::vector<Frame> frames = MadeSession().frames(20, 400, 1);
    frames.erase(frames.begin() + (300 - 20), frames.begin() + (303 - 20));
    frames.erase(frames.begin() + (100 - 20));
    const Markup markup(run({"report"}, binaryOf(frames)).out);
    EXPECT_EQ(markup.fault(), "");
    EXPECT_EQ(markup.ofClass("loss"), 2U);
    EXPECT_TRUE(contains(markup.text(), "2 losses"));
    EXPECT_EQ(markup.ofClass("panels"), 2U) << "with names of their own";
    EXPECT_EQ(markup.ofClass("record"), 90U + 90U);
}

TEST(Report, FramesChooseLossesAndAreShownWithoutOne) {
    const TempFolder folder;
    std::vector<Frame> frames = MadeSession().frames(20, 400, 1);
    frames.erase(frames.begin() + (300 - 20));
    frames.erase(frames.begin() + (100 - 20));
    const std::string dump = folder.file("a.bin", binaryOf(frames));
    const Markup one(run({"report", dump, "--frames", "250:305"}).out);
    EXPECT_TRUE(contains(one.text(), "Frame 300:"));
    EXPECT_TRUE(contains(one.text(), "30 of 30 frames before, 30 of 30 behind"));
    EXPECT_EQ(one.ofClass("record"), 55U);
    const Markup none(run({"report", dump, "--around", "200:2"}).out);
    EXPECT_EQ(none.fault(), "");
    EXPECT_EQ(none.ofClass("bar"), 5 * MadeSession::kNodes);
    const std::string page = folder.file("page.html", "kept");
    EXPECT_EQ(run({"report", dump, "--frames", "500:", "-o", page}).status, 1);
    EXPECT_EQ(run({"report", "-o", page}, binaryOf({frame(1), frame(2)})).status, 1);
    EXPECT_EQ(contentsOf(page), "kept");
}

FrameMap mapOf(const std::vector<Frame>& frames) {
    FrameMap map;
    for (const Frame& each : frames) {
        std::vector<uint8_t> bytes(sizeof(Layout));
        std::memcpy(bytes.data(), &each, sizeof(each));
        Record record;
        record.bytes = bytes.data();
        record.known = sizeof(Layout);
        map[each.frameNumber] = std::make_shared<StoredRecord>(record);
    }
    return map;
}

TEST(Timeline, PutsNodesInTheirOrderAndFramesBesideEachOther) {
    std::vector<Frame> frames = slowNode().frames(90, 110, 1);
    frames.erase(frames.begin() + (105 - 90));
    frames[2].nodeInfo[4].stamps[0] += 3600000000000ULL;  // an hour, as damage would have it
    const FrameMap map = mapOf(frames);
    const Timeline timeline = timelineOf(map, {95, 108}, 100, clocksOf(map, std::nullopt));
    ASSERT_EQ(timeline.rows.size(), MadeSession::kNodes);
    for (uint32_t i = 0; i < MadeSession::kNodes; ++i) {
        EXPECT_EQ(timeline.rows[i].node, (NodeIds{7, 100 + i, 0}));
        EXPECT_EQ(timeline.rows[i].bars.size(), 13U);
    }
    EXPECT_EQ(timeline.rows[0].lanes, 1U);
    EXPECT_GE(timeline.rows[2].lanes, 5U);
    ASSERT_EQ(timeline.arrivals.size(), 14U);
    EXPECT_EQ(timeline.arrivals[5].frame, 100U);
    EXPECT_EQ(timeline.arrivals[5].time, 0);
    EXPECT_FALSE(timeline.arrivals[10].hasRecord);
    EXPECT_NEAR(timeline.arrivals[10].time, 5 * 33.3, 1);
    EXPECT_EQ(timelineOf(map, {90, 95}, 90, clocksOf(map, std::nullopt)).leftOut, 1U);
}

TEST(Timeline, TakesFramesFromNodesWhoseClockIsAnother) {
    std::vector<Frame> frames = MadeSession().frames(90, 110, 1);
    for (Frame& each : frames) {
        each.cslInfo.stamp += 86400000000000ULL;
    }
    const FrameMap map = mapOf(frames);
    const StampClocks clocks = clocksOf(map, std::nullopt);
    ASSERT_FALSE(clocks.nodesShareIt);
    // The frame that time 0 belongs to has no record.
    const Timeline timeline = timelineOf(map, {100, 110}, 112, clocks);
    EXPECT_NEAR(timeline.arrivals.back().time, 0, 0.001);
    EXPECT_NEAR(timeline.rows[0].bars.back().first(), -2 * 33.3, 3);
    EXPECT_LT(timeline.to - timeline.from, 600);
    EXPECT_TRUE(timelineOf(mapOf({frame(1), frame(2)}), {1, 2}, 1, {}).isEmpty());
}

TEST(InlineSvg, NamesItsPartsAndLetsNothingElseIn) {
    const std::string file = R"svg(<?xml version="1.0"?><!DOCTYPE svg>
<svg xmlns="http://www.w3.org/2000/svg"><title>Gnuplot</title>
<desc>Produced by GNUPLOT 5.4 patchlevel 4 </desc><!-- <b> --><defs><circle id='dot'/></defs>
<use xlink:href='#dot'/><g fill="url(#dot)"><text>&amp;&bogus;&#64; id="dot"</text></g></svg>
)svg";
    EXPECT_EQ(inlineSvg(file, "p1-"), R"svg(<svg xmlns="http://www.w3.org/2000/svg">
<defs><circle id='p1-dot'/></defs>
<use xlink:href='#p1-dot'/><g fill="url(#p1-dot)"><text>&amp;&amp;bogus;&#64; id="dot"</text></g></svg>
)svg");
    EXPECT_EQ(makerOf(file), "GNUPLOT 5.4 patchlevel 4");
    for (const char* other : {"", "<svg>", "<svg><script>x</script></svg>", "</svg><svg>",
                              "<svg><title>Gnuplot</svg", "<svg><g <b></svg>"}) {
        EXPECT_EQ(inlineSvg(other, "p"), "") << other;
    }
}

TEST(ShellWord, IsReadBackAsWhatItWas) {
    const std::pair<std::string, std::string> kWords[] = {
            {"--lost", "--lost"},     {"a b", "'a b'"},
            {"it's", R"('it'\''s')"}, {"", "''"},
            {"$(x)`y`", "'$(x)`y`'"}, {"a\xff\n", R"($'a\xff\x0a')"},
            {"'\\", R"($'\'\x5c')"}};
    for (const auto& [word, shown] : kWords) {
        EXPECT_EQ(shellWord(word), shown);
    }
}

}  // namespace
}  // namespace vdrdump::test
