#include "tools/explain/LossCases.h"

#include <algorithm>

namespace vdrdump {
namespace {

constexpr uint32_t kNear = 30;  // frames by which a dump may miss a loss and still tell of it

using History = std::shared_ptr<SessionHistory>;

// Each segment's group, by the number of the first segment in it.
std::vector<size_t> groupsOf(const std::vector<Segment>& segments) {
    std::vector<size_t> groups(segments.size());
    for (size_t i = 0; i < segments.size(); ++i) {
        groups[i] = i;
        for (size_t j = 0; j < i; ++j) {
            const bool isOther = groups[i] != groups[j] && segments[i].file != segments[j].file;
            if (isOther && areOneSession(segments[j].frames, segments[i].frames)) {
                const size_t from = groups[i];
                std::replace(groups.begin(), groups.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                             from, groups[j]);
            }
        }
    }
    return groups;
}

// Whole records win; of equals those of a binary dump, whose floats are exact.
void addFrames(const Segment& segment, FrameMap& frames) {
    for (const auto& [frame, record] : segment.frames) {
        auto& place = frames[frame];
        const bool isBetter = place == nullptr ||
                              (record->view().isWhole() && !place->view().isWhole()) ||
                              (segment.kind == DumpKind::Binary &&
                               record->view().isWhole() == place->view().isWhole());
        if (isBetter) {
            place = record;
        }
    }
}

void addSegment(const Segment& segment, SessionHistory& history) {
    history.session = history.paths.empty()                ? segment.session
                      : history.session == segment.session ? history.session
                                                           : 0;
    history.paths.push_back(segment.path);
    if (segment.isDamaged) {
        history.damaged.push_back(segment.path);
    }
    addFrames(segment, history.frames);
}

// All frames without a record around a lost one, as far as there are records on both sides.
FrameRange missingAround(uint32_t frame, const FrameMap& frames) {
    const auto behind = frames.lower_bound(frame);
    if (behind == frames.end() || behind->first == frame || behind == frames.begin()) {
        return {frame, frame};
    }
    return {std::prev(behind)->first + 1, behind->first - 1};
}

class CaseMaker {
public:
    explicit CaseMaker(History history) : mHistory(std::move(history)) {}

    void add(uint32_t frame, const LossEvidence& evidence) {
        addRange(missingAround(frame, mHistory->frames), evidence);
    }
    // What another dump of the session has is not missing.
    void addGap(const FrameRange& gap, const LossEvidence& evidence) {
        uint64_t next = gap.first;
        for (auto at = mHistory->frames.lower_bound(gap.first); next <= gap.last; ++at) {
            const bool isIn = at != mHistory->frames.end() && at->first <= gap.last;
            const uint64_t end = isIn ? at->first : uint64_t{gap.last} + 1;
            if (end > next) {
                addRange({static_cast<uint32_t>(next), static_cast<uint32_t>(end - 1)}, evidence);
            }
            if (!isIn) {
                break;
            }
            next = end + 1;
        }
    }
    bool isNear(uint32_t frame) const {
        const auto at = mHistory->frames.lower_bound(frame < kNear ? 0 : frame - kNear);
        return at != mHistory->frames.end() && at->first <= uint64_t{frame} + kNear;
    }
    bool has(uint32_t frame) const {
        return std::any_of(mCases.begin(), mCases.end(), [frame](const LossCase& each) {
            return frame >= each.lost.first && frame <= each.lost.last;
        });
    }
    const History& history() const { return mHistory; }
    std::vector<LossCase> take() {
        std::sort(mCases.begin(), mCases.end(),
                  [](const LossCase& a, const LossCase& b) { return a.lost.first < b.lost.first; });
        return std::move(mCases);
    }

private:
    void addRange(const FrameRange& lost, const LossEvidence& evidence) {
        const auto known = std::find_if(mCases.begin(), mCases.end(), [&lost](const auto& each) {
            return each.lost.first <= lost.last && lost.first <= each.lost.last;
        });
        if (known == mCases.end()) {
            mCases.push_back({lost, {evidence}, mHistory});
        } else {
            known->evidence.push_back(evidence);
        }
    }

    History mHistory;
    std::vector<LossCase> mCases;
};

using Makers = std::map<size_t, CaseMaker>;  // by group

Makers makersOf(const std::vector<Segment>& segments, const std::vector<size_t>& groups) {
    std::map<size_t, History> histories;
    for (size_t i = 0; i < segments.size(); ++i) {
        History& history = histories[groups[i]];
        if (history == nullptr) {
            history = std::make_shared<SessionHistory>();
        }
        addSegment(segments[i], *history);
    }
    Makers makers;
    for (auto& [group, history] : histories) {
        makers.emplace(group, CaseMaker(history));
    }
    return makers;
}

// A log and a user name a frame and no session: where a dump's name speaks of this frame, that one
// is meant, otherwise all that have frames near it.
void addNamed(uint32_t frame, const LossEvidence& evidence, Makers& makers) {
    const bool isKnown = std::any_of(makers.begin(), makers.end(),
                                     [frame](const auto& each) { return each.second.has(frame); });
    for (auto& [group, maker] : makers) {
        if (isKnown ? maker.has(frame) : maker.isNear(frame)) {
            maker.add(frame, evidence);
        }
    }
}

}  // namespace

LossCases makeLossCases(const std::vector<Segment>& segments,
                        const std::vector<Announcement>& announcements,
                        std::optional<uint32_t> lost) {
    const std::vector<size_t> groups = groupsOf(segments);
    Makers makers = makersOf(segments, groups);
    LossCases result;
    std::vector<LossCase> nowhere;
    const auto addFrame = [&](uint32_t frame, const LossEvidence& evidence) {
        addNamed(frame, evidence, makers);
        const bool isFound = std::any_of(makers.begin(), makers.end(), [frame](const auto& each) {
            return each.second.has(frame);
        });
        if (!isFound) {
            nowhere.push_back({{frame, frame}, {evidence}, std::make_shared<SessionHistory>()});
        }
    };
    for (size_t i = 0; i < segments.size(); ++i) {
        const auto& announced = segments[i].announced;
        if (announced && (!lost || *announced == *lost)) {
            makers.at(groups[i]).add(
                    *announced, {LossEvidence::From::FileName, segments[i].path, segments[i].time});
        }
    }
    if (lost) {
        addFrame(*lost, {LossEvidence::From::User, "", ""});
    }
    for (const Announcement& each : announcements) {
        if (!lost || each.frame == *lost) {
            addFrame(each.frame, {LossEvidence::From::Log, "", each.time});
        }
    }
    for (size_t i = 0; i < segments.size() && !lost; ++i) {
        uint64_t listed = 0;
        for (const FrameRange& gap : segments[i].gaps) {
            makers.at(groups[i]).addGap(gap, {LossEvidence::From::Gap, segments[i].path, ""});
            listed += uint64_t{gap.last} - gap.first + 1;
        }
        result.unlisted += segments[i].missing - std::min(segments[i].missing, listed);
    }
    for (auto& [group, maker] : makers) {
        result.histories.push_back(maker.history());
        for (LossCase& each : maker.take()) {
            result.cases.push_back(std::move(each));
        }
    }
    result.cases.insert(result.cases.end(), nowhere.begin(), nowhere.end());
    return result;
}

}  // namespace vdrdump
