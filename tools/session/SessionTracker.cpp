#include "tools/session/SessionTracker.h"

#include <algorithm>

namespace vdrdump {
namespace {

// With nothing behind it, a number this far ahead is more likely damaged: a minute at 30 a second.
constexpr uint32_t kFarthestAlone = 1800;

uint32_t apart(uint32_t a, uint32_t b) {
    return a > b ? a - b : b - a;
}

// Of the numbers behind one that leaves the others, how many go on from it and how many return.
struct Votes {
    Votes(uint32_t frame, uint32_t last, const uint32_t* ahead, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            const uint32_t fromFrame = apart(ahead[i], frame + 1 + static_cast<uint32_t>(i));
            const uint32_t fromLast = apart(ahead[i], last + 1 + static_cast<uint32_t>(i));
            if (std::min(fromFrame, fromLast) <= SessionTracker::kInFlight) {
                ++(fromFrame < fromLast ? goOn : comeBack);
            }
        }
    }
    size_t goOn = 0;
    size_t comeBack = 0;
};

}  // namespace

SessionTracker::Step SessionTracker::judge(uint32_t frame, const uint32_t* ahead,
                                           size_t count) const {
    if (frame == zk::kNoFrameNumber) {
        return Step::Belongs;
    }
    if (mSession.numbered == 0) {
        return judgeFirst(frame, ahead, count);
    }
    return frame > mSession.last ? judgeAhead(frame, ahead, count)
                                 : judgeBehind(frame, ahead, count);
}

// Damaged when those behind it agree with each other and not with it.
SessionTracker::Step SessionTracker::judgeFirst(uint32_t frame, const uint32_t* ahead,
                                                size_t count) const {
    if (count < 2) {
        return Step::Belongs;
    }
    const Votes votes(frame, ahead[0], ahead + 1, count - 1);
    const bool isFar = apart(frame, ahead[0]) > kNear;
    return isFar && votes.comeBack > votes.goOn ? Step::Misnumbered : Step::Belongs;
}

SessionTracker::Step SessionTracker::judgeAhead(uint32_t frame, const uint32_t* ahead,
                                                size_t count) const {
    const uint32_t distance = frame - mSession.last;
    const Votes votes(frame, mSession.last, ahead, count);
    const bool isAlone = votes.goOn == 0 && votes.comeBack == 0;
    const bool goesOn =
            isAlone ? count == 0 && distance <= kFarthestAlone : votes.goOn >= votes.comeBack;
    return distance <= kInFlight || goesOn ? Step::Belongs : Step::Misnumbered;
}

SessionTracker::Step SessionTracker::judgeBehind(uint32_t frame, const uint32_t* ahead,
                                                 size_t count) const {
    const uint32_t behind = mSession.last - frame;
    const bool isBefore = frame < mSession.first;
    const bool isNearby = isSeen(behind) ? behind <= kNear && frame != mSession.first
                                         : behind <= (isBefore ? kNear : kInFlight - 1);
    if (isNearby) {
        return Step::Belongs;
    }
    // 0 is what stands in most places of a record: it may be no number at all.
    const bool isLate =
            isBefore ? frame != 0 && mSession.first - frame <= kInFlight : isMissing(frame);
    // The session's first number again, and no more of it: repeated.
    const bool isRepeated = isSeen(behind) && behind <= kNear;
    const Votes votes(frame, mSession.last, ahead, count);
    if (votes.goOn > votes.comeBack || (count == 0 && !isLate && !isRepeated)) {
        return Step::StartsOver;
    }
    return isLate || isRepeated ? Step::Belongs : Step::Misnumbered;
}

// A gap that is not listed may hold any number.
bool SessionTracker::isMissing(uint32_t frame) const {
    if (isSeen(mSession.last - frame)) {
        return false;
    }
    uint64_t listed = 0;
    for (const FrameRange& gap : mSession.gaps) {
        if (frame >= gap.first && frame <= gap.last) {
            return true;
        }
        listed += uint64_t{gap.last} - gap.first + 1;
    }
    return listed < mSession.missing;
}

void SessionTracker::restart() {
    const uint32_t number = mSession.number + 1;
    mSession = SessionSummary{};
    mSession.number = number;
    mSeen.reset();
}

void SessionTracker::add(uint32_t frame) {
    ++mSession.records;
    if (frame == zk::kNoFrameNumber) {
        return;
    }
    if (mSession.numbered++ == 0) {
        mSession.first = frame;
        mSession.last = frame;
        mSeen.set(0);
    } else if (frame > mSession.last) {
        addAhead(frame);
    } else if (isSeen(mSession.last - frame)) {
        ++mSession.repeated;
    } else {
        addLate(frame);
    }
}

void SessionTracker::addAhead(uint32_t frame) {
    const uint32_t ahead = frame - mSession.last;
    if (ahead > 1) {
        addGap(mSession.last + 1, frame - 1);
    }
    mSession.last = frame;
    mSeen = ahead < kInFlight ? mSeen << ahead : std::bitset<kInFlight>();
    mSeen.set(0);
}

void SessionTracker::addLate(uint32_t frame) {
    ++mSession.late;
    if (mSession.last - frame < kInFlight) {
        mSeen.set(mSession.last - frame);
    }
    if (frame > mSession.first) {
        --mSession.missing;
        closeGap(frame);
        return;
    }
    if (mSession.first - frame > 1) {
        addGap(frame + 1, mSession.first - 1);
    }
    mSession.first = frame;
}

void SessionTracker::addGap(uint32_t first, uint32_t last) {
    mSession.missing += uint64_t{last} - first + 1;
    if (mSession.gaps.size() < kMostGaps) {
        const auto isBehind = [](uint32_t frame, const FrameRange& gap) {
            return frame < gap.first;
        };
        mSession.gaps.insert(
                std::upper_bound(mSession.gaps.begin(), mSession.gaps.end(), first, isBehind),
                {first, last});
    }
}

void SessionTracker::closeGap(uint32_t frame) {
    for (size_t i = mSession.gaps.size(); i-- > 0;) {
        FrameRange& gap = mSession.gaps[i];
        if (frame < gap.first || frame > gap.last) {
            continue;
        }
        if (gap.first == gap.last) {
            mSession.gaps.erase(mSession.gaps.begin() + static_cast<std::ptrdiff_t>(i));
        } else if (frame == gap.first) {
            ++gap.first;
        } else if (frame == gap.last) {
            --gap.last;
        } else {
            const uint32_t last = gap.last;
            gap.last = frame - 1;
            addGap(frame + 1, last);
            mSession.missing -= uint64_t{last} - frame;  // they were counted already
        }
        return;
    }
}

}  // namespace vdrdump
