// ndjson and sqlite, and the queries that the documentation promises.

#include <gtest/gtest.h>
#include <json/json.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <sstream>

#include "tests/vdrdump/Dumps.h"
#include "tests/vdrdump/Program.h"

namespace vdrdump::test {
namespace {

constexpr uint64_t kLargest = UINT64_MAX - 1;

// A frame whose values show where digits, types or names get lost.
Frame tellingFrame(uint32_t number) {
    Frame result = frame(number);
    result.cslInfo = {4000000000U, (uint64_t{1} << 53) - 1};
    result.setGmeNcsDep = uint64_t{1} << 53;
    result.getGmeNcsDepGyro = kLargest;
    result.zoomRatio = 1.23456789F;
    result.sysStatusInfo.loadAvg1 = __builtin_nanf("");
    result.ae_af_awb_info.short0 = -7;
    result.pluginAlgoCostTimeCount = 2;
    std::memcpy(result.pluginAlgoCostTime[1].name, "a\"\\\xff", 4);
    result.pluginAlgoCostTime[1].cost = 9;
    return result;
}

// Its first 100 bytes.
std::string cutFrame() {
    return binaryOf({frame(3)}).substr(0, 100);
}

TEST(Ndjson, KeepsArraysAndDigits) {
    const TempFolder folder;
    const std::string text =
            folder.file("VIDEO_DEBUG_20240301_120000_00000042.txt", textOf({tellingFrame(41)}));
    const std::string dump = folder.file("a.bin", binaryOf({tellingFrame(1)}) + cutFrame());
    const Program program = run({"export", text, dump, "--format", "ndjson"});
    EXPECT_EQ(program.status, 1);  // for the cut record
    std::istringstream lines(program.out);
    std::vector<Json::Value> frames;
    for (std::string line; std::getline(lines, line);) {
        frames.emplace_back();
        std::istringstream(line) >> frames.back();
    }
    ASSERT_EQ(frames.size(), 3U);
    EXPECT_EQ(frames[0]["lostFrame"], Json::Value(42));
    EXPECT_TRUE(frames[1]["lostFrame"].isNull());
    EXPECT_EQ(frames[1]["file"], Json::Value(dump));
    for (int i = 0; i < 2; ++i) {
        const Json::Value& frame = frames[static_cast<size_t>(i)];
        EXPECT_TRUE(frame["cslInfo_stamp"].isIntegral());
        EXPECT_EQ(frame["cslInfo_stamp"].asUInt64(), 9007199254740991U);
        EXPECT_EQ(frame["setGmeNcsDep"], Json::Value("9007199254740992"));
        EXPECT_EQ(frame["getGmeNcsDepGyro"], Json::Value(std::to_string(kLargest)));
        EXPECT_DOUBLE_EQ(frame["zoomRatio"].asDouble(), 1.234568);
        EXPECT_TRUE(frame["sysStatusInfo_loadAvg1"].isNull());
        EXPECT_EQ(frame["ae_af_awb_info_short0"], Json::Value(-7));
        ASSERT_EQ(frame["pluginAlgoCostTime"].size(), 2U);
        EXPECT_EQ(frame["pluginAlgoCostTime"][1]["name"], Json::Value(R"(a"\x5c\xff)"));
        EXPECT_EQ(frame["pluginAlgoCostTime"][1]["cost"], Json::Value(9));
        EXPECT_EQ(frame["nodeInfo"], Json::Value(Json::arrayValue));
    }
    EXPECT_TRUE(frames[2]["nodeInfo"].isNull());  // behind the cut
    EXPECT_TRUE(frames[2]["setGmeNcsDep"].isNull());
    EXPECT_EQ(frames[2]["captureType"], Json::Value(0));
}

class Database {
public:
    explicit Database(const std::string& path) {
        EXPECT_EQ(sqlite3_open_v2(path.c_str(), &mDatabase, SQLITE_OPEN_READONLY, nullptr), 0);
    }
    ~Database() { sqlite3_close(mDatabase); }

    // Values with '|' between them, a line per row.
    std::string ask(const std::string& sql) const {
        std::string result;
        char* error = nullptr;
        const auto row = [](void* to, int count, char** values, char**) {
            for (int i = 0; i < count; ++i) {
                *static_cast<std::string*>(to) +=
                        std::string(i == 0 ? "" : "|") + (values[i] != nullptr ? values[i] : "-");
            }
            *static_cast<std::string*>(to) += '\n';
            return 0;
        };
        sqlite3_exec(mDatabase, sql.c_str(), row, &result, &error);
        EXPECT_EQ(error, nullptr) << error;
        sqlite3_free(error);
        return result;
    }

private:
    sqlite3* mDatabase = nullptr;
};

TEST(Sqlite, KeepsTypesAndKeys) {
    const TempFolder folder;
    const std::string first = folder.file("a.bin", binaryOf({frame(1), frame(2), frame(5)}));
    const std::string second = folder.file(
            "b.bin",
            binaryOf({frame(898), frame(899), frame(900), tellingFrame(1), frame(2)}) + cutFrame());
    const std::string path = folder.path("out.db");
    ASSERT_EQ(run({"export", first, second, "--format", "sqlite", "-o", path}).status, 1);
    const Database database(path);
    EXPECT_EQ(database.ask("SELECT file, path, kind, lostFrame, records, isDamaged FROM files"),
              "1|" + first + "|binary|-|3|0\n2|" + second + "|binary|-|6|1\n");
    EXPECT_EQ(database.ask("SELECT * FROM sessions"),
              "1|1|3|1|5|2|0|0|0\n2|1|3|898|900|0|0|0|0\n2|2|3|1|3|0|0|0|0\n");
    EXPECT_EQ(database.ask("SELECT file, session, record, cslInfo_stamp, getGmeNcsDepGyro,"
                           " zoomRatio, sysStatusInfo_loadAvg1, ae_af_awb_info_short0"
                           " FROM frames WHERE file = 2 AND session = 2 ORDER BY record"),
              "2|2|3|9007199254740991|18446744073709551614|1.234568|-|-7\n"
              "2|2|4|0|0|0.0|0.0|0\n"
              "2|2|5|0|-|0.0|0.0|-\n");
    EXPECT_EQ(database.ask("SELECT * FROM pluginAlgoCostTime WHERE element = 1"),
              "2|2|3|1|1|a\"\\x5c\\xff|9\n");
    const std::string plan = database.ask(
            "EXPLAIN QUERY PLAN SELECT * FROM nodeInfo"
            " WHERE file = 1 AND session = 1 AND frameNumber = 2");
    EXPECT_NE(plan.find("USING INDEX"), std::string::npos) << plan;
}

TEST(Sqlite, OutputThatCannotBeWritten_LeavesTheOldOne) {
    const TempFolder folder;
    const std::string dump = folder.file("a.bin", binaryOf({frame(1)}));
    EXPECT_EQ(run({"export", dump, "--format", "sqlite", "-o", folder.path("no/out.db")}).status,
              1);
    EXPECT_EQ(run({"export", dump, "--format", "sqlite"}).status, 2);
    const std::string old = folder.file("old.db", "kept until the new one is complete");
    const std::string link = folder.path("link.db");
    ASSERT_EQ(symlink(old.c_str(), link.c_str()), 0);
    EXPECT_EQ(run({"export", dump, "--format", "sqlite", "-o", link}).status, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
    EXPECT_EQ(run({"export", dump, "--format", "sqlite", "-o", pipe}).status, 1);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe)) << "not replaced";
    EXPECT_EQ(Database(old).ask("SELECT count(*) FROM frames"), "1\n");
}

// The queries stand in the documentation; what runs here is what is printed there.
std::vector<std::string> documentedQueries() {
    const std::string document = contentsOf(VDRDUMP_ANALYSIS);
    std::vector<std::string> queries;
    for (size_t at = document.find("```sql\n"); at != std::string::npos;
         at = document.find("```sql\n", at)) {
        at += 7;
        queries.push_back(document.substr(at, document.find("```", at) - at));
    }
    return queries;
}

// Node 0xa takes `time` in each frame.
void setNodes(Frame& each, uint64_t time) {
    const uint64_t start = uint64_t{each.frameNumber} * 1000;
    each.cslInfo.stamp = start;
    each.nodeInfoCount = 2;
    each.nodeInfo[0] = {{1, 0xa, 0}, {start + 1, start + 3, start + time, start + time + 1}};
    each.nodeInfo[1] = {{1, 0xb, 0}, {start + 60, start + 65, start + 90, start + 100}};
}

// Frames 60 to 130 around the loss of frame 100, which has a record all the same: node 0xb took
// longer before frame 70 and takes longer behind the loss; within, 0xa is the slower one.
std::vector<Frame> framesAroundALoss() {
    std::vector<Frame> frames;
    for (uint32_t number = 60; number <= 130; ++number) {
        Frame each = frame(number);
        setNodes(each, 50);
        if (number < 70 || number > 100) {
            each.nodeInfo[1].stamps[3] += 5000;
        }
        if (number == 75) {
            each.nodeInfo[1].stamps[0] = 0;  // never queued: no time, and not one since 0
        }
        each.pluginAlgoCostTimeCount = 1;
        std::memcpy(each.pluginAlgoCostTime[0].name, "EIS", 3);
        each.pluginAlgoCostTime[0].cost = number == 60 ? 30 : 10;
        each.semantAlgoCostTimeCount = 1;
        std::memcpy(each.semantAlgoCostTime[0].name, "FACE", 4);
        each.semantAlgoCostTime[0].cost = 20;
        each.sysStatusInfo.shellFrontTemp = 30000 + number;
        each.sysStatusInfo.shellBackTemp = static_cast<uint32_t>(-3);
        each.sysStatusInfo.thermalLevel = number < 100 ? 2 : 3;
        frames.push_back(each);
    }
    return frames;
}

// Two sessions with frames of the same numbers: in the first, frame 7 is missing and 0xb slower; in
// the second, frame 7 is there and got stuck in 0xa, the faster node. Plug-in and semantic
// algorithm have one name.
std::vector<Frame> twoSessions() {
    std::vector<Frame> frames;
    for (const uint32_t session : {1U, 2U}) {
        for (uint32_t number = 1; number <= 12; ++number) {
            Frame each = frame(number);
            setNodes(each, session == 1 ? 20 : 30);
            each.pluginAlgoCostTimeCount = 1;
            std::memcpy(each.pluginAlgoCostTime[0].name, "EIS", 3);
            each.pluginAlgoCostTime[0].cost = 6;
            each.semantAlgoCostTimeCount = 1;
            std::memcpy(each.semantAlgoCostTime[0].name, "EIS", 3);
            each.semantAlgoCostTime[0].cost = 7;
            if (session == 2 && (number == 7 || number == 8)) {
                each.nodeInfo[0].stamps[3] = 0;
                each.nodeInfo[1] = {{1, 0xb, 0}, {0, 0, 0, 0}};
            }
            if (session == 2 || number != 7) {
                frames.push_back(each);
            }
        }
    }
    frames.erase(frames.end() - 4);  // frame 9 of the second
    return frames;
}

// The same frame of another camera session, lost too: here 0xb is the slower one throughout.
std::vector<Frame> framesAroundAnotherLoss() {
    std::vector<Frame> frames;
    for (uint32_t number = 90; number <= 100; ++number) {
        Frame each = frame(number);
        setNodes(each, 7);
        each.sysStatusInfo.thermalLevel = 9;
        frames.push_back(each);
    }
    return frames;
}

class Analysis : public testing::Test {
protected:
    Analysis() {
        mText = mFolder.file("VIDEO_DEBUG_20240301_120000_00000100.txt",
                             textOf(framesAroundALoss()));
        mBinary = mFolder.file("a.bin", binaryOf(twoSessions()));
        mEmpty = mFolder.file("VIDEO_DEBUG_20240301_120009_00000005.txt", "");
        mPath = mFolder.path("out.db");
        mOther = mFolder.file("VIDEO_DEBUG_20240301_130000_00000100.txt",
                              textOf(framesAroundAnotherLoss()));
        EXPECT_EQ(run({"export", mText, mBinary, mEmpty, mOther, "--format", "sqlite", "-o", mPath})
                          .status,
                  1);
    }

