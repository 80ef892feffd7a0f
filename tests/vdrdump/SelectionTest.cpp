// The same choice of records and values, whatever is done with them.

#include <gtest/gtest.h>
#include <json/json.h>

#include <sstream>

#include "tests/vdrdump/Dumps.h"
#include "tests/vdrdump/Program.h"
#include "tools/record/FieldChoice.h"

namespace vdrdump::test {
namespace {

// Frames 1 to 100, then frames 1 to 50 of a second session.
std::string twoSessions() {
    std::vector<Frame> frames;
    for (const uint32_t last : {100U, 50U}) {
        for (uint32_t number = 1; number <= last; ++number) {
            Frame each = frame(number);
            each.cslInfo.stamp = 1000 + number * 10;
            each.zoomRatio = 1.5F;
            each.nodeInfoCount = 2;
            each.nodeInfo[0] = {{0x1a, 2, 3}, {number, 0, 0, 0}};
            each.nodeInfo[1] = {{4, 5, 6}, {0, 0, 0, number + 1}};
            frames.push_back(each);
        }
    }
    return binaryOf(frames);
}

struct Choice {
    const char* name;
    std::vector<std::string> options;
    const char* frames;  // "session:first-last" of each run
};

const Choice kChoices[] = {
        {"All", {}, "1:1-100 2:1-50"},
        {"Frame", {"--frame", "7"}, "1:7-7 2:7-7"},
        {"Frames", {"--frames", "40:60"}, "1:40-60 2:40-50"},
        {"FramesFrom", {"--frames", "90:"}, "1:90-100"},
        {"FramesTo", {"--frames", ":2"}, "1:1-2 2:1-2"},
        {"Session", {"--session", "2"}, "2:1-50"},
        {"FramesOfASession", {"--session", "2", "--frames", "3:4"}, "2:3-4"},
        {"Around", {"--around", "60:5"}, "1:55-65"},
        {"AroundASecond", {"--around", "95"}, "1:65-100"},
        {"AroundTheFirst", {"--around", "1:2", "--session", "1"}, "1:1-3"},
        {"Lost", {"--lost", "45", "--session", "1"}, "1:15-75"},
        {"LostAmongAll", {"--lost", "45", "--frames", ":"}, "1:1-100 2:1-50"},
        {"LostAndAround", {"--lost", "45", "--around", "90:1"}, "1:89-91"},
};

class Selections : public testing::TestWithParam<Choice> {
protected:
    static std::string ask(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
        return run(arguments, twoSessions()).out;
    }
};

// Runs of frames in one session, from lines that `read` takes them of.
template <typename Read>
std::string runsOf(const std::string& text, Read read) {
    std::string runs;
    int session = 0;
    int last = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        int number = 0;
        int frame = 0;
        if (!read(line, number, frame)) {
            continue;
        }
        if (number != session || frame != last + 1) {
            runs += (runs.empty() ? "" : std::to_string(last) + " ") + std::to_string(number) +
                    ":" + std::to_string(frame) + "-";
        }
        session = number;
        last = frame;
    }
    return runs + std::to_string(last);
}

TEST_P(Selections, AreTheSameForEveryOutput) {
    const auto fromShow = [](const std::string& line, int& session, int& frame) {
        return std::sscanf(line.c_str(), "frame %d: session %d", &frame, &session) == 2;
    };
    const auto fromCsv = [](const std::string& line, int& session, int& frame) {
        return std::sscanf(line.c_str(), "-,%*d,%d,%*d,%d", &session, &frame) == 2 ||
               std::sscanf(line.c_str(), "-,,%d,%*d,%d", &session, &frame) == 2;
    };
    const auto fromJson = [](const std::string& line, int& session, int& frame) {
        Json::Value value;
        std::istringstream(line) >> value;
        session = value["session"].asInt();
        frame = value["frameNumber"].asInt();
        return true;
    };
    EXPECT_EQ(runsOf(ask({"show", "-"}), fromShow), GetParam().frames);
    EXPECT_EQ(runsOf(ask({"export", "-", "--format", "csv"}), fromCsv), GetParam().frames);
    EXPECT_EQ(runsOf(ask({"export", "-", "--format", "ndjson"}), fromJson), GetParam().frames);
}

INSTANTIATE_TEST_SUITE_P(Options, Selections, testing::ValuesIn(kChoices),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Fields, PartsOfArrays_AreChosenInEveryOutput) {
    const std::vector<std::string> choice = {
            "--frame", "3", "--session", "1", "--field", "nodeInfo[1].stamps_3", "zoomRatio"};
    const auto ask = [&choice](std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), choice.begin(), choice.end());
        return run(arguments, twoSessions()).out;
    };
    EXPECT_EQ(ask({"export", "-", "--format", "csv"}),
              "file,lostFrame,session,record,frameNumber,zoomRatio,nodeInfo\n"
              "-,,1,2,3,1.500000,\"[[4]]\"\n");
    EXPECT_EQ(ask({"export", "-", "--format", "ndjson"}),
              "{\"file\":\"-\",\"lostFrame\":null,\"session\":1,\"record\":2,\"frameNumber\":3,"
              "\"zoomRatio\":1.500000,\"nodeInfo\":[{\"stamps_3\":4}]}\n");
    const std::string shown = ask({"show", "-"});
    EXPECT_NE(shown.find("zoomRatio "), std::string::npos);
    EXPECT_NE(shown.find(" stamps_3 4\n"), std::string::npos);
    EXPECT_EQ(shown.find("cslInfo"), std::string::npos);
}

