#include "tools/session/SessionTracker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>

#include "tools/session/VideoWindows.h"

namespace vdrdump::test {
namespace {

// "first-last missing/repeated/late" of each session, and its gaps.
std::string sessionsOf(const std::vector<uint32_t>& frames) {
    SessionTracker tracker;
    std::string text;
    const auto close = [&] {
        const SessionSummary& session = tracker.session();
        text += (text.empty() ? "" : " | ") + std::to_string(session.first) + "-" +
                std::to_string(session.last) + " " + std::to_string(session.missing) + "/" +
                std::to_string(session.repeated) + "/" + std::to_string(session.late) +
                (session.misnumbered == 0 ? "" : " bad " + std::to_string(session.misnumbered));
        for (const FrameRange& gap : session.gaps) {
            text += " [" + std::to_string(gap.first) + "," + std::to_string(gap.last) + "]";
        }
    };
    for (size_t i = 0; i < frames.size(); ++i) {
        const size_t ahead = std::min<size_t>(frames.size() - i - 1, 8);
        const auto step = tracker.isPlain(frames[i])
                                  ? SessionTracker::Step::Belongs
                                  : tracker.judge(frames[i], frames.data() + i + 1, ahead);
        if (step == SessionTracker::Step::Misnumbered) {
            tracker.addMisnumbered();
            continue;
        }
        if (step == SessionTracker::Step::StartsOver) {
            close();
            tracker.restart();
        }
        tracker.add(frames[i]);
    }
    close();
    return text;
}

std::vector<uint32_t> upTo(uint32_t last, std::vector<uint32_t> then = {}) {
    std::vector<uint32_t> frames(last + 1);
    std::iota(frames.begin(), frames.end(), 0);
    frames.insert(frames.end(), then.begin(), then.end());
    return frames;
}

struct Sequence {
    const char* name;
    std::vector<uint32_t> frames;
    const char* sessions;
};

const Sequence kSequences[] = {
        {"Whole", {5, 6, 7}, "5-7 0/0/0"},
        {"Gap", {1, 2, 5, 9}, "1-9 5/0/0 [3,4] [6,8]"},
        {"Repeated", {1, 2, 2, 3}, "1-3 0/1/0"},
        {"RepeatedALittleLater", {1, 2, 3, 2, 4}, "1-4 0/1/0"},
        {"LateFillsItsGap", {1, 2, 4, 3, 5}, "1-5 0/0/1"},
        {"LateSplitsItsGap", {1, 9, 5, 10}, "1-10 6/0/1 [2,4] [6,8]"},
        {"LateAtBothEndsOfAGap", {1, 6, 2, 5, 7}, "1-7 2/0/2 [3,4]"},
        {"LateBeforeTheFirst", {413, 412, 414}, "412-414 0/0/1"},
        {"LateFarBeforeTheFirst", {413, 409, 414}, "409-414 3/0/1 [410,412]"},
        {"StartsOver", upTo(200, {0, 1}), "0-200 0/0/0 | 0-1 0/0/0"},
        {"ShortSessionStartsOver", {0, 1, 2, 0, 1, 2}, "0-2 0/0/0 | 0-2 0/0/0"},
        {"StartsOverAtAnotherNumber", upTo(40, {3, 4}), "0-40 0/0/0 | 3-4 0/0/0"},
        {"StartsOverBelowTheFirst", {30, 31, 32, 33, 1, 2}, "30-33 0/0/0 | 1-2 0/0/0"},
        {"StartsOverIntoAnOldGap",
         {1, 3, 400, 401, 402, 403, 404, 405, 2, 3, 4, 5},
         "1-405 397/0/0 [2,2] [4,399] | 2-5 0/0/0"},
        {"StragglerThatWasMissing", upTo(200, {202, 203, 204, 290, 201, 291}),
         "0-291 85/0/1 [205,289]"},
        {"StragglerOfThousands", {1, 2, 4, 5, 2000, 2001, 3, 2002}, "1-2002 1994/0/1 [6,1999]"},
        {"StragglerAtTheEnd", {1, 3, 200, 201, 2}, "1-201 196/0/1 [4,199]"},
        {"JumpsAheadAndReturns", {7, 8, 1073741833, 10, 11}, "7-11 1/0/0 bad 1 [9,9]"},
        {"JumpsAheadAtTheEnd", {7, 8, 1073741833}, "7-8 0/0/0 bad 1"},
        {"JumpsBackAndReturns", upTo(600, {89, 602, 603}), "0-603 1/0/0 bad 1 [601,601]"},
        {"JumpsBackALittleAndReturns", upTo(39, {8, 41, 42}), "0-42 1/0/0 bad 1 [40,40]"},
        {"TwoJumpInARow", {7, 8, 70000, 900000, 11, 12}, "7-12 2/0/0 bad 2 [9,10]"},
        {"FirstIsDamaged", {70000, 8, 9, 10}, "8-10 0/0/0 bad 1"},
        {"GapOfThousands", {7, 8, 5000, 5001}, "7-5001 4991/0/0 [9,4999]"},
        {"RepeatedFirst", {5, 6, 7, 5, 8, 9}, "5-9 0/1/0"},
        {"NoNumber", {1, UINT32_MAX, 2}, "1-2 0/0/0"},
        {"WholeRange",
         {0, 1, UINT32_MAX - 2, UINT32_MAX - 1},
         "0-4294967294 4294967291/0/0 [2,4294967292]"},
};

class Sessions : public testing::TestWithParam<Sequence> {};

TEST_P(Sessions, AreToldFromFrameNumbers) {
    EXPECT_EQ(sessionsOf(GetParam().frames), GetParam().sessions);
}

INSTANTIATE_TEST_SUITE_P(Frames, Sessions, testing::ValuesIn(kSequences),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(SessionTracker, MoreGapsThanAreListed_AreAllCounted) {
    SessionTracker tracker;
    constexpr uint32_t kGaps = SessionTracker::kMostGaps + 500;
    for (uint32_t i = 0; i <= kGaps; ++i) {
        tracker.add(i * 3);
    }
    EXPECT_EQ(tracker.session().missing, kGaps * 2U);
    EXPECT_EQ(tracker.session().gaps.size(), SessionTracker::kMostGaps);
    tracker.add(kGaps * 3 - 1);  // late, in a gap that is not listed
    EXPECT_EQ(tracker.session().missing, kGaps * 2U - 1);
}

TEST(VideoWindows, EndWithTheFrameBeforeTheMark) {
    VideoWindows videos;
    videos.add(10, 2);  // started in an earlier dump
    videos.add(20, 1);
    videos.add(30, 2);
    videos.add(40, 1);  // its end got lost
    videos.add(50, 1);
    ASSERT_EQ(videos.count(), 4U);
    const auto& windows = videos.windows();
    EXPECT_TRUE(!windows[0].startSeen && windows[0].endSeen && windows[0].last == 9);
    EXPECT_TRUE(windows[1].first == 20 && windows[1].last == 29);
    EXPECT_TRUE(windows[2].first == 40 && !windows[2].endSeen);
    EXPECT_TRUE(windows[3].first == 50 && !windows[3].endSeen);
}

}  // namespace
}  // namespace vdrdump::test