    const TempFolder mFolder;
    std::string mText;
    std::string mBinary;
    std::string mEmpty;
    std::string mOther;
    std::string mPath;
};

TEST_F(Analysis, DocumentedQueries_AnswerTheirQuestions) {
    const std::vector<std::string> queries = documentedQueries();
    ASSERT_EQ(queries.size(), 3U);
    const Database database(mPath);
    EXPECT_EQ(database.ask(queries[0]), mText + "|100|0x1:0xa:0x0|31|50.0|50|0\n" + mOther +
                                                "|100|0x1:0xb:0x0|11|40.0|40|0\n" + mBinary +
                                                "|7|0x1:0xb:0x0|6|40.0|40|0\n" + mBinary +
                                                "|9|0x1:0xa:0x0|6|30.0|30|2\n");
    EXPECT_EQ(database.ask(queries[1]), mText + "|semantic|FACE|71|20.0|20\n" + mText +
                                                "|plugin|EIS|71|10.2816901408451|30\n" + mBinary +
                                                "|semantic|EIS|22|7.0|7\n" + mBinary +
                                                "|plugin|EIS|22|6.0|6\n");
    EXPECT_EQ(database.ask(queries[2]), mText + "|100|100|30100|-3|3\n" + mOther +
                                                "|100|100|0|0|9\n" + mBinary + "|7|6|0|0|0\n" +
                                                mBinary + "|9|8|0|0|0\n");
}

TEST_F(Analysis, ViewsTellLossesGapsAndTimes) {
    const Database database(mPath);
    EXPECT_EQ(database.ask("SELECT * FROM gaps"), "2|1|7|7|1\n2|2|9|9|1\n");
    EXPECT_EQ(database.ask("SELECT file, session, lostFrame, source FROM losses"),
              "1|1|100|announced\n3|-|5|announced\n4|1|100|announced\n2|1|7|gap\n2|2|9|gap\n");
    EXPECT_EQ(database.ask("SELECT node, wait, run, whole, isStuck FROM node_time"
                           " WHERE file = 2 AND session = 2 AND frame = 7"),
              "0x1:0xa:0x0|2|27|-|1\n0x1:0xb:0x0|-|-|-|0\n");
    EXPECT_EQ(database.ask("SELECT frame, interval, latency FROM frame_time"
                           " WHERE file = 2 AND session = 2 AND frame IN (1, 6, 7, 10)"),
              "1|-|99\n6|1000|99\n7|1000|-\n10|2000|99\n");
    const std::string plan =
            database.ask("EXPLAIN QUERY PLAN SELECT * FROM frames WHERE frameNumber = 7");
    EXPECT_NE(plan.find("USING INDEX"), std::string::npos) << plan;
}

}  // namespace
}  // namespace vdrdump::test
