#include "integrations/gstreamer/FrameFlow.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace vdrgst {
namespace {

constexpr uint32_t kFirst = FrameFlow::kFirstFrame;
constexpr int64_t kFrameTime = 33'333'333;

// Frames by their place in the stream, from 0; memory is told by a letter's address.
class FrameFlowTest : public testing::Test, private FrameReceiver {
protected:
    NodeIndex node(Order order, bool isSink = false) {
        NodeTraits traits;
        traits.order = order;
        traits.isSink = isSink;
        return mFlow.addNode(traits);
    }

    static BufferMark raw(int place, const void* memory = nullptr) {
        return {place * kFrameTime, kNoTime, memory};
    }
    static BufferMark encoded(int shownAt, int decodedAt) {
        return {shownAt * kFrameTime, decodedAt * kFrameTime, nullptr};
    }

    // The source pushes a frame to the element, which keeps it when its call returns.
    uint32_t give(NodeIndex to, const BufferMark& mark) {
        const uint32_t frame = mFlow.handOn(mSource, mark, {++mNow, kNoFrame, false, true});
        send(mSource, to, frame, mark);
        return frame;
    }
    // The source pushes one more buffer of the same frame.
    void givePiece(NodeIndex to, uint32_t frame, const BufferMark& mark) {
        mFlow.arrive(to, frame, mark, mNow, mNow);
        mFlow.callReturned(to, frame, {++mNow, 1, FrameFlow::Outcome::kTaken});
    }
    // The element pushes a buffer into the sink. The frame that was taken for the one in it.
    uint32_t put(NodeIndex from, const BufferMark& mark, uint32_t calledWith = kNoFrame) {
        const uint32_t frame = mFlow.handOn(from, mark, {++mNow, calledWith, false, false});
        send(from, mSink, frame, mark);
        return frame;
    }
    void send(NodeIndex from, NodeIndex to, uint32_t frame, const BufferMark& mark) {
        ++mNow;
        mFlow.arrive(to, frame, mark, mNow, mNow);
        mFlow.callReturned(to, frame, {++mNow, 1, FrameFlow::Outcome::kTaken});
        mFlow.landed(from, frame, ++mNow);
    }

    std::vector<uint32_t> through() const {
        std::vector<uint32_t> numbers;
        for (const auto& trace : mThrough) {
            numbers.push_back(trace->number);
        }
        return numbers;
    }
    std::vector<uint32_t> lost() const {
        std::vector<uint32_t> numbers;
        for (const auto& trace : mThrough) {
            if (!trace->losses.empty()) {
                numbers.push_back(trace->number);
            }
        }
        return numbers;
    }

