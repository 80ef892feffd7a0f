#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "records/FloatText.h"
#include "records/VDRData1.h"
#include "records/makeFrameContent.h"
#include "testing/RecorderTest.h"
#include "testing/SteppedLine.h"

namespace zk::test {
namespace {

// Both buffers are exactly as large as allowed and on the heap, so that the address sanitizer sees
// the first byte too far.
using Record = std::vector<uint8_t>;
using Destination = std::vector<char>;

constexpr size_t kFirstStampAt = offsetof(vdr1::VDRData1, setGmeNcsDep);
constexpr size_t kCountsAt[] = {79, 275, 471, 682, 893, 3754};

// `length` characters, then a NUL and bytes that must not be taken for text.
Destination textOf(size_t length) {
    Destination destination(kFrameRecordSize, '~');
    std::fill_n(destination.begin(), length, 'p');
    if (length < kFrameRecordSize) {
        destination[length] = '\0';
    }
    return destination;
}

// Random bytes, as many as that, among zeros; most counts below 5, and some beyond their lists or
// the block.
Record randomRecord(std::mt19937& random, uint32_t percentSet) {
    Record record(kFrameRecordSize);
    for (uint8_t& byte : record) {
        byte = random() % 100 < percentSet ? static_cast<uint8_t>(random()) : uint8_t{0};
    }
    for (const size_t at : kCountsAt) {
        const bool isOdd = random() % 5 == 0;
        record[at] = static_cast<uint8_t>(random() % (isOdd ? 256 : 5));
    }
    return record;
}

class FrameContentTest : public RecorderTest {
protected:
    ~FrameContentTest() override { std::setlocale(LC_ALL, "C"); }

    // Makes a locale that writes numbers as the named one and changes to it. Few machines have
    // others than C compiled.
    void useNumbersOf(const std::string& name) const {
        layFile("/locales/" + name + ".txt", "LC_NUMERIC\ncopy \"" + name + "\"\nEND LC_NUMERIC\n");
        const std::string path = onHost("/locales/" + name);
        // Not even the warnings that it has no other categories.
        const std::string command =
                "localedef -c -f UTF-8 -i " + path + ".txt " + path + " 2>/dev/null";
        EXPECT_NE(std::system(command.c_str()), -1);
        setenv("LOCPATH", onHost("/locales").c_str(), 1);
        std::setlocale(LC_ALL, name.c_str());
    }

    // Renders behind what `destination` holds, at both levels, and compares every byte and the
    // log with the reference. Returns whether the line fits.
    static bool rendersAsFormatted(const Record& record, const Destination& destination) {
        Destination expected = destination;
        const bool fits = appendSteppedLine(record.data(), expected.data());
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

TEST_F(FrameContentTest, ArbitraryRecords_AreCutAtTheEndOfTheBuffer_WhereverThatFalls) {
    std::mt19937 random(20231114);
    uint64_t power = 1;  // of ten, where a number gets one digit more
    for (uint32_t i = 0; i < 2000 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        const uint32_t percentsSet[] = {100, 50, 3};
        Record record = randomRecord(random, percentsSet[i % 3]);
        std::memcpy(&record[kFirstStampAt], &power, sizeof(power));
        power = power < UINT64_MAX / 10 ? power * 10 : 1;
        rendersAsFormatted(record, textOf(random() % (kFrameRecordSize + 1)));
        Destination line = textOf(0);
        if (appendSteppedLine(record.data(), line.data())) {
            const size_t longest = kFrameRecordSize - 1 - std::strlen(line.data());
            EXPECT_TRUE(rendersAsFormatted(record, textOf(longest)));
            EXPECT_FALSE(rendersAsFormatted(record, textOf(longest + 1)));
        }
    }
}

// In one with a comma for the decimal point a line would have columns too many; in one with a
// character of two bytes it would be longer than the room that is kept.
TEST_F(FrameContentTest, Line_IsTheSameInEveryLocale) {
    std::mt19937 random(20231114);
    std::vector<Record> records;
    std::vector<Destination> expected;
    for (uint32_t i = 0; i < 50; ++i) {
        records.push_back(randomRecord(random, 100));  // of floats, every fourth is a large one
        expected.push_back(textOf(0));
        appendSteppedLine(records.back().data(), expected.back().data());
    }
    for (const auto& [name, half] : {std::pair("de_DE", "0,5"), {"ps_AF", "0\u066B5"}}) {
        useNumbersOf(name);
        char text[8];
        std::snprintf(text, sizeof(text), "%.1f", 0.5);
        ASSERT_STREQ(text, half) << "this needs localedef and the sources of the locales";
        for (size_t i = 0; i < records.size(); ++i) {
            Destination actual = textOf(0);
            makeFrameContent(1, records[i].data(), actual.data());
            EXPECT_STREQ(actual.data(), expected[i].data()) << name;
        }
    }
}

// The longest column there is, where it ends with the buffer.
TEST_F(FrameContentTest, LargestNumber_IsCutWhereverTheBufferEnds) {
    constexpr float kLargest = -std::numeric_limits<float>::max();
    Record record(kFrameRecordSize);
    std::memcpy(&record[offsetof(vdr1::VDRData1, zoomRatio)], &kLargest, sizeof(kLargest));
    for (size_t room = 1; room < 100; ++room) {
        EXPECT_FALSE(rendersAsFormatted(record, textOf(kFrameRecordSize - room))) << room;
    }
}

TEST_F(FrameContentTest, NothingToRender_IsLoggedAndAppendsNothing) {
    const Record record(kFrameRecordSize);
    Destination line = textOf(4);
    makeFrameContent(3, record.data(), line.data());
    makeFrameContent(1, nullptr, line.data());
    makeFrameContent(1, record.data(), nullptr);
    EXPECT_EQ(line, textOf(4));
    const std::string prefix = " makeFrameContent<LINE>: VDR::makeFrameContent, ";
    const std::string null = "E" + prefix + " srcData/destData is nullptr!";
    EXPECT_EQ(transcript(""), (Lines{"I" + prefix + "VDR level not match any!", null, null}));
}

void expectAsPrinted(float value) {
    char printed[kLongestFloatText + 2];
    std::snprintf(printed, sizeof(printed), "%f", static_cast<double>(value));
    std::string text(kLongestFloatText + 1, '#');
    text.resize(static_cast<size_t>(formatFloat(text.data(), value) - text.data()));
    ASSERT_EQ(text, printed);
}

// Every exponent and sign: zeros, the smallest and largest numbers, infinities and no numbers. And
// odd multiples of 1/128, which alone lie exactly between two millionths, with their neighbours.
TEST_F(FrameContentTest, AnyFloat_ReadsAsPrinted) {
    std::mt19937 random(1);
    for (uint32_t i = 0; i < 512 * 300 && !HasFatalFailure(); ++i) {
        const uint32_t ends[] = {0x000000, 0x000001, 0x400000, 0x7FFFFF};
        const uint32_t mantissa =
                i < 4 * 512 ? ends[i / 512] : static_cast<uint32_t>(random()) & 0x7FFFFF;
        const uint32_t bits = i << 23 | mantissa;
        float value;
        std::memcpy(&value, &bits, sizeof(value));
        expectAsPrinted(value);
    }
    for (uint32_t i = 1; i < (1U << 24) && !HasFatalFailure(); i += i < 20000 ? 2 : 2222) {
        const float tie = static_cast<float>(i) / 128;
        for (const float value : {tie, std::nextafterf(tie, INFINITY), -std::nextafterf(tie, 0)}) {
            expectAsPrinted(value);
        }
    }
}

}  // namespace
}  // namespace zk::test
