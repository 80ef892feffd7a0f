#include "tools/explain/SegmentCollector.h"

#include <algorithm>

namespace vdrdump {
namespace {

bool isIn(const std::vector<FrameRange>& ranges, uint32_t frame) {
    const auto next = std::upper_bound(
            ranges.begin(), ranges.end(), frame,
            [](uint32_t number, const FrameRange& range) { return number < range.first; });
    return next != ranges.begin() && frame <= std::prev(next)->last;
}

std::vector<FrameRange> joined(std::vector<FrameRange> ranges) {
    std::sort(ranges.begin(), ranges.end(),
              [](const FrameRange& a, const FrameRange& b) { return a.first < b.first; });
    std::vector<FrameRange> result;
    for (const FrameRange& range : ranges) {
        if (!result.empty() && range.first <= result.back().last) {
            result.back().last = std::max(result.back().last, range.last);
        } else {
            result.push_back(range);
        }
    }
    return result;
}

}  // namespace

FrameRange SegmentCollector::around(const FrameRange& lost) {
    return {lost.first - std::min(lost.first, kBefore),
            lost.last + std::min(UINT32_MAX - lost.last, kBehind)};
}

std::vector<FrameRange> SegmentCollector::around(const std::vector<uint32_t>& lost) {
    std::vector<FrameRange> ranges;
    for (size_t i = 0; i < lost.size() && i < kMostLosses; ++i) {
        ranges.push_back(around(FrameRange{lost[i], lost[i]}));
    }
    return ranges;
}

SegmentCollector::SegmentCollector(const std::vector<FrameRange>& wanted,
                                   std::optional<FrameRange> gapsIn)
      : mWanted(joined(wanted)), mGapsIn(gapsIn) {}

void SegmentCollector::beginFile(const DumpFile& file) {
    mFile = file;
    mFirstOfFile = mSegments.size();
}

void SegmentCollector::add(const Record& record) {
    if (!record.isNumbered()) {
        return;
    }
    const uint32_t frame = record.frame();
    const bool isWanted = isIn(mWanted, frame);
    if (!findsGaps() && !isWanted) {
        return;
    }
    const auto stored = std::make_shared<StoredRecord>(record);
    if (findsGaps()) {
        followGaps(frame, stored);
    }
    if (isWanted) {
        keep(frame, stored);
    }
}

// A gap may close again: frames come in the order in which they were completed.
void SegmentCollector::followGaps(uint32_t frame,
                                  const std::shared_ptr<const StoredRecord>& record) {
    if (mHasLast && frame > mLast + 1 && mGaps.size() < kMostLosses &&
        mGapsIn->meets({mLast + 1, frame - 1})) {
        mGaps.push_back({{mLast + 1, frame - 1}, frame - mLast - 1});
        for (const auto& recent : mRecent) {
            keep(recent->view().frame(), recent);
        }
    }
    for (size_t i = mGaps.size(); i-- > 0;) {
        OpenGap& gap = mGaps[i];
        const FrameRange near = around(gap.range);
        if (frame < near.first || frame > near.last) {
            continue;
        }
        const bool isLate = frame >= gap.range.first && frame <= gap.range.last;
        if (isLate && mFrames.count(frame) == 0 && --gap.open == 0) {
            mGaps.erase(mGaps.begin() + static_cast<std::ptrdiff_t>(i));
            continue;
        }
        keep(frame, record);
    }
    if (mFrames.size() > 2 * kMostLosses * (kBefore + kBehind)) {
        std::vector<FrameRange> gaps;
        for (const OpenGap& gap : mGaps) {
            gaps.push_back(gap.range);
        }
        keepOnly(gaps);
    }
    mLast = mHasLast ? std::max(mLast, frame) : frame;
    mHasLast = true;
    mRecent.push_back(record);
    if (mRecent.size() > kBefore) {
        mRecent.pop_front();
    }
}

// Of a frame that comes twice the first whole record stays.
void SegmentCollector::keep(uint32_t frame, const std::shared_ptr<const StoredRecord>& record) {
    auto& place = mFrames[frame];
    if (place == nullptr || (!place->view().isWhole() && record->view().isWhole())) {
        place = record;
    }
}

void SegmentCollector::keepOnly(const std::vector<FrameRange>& gaps) {
    std::vector<FrameRange> ranges = mWanted;
    for (const FrameRange& gap : gaps) {
        ranges.push_back(around(gap));
    }
    ranges = joined(ranges);
    for (auto at = mFrames.begin(); at != mFrames.end();) {
        at = isIn(ranges, at->first) ? std::next(at) : mFrames.erase(at);
    }
}

Segment SegmentCollector::newSegment() const {
    Segment segment;
    segment.path = mFile.path;
    segment.time = mFile.time;
    segment.kind = mFile.kind;
    segment.file = mFile.number;
    return segment;
}

// The session lists the first of its gaps only, and counts all of them.
void SegmentCollector::addGaps(const SessionSummary& session, Segment& segment) const {
    segment.missing = session.missing;
    for (const FrameRange& gap : session.gaps) {
        if (!mGapsIn->meets(gap)) {
            segment.missing -= uint64_t{gap.last} - gap.first + 1;
        } else if (segment.gaps.size() < kMostLosses) {
            segment.gaps.push_back(gap);
        }
    }
}

void SegmentCollector::endSession(const SessionSummary& session) {
    Segment segment = newSegment();
    segment.session = session.number;
    if (findsGaps()) {
        addGaps(session, segment);
    }
    keepOnly(segment.gaps);
    if (mKept < kMostKept && !mFrames.empty()) {
        mKept += mFrames.size();
        segment.frames.swap(mFrames);
        mSegments.push_back(std::move(segment));
    }
    mFrames.clear();
    mRecent.clear();
    mGaps.clear();
    mHasLast = false;
}

void SegmentCollector::endFile(const DumpEnd& end) {
    for (size_t i = mFirstOfFile; i < mSegments.size(); ++i) {
        mSegments[i].isDamaged = end.damage.any();
    }
    mFiles.push_back({mFile, end.records, end.damage.any()});
    if (mFile.kind != DumpKind::Binary && mFile.lostFrame) {
        announce(end);
    }
}

// The name of a frame-loss text speaks of one of its sessions, as a rule of the only one. An empty
// one tells of the loss all the same.
void SegmentCollector::announce(const DumpEnd& end) {
    uint32_t session = 0;
    for (const Loss& loss : end.losses.losses()) {
        session = loss.source == Loss::Source::Announced ? loss.session : session;
    }
    for (size_t i = mFirstOfFile; i < mSegments.size(); ++i) {
        if (session == 0 || mSegments[i].session == session) {
            mSegments[i].announced = mFile.lostFrame;
            return;
        }
    }
    Segment segment = newSegment();
    segment.announced = mFile.lostFrame;
    segment.isDamaged = end.damage.any();
    mSegments.push_back(std::move(segment));
}

}  // namespace vdrdump
