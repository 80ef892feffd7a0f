// The program as its users meet it: exit status, what goes where, and pictures.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/vdrdump/MadeSession.h"
#include "tests/vdrdump/Program.h"
#include "tools/read/DumpName.h"

namespace vdrdump::test {
namespace {

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

// Frames 1 to 90 without 30 and 31; a recording of frames 10 to 69.
std::vector<Frame> session() {
    std::vector<Frame> frames;
    for (uint32_t number = 1; number <= 90; ++number) {
        if (number == 30 || number == 31) {
            continue;
        }
        Frame each = frame(number);
        each.videoAction = number == 10 ? 1 : number == 70 ? 2 : 0;
        each.zoomRatio = 1.0F + static_cast<float>(number) / 90;
        each.sysStatusInfo.memFree = 500000 + number;
        each.nodeInfoCount = 1;
        frames.push_back(each);
    }
    return frames;
}

TEST(Program, InfoTellsWhatTheDumpHolds) {
    const TempFolder folder;
    std::vector<Frame> frames = session();
    frames.push_back(frame(1));
    frames.push_back(frame(1));
    const Program program = run({"info", folder.file("a.bin", binaryOf(frames)),
                                 folder.file("VIDEO_DEBUG_20240301_120000_00000030.txt",
                                             textOf({frame(29), frame(31)})),
                                 folder.file("empty.bin", "")});
    EXPECT_EQ(program.status, 0) << program.err;
    EXPECT_EQ(program.err, "");
    for (const char* part :
         {"binary dump", "88 records, frames 1 to 90", "2: 30-31", "frames 10 to 69",
          "1.01 to 2.00", "free 500001 to 500090 kB", "session 2", "repeated      1",
          "frame-loss text, lost frame 30", "1: 30", "empty, no record"}) {
        EXPECT_TRUE(contains(program.out, part)) << part << " in\n" << program.out;
    }
}

TEST(Program, ShowPrintsTheFramesAndFieldsAskedFor) {
    const std::string dump = binaryOf(session());
    const Program one =
            run({"show", "-", "--frame", "70", "--field", "videoAction", "zoomRatio"}, dump);
    EXPECT_EQ(one.status, 0);
    EXPECT_TRUE(contains(one.out, "frame 70: session 1, record 67, offset 274432\n"));
    EXPECT_TRUE(contains(one.out, "2 (a recording has ended)"));
    EXPECT_TRUE(contains(one.out, "1.777778"));
    EXPECT_FALSE(contains(one.out, "memFree"));
    const Program range = run({"show", "--frames", "29:32", "--field", "sysStatusInfo"}, dump);
    EXPECT_TRUE(contains(range.out, "frame 29:") && contains(range.out, "frame 32:"));
    EXPECT_FALSE(contains(range.out, "frame 28:") || contains(range.out, "frame 33:"));
    EXPECT_TRUE(contains(range.out, "500032 kB"));
    EXPECT_EQ(run({"show", "--frame", "00000070"}, dump).out,
              run({"show", "--frames", "70:70"}, dump).out);
    EXPECT_EQ(run({"show", "--frame", "30"}, dump).status, 1);
}

TEST(Program, ShowCallsNodesByTheirNames) {
    const TempFolder folder;
    const std::string names = folder.file("names", "7/101/0 noise filter\n");
    const std::string dump = binaryOf(MadeSession().frames(1, 2, 1));
    const Program named =
            run({"show", "--frame", "1", "--field", "nodeInfo", "--names", names}, dump);
    EXPECT_TRUE(contains(named.out, "noise filter, ids_0 0x7, ids_1 0x65")) << named.out;
    EXPECT_EQ(named.out.find("noise filter"), named.out.rfind("noise filter"));
    EXPECT_EQ(run({"show", "--names", names, "--table", "zoomRatio"}, dump).status, 2);
}

struct Usage {
    const char* name;
    std::vector<std::string> arguments;
    int status;
};

const Usage kUsages[] = {
        {"Nothing", {}, 2},
        {"UnknownCommand", {"read"}, 2},
        {"Help", {"--help"}, 0},
        {"HelpOfACommand", {"plot", "--help"}, 0},
        {"Version", {"--version"}, 0},
        {"FrameThatIsNoNumber", {"show", "--frame", "x"}, 2},
        {"FramesBackwards", {"show", "--frames", "9:3"}, 2},
        {"FramesWithoutAColon", {"show", "--frames", "9"}, 2},
        {"FrameAndFrames", {"show", "--frame", "1", "--frames", "1:2"}, 2},
        {"UnknownField", {"show", "--field", "zoom"}, 2},
        {"NoFormat", {"export"}, 2},
        {"UnknownFormat", {"export", "--format", "xml"}, 2},
        {"PictureOfAnotherKind", {"plot", "-o", "a.gif"}, 2},
        {"SessionZero", {"plot", "--session", "0", "-o", "a.svg"}, 2},
        {"FieldsOfARecord", {"fields"}, 0},
        {"SchemaForNoEngine", {"schema"}, 2},
        {"SchemaForAnUnknownEngine", {"schema", "--engine", "duckbd"}, 2},
        {"AroundNothing", {"show", "--around", ":3"}, 2},
        {"AroundAndFrames", {"show", "--around", "3", "--frames", "1:2"}, 2},
        {"TableAndFields", {"show", "--table", "zoomRatio", "--field", "zoomRatio"}, 2},
        {"NothingToPlot", {"plot", "-o", "/nonexistent/a.png"}, 1},
        {"MissingFile", {"info", "/nonexistent"}, 1},
        {"Directory", {"info", "/"}, 1},
        {"DirectoryAsOutput", {"export", "--format", "csv", "-o", "/"}, 1},
        {"EmptyInput", {"info"}, 0},
};

class ExitStatus : public testing::TestWithParam<Usage> {};

TEST_P(ExitStatus, TellsWrongUsageFromTrouble) {
    const Program program = run(GetParam().arguments);
    EXPECT_EQ(program.status, GetParam().status) << program.err;
    EXPECT_EQ(program.err.empty(), GetParam().status == 0);
    EXPECT_EQ(program.out.empty(), GetParam().status != 0);
}

INSTANTIATE_TEST_SUITE_P(Usage, ExitStatus, testing::ValuesIn(kUsages),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Program, Damage_IsToldWithFileAndOffsetBesideTheRest) {
    const TempFolder folder;
    const std::string cut = folder.file("cut.bin", binaryOf({frame(1), frame(2)}).substr(0, 6000));
    const std::string whole = folder.file("whole.bin", binaryOf({frame(3)}));
    const Program program = run({"export", cut, folder.path("none"), whole, "--format", "csv"});
    EXPECT_EQ(program.status, 1);
    EXPECT_TRUE(contains(program.err, cut + ": offset 4096: expected a record of 4096 bytes"));
    EXPECT_TRUE(contains(program.err, folder.path("none") + ": offset 0: expected"));
    EXPECT_TRUE(contains(program.out, cut + ",,1,0,1,") &&
                contains(program.out, whole + ",,1,0,3"));
}

TEST(Program, Output_ReplacesWhatIsThereButNeverItsDump) {
    const TempFolder folder;
    const std::string bytes = binaryOf({frame(1)});
    const std::string dump = folder.file("a.bin", bytes);
    EXPECT_EQ(run({"export", dump, "--format", "csv", "-o", folder.path("./a.bin")}).status, 2);
    EXPECT_EQ(run({"export", "--format", "csv", "-o", "/dev/stdin"}, bytes).status, 2);
    EXPECT_EQ(contentsOf(dump), bytes);
    const std::string out = folder.file("out.csv", std::string(100000, 'x'));
    EXPECT_EQ(run({"export", "--format", "csv", "-o", out}, bytes).status, 0);
    EXPECT_EQ(contentsOf(out), run({"export", "--format", "csv"}, bytes).out);
}

TEST(Program, HelpThatDoesNotArrive_IsAFailure) {
    const char* const command = "exec " VDRDUMP_PROGRAM " --help >/dev/full 2>/dev/null";
    EXPECT_EQ(WEXITSTATUS(std::system(command)), 1);
}

TEST(Program, PlotThatFails_SaysSoAndLeavesTheOldOne) {
    const TempFolder folder;
    const std::string full = folder.path("full.svg");
    ASSERT_EQ(symlink("/dev/full", full.c_str()), 0);
    EXPECT_EQ(run({"plot", "-", "-o", full}, binaryOf(session())).status, 1);
    const std::string svg = folder.file("out.svg", "kept");
    const Program program = run({"plot", "-", "-o", svg}, binaryOf(session()), "/nonexistent");
    EXPECT_EQ(program.status, 1);
    EXPECT_TRUE(contains(program.err, "gnuplot"));
    EXPECT_EQ(contentsOf(svg), "kept");
}

TEST(LostFrame, ComesFromTheNameOfATextFile) {
    EXPECT_EQ(DumpName::of("/a/VIDEO_DEBUG_20240301_120000_00001234.txt").lostFrame, 1234U);
    EXPECT_EQ(DumpName::of("phone7_VIDEO_DEBUG_20240301_120000_123456789.txt").lostFrame,
              123456789U);
    EXPECT_EQ(DumpName::of("VIDEO_DEBUG_20240301_120000_-0000001.txt").lostFrame, UINT32_MAX);
    for (const char* other :
         {"VIDEO_DEBUG_20240301_120000.bin", "VIDEO_DEBUG_20240301_120000_.txt", "-", "",
          "VIDEO_DEBUG_2024_120000_00001234.txt", "VIDEO_DEBUG_20240301_120000_00001234.txt.gz",
          "VIDEO_DEBUG_20240301_120000_99999999999.txt"}) {
        EXPECT_EQ(DumpName::of(other).lostFrame, std::nullopt) << other;
    }
}

}  // namespace
}  // namespace vdrdump::test