TEST(Fields, ColumnsOfAllElementsAndWholeElements) {
    FieldChoice choice;
    EXPECT_TRUE(choice.add("nodeInfo.stamps_0") && choice.add("nodeInfo[59]"));
    EXPECT_EQ(choice.columnsOf(kNodes, 0), 1U << 3);
    EXPECT_EQ(choice.columnsOf(kNodes, 59), 0x7fU);
    EXPECT_EQ(choice.columnsOf(kRequests, 0), 0U);
    for (const char* wrong : {"nodeInfo[60]", "nodeInfo[", "nodeInfo[x]", "nodeInfo[1]stamps_0",
                              "nodeInfo.", "nodeInfo[1].", "nodeInfo.stamps", "zoomRatio[0]", ""}) {
        EXPECT_FALSE(FieldChoice().add(wrong)) << wrong;
    }
    for (const std::string& name : FieldChoice::names()) {
        EXPECT_TRUE(FieldChoice().add(name)) << name;
    }
}

TEST(Table, ShowsValuesAndHowTheyDiffer) {
    const Program program =
            run({"show", "--frames", "49:50", "--table", "cslInfo_stamp", "zoomRatio",
                 "nodeInfo[0].ids_0", "nodeInfo[1].stamps_3", "nodeInfo[2].ids_0"},
                twoSessions());
    EXPECT_EQ(program.out,
              "frame  cslInfo_stamp      zoomRatio  nodeInfo[0].ids_0  nodeInfo[1].stamps_3     "
              "nodeInfo[2].ids_0\n"
              "   49           1490       1.500000               0x1a                    50        "
              "             -\n"
              "   50           1500 +10   1.500000               0x1a                    51 +1     "
              "             -\n"
              "\n"
              "   49           1490       1.500000               0x1a                    50        "
              "             -\n"
              "   50           1500 +10   1.500000               0x1a                    51 +1     "
              "             -\n");
}

TEST(Fields, AreListedAsInTheManual) {
    const std::string manual = contentsOf(VDRDUMP_MANUAL);
    const Program fields = run({"fields"});
    EXPECT_NE(manual.find("\n" + fields.out), std::string::npos);
    EXPECT_NE(fields.out.find("\nsysStatusInfo_memFree "), std::string::npos);
    EXPECT_EQ(run({"fields", "zoomRatio"}).out,
              "name       type  unit  meaning\n"
              "zoomRatio  f32         zoom\n");
    EXPECT_EQ(run({"fields", "nodeInfo[3].ids_1"}).out,
              "name            type      unit  meaning\n"
              "nodeInfo        up to 60        nodes of the pipeline that handled the frame\n"
              "nodeInfo.ids_1  u32       id    the three ids name the node\n");
    EXPECT_NE(run({"fields", "--names"}).out.find("\nnodeInfo.ids_2\n"), std::string::npos);
}

struct Slip {
    const char* name;
    std::vector<std::string> arguments;
    const char* said;
};

const Slip kSlips[] = {
        {"Command", {"shwo", "x"}, "shwo is not expected; did you mean show?"},
        {"Option",
         {"show", "--frmae", "3"},
         "--frmae is not expected by show; did you mean --frame?"},
        {"OptionWithValue", {"info", "--losst=3"}, "did you mean --lost?"},
        {"Field", {"show", "--field", "zoom"}, "zoom is no field; did you mean zoomRatio?"},
        {"Case", {"plot", "-o", "a.svg", "--field", "ZOOMRATIO"}, "did you mean zoomRatio?"},
        {"Part", {"show", "--table", "nodeInfo[1].stamp_3"}, "is no field"},
        {"Format", {"export", "--format", "cvs"}, "found cvs; did you mean csv?"},
        {"ArrayInATable", {"show", "--table", "nodeInfo"}, "one of them is nodeInfo[0]"},
        {"NameInAPlot",
         {"plot", "-o", "a.svg", "--field", "pluginAlgoCostTime[2]"},
         "pluginAlgoCostTime[2].name has no curve"},
        {"ArrayInAPlot", {"plot", "-o", "a.svg", "--field", "nodeInfo"}, "nodeInfo has no curve"},
        {"LengthDecides", {"show", "--framse", "1:2"}, "did you mean --frames?"},
        {"TableOfNothing",
         {"show", "--table", "--frames", "1:2"},
         "--table: expected a name, found --frames"},
        {"FieldInATable", {"show", "--table", "zoom"}, "--table: zoom is no field"},
        {"NothingNear", {"qqqqqqq"}, "qqqqqqq is not expected\n"},
};

class WrongUsage : public testing::TestWithParam<Slip> {};

TEST_P(WrongUsage, NamesTheNearestRightOne) {
    const Program program = run(GetParam().arguments);
    EXPECT_EQ(program.status, 2);
    EXPECT_NE(program.err.find(GetParam().said), std::string::npos) << program.err;
}

INSTANTIATE_TEST_SUITE_P(Slip, WrongUsage, testing::ValuesIn(kSlips),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace vdrdump::test
