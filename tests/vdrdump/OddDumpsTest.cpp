// Damaged and odd files as they come from devices: what is said about them, to the letter, and how
// the program exits.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "records/frameData.h"
#include "tests/vdrdump/Dumps.h"
#include "tests/vdrdump/Program.h"
#include "tools/record/Record.h"

namespace vdrdump::test {
namespace {

constexpr size_t kBlock = zk::kFrameRecordSize;
constexpr char kTextName[] = "VIDEO_DEBUG_20240301_120000_00000012.txt";

// Frames 1 to 40 with nodes whose stamps fill much of a record.
std::vector<Frame> someFrames() {
    std::vector<Frame> frames;
    for (uint32_t number = 1; number <= 40; ++number) {
        Frame each = frame(number);
        each.cslInfo = {number, 1000000000ULL + number * 33333333ULL};
        each.zoomRatio = 2;
        each.nodeInfoCount = 20;
        const uint64_t stamp = each.cslInfo.stamp;
        each.nodeInfo[19] = {{1, 2, 3}, {stamp, stamp + 1, stamp + 2, stamp + 3}};
        frames.push_back(each);
    }
    return frames;
}

std::string binary() {
    return binaryOf(someFrames());
}

std::vector<Frame> framesFrom(uint32_t first, uint32_t last) {
    std::vector<Frame> frames;
    for (uint32_t number = first; number <= last; ++number) {
        frames.push_back(frame(number));
    }
    return frames;
}

// Frames 240 to 279; a value is 256 in all of them.
std::string withValue256() {
    std::vector<Frame> frames = framesFrom(240, 279);
    for (Frame& each : frames) {
        each.setGmeNcsDep = 256;
    }
    return binaryOf(frames);
}

// Frames 1 to `last` with a value that counts two a frame.
std::string withCountingValue(uint32_t last) {
    std::vector<Frame> frames = framesFrom(1, last);
    for (Frame& each : frames) {
        each.ae_af_awb_info.words[0] = 2 * each.frameNumber;
    }
    return binaryOf(frames);
}

// Frames 1 to 40; 22 is cut, and the two behind it have changed places.
std::string withCutInFrontOfALateFrame() {
    std::vector<Frame> frames = someFrames();
    std::swap(frames[22], frames[23]);
    return binaryOf(frames).erase(21 * kBlock + 2743, kBlock - 2743);
}

std::string text() {
    return textOf(someFrames());
}

// Bytes `from` to `to` of a dump are others.
std::string with(std::string dump, size_t from, size_t to, const std::string& others) {
    return dump.replace(from, to - from, others);
}

std::string withNumber(std::string dump, size_t record, uint32_t number) {
    std::memcpy(&dump[record * kBlock], &number, sizeof(number));
    return dump;
}

// Frames 67296 to 67319; of the first, one byte is there, and the number of 67301 is damaged.
std::string withOneByteOfTheFirst() {
    return withNumber(binaryOf(framesFrom(67296, 67319)), 5, 4000000000).erase(1, kBlock - 1);
}

std::string withoutLine(std::string lines, uint32_t number) {
    const size_t at = lines.find("\n" + std::to_string(number) + ",") + 1;
    return lines.erase(at, lines.find('\n', at) + 1 - at);
}

std::string replaced(const std::string& all, const std::string& from, const std::string& to) {
    std::string result = all;
    for (size_t at = 0; (at = result.find(from, at)) != std::string::npos; at += to.size()) {
        result.replace(at, from.size(), to);
    }
    return result;
}

// Frame 5 was stuck while 6 to `last` went by.
std::string withStraggler(uint32_t last) {
    std::vector<Frame> frames;
    for (uint32_t number = 1; number <= last + 5; ++number) {
        if (number != 5) {
            frames.push_back(frame(number));
        }
        if (number == last) {
            frames.push_back(frame(5));
        }
    }
    return binaryOf(frames);
}

struct OddDump {
    const char* name;
    const char* fileName;
    std::string bytes;
    std::string said;  // behind the first "vdrdump: FILE: "; empty: nothing, and status 0
    std::vector<std::string> infoSays;  // lines, without the blanks in front
};

const OddDump kOddDumps[] = {
        {"ZeroedRecords",
         "a.bin",
         with(binary(), 10 * kBlock, 15 * kBlock, std::string(5 * kBlock, '\0')),
         "offset 40960: expected records, found 20480 bytes of zeros in the place of 5",
         {"session 1       35 records, frames 1 to 40", "missing       5: 11-15",
          "zero records    5"}},
        {"ZerosAtTheEnd",
         "a.bin",
         binary() + std::string(100, '\0'),
         "offset 163840: expected a record, found 100 bytes of zeros in the place of 1",
         {"session 1       40 records, frames 1 to 40", "zero records    1"}},
        {"NothingButZeros",
         "a.bin",
         std::string(2 * kBlock, '\0'),
         "offset 0: expected records, found 8192 bytes of zeros in the place of 2",
         {"records         0", "zero records    2"}},
        {"BitInAFrameNumber",
         "a.bin",
         withNumber(binary(), 20, 21 | 1U << 31),
         "offset 81920: expected a frame number near 20, found 2147483669",
         {"session 1       40 records, frames 1 to 40", "missing       1: 21",
          "bad numbers     1"}},
        {"BitInTheFirstNumber",
         "a.bin",
         withNumber(binary(), 0, 1 | 1U << 20),
         "offset 0: expected a frame number near those behind it, found 1048577",
         {"session 1       40 records, frames 2 to 40", "missing       0"}},
        {"BitThatMakesTheFirstNumberALateOne",
         "a.bin",
         withNumber(binary(), 0, 17),
         "offset 0: expected a frame number near those behind it, found 17",
         {"session 1       40 records, frames 2 to 40", "missing       0"}},
        {"ZeroForANumber",
         "a.bin",
         withNumber(binary(), 20, 0),
         "offset 81920: expected a frame number near 20, found 0",
         {"session 1       40 records, frames 1 to 40", "missing       1: 21"}},
        {"NumbersOfALongRun",
         "a.bin",
         binaryOf({frame(4000000000), frame(4000000001), frame(4000000002)}),
         "",
         {"session 1       3 records, frames 4000000000 to 4000000002"}},
        {"BitInTheLastNumber",
         "a.bin",
         withNumber(binary(), 39, 40 | 1U << 30),
         "offset 159744: expected a frame number near 39, found 1073741864",
         {"session 1       40 records, frames 1 to 39", "missing       0"}},
        {"ShortWrite",
         "a.bin",
         with(binary(), 20 * kBlock + 1000, 21 * kBlock, ""),
         "offset 81920: expected a record of 4096 bytes, found 1000 and the next whole record "
         "behind them",
         {"session 1       40 records, frames 1 to 40", "missing       0", "cut records     1",
          "passed          1000 bytes that are no whole record"}},
        {"ShortWriteOfTwo",
         "a.bin",
         with(binary(), 20 * kBlock + 5, 22 * kBlock, ""),
         "offset 81920: expected a record of 4096 bytes, found 5 and the next whole record behind "
         "them",
         {"session 1       39 records, frames 1 to 40", "missing       1: 22"}},
        // Where frame 256 would begin were frame 255 whole, that value is read.
        {"ShortWriteInFrontOfAValueLikeTheNextNumber",
         "a.bin",
         with(withValue256(), 15 * kBlock + kBlock - offsetof(Layout, setGmeNcsDep), 16 * kBlock,
              ""),
         "offset 61440: expected a record of 4096 bytes, found 562 and the next whole record "
         "behind them",
         {"session 1       40 records, frames 240 to 279", "missing       0", "cut records     1"}},
        {"ShortWriteInFrontOfALateFrame",
         "a.bin",
         withCutInFrontOfALateFrame(),
         "offset 86016: expected a record of 4096 bytes, found 2743 and the next whole record "
         "behind them",
         {"session 1       40 records, frames 1 to 40", "missing       0", "cut records     1"}},
        // With the bytes behind it that one looks like a number, and the next in step like its
        // successor.
        {"OneByteOfTheFirstRecord",
         "a.bin",
         withOneByteOfTheFirst(),
         "offset 0: expected a record, passed 1 byte to the next whole record\nvdrdump: FILE: "
         "offset 16385: expected a frame number near 67300, found 4000000000",
         {"session 1       23 records, frames 67297 to 67319"}},
        // In each session's last records, as few go on from those in step as from the values.
        {"ValueThatCountsAsFrameNumbersDo",
         "a.bin",
         withCountingValue(12) + withCountingValue(9),
         "",
         {"session 1       12 records, frames 1 to 12", "session 2       9 records, frames 1 to 9",
          "damage          none"}},
        {"BytesInFrontOfABlockOnceMore",
         "a.bin",
         with(with(binary(), 25 * kBlock, 25 * kBlock, std::string(kBlock - 256, '\xc8')),
              20 * kBlock, 20 * kBlock, std::string(256, '\xc8')),
         "offset 81920: expected a record, passed 256 bytes to the next whole record\nvdrdump: "
         "FILE: offset 102656: expected a record, passed 3840 bytes to the next whole record",
         {"session 1       40 records, frames 1 to 40", "missing       0"}},
        {"BytesInBetween",
         "a.bin",
         with(binary(), 20 * kBlock, 20 * kBlock, std::string(777, '\xc8')),
         "offset 81920: expected a record, passed 777 bytes to the next whole record",
         {"session 1       40 records, frames 1 to 40", "missing       0"}},
        {"BlockOfOtherBytes",
         "a.bin",
         with(binary(), 20 * kBlock, 21 * kBlock, std::string(kBlock, '\xc8')),
         "offset 81920: expected a record, passed 4096 bytes to the next whole record",
         {"session 1       39 records, frames 1 to 40", "missing       1: 21"}},
        {"FrontCutOff",
         "a.bin",
         binary().substr(1500),
         "offset 0: expected a record, passed 2596 bytes to the next whole record",
         {"session 1       39 records, frames 2 to 40"}},
        {"EndCutOff",
         "a.bin",
         binary().substr(0, 39 * kBlock + 2000),
         "offset 159744: expected a record of 4096 bytes, found the last 2000 of the file",
         {"session 1       40 records, frames 1 to 40", "cut records     1"}},
        {"OtherBytesAtTheEnd",
         "a.bin",
         binary() + std::string(5000, '\xc8'),
         "offset 163840: expected a record, passed 5000 bytes to the end",
         {"session 1       40 records, frames 1 to 40"}},
        {"EmptyText",
         kTextName,
         "",
         "offset 0: expected lines of the frames around frame 12, found an empty file",
         {"losses          1", "frame 12 announced, has no record"}},
        {"TextWithoutTheLostFrame",
         kTextName,
         withoutLine(text(), 12),
         "",
         {"missing       1: 12", "losses          1", "frame 12 announced, has no record"}},
        {"TextOfSeveralLosses",
         kTextName,
         withoutLine(withoutLine(text(), 15), 16),
         "",
         {"losses          2", "frame 12 announced, has a record",
          "frames 15-16 without a record"}},
        {"CarriageReturns",
         "a.txt",
         replaced(text(), "\n", "\r\n"),
         "",
         {"session 1       40 records, frames 1 to 40", "damage          none"}},
        {"ByteOrderMark",
         "a.txt",
         "\xef\xbb\xbf" + text(),
         "",
         {"session 1       40 records, frames 1 to 40", "damage          none"}},
        {"Straggler",
         "a.bin",
         withStraggler(95),
         "",
         {"session 1       100 records, frames 1 to 100", "missing       0",
          "late          1 behind a later frame"}},
        {"TwoSessions",
         "a.bin",
         binary() + binary(),
         "",
         {"session 1       40 records, frames 1 to 40",
          "session 2       40 records, frames 1 to 40"}},
        {"GapInABinaryDump",
         "a.bin",
         with(binary(), 30 * kBlock, 33 * kBlock, ""),
         "",
         {"losses          1", "frames 31-33 without a record"}},
        {"NoMarkOfARecording",
         "a.bin",
         binary(),
         "",
         {"duration      1.30 s, 30.00 frames a second (cslInfo_stamp taken for nanoseconds)",
          "recordings    none starts or ends in these frames"}},
        {"Pictures",
         "a.png",
         "\x89PNG\r\n\x1a\n" + std::string(9000, '\xa5') + std::string(1, '\0'),
         "offset 0: expected a dump, found neither its records nor its lines",
         {}},
        {"AWord",
         "a.bin",
         "hello\n",
         "offset 0: expected a dump, found neither its records nor its lines",
         {}},
        {"Words",
         "README",
         "# A dump\n\n1, 2 and 3 are numbers.\n",
         "offset 0: expected a dump, found neither its records nor its lines",
         {}},
};

class OddDumps : public testing::TestWithParam<OddDump> {};

TEST_P(OddDumps, AreToldAsWhatTheyAre) {
    const OddDump& odd = GetParam();
    const TempFolder folder;
    const std::string path = folder.file(odd.fileName, odd.bytes);
    const Program program = run({"info", path});
    EXPECT_EQ(program.status, odd.said.empty() ? 0 : 1);
    EXPECT_EQ(program.err,
              odd.said.empty() ? "" : replaced("vdrdump: FILE: " + odd.said + "\n", "FILE", path));
    for (const std::string& line : odd.infoSays) {
        EXPECT_NE(program.out.find(" " + line + "\n"), std::string::npos) << line << " in\n"
                                                                          << program.out;
    }
    EXPECT_EQ(program.out.empty(), odd.infoSays.empty());
}

INSTANTIATE_TEST_SUITE_P(Dump, OddDumps, testing::ValuesIn(kOddDumps),
                         [](const auto& row) { return std::string(row.param.name); });

// Whatever a write is cut to, the reader finds the next record and loses none.
TEST(OddDumps, ShortWriteOfAnyLength_CostsItsOwnRecordOnly) {
    const std::string whole = binary();
    for (size_t size = 4; size < kBlock; size += 31) {
        const Csv csv = csvOf(with(whole, 20 * kBlock + size, 21 * kBlock, ""));
        ASSERT_EQ(csv.rows.size(), 40U) << size;
        for (size_t i = 0; i < csv.rows.size(); ++i) {
            ASSERT_EQ(csv.rows[i][4], std::to_string(i + 1)) << size;
        }
        EXPECT_FALSE(csv.isWhole);
    }
}

// Each file counts, also one that is not there, and each loss has a line that names its file.
TEST(OddDumps, ManyFiles_AreSummedUp) {
    const TempFolder folder;
    const std::string gap =
            folder.file("a.bin", with(binary(), 30 * kBlock, 33 * kBlock, "") + binary());
    const std::string empty = folder.file(kTextName, "");
    const Program info = run({"info", gap, folder.path("missing.bin"), empty});
    EXPECT_EQ(info.status, 1);
    EXPECT_EQ(info.out.substr(std::min(info.out.size(), info.out.find("total:"))),
              "total: 3 files, 2 with damage\n"
              "  records         77 in 2 sessions\n"
              "  losses          2\n"
              "                  frames 31-33 without a record: " +
                      gap +
                      "\n"
                      "                  frame 12 announced, has no record: " +
                      empty + "\n");
    const Program json = run({"info", "--json", gap, folder.path("missing.bin"), empty});
    EXPECT_NE(json.out.find("\"total\":{\"damaged\":2,\"files\":3,\"losses\":2,\"records\":77,"
                            "\"sessions\":2}"),
              std::string::npos)
            << json.out;
    EXPECT_NE(json.out.find("{\"damage\":{\"unreadable\":1},\"kind\":\"none\","),
              std::string::npos);
}

TEST(OddDumps, DamagedNumber_IsNoneInAnyTable) {
    const std::string dump = withNumber(binary(), 20, 21 | 1U << 31);
    EXPECT_EQ(csvOf(dump).rows[20][4], "");
    const Program json = run({"export", "--format", "ndjson"}, dump);
    EXPECT_NE(json.out.find("\"record\":20,\"frameNumber\":null,"), std::string::npos);
    EXPECT_EQ(run({"show", "--frames", "2147483669:"}, dump).out, "");
}

}  // namespace
}  // namespace vdrdump::test
