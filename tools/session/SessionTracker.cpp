#include "tools/session/SessionTracker.h"

#include "records/frameData.h"

namespace vdrdump {

bool SessionTracker::startsOver(uint32_t frame) const {
    if (frame == zk::kNoFrameNumber || mSession.numbered == 0 || frame >= mSession.last) {
        return false;
    }
    const uint32_t behind = mSession.last - frame;
    if (isSeen(behind)) {
        return behind > kNear || frame == mSession.first;
    }
    return behind > (frame < mSession.first ? kNear : kInFlight - 1);
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
    mSeen.set(mSession.last - frame);
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
        mSession.gaps.push_back({first, last});
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
