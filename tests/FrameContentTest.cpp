#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>

#include "records/makeFrameContent.h"
#include "tests/RecorderTest.h"
#include "tests/ReferenceLine.h"

namespace zk::test {
namespace {

// Both buffers are exactly as large as allowed and on the heap, so that the address sanitizer sees
// the first byte too far.
using Record = std::vector<uint8_t>;
using Destination = std::vector<char>;

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

// Random bytes, as many as that, among zeros; counts below 5 where they are to be small.
Record randomRecord(std::mt19937& random, uint32_t percentSet, bool hasSmallCounts) {
    Record record(kFrameRecordSize);
    for (uint8_t& byte : record) {
        byte = random() % 100 < percentSet ? static_cast<uint8_t>(random()) : uint8_t{0};
    }
    for (const size_t at : kCountsAt) {
        record[at] = hasSmallCounts ? static_cast<uint8_t>(random() % 5) : record[at];
    }
    return record;
}

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
        {"every bit set", false, {255, 255, 255, 255, 255, 255}, 0, 4096, 0xFF},
        {"full arrays, large stamps", false, {15, 15, 30, 30, 60, 10}, 894, 3534, 0xFE},
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
        for (size_t length = 3600; length < 3660; ++length) {  // each float cut at each place
            rendersAsFormatted(record, textOf(length));
        }
    }
}

TEST_F(FrameContentTest, ArbitraryRecords_AreCutAtTheEndOfTheBuffer_WhereverThatFalls) {
    std::mt19937 random(20231114);
    for (uint32_t i = 0; i < 2000 && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        const uint32_t percentsSet[] = {100, 50, 3};
        const Record record = randomRecord(random, percentsSet[i % 3], i % 2 == 0);
        rendersAsFormatted(record, textOf(random() % (kFrameRecordSize + 1)));
        Destination line = textOf(0);
        if (ReferenceLine::render(record.data(), line.data())) {
            const size_t longest = kFrameRecordSize - 1 - std::strlen(line.data());
            EXPECT_TRUE(rendersAsFormatted(record, textOf(longest)));
            EXPECT_FALSE(rendersAsFormatted(record, textOf(longest + 1)));
        }
    }
}

TEST_F(FrameContentTest, NothingToRender_IsLoggedAndAppendsNothing) {
    const Record record(kFrameRecordSize);
    Destination line = textOf(4);
    makeFrameContent(3, record.data(), line.data());
    makeFrameContent(1, nullptr, line.data());
    makeFrameContent(1, record.data(), nullptr);
    EXPECT_EQ(line, textOf(4));
    EXPECT_EQ(countLogged("VDR level not match any!"), 1U);
    EXPECT_EQ(countLogged("srcData/destData is nullptr!"), 2U);
}

}  // namespace
}  // namespace zk::test
