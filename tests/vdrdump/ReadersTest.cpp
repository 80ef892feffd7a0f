// Both readers, seen through the csv export: what the recorder wrote comes back, and what is
// damaged is told and costs no more than itself.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "records/frameData.h"
#include "tests/vdrdump/Dumps.h"
#include "tools/read/DumpKind.h"
#include "tools/record/RecordSchema.h"

namespace vdrdump::test {
namespace {

TEST(Readers, AnyRecord_HasTheValuesOfItsTextLineInBothDumps) {
    std::mt19937_64 random(20240301);
    std::vector<Frame> frames(300);
    for (size_t i = 0; i < frames.size(); ++i) {
        frames[i] = randomFrame(random, 4);
        frames[i].frameNumber = static_cast<uint32_t>(i);
    }
    const Csv binary = csvOf(binaryOf(frames));
    const Csv text = csvOf(textOf(frames));
    EXPECT_TRUE(binary.isWhole && text.isWhole);
    ASSERT_EQ(binary.rows.size(), frames.size());
    for (size_t i = 0; i < frames.size(); ++i) {
        ASSERT_EQ(binary.flat(i) + "\n", lineOf(frames[i])) << "record " << i;
    }
    EXPECT_EQ(binary.rows, text.rows);
}

TEST(Readers, TemperatureBelowZero_IsSignedFromBothDumps) {
    Frame cold = frame(7);
    cold.sysStatusInfo.shellFrontTemp = static_cast<uint32_t>(-5);
    const Csv binary = csvOf(binaryOf({cold}));
    EXPECT_EQ(std::count(binary.rows[0].begin(), binary.rows[0].end(), "-5"), 1);
    EXPECT_EQ(binary.rows, csvOf(textOf({cold})).rows);
}

TEST(Readers, FullArrays_AreReadWhole) {
    std::mt19937_64 random(1);
    Frame full = randomFrame(random, 0);
    full.nodeInfoCount = 60;
    full.featureRequestStateInfoCount = 15;
    const Csv csv = csvOf(binaryOf({full, frame(1)}));
    EXPECT_TRUE(csv.isWhole);
    EXPECT_EQ(std::count(csv.rows[0].begin(), csv.rows[0].end(), "60"), 1);
    const std::string flat = csv.flat(0);
    EXPECT_EQ(std::count(flat.begin(), flat.end(), ','), 76 + 60 * 7 + 15 * 3);
}

TEST(Readers, CountBeyondItsArray_IsToldAndTheArrayIsShown) {
    std::mt19937_64 random(2);
    Frame bad = randomFrame(random, 0);
    bad.featureRequestStateInfoCount = 200;
    std::memset(bad.featureRequestStateInfo, 0, sizeof(bad.featureRequestStateInfo));
    bad.featureMessageTypeInfo[0].id = 5;  // what a reader that trusts the count would show
    const std::string binary = binaryOf({bad, frame(2)});
    EXPECT_EQ(countDamage(binary, Damage::CountTooLarge), 1U);
    const Csv csv = csvOf(binary);
    ASSERT_EQ(csv.rows.size(), 2U);
    const std::string flat = csv.flat(0);
    EXPECT_EQ(std::count(flat.begin(), flat.end(), ','), 76 + 15 * 3);

    bad.featureRequestStateInfoCount = 16;  // of which a text line has room to show all
    const std::string text = textOf({bad, frame(2)});
    EXPECT_EQ(countDamage(text, Damage::CountTooLarge), 1U);
    EXPECT_EQ(countDamage(text, Damage::BadLine), 0U);
    EXPECT_EQ(csvOf(text).rows, csvOf(binaryOf({bad, frame(2)})).rows);
}

// Every cell of the record that is left of a cut is right or empty, and none is made up.
void expectPrefix(const std::vector<std::string>& cut, const std::vector<std::string>& whole) {
    ASSERT_EQ(cut.size(), whole.size());
    for (size_t i = 0; i < cut.size(); ++i) {
        if (!cut[i].empty() && cut[i][0] == '[') {
            const std::string elements = cut[i].substr(0, cut[i].size() - 1);
            ASSERT_EQ(whole[i].compare(0, elements.size(), elements), 0) << "column " << i;
        } else if (!cut[i].empty()) {
            ASSERT_EQ(cut[i], whole[i]) << "column " << i;
        }
    }
}

// In the second record: behind the first byte of each column, or before each comma and behind it.
std::vector<size_t> cutsOf(const std::string& dump, bool isText) {
    std::vector<size_t> cuts;
    if (!isText) {
        for (const Item& item : kItems) {
            const size_t at = item.array != nullptr ? item.array->offset : item.column.offset;
            cuts.push_back(zk::kFrameRecordSize + at + 1);
        }
    }
    for (size_t at = dump.find('\n') + 1; isText && at < dump.size(); ++at) {
        if (dump[at] == ',') {
            cuts.insert(cuts.end(), {at, at + 1});
        }
    }
    return cuts;
}

TEST(Readers, CutDump_GivesWhatIsInFrontOfTheCut) {
    std::mt19937_64 random(3);
    Frame last = randomFrame(random, 3);
    last.nodeInfoCount = 3;
    for (const bool isText : {false, true}) {
        const std::string dump = isText ? textOf({frame(1), last}) : binaryOf({frame(1), last});
        const Csv whole = csvOf(dump);
        for (const size_t size : cutsOf(dump, isText)) {
            const Csv cut = csvOf(dump.substr(0, size));
            ASSERT_FALSE(cut.isWhole) << "cut at " << size;
            ASSERT_GE(cut.rows.size(), 1U);
            ASSERT_EQ(cut.rows[0], whole.rows[0]);
            if (cut.rows.size() == 2) {
                expectPrefix(cut.rows[1], whole.rows[1]);
            }
        }
    }
}

TEST(Readers, LineThatTheRecorderCut_DoesNotCostTheNext) {
    std::mt19937_64 random(4);
    Frame longest = randomFrame(random, 0);
    longest.nodeInfoCount = 60;
    ASSERT_EQ(lineOf(longest).size(), 4095U);
    const std::string text = textOf({longest, frame(8), longest, frame(9)});
    EXPECT_EQ(countDamage(text, Damage::CutLine), 2U);
    EXPECT_EQ(countDamage(text, Damage::BadLine), 0U);
    const Csv csv = csvOf(text);
    ASSERT_EQ(csv.rows.size(), 4U);
    EXPECT_EQ(csv.flat(1) + "\n", lineOf(frame(8)));
    EXPECT_EQ(csv.flat(3) + "\n", lineOf(frame(9)));
}

struct BadLine {
    const char* name;
    int at;  // below 0: from the end
    size_t erased;
    std::string inserted;
    size_t rows;  // that the line and a good one behind it give
};

const BadLine kBadLines[] = {
        {"CommaInAName", -8, 0, "a,b", 2},
        {"NewlineInAName", -8, 0, "a\n0,b", 3},
        {"ColumnTooMany", -1, 0, "5,", 2},
        {"ColumnTooFew", -3, 2, "", 2},
        {"NumberTooLarge", 0, 1, "4294967296", 1},
        {"Nul", 2, 1, std::string(1, '\0'), 2},
        {"Letters", 4, 1, "x", 2},
        {"NumberThenLetters", 3, 0, "x", 2},
        {"EmptyLine", 0, std::string::npos, "\n", 1},
};

class DamagedLine : public testing::TestWithParam<BadLine> {};

TEST_P(DamagedLine, IsToldAndCostsOnlyItself) {
    const BadLine& bad = GetParam();
    std::string line = lineOf(frame(1));
    line.replace(static_cast<size_t>(bad.at) + (bad.at < 0 ? line.size() : 0), bad.erased,
                 bad.inserted);
    const std::string text = lineOf(frame(1)) + line + lineOf(frame(2));
    EXPECT_GE(countDamage(text, Damage::BadLine), 1U);
    const Csv csv = csvOf(text);
    ASSERT_EQ(csv.rows.size(), bad.rows + 1);
    EXPECT_EQ(csv.flat(csv.rows.size() - 1) + "\n", lineOf(frame(2)));
}

INSTANTIATE_TEST_SUITE_P(Line, DamagedLine, testing::ValuesIn(kBadLines),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Readers, NameWithoutANul_EndsWithItsField) {
    Frame bad = frame(1);
    bad.pluginAlgoCostTimeCount = 1;
    std::memcpy(bad.pluginAlgoCostTime[0].name, "ABCDEF", 6);
    bad.pluginAlgoCostTime[0].cost = 'G';
    const std::string cell = "[[\"ABCDEF\",71]]";
    const Csv binary = csvOf(binaryOf({bad}));
    EXPECT_EQ(std::count(binary.rows[0].begin(), binary.rows[0].end(), cell), 1);
    EXPECT_EQ(countDamage(textOf({bad}), Damage::BadLine), 1U);
}

TEST(Readers, NameOfAnyBytes_BreaksNoRow) {
    Frame odd = frame(1);
    odd.pluginAlgoCostTimeCount = 1;
    std::memcpy(odd.pluginAlgoCostTime[0].name, "\",\\\x1b\xff", 5);
    std::memcpy(odd.memoryAllocTimeoutInfo.itemName, "a\",\nb", 5);
    odd.awbInfo_qawb_cap_saCount = 1;
    odd.awbInfo_qawb_cap_sa[0].value = std::numeric_limits<float>::quiet_NaN();
    const Csv csv = csvOf(binaryOf({odd, frame(2)}));
    ASSERT_EQ(csv.rows.size(), 2U);
    ASSERT_EQ(csv.rows[0].size(), csv.rows[1].size());
    const auto has = [&csv](const char* cell) {
        return std::count(csv.rows[0].begin(), csv.rows[0].end(), cell) == 1;
    };
    EXPECT_TRUE(has(R"([["\",\\x5c\\x1b\\xff",0]])"));
    EXPECT_TRUE(has(R"(a",\x0ab)"));
    EXPECT_TRUE(has(R"([["","nan"]])"));
}

TEST(DumpKind, IsToldFromContentAlone) {
    std::mt19937_64 random(5);
    const auto kindOf = [](const std::string& bytes) {
        return detectDumpKind(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), true);
    };
    EXPECT_EQ(kindOf(""), DumpKind::Empty);
    EXPECT_EQ(kindOf(binaryOf({frame(0)})), DumpKind::Binary);
    EXPECT_EQ(kindOf(binaryOf({frame(0x2c31)})), DumpKind::Binary);  // begins with "1,"
    EXPECT_EQ(kindOf(lineOf(frame(0))), DumpKind::Text);
    EXPECT_EQ(kindOf(lineOf(frame(12)).substr(0, 1)), DumpKind::Text);
    EXPECT_EQ(kindOf("rubbish\n" + lineOf(frame(12))), DumpKind::Text);
    for (int i = 0; i < 100; ++i) {
        const Frame any = randomFrame(random, 60);
        EXPECT_EQ(kindOf(binaryOf({any})), DumpKind::Binary);
        EXPECT_EQ(kindOf(lineOf(any)), DumpKind::Text);
    }
}

}  // namespace
}  // namespace vdrdump::test
