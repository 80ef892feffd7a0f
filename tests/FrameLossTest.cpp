#include <sstream>

#include "dump/LossAccounts.h"
#include "frameloss/FrameLossHistory.h"
#include "tests/LogTranscript.h"
#include "tests/RecorderTest.h"

namespace zk::test {
namespace {

using Lines = std::vector<std::string>;

// Plays camera sessions written in words: "7" and "7-40" complete frames, "!41" announces the loss
// of a frame, "stop" ends the session.
class LossSession : public RecorderTest {
protected:
    LossSession() { openSession(); }

    void play(const std::string& script) {
        std::istringstream words(script);
        for (std::string word; words >> word;) {
            if (word == "stop") {
                closeSession();
            } else if (word[0] == '!') {
                announceLoss(std::strtoull(&word[1], nullptr, 10), kNow + 1000000 * ++mLosses);
            } else {
                char* end = nullptr;
                const auto first = static_cast<uint32_t>(std::strtoul(word.c_str(), &end, 10));
                completeFrames(first, *end == '-' ? static_cast<uint32_t>(
                                                            std::strtoul(end + 1, nullptr, 10))
                                                  : first);
            }
        }
    }

    // What the files hold: "41: 11-40 42-50; 100: 70-99".
    std::string dumped() const {
        std::string text;
        for (const std::string& name : lossFiles()) {
            text += text.empty() ? "" : "; ";
            text += std::to_string(std::atoi(&name[name.rfind('_') + 1])) + ":";
            const std::vector<uint32_t> frames = framesInLossFile(name);
            for (size_t i = 0, first = 0; i < frames.size(); ++i) {
                if (i + 1 == frames.size() || frames[i + 1] != frames[i] + 1) {
                    text += " " + std::to_string(frames[first]);
                    text += i > first ? "-" + std::to_string(frames[i]) : "";
                    first = i + 1;
                }
            }
        }
        return text;
    }

private:
    uint64_t mLosses = 0;
};

struct Story {
    const char* name;
    const char* script;
    const char* dumped;
};

class FrameLossTest : public LossSession, public testing::WithParamInterface<Story> {};

const Story kStories[] = {
        {"LostFrame", "1-40 !41 42-70 71 72-200", "41: 11-40"},
        {"LostFrame_WithItsThirtiethSuccessorMissing_IsNotDumpedBefore", "1-40 !41 42-70", ""},
        {"LossAnnouncedAhead_KeepsTheThirtyFramesBeforeIt", "1-40 !60 41-59 61-90", "60: 30-59"},
        {"LossAnnouncedAtTheLastMoment", "1-40 42-70 !41 71", "41: 40"},
        {"LossOfAFrameThatWasDoneAllTheSame_DumpsItToo", "1-40 !41 41-71", "41: 11-41"},
        {"LossAnnouncedLate_OverflowsTheHistory", "1-71 !41 72-140 141 142-200", "41: 42-141"},
        {"LossWithoutItsThirtiethSuccessor_WritesTheWholeHistory", "1-40 !41 42-70 72-111 112",
         "41: 11-40 42-70 72-112"},
        {"HistoryOfNinetyNine_IsNotYetAnOverflow", "1-40 !41 42-70 72-111", ""},
        {"LossWithOneFrameBeforeIt", "40 !41 42-71", "41: 40"},
        {"LossWithNoFrameBeforeIt_StaysPendingUntilTheOverflow", "!41 42-71 72-200", "41: 42-141"},
        {"FrameNumbersThatSkip_CountFramesBeforeAndNumbersAfter",
         "2 4 6 8 10 12 14 16 18 20-44 !46 48 50 52 54 56 58 60 62 64 66 68 70 72 74 76 78",
         "46: 10 12 14 16 18 20-29"},
        {"FrameNumbersThatWrap", "4294967250-4294967279 !4294967280 4294967281-4294967295 0 1-14",
         "-16: 4294967250-4294967278"},
        {"LossesFarApart", "1-40 !41 42-99 !100 101-130", "41: 11-40; 100: 70-99"},
        {"LossesFarApart_AnnouncedTogether", "1-40 !41 !100 42-99 101-130",
         "41: 11-40; 100: 70-99"},
        {"LossesCloseTogether_ShareTheFileOfTheLater", "1-40 !41 !50 42-49 51-80",
         "50: 11-40 42-49"},
        {"LossThirtyFramesLater_StillShares", "1-40 !41 42-60 !71 61-101", "71: 11-40 42-71"},
        {"LossThirtyOneFramesLater_HasAFileOfItsOwn", "1-40 !41 !72 42-71 73-102",
         "41: 11-40; 72: 42-71"},
        {"LossOfTheThirtiethSuccessor_WritesTheWholeHistoryAndForgetsBoth",
         "1-40 !41 !71 42-70 72-300", "41: 11-40 42-70 72-112"},
        {"ThreeLosses_TheLastFarFromTheOthers", "1-40 !41 !45 !100 42-44 46-99 101-130",
         "45: 11-40 42-44; 100: 70-99"},
        {"FirstOfTwoLosses_WithoutFramesBeforeIt_IsGoneWithoutAFile", "!41 !120 42-119 121-150",
         "120: 90-119"},
        {"Stop_WritesTheHistoryOfAPendingLoss", "1-40 !41 42-50 stop", "41: 11-40 42-50"},
        {"Stop_WithTwoLossesPending_WritesOneFileForTheFirst", "1-40 !41 !43 42 stop",
         "41: 11-40 42"},
        {"Stop_WithALossButNoFrame_WritesAnEmptyFile", "!41 stop", "41:"},
        {"Stop_AfterAFile_WritesNoOther", "1-40 !41 42-80 stop", "41: 11-40"},
        {"Stop_ForgetsTheHistoryAndThePendingLosses", "1-40 !41 stop 42-50 !51 52-81",
         "41: 11-40; 51: 42-50"},
        {"History_WithoutALoss_IsTheLastThirtyFrames", "1-100 !101 stop", "101: 71-100"},
};

TEST_P(FrameLossTest, Dumps) {
    play(GetParam().script);
    EXPECT_EQ(dumped(), GetParam().dumped);
}

INSTANTIATE_TEST_SUITE_P(Losses, FrameLossTest, testing::ValuesIn(kStories),
                         [](const auto& story) { return std::string(story.param.name); });

class FrameLossMessagesTest : public LossSession {
protected:
    // What the steps of a script say.
    Lines told(const std::string& script) {
        const std::string prefix = "I frameLostProcess<LINE>: VDR::frameLostProcess, ";
        forgetLog();
        play(script);
        Lines lines = transcript("frameLostProcess");
        for (std::string& line : lines) {
            line.erase(0, line.rfind(prefix, 0) == 0 ? prefix.size() : 0);
        }
        return lines;
    }
};

TEST_F(FrameLossMessagesTest, OneLoss_IsToldWhenItIsDueAndWhenItOverflows) {
    const std::string one = "mFrameLostNumQueue(1), ";
    EXPECT_EQ(told("!41 42-71"), Lines{one + "front=41, currentDoneFrame=71, dump data to txt!"});
    EXPECT_EQ(transcript("Txt"), Lines{}) << "told, but with too few frames to dump";
    EXPECT_EQ(told("72-141"),
              Lines{one + "front=41, currentDoneFrame=141, exceed 100, dump data to txt!"});
    closeSession();
    EXPECT_EQ(told("151-200 !201 202-231"),
              Lines{one + "front=201, currentDoneFrame=231, dump data to txt!"});
}

TEST_F(FrameLossMessagesTest, SeveralLosses_AreToldOneByOne) {
    const std::string several = "mFrameLostNumQueue>=2, ";
    EXPECT_EQ(told("1-40 !41 !45 !100 42-44 46-99 101-130"),
              (Lines{several + "3, front=41 pop, currentDoneFrame=71!",
                     several + "2, front=45 pop, currentDoneFrame=75!",
                     several + "1, front=45, currentDoneFrame=75, dump data to txt!",
                     "mFrameLostNumQueue(1), front=100, currentDoneFrame=130, dump data to txt!"}));
    EXPECT_EQ(told("!90 !95 131-200"),
              Lines{several + "2, front=90, currentDoneFrame=200, exceed 100, dump data to txt!"});
}

TEST_F(FrameLossMessagesTest, FrameWithoutNumber_IsRefusedAndNotKept) {
    play("1 0 2 !41 stop");
    FrameLossHistory(1, std::make_shared<LossAccounts>()).frameLostProcess(nullptr);
    EXPECT_EQ(transcript("frameLostProcess"),
              (Lines{
                      "E frameLostProcess<LINE>: VDR::frameLostProcess, currentDoneFrame is 0!",
                      "E frameLostProcess<LINE>: VDR::frameLostProcess, frameDebugInfo is null!",
              }));
    EXPECT_EQ(dumped(), "41: 1-2");
}

// An announcement that passed the limits just before an overflow may be queued just behind it.
TEST_F(FrameLossMessagesTest, StopAfterAnOverflow_WritesNoFurtherFile) {
    FrameLossHistory history(1, std::make_shared<LossAccounts>());
    frameData frame{};
    history.announce(41);
    for (uint8_t number = 101; number <= 210; ++number) {
        frame.bytes[0] = number;
        history.frameLostProcess(&frame);
        if (number == 205) {
            history.announce(206);
        }
    }
    history.dumpDataToFrameLostTxtFile();
    EXPECT_EQ(lossFiles().size(), 1U);
    EXPECT_EQ(countLogged("flush now"), 0U);
}

}  // namespace
}  // namespace zk::test