    uint64_t mNow = 0;
    FrameFlow mFlow{*this};
    std::vector<std::unique_ptr<FrameTrace>> mThrough;
    const NodeIndex mSource = node(Order::kArrival);
    const NodeIndex mSink = node(Order::kArrival, true);

private:
    void nodeAppeared(NodeIndex, const std::string&, bool) override {}
    void frameBorn(uint32_t) override {}
    void frameThrough(std::unique_ptr<FrameTrace> trace) override {
        mThrough.push_back(std::move(trace));
    }
    std::unique_ptr<FrameTrace> spareTrace() override { return std::make_unique<FrameTrace>(); }
};

using Frames = std::vector<uint32_t>;

TEST_F(FrameFlowTest, EncoderWithAnotherOrder_FramesAreKnownByTimeAndThroughByNumber) {
    const NodeIndex encoder = node(Order::kTime);
    for (int place = 0; place < 4; ++place) {
        EXPECT_EQ(give(encoder, raw(place)), kFirst + static_cast<uint32_t>(place));
    }
    EXPECT_EQ(put(encoder, encoded(0, -2)), kFirst);
    EXPECT_EQ(put(encoder, encoded(3, -1)), kFirst + 3);
    EXPECT_EQ(put(encoder, encoded(1, 0)), kFirst + 1);
    EXPECT_EQ(through(), (Frames{kFirst, kFirst + 1}));
    EXPECT_EQ(put(encoder, encoded(2, 1)), kFirst + 2);
    EXPECT_EQ(through(), (Frames{kFirst, kFirst + 1, kFirst + 2, kFirst + 3}));
    EXPECT_TRUE(lost().empty());
}

TEST_F(FrameFlowTest, EncoderThatSkips_TheDecodingTimeTellsWhenAFrameCannotCome) {
    const NodeIndex encoder = node(Order::kTime);
    for (int place = 0; place < 6; ++place) {
        give(encoder, raw(place));
    }
    put(encoder, encoded(0, -1));
    put(encoder, encoded(2, 0));
    put(encoder, encoded(3, 1));
    EXPECT_EQ(through(), Frames{kFirst}) << "frame 1 might come with decoding time 1";
    put(encoder, encoded(4, 2));
    EXPECT_EQ(lost(), Frames{kFirst + 1});
}

TEST_F(FrameFlowTest, DecoderThatSkips_WhatIsShownLaterTellsIt) {
    const NodeIndex decoder = node(Order::kTime);
    // As they are decoded: 0 3 1 2.
    give(decoder, encoded(0, -1));
    const uint32_t third = give(decoder, encoded(3, 0));
    const uint32_t skipped = give(decoder, encoded(1, 1));
    give(decoder, encoded(2, 2));
    put(decoder, raw(0));
    put(decoder, raw(2));
    EXPECT_EQ(put(decoder, raw(3)), third);
    EXPECT_EQ(lost(), Frames{skipped});
}

TEST_F(FrameFlowTest, CodecWithoutAnyTimes_FramesComeInOrderAndAreNotLostTooEarly) {
    const NodeIndex codec = node(Order::kTime);
    const BufferMark timeless;
    const uint32_t first = give(codec, timeless);
    give(codec, timeless);
    EXPECT_EQ(put(codec, timeless), first);
    EXPECT_EQ(put(codec, timeless), first + 1);
    EXPECT_TRUE(lost().empty());
}

TEST_F(FrameFlowTest, WhatChangesTimes_IsFollowedByItsMemory_CopiesIncluded) {
    const NodeIndex rate = node(Order::kArrival);
    const char memory[2] = {};
    const uint32_t first = give(rate, raw(0, &memory[0]));
    const uint32_t second = give(rate, raw(1, &memory[1]));
    // Both are shown later than they were taken, and the first twice.
    EXPECT_EQ(put(rate, raw(10, &memory[0]), second), first);
    EXPECT_EQ(put(rate, raw(11, &memory[0]), second), kNoFrame) << "the first is through";
    EXPECT_EQ(put(rate, raw(12, &memory[1])), second);
    EXPECT_TRUE(lost().empty());
}

TEST_F(FrameFlowTest, MemoryThatIsUsedAgain_TimesDecide) {
    const NodeIndex filter = node(Order::kArrival);
    const char memory = 0;
    const uint32_t first = give(filter, raw(0, &memory));
    const uint32_t second = give(filter, raw(1, &memory));
    EXPECT_EQ(put(filter, raw(0, &memory)), first);
    EXPECT_EQ(put(filter, raw(1)), second);
}

TEST_F(FrameFlowTest, EqualTimes_FramesLeaveAsTheyCame) {
    const NodeIndex queue = node(Order::kArrival);
    const uint32_t first = give(queue, raw(0));
    const uint32_t second = give(queue, raw(0));
    EXPECT_EQ(put(queue, raw(0)), first);
    EXPECT_EQ(put(queue, raw(0)), second);
    EXPECT_TRUE(lost().empty());
}

TEST_F(FrameFlowTest, FrameInPieces_IsInAQueueUntilTheLastHasLeft) {
    const NodeIndex queue = node(Order::kArrival);
    const uint32_t frame = give(queue, raw(0));
    givePiece(queue, frame, raw(0));
    EXPECT_EQ(put(queue, raw(0)), frame);
    EXPECT_TRUE(through().empty());
    EXPECT_EQ(put(queue, raw(0)), frame);
    EXPECT_EQ(through(), Frames{frame});
    EXPECT_TRUE(lost().empty());
}

TEST_F(FrameFlowTest, FrameInPieces_LeavesWhileTheNextPieceIsStillBeingPutIn) {
    const NodeIndex queue = node(Order::kArrival);
    const uint32_t frame = give(queue, raw(0));
    mFlow.arrive(queue, frame, raw(0), mNow, mNow);
    EXPECT_EQ(put(queue, raw(0)), frame);
    mFlow.callReturned(queue, frame, {++mNow, 1, FrameFlow::Outcome::kTaken});
    EXPECT_TRUE(through().empty());
    EXPECT_EQ(put(queue, raw(0)), frame);
    EXPECT_EQ(through(), Frames{frame});
}

TEST_F(FrameFlowTest, PiecesWithoutATime_BelongToTheFrameBeforeThem) {
    const NodeIndex queue = node(Order::kArrival);
    const char memory[6] = {};
    const BufferMark timeless[] = {{kNoTime, kNoTime, &memory[1]},
                                   {kNoTime, kNoTime, &memory[2]},
                                   {kNoTime, kNoTime, &memory[4]},
                                   {kNoTime, kNoTime, &memory[5]}};
    const uint32_t first = give(queue, raw(0, &memory[0]));
    givePiece(queue, first, timeless[0]);
    givePiece(queue, first, timeless[1]);
    const uint32_t second = give(queue, raw(1, &memory[3]));
    givePiece(queue, second, timeless[2]);
    givePiece(queue, second, timeless[3]);

    EXPECT_EQ(put(queue, raw(0, &memory[0])), first);
    EXPECT_EQ(put(queue, timeless[0]), first);
    EXPECT_TRUE(through().empty());
    EXPECT_EQ(put(queue, timeless[1]), first);
    EXPECT_EQ(through(), Frames{first});
    EXPECT_EQ(put(queue, raw(1, &memory[3])), second);
    EXPECT_EQ(put(queue, timeless[2]), second);
    EXPECT_EQ(put(queue, timeless[3]), second);
    EXPECT_EQ(through(), (Frames{first, second}));
    EXPECT_TRUE(lost().empty());
}

TEST_F(FrameFlowTest, PieceWithADecodingTimeOnly_TellsWhichFramesALeakyQueueHasDropped) {
    const NodeIndex queue = node(Order::kArrival);
    Frames frames;
    for (int place = 0; place < 3; ++place) {
        BufferMark later = encoded(place + 1, place);
        later.presentation = kNoTime;
        frames.push_back(give(queue, encoded(place + 1, place)));
        givePiece(queue, frames.back(), later);
    }
    // Only the second piece of the second frame and all of the third are left, behind one that came
    // with no frame that is known.
    BufferMark piece = encoded(0, -1);
    piece.presentation = kNoTime;
    EXPECT_EQ(put(queue, piece), kNoFrame);
    piece.decoding = kFrameTime;
    EXPECT_EQ(put(queue, piece), frames[1]);
    EXPECT_EQ(put(queue, encoded(3, 2)), frames[2]);
    EXPECT_EQ(lost(), Frames{frames[0]});
}

TEST_F(FrameFlowTest, FilterThatTakesFramesApart_AllPiecesAreTheFrameThatItWasCalledWith) {
    const NodeIndex parser = node(Order::kArrival);
    const BufferMark timeless;
    for (int place = 0; place < 2; ++place) {
        const uint32_t frame = mFlow.handOn(mSource, raw(place), {++mNow, kNoFrame, false, true});
        mFlow.arrive(parser, frame, raw(place), mNow, mNow);
        EXPECT_EQ(put(parser, raw(place), frame), frame);
        EXPECT_EQ(put(parser, timeless, frame), frame);
        EXPECT_EQ(put(parser, timeless, frame), frame);
        mFlow.callReturned(parser, frame, {++mNow, 1, FrameFlow::Outcome::kTaken});
        mFlow.landed(mSource, frame, ++mNow);
    }
    EXPECT_EQ(through(), (Frames{kFirst, kFirst + 1}));
    EXPECT_TRUE(lost().empty());
}

TEST_F(FrameFlowTest, PieceThatNeverLeaves_IsNoLossAndHoldsUpNothing) {
    const NodeIndex joiner = node(Order::kArrival);
    const uint32_t first = give(joiner, raw(0));
    givePiece(joiner, first, raw(0));
    EXPECT_EQ(put(joiner, raw(0)), first);
    const uint32_t second = give(joiner, raw(1));
    EXPECT_EQ(put(joiner, raw(1)), second);
    EXPECT_EQ(through(), (Frames{first, second}));
    EXPECT_TRUE(lost().empty());
}

TEST_F(FrameFlowTest, RoundedTimes_AreTheSameFrame) {
    const NodeIndex filter = node(Order::kArrival);
    give(filter, raw(0));
    const uint32_t second = give(filter, raw(1));
    BufferMark rounded = raw(1);
    rounded.presentation -= 333;
    EXPECT_EQ(put(filter, rounded), second);
}

TEST_F(FrameFlowTest, WhatNeverLeaves_HoldsUpNoMoreThanSoMany) {
    const NodeIndex hole = node(Order::kArrival);
    const NodeIndex queue = node(Order::kArrival);
    give(hole, raw(0));
    for (int place = 1; place <= static_cast<int>(FrameFlow::kMostFrames); ++place) {
        EXPECT_TRUE(through().empty());
        give(queue, raw(place));
        put(queue, raw(place));
    }
    EXPECT_EQ(through().size(), FrameFlow::kMostFrames + 1);
    EXPECT_TRUE(lost().empty()) << "nobody knows";
}

TEST_F(FrameFlowTest, AfterTheEnd_WhatAnEncoderKeptIsLost_AndCallsThatComeLateDoNothing) {
    const NodeIndex encoder = node(Order::kTime);
    const uint32_t kept = give(encoder, raw(0));
    mFlow.ended(encoder, ++mNow);
    EXPECT_EQ(lost(), Frames{kept});
    mFlow.close();
    mFlow.landed(encoder, kept, ++mNow);
    mFlow.flushed(encoder);
    mFlow.callReturned(encoder, kept, {++mNow, 0, FrameFlow::Outcome::kTaken});
    EXPECT_EQ(give(encoder, raw(0)), kNoFrame) << "its pipeline is gone";
    EXPECT_EQ(through().size(), 1U);
}

TEST_F(FrameFlowTest, OwnThread_WhatAFrameWaitsForItIsNotWork) {
    const NodeIndex queue = node(Order::kArrival);
    give(queue, raw(0));
    give(queue, raw(1));
    const uint64_t takenUp = mNow + 100;
    uint32_t frame = mFlow.handOn(queue, raw(0), {takenUp, kNoFrame, true, false});
    mFlow.landed(queue, frame, takenUp + 500);
    frame = mFlow.handOn(queue, raw(1), {takenUp + 501, kNoFrame, true, false});
    mFlow.landed(queue, frame, takenUp + 502);
    ASSERT_EQ(through().size(), 2U);
    const Passage& second = mThrough[1]->passages.back();
    EXPECT_EQ(second.startedAt, takenUp + 500);
    EXPECT_EQ(second.finishedAt, takenUp + 501);
    EXPECT_EQ(second.handedOnAt, takenUp + 501);
}

}  // namespace
}  // namespace vdrgst
