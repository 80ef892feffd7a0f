#include "demo/LossForecast.h"

namespace demo {
namespace {

constexpr uint32_t kFramesBefore = 30;
constexpr uint32_t kFramesAfter = 30;
constexpr uint32_t kLongestHistory = 99;

}  // namespace

void LossForecast::announced(uint64_t timeStamp, uint32_t frame) {
    if (mOverflowed) {
        mLimited.insert(timeStamp);
        return;
    }
    mPending.push_back(frame);
    mLatest = timeStamp;
}

void LossForecast::done(uint32_t frame) {
    if (mFirst > mLast) {
        mFirst = frame;
    }
    mLast = frame;
    const bool beforeLoss = mPending.empty() || frame < mPending.front();
    if (beforeLoss && historyLength() > kFramesBefore) {
        ++mFirst;
    }
    if (mPending.empty()) {
        return;
    }
    if (historyLength() > kLongestHistory) {
        overflow();
    } else if (uint64_t{frame} == uint64_t{mPending.front()} + kFramesAfter) {
        completeFront();
    }
}

// The whole history goes out, under the drop whose turn it is, and nothing more after it.
void LossForecast::overflow() {
    addFile(mLast);
    mPending.clear();
    mOverflowed = true;
    mFirst = 1;
    mLast = 0;
}

// A drop that lies inside what is gathered already waits for its own successors: both then share
// one file, named after the later one.
void LossForecast::completeFront() {
    const bool shared = mPending.size() > 1 && mPending[1] <= mLast;
    if (!shared) {
        addFile(mLast - kFramesAfter);
        mFirst = mLast - kFramesAfter + 1;
    }
    mPending.pop_front();
}

void LossForecast::stopped() {
    if (!mPending.empty()) {
        addFile(mLast);
        mWroteAtStop = true;
    }
    mStopped = true;
}

void LossForecast::addFile(uint32_t lastFrame) {
    mFiles.push_back({*mLatest, mPending.front(), mFirst, lastFrame});
}

LossForecast::Answer LossForecast::answer(uint64_t timeStamp) const {
    if (mLimited.count(timeStamp) != 0) {
        return Answer::kLimited;
    }
    // The recorder answers the latest drop that it took, and that one only.
    return mStopped && mLatest == timeStamp ? Answer::kDone : Answer::kPending;
}

bool LossForecast::allows(uint64_t timeStamp, Answer given) const {
    const Answer expected = answer(timeStamp);
    const bool overtaken = mWroteAtStop && expected == Answer::kDone;
    return given == expected || (overtaken && given == Answer::kPending);
}

}  // namespace demo
