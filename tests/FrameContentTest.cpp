#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>

#include "records/VDRData1.h"
#include "records/makeFrameContent.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"
#include "tests/ReferenceLine.h"

namespace zk::test {
namespace {

using Lines = std::vector<std::string>;
// Both buffers are exactly as large as allowed and on the heap, so that the address sanitizer sees
// the first byte too far.
using Record = std::vector<uint8_t>;
using Destination = std::vector<char>;

constexpr size_t kCountsAt[] = {79, 275, 471, 682, 893, 3754};

// `length` characters, then a NUL and bytes that must not be taken for text.
Destination textOf(size_t length) {
    Destination destination(kFrameRecordSize, '~');
    std::fill_n(destination.begin(), std::min(length, kFrameRecordSize), 'p');
    if (length < kFrameRecordSize) {
        destination[length] = '\0';
    }
    return destination;
}

Record recordOf(const vdr1::VDRData1& fields) {
    Record record(kFrameRecordSize);
    std::memcpy(record.data(), &fields, sizeof(fields));
    return record;
}

// Two or three elements per array, every kind of value, signs and halves that show.
vdr1::VDRData1 typicalFields() {
    vdr1::VDRData1 fields{};
    fields.frameNumber = 4294967295;
    fields.cslInfo = {7, 1099511627776};
    fields.masterCameraId = 1;
    fields.manualCaptureTag = 2;
    fields.sensorModeIndex = 255;
    fields.zoomRatio = 1.5f;
    fields.sysStatusInfo = {1800000, 2400000, 2850000, 65535, 1.25f, 0.1f, 100.0f, 31,
                            32,      33,      4096,    65536, 77,    2,    1,      3};
    fields.captureType = 4;
    fields.videoAction = 1;
    fields.featureRequestStateInfoCount = 2;
    fields.featureRequestStateInfo[0] = {5, 6, 18446744073709551615U};
    fields.featureRequestStateInfo[1] = {8, 9, 10};
    fields.pluginAlgoCostTimeCount = 2;
    fields.pluginAlgoCostTime[0] = {"hdr", 12};
    fields.pluginAlgoCostTime[1] = {"", 13};
    fields.semantAlgoCostTimeCount = 1;
    fields.semantAlgoCostTime[0] = {"skies", 255};
    fields.nodeInfoCount = 1;
    fields.nodeInfo[0] = {{1, 2, 3}, {4, 5, 6, 7}};
    fields.setGmeNcsDep = 41;
    fields.getEisV3NcsDepMag = 42;
    fields.ae_af_awb_info = {
            {UINT32_MAX, 3}, {0.5f, -1.0f, 2.0f, 3.0f, 4.0f, 5.0f}, 6, -1, {7, 8, 9, 10, 11},
            -32768};
    fields.awbInfo_qawb_cap = {{1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f, 9.5f}, 12};
    fields.awbInfo_qawb_cap_saCount = 1;
    fields.awbInfo_qawb_cap_sa[0] = {"grey world", -0.0f};
    fields.memoryAllocTimeoutInfo = {"jpeg heap", 2048, 6, 9};
    return fields;
}

constexpr char kTypicalLine[] =
        "4294967295,7,1099511627776,1,2,255,1.500000,1800000,2400000,2850000,65535,1.250000,"
        "0.100000,100.000000,31,32,33,4096,65536,77,2,1,3,4,1,2,5,6,18446744073709551615,8,9,10,"
        "0,2,hdr,12,,13,1,skies,255,1,1,2,3,4,5,6,7,41,0,0,0,0,0,0,0,0,0,0,0,0,0,42,4294967295,3,"
        "0.500000,-1.000000,2.000000,3.000000,4.000000,5.000000,6,-1,7,8,9,10,11,-32768,1.000000,"
        "2.000000,3.000000,4.000000,5.000000,6.000000,7.000000,8.000000,9.500000,12,1,grey world,"
        "-0.000000,jpeg heap,2048,6,9,\n";

class FrameContentTest : public RecorderTest {
protected:
    // Renders behind what `destination` holds, at both levels, and compares every byte and the
    // log with the reference. Returns whether the line fits.
    static bool rendersAsFormatted(const Record& record, const Destination& destination) {
        Destination expected = destination;
        const bool fits = ReferenceLine::render(record.data(), expected.data());
        for (const int level : {1, 2}) {
            forgetLog();
            Destination actual = destination;
            makeFrameContent(level, record.data(), actual.data());
            EXPECT_LT(strnlen(actual.data(), kFrameRecordSize), kFrameRecordSize);
            EXPECT_STREQ(actual.data(), expected.data()) << "level " << level;
            EXPECT_EQ(transcript(""), fits ? Lines{}
                                           : Lines{"E makeFrameContent<LINE>: "
                                                   "VDR::snprintf_s func got error!"});
        }
        return fits;
    }
};

TEST_F(FrameContentTest, TypicalRecord_GivesItsColumnsInFileOrder) {
    const Record record = recordOf(typicalFields());
    Destination line = textOf(0);
    makeFrameContent(1, record.data(), line.data());
    EXPECT_STREQ(line.data(), kTypicalLine);
}

TEST_F(FrameContentTest, LineIsCutAtTheEndOfItsBuffer_WhereverThatFalls) {
    const Record record = recordOf(typicalFields());
    const size_t longestThatFits = kFrameRecordSize - sizeof(kTypicalLine);
    for (size_t length = longestThatFits - 1; length <= kFrameRecordSize; ++length) {
        SCOPED_TRACE(length);
        ASSERT_EQ(rendersAsFormatted(record, textOf(length)), length <= longestThatFits);
        ASSERT_FALSE(HasFailure());
    }
}

struct Oddity {
    const char* name;
    bool fits;
    uint8_t counts[6];
    // Bytes of a record that is zero otherwise.
    size_t from = 0;
    size_t to = 0;
    uint8_t value = 0;
};

const Oddity kOddities[] = {
        {"nothing but zeros", true, {}},
        {"every bit set", false, {255, 255, 255, 255, 255, 255}, 0, 4096, 0xFF},
        {"text without any NUL", false, {'x', 'x', 'x', 'x', 'x', 'x'}, 0, 4096, 'x'},
        {"full arrays, small values", true, {15, 15, 30, 30, 60, 10}},
        {"full arrays, large stamps", false, {15, 15, 30, 30, 60, 10}, 894, 3534, 0xFE},
        {"elements that run on into the next fields", true, {0, 0, 0, 0, 70}, 3534, 3560, 1},
        {"elements beyond the block", true, {0, 0, 0, 0, 0, 255}},
        {"more elements beyond the block than fit", false, {0, 0, 0, 0, 255, 255}},
        {"elements astride the block's end", true, {0, 0, 0, 0, 73, 18}, 4087, 4096, 0x3F},
        {"text that only the block's end ends", true, {}, 3945, 4096, 'm'},
        {"text that runs on into the next elements", true, {0, 0, 3, 1}, 472, 500, 'n'},
        {"floats of the longest text", true, {}, 3714, 3750, 0xFE},
};

TEST_F(FrameContentTest, RecordsThatNoPipelineShouldWrite_RenderAsFormatted) {
    for (const Oddity& oddity : kOddities) {
        SCOPED_TRACE(oddity.name);
        Record record(kFrameRecordSize);
        std::fill(&record[oddity.from], record.data() + oddity.to, oddity.value);
        for (size_t array = 0; array < std::size(kCountsAt); ++array) {
            record[kCountsAt[array]] = oddity.counts[array];
        }
        EXPECT_EQ(rendersAsFormatted(record, textOf(0)), oddity.fits);
        rendersAsFormatted(record, textOf(3000));
    }
}

TEST_F(FrameContentTest, ArbitraryRecords_RenderAsFormatted) {
    std::mt19937 random(20231114);
    int fitting = 0;
    constexpr int kRecords = 3000;
    for (int i = 0; i < kRecords && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        Record record(kFrameRecordSize);
        const uint32_t percentSet = i % 3 == 0 ? 100 : i % 3 == 1 ? 50 : 3;
        for (uint8_t& byte : record) {
            byte = random() % 100 < percentSet ? static_cast<uint8_t>(random()) : uint8_t{0};
        }
        if (i % 2 == 0) {
            for (const size_t at : kCountsAt) {
                record[at] = static_cast<uint8_t>(random() % 5);
            }
        }
        fitting += rendersAsFormatted(record, textOf(random() % 200)) ? 1 : 0;
    }
    EXPECT_GT(fitting, kRecords / 4);
    EXPECT_LT(fitting, kRecords * 3 / 4);
}

TEST_F(FrameContentTest, NothingToRender_IsLoggedAndAppendsNothing) {
    const Record record = recordOf(typicalFields());
    Destination line = textOf(4);
    for (const int level : {0, 3, -1}) {
        makeFrameContent(level, record.data(), line.data());
    }
    makeFrameContent(1, nullptr, line.data());
    makeFrameContent(3, record.data(), nullptr);
    EXPECT_EQ(line, textOf(4));
    const std::string noLevel =
            "I makeFrameContent<LINE>: VDR::makeFrameContent, VDR level not match any!";
    const std::string noData =
            "E makeFrameContent<LINE>: VDR::makeFrameContent,  srcData/destData is nullptr!";
    EXPECT_EQ(transcript(""), (Lines{noLevel, noLevel, noLevel, noData, noData}));
}

}  // namespace
}  // namespace zk::test
