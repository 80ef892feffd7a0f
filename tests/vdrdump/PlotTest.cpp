// What a picture shows of a session, and that it is drawn.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "tests/vdrdump/MadeSession.h"
#include "tests/vdrdump/Program.h"
#include "tools/plot/plotScript.h"

namespace vdrdump::test {
namespace {

constexpr uint32_t kLost = MadeSession::kLost;

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

size_t occurrences(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// The frames as the picture of a session has them.
class Drawing {
public:
    explicit Drawing(const std::vector<Frame>& frames, const FieldChoice& fields = {})
          : mSession(fields, std::nullopt) {
        for (const Frame& each : frames) {
            Record record;
            record.bytes = reinterpret_cast<const uint8_t*>(&each);
            record.known = sizeof(Layout);
            mSession.add(record);
            mFrames.add(each.frameNumber);
        }
        mSession.finish();
        mChoice = choosePanels(mSession, NodeNames());
    }

    const SessionCurves& session() const { return mSession; }
    const PanelChoice& choice() const { return mChoice; }

    // The curves of the panel with this label; none where it is not there.
    std::vector<std::string> curves(const std::string& label) const {
        std::vector<std::string> titles;
        for (const Panel& panel : mChoice.panels) {
            for (const Axis* axis : {&panel.left, &panel.right}) {
                for (const Curve& curve :
                     axis->label == label ? axis->curves : std::vector<Curve>()) {
                    titles.push_back(curve.title);
                }
            }
        }
        return titles;
    }

    std::string leftOut() const {
        std::string text;
        for (const std::string& line : mChoice.leftOut) {
            text += line + "\n";
        }
        return text;
    }

    // The lines of gnuplot's commands that begin so.
    std::vector<std::string> commands(const std::string& start) const {
        Picture picture;
        picture.frames = {mFrames.low(), mFrames.high()};
        std::istringstream script(plotScript(picture, mChoice, mSession, PictureFormat::Svg));
        std::vector<std::string> commands;
        for (std::string line; std::getline(script, line);) {
            if (line.rfind(start, 0) == 0) {
                commands.push_back(line);
            }
        }
        return commands;
    }

private:
    SessionCurves mSession;
    PanelChoice mChoice;
    Range<uint32_t> mFrames;
};

struct Planted {
    const char* name;
    void (*plant)(MadeSession& session);
    const char* panel;
    const char* firstCurve;
    double peak;  // of the lost frame, at least
};

const Planted kPlanted[] = {
        {"SlowNode", [](auto& session) { session.work = 90; }, "time at nodes, ms",
         "work 0x7:0x66:0x0", 90},
        {"Wait", [](auto& session) { session.wait = 90; }, "time at nodes, ms",
         "wait before 0x7:0x66:0x0", 90},
        {"Algorithm", [](auto& session) { session.cost = 90; }, "algorithms, as stated", "HDR", 90},
        {"LateSensor", [](auto& session) { session.sensorDelay = 90; }, "frame interval, ms",
         "frame interval", 120},
        {"Latency", [](auto& session) { session.work = 90; }, "latency, ms", "latency", 120},
};

class PlantedCause : public testing::TestWithParam<Planted> {};

TEST_P(PlantedCause, IsThePeakOfItsPanel) {
    MadeSession made;
    GetParam().plant(made);
    const Drawing drawing(made.frames(70, 130, 1));
    for (const Panel& panel : drawing.choice().panels) {
        if (panel.left.label == GetParam().panel) {
            const Curve& curve = panel.left.curves.front();
            EXPECT_EQ(curve.title, GetParam().firstCurve);
            EXPECT_FALSE(panel.isStepped());
            for (const auto& run : drawing.session().curves().runsOf(curve.number)) {
                for (const PlotCurves::Span& span : run) {
                    EXPECT_EQ(span.high > GetParam().peak, span.frame == kLost) << span.frame;
                }
            }
            return;
        }
    }
    FAIL() << "no panel " << GetParam().panel;
}

INSTANTIATE_TEST_SUITE_P(Plot, PlantedCause, testing::ValuesIn(kPlanted),
                         [](const auto& row) { return std::string(row.param.name); });

// A node that is never slow but off by more than all others is not lost among slower ones.
TEST(Plot, ChoosesTheSlowestNodesAndThoseThatRise) {
    MadeSession made;
    made.also = [](Frame& each) {
        each.nodeInfo[4].stamps[2] += each.frameNumber == kLost ? 5000000 : 0;
        each.nodeInfo[4].stamps[3] += each.frameNumber == kLost ? 5000000 : 0;
    };
    const auto curves = Drawing(made.frames(70, 130, 1)).curves("time at nodes, ms");
    ASSERT_EQ(curves.size(), 6U);
    EXPECT_EQ(curves[0], "work 0x7:0x67:0x0");
    EXPECT_EQ(curves[1], "work 0x7:0x65:0x0");
    EXPECT_EQ(curves[3], "work 0x7:0x68:0x0");
}

TEST(Plot, MarksANodeThatDidNotEndAFrame) {
    MadeSession made;
    made.isStuck = true;
    made.also = [](Frame& each) { each.nodeInfo[4].stamps[2] = each.nodeInfo[4].stamps[3] = 0; };
    const Drawing drawing(made.frames(70, 130, 1));
    const auto curves = drawing.curves("time at nodes, ms");
    EXPECT_EQ(std::count(curves.begin(), curves.end(), "no end at 0x7:0x66:0x0"), 1);
    EXPECT_EQ(std::count(curves.begin(), curves.end(), "no end at 0x7:0x68:0x0"), 0)
            << "never tells it";
    const auto runs =
            drawing.session().curves().runsOf(drawing.session().unended().at(NodeIds{7, 102, 0}));
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].size(), 1U);
    EXPECT_EQ(runs[0][0].frame, kLost);
}

TEST(Plot, LeavesOutWhatIsZeroOrNotKnownAndNamesIt) {
    const Drawing made(MadeSession().frames(70, 130, 1));
    EXPECT_EQ(made.curves("temperature, as stated"), std::vector<std::string>{"back temperature"});
    EXPECT_EQ(made.curves("thermal level, to 15"), std::vector<std::string>{"thermal level"});
    EXPECT_TRUE(made.curves("frequency, GHz").empty());
    EXPECT_TRUE(made.curves("number").empty()) << "camera 1 throughout";
    EXPECT_TRUE(contains(made.leftOut(), "0 in every frame: camera load, processor 0"));
    EXPECT_TRUE(contains(made.leftOut(), "the same in every frame: camera 1, capture type 1"));
    for (const std::string& text : made.commands("set label 'left out")) {
        EXPECT_TRUE(contains(text, "in every frame"));
    }
    EXPECT_EQ(made.commands("set label 'left out").size(), made.choice().leftOut.size());

    const Drawing bare({frame(1), frame(2)});
    EXPECT_TRUE(bare.choice().panels.empty());
    EXPECT_TRUE(contains(bare.leftOut(), "not known: frame interval, latency, time at nodes"));
    FieldChoice chosen;
    chosen.add("sysStatusInfo_cpu0Freq");
    EXPECT_EQ(Drawing({frame(1), frame(2)}, chosen).curves("sysStatusInfo, kHz"),
              std::vector<std::string>{"cpu0Freq"});
}

TEST(Plot, GoesInStepsWhereValuesAreSampled) {
    for (const std::string& plot : Drawing(MadeSession().frames(70, 130, 1)).commands("plot ")) {
        const bool isSampled = contains(plot, "'load average'") ||
                               contains(plot, "'free memory'") ||
                               contains(plot, "'back temperature'");
        EXPECT_EQ(contains(plot, " with steps"), isSampled) << plot;
        EXPECT_EQ(contains(plot, " with linespoints"), !isSampled) << plot;
    }
}

TEST(Plot, ShowsFramesWithoutNeighboursAsPoints) {
    std::vector<Frame> odd;
    for (const Frame& each : MadeSession().frames(70, 130, 1)) {
        if (each.frameNumber % 2 == 1) {
            odd.push_back(each);
        }
    }
    for (const std::vector<Frame>& frames : {odd, {odd.front()}}) {
        const Drawing drawing(frames);
        EXPECT_TRUE(contains(drawing.leftOut(), "not known: frame interval"));
        const auto plots = drawing.commands("plot ");
        EXPECT_EQ(plots.size(), 6U) << "all but intervals, frequencies and modes";
        for (const std::string& plot : plots) {
            EXPECT_TRUE(contains(plot, "with points")) << plot;
            EXPECT_FALSE(contains(plot, "with steps") || contains(plot, "$lines")) << plot;
        }
    }
}

TEST(Plot, AxesStartWhereTheDataDo) {
    const Drawing drawing(MadeSession().frames(83, 130, 1));
    EXPECT_EQ(drawing.commands("set xrange").front(), "set xrange [82.5:130.5]");
    EXPECT_EQ(drawing.commands("set xtics").front(), "set xtics 85, 5");
    for (const std::string& command : drawing.commands("set yrange")) {
        const size_t from = command.find('[') + 1;
        const double low = std::strtod(command.c_str() + from, nullptr);
        const double high = std::strtod(command.c_str() + command.find(':') + 1, nullptr);
        EXPECT_GE(low, -0.05 * high) << command << ", and no value is below 0";
        EXPECT_LT(low, high) << command;
    }
    EXPECT_EQ(Drawing({frame(9)}).commands("set xtics").front(), "set xtics 9, 1");
}

// However many frames share a point, its peak is there, and what is missing stays marked.
TEST(Plot, KeepsPeaksAndGapsOfLongSessions) {
    PlotCurves curves;
    constexpr uint32_t kFrames = 20000;
    for (uint32_t number = 1; number <= kFrames; ++number) {
        if (number != 12345) {
            curves.add(number, {{0, number == 7777 ? 50.0 : 10.0}, {1, 1.0 * number}});
        }
    }
    EXPECT_EQ(curves.rangeOf(0).high(), 50);
    EXPECT_EQ(curves.medianOf(0), 10);
    EXPECT_EQ(curves.records(), kFrames - 1);
    const auto runs = curves.runsOf(0);
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_LE(runs[0].size(), PlotCurves::kMostPoints);
    EXPECT_TRUE(std::any_of(runs[0].begin(), runs[0].end(), [](const PlotCurves::Span& span) {
        return span.high == 50 && span.low == 10 && span.frame <= 7777 && span.lastFrame >= 7777;
    }));
    const auto missing = curves.missing({1, kFrames});
    ASSERT_EQ(missing.size(), 1U);
    EXPECT_TRUE(missing[0].first <= 12345 && missing[0].last >= 12345);
    EXPECT_LT(missing[0].last - missing[0].first, 20U);
}

// Frames come in the order in which they were completed.
TEST(Plot, PutsLateFramesInTheirPlaces) {
    std::vector<Frame> frames = MadeSession().frames(1, 3000, 1);
    const Drawing inOrder(frames);
    for (size_t i = 0; i + 7 < frames.size(); i += 10) {
        std::swap(frames[i], frames[i + 7]);
    }
    EXPECT_EQ(Drawing(frames).commands("").size(), inOrder.commands("").size());
    EXPECT_EQ(Drawing(frames).commands(""), inOrder.commands(""));
}

TEST(Plot, MarksTheLossInEveryPanelAndSaysWhy) {
    const TempFolder folder;
    MadeSession made;
    made.work = 170;
    made.also = [](Frame& each) {
        each.videoAction = each.frameNumber == 60 ? 1 : each.frameNumber == 140 ? 2 : 0;
    };
    std::vector<Frame> frames = made.frames(20, 160, 1);
    frames.erase(frames.begin() + (105 - 20));
    const std::string dump = folder.file("it's.bin", binaryOf(frames));
    const std::string names = folder.file("names", "7/102/0 noise filter\n");
    const std::string svg = folder.path("out.svg");
    const Program program = run({"plot", dump, "-o", svg, "--lost", "100", "--names", names});
    ASSERT_EQ(program.status, 0) << program.err;
    EXPECT_EQ(program.err + program.out, "");
    const std::string picture = contentsOf(svg);
    for (const char* part :
         {"it's.bin", "frames 70 to 130, 1 missing", "lost: 100",
          "Lost frame 100: node noise filter (0x7:0x66:0x0) worked on it for",
          "work noise filter (0x7:0x66:0x0)", "missing frames", "video recording"}) {
        EXPECT_TRUE(contains(picture, part)) << part;
    }
    ASSERT_EQ(run({"plot", dump, "-o", svg, "--frames", "70:130"}).status, 0);
    const std::string plain = contentsOf(svg);
    EXPECT_FALSE(contains(plain, "lost"));
    constexpr size_t kPanels = 7;
    for (const char* mark : {"rgb(214,  39,  40)", "rgb(227, 241, 222)"}) {
        EXPECT_GE(occurrences(plain, mark), kPanels) << mark;
    }
    EXPECT_EQ(occurrences(picture, "stroke-dasharray") - occurrences(plain, "stroke-dasharray"),
              kPanels + 1)
            << "a panel each, and the key";
    const std::string png = folder.path("out.png");
    EXPECT_EQ(run({"plot", dump, "-o", png}).status, 0);
    EXPECT_EQ(contentsOf(png).substr(1, 3), "PNG");
    // Nothing is known but that the frame is there.
    ASSERT_EQ(run({"plot", "-", "-o", svg, "--lost", "1"}, binaryOf({frame(1)})).status, 0);
    EXPECT_TRUE(contains(contentsOf(svg), "lost: 1") && contains(contentsOf(svg), "left out"));
}

TEST(Plot, DrawsTheChosenSessionFramesAndFields) {
    const TempFolder folder;
    std::vector<Frame> frames = MadeSession().frames(1, 90, 1);
    frames[9].videoAction = 1;
    frames[69].videoAction = 2;
    frames.erase(frames.begin() + 30, frames.begin() + 32);
    const std::vector<Frame> second = MadeSession().frames(1, 50, 2);
    frames.insert(frames.end(), second.begin(), second.end());
    const std::string dump = folder.file("a.bin", binaryOf(frames));
    const std::string svg = folder.path("out.svg");
    ASSERT_EQ(run({"plot", dump, "-o", svg, "--session", "2"}).err, "");
    EXPECT_TRUE(contains(contentsOf(svg), "session 2: frames 1 to 50, 0 missing"));
    // The recording has its marks outside of the chosen frames.
    const Program lost =
            run({"plot", dump, "-o", svg, "--lost", "31", "--around", "35:5", "--field",
                 "zoomRatio", "sysStatusInfo_memFree", "nodeInfo[1].stamps_2"});
    EXPECT_TRUE(contains(lost.err, "plotted session 1 of 2"));
    const std::string picture = contentsOf(svg);
    for (const char* part : {"session 1: frames 30 to 40, 2 missing", "lost: 31-32",
                             "sysStatusInfo, kB", "[1].stamps_2"}) {
        EXPECT_TRUE(contains(picture, part)) << part;
    }
    EXPECT_FALSE(contains(picture, "temperature"));
    EXPECT_EQ(occurrences(picture, "rgb(227, 241, 222)"), 4U);  // three panels and their key
    EXPECT_EQ(run({"plot", dump, "-o", svg, "--frames", "200:"}).status, 1);
    EXPECT_EQ(contentsOf(svg), picture);
}

}  // namespace
}  // namespace vdrdump::test
