#include "tools/report/Timeline.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "tools/explain/Lanes.h"
#include "tools/explain/clocksOf.h"
#include "tools/explain/median.h"
#include "tools/explain/nodesOf.h"

namespace vdrdump {
namespace {

// In frame intervals: what lies farther from its frame is no stamp of it, as two seconds are more
// than any frame takes.
constexpr double kFar = 60;

class TimelineMaker {
public:
    TimelineMaker(const FrameMap& frames, const FrameRange& shown, const StampClocks& clocks)
          : mFrames(frames), mShown(shown), mClocks(clocks) {
        if (clocks.hasNodeStamps && !clocks.nodesShareIt) {
            mClocks.hasFrameStamps = false;  // a frame is taken when its first node gets it
        }
    }

    Timeline make(uint32_t zero) {
        mTimeline.zero = zero;
        mTimeline.isUnitKnown =
                (mClocks.hasNodeStamps ? mClocks.nodeTicksPerSecond : mClocks.ticksPerSecond)
                        .has_value();
        addArrivals();
        if (mTimeline.arrivals.empty()) {
            return std::move(mTimeline);
        }
        mInterval = intervalOfArrivals();
        addMissing(zero);
        moveTo(expected(zero));
        addRows();
        showAll();
        return std::move(mTimeline);
    }

private:
    using Arrival = Timeline::Arrival;
    using Bar = Timeline::Bar;
    using Row = Timeline::Row;

    double timeOf(uint64_t stamp) const {
        return (mClocks.hasNodeStamps ? nodeTime(mBase, stamp, mClocks)
                                      : frameTime(mBase, stamp, mClocks)) -
               mZero;
    }

    void addArrivals() {
        for (auto at = mFrames.lower_bound(mShown.first);
             at != mFrames.end() && at->first <= mShown.last; ++at) {
            if (const uint64_t stamp = frameStamp(at->second->view(), mClocks); stamp != 0) {
                mBase = mBase == 0 ? stamp : mBase;
                mTimeline.arrivals.push_back({at->first, timeOf(stamp), true});
            }
        }
    }

    double intervalOfArrivals() const {
        std::vector<double> intervals;
        const auto& arrivals = mTimeline.arrivals;
        for (size_t i = 1; i < arrivals.size(); ++i) {
            intervals.push_back((arrivals[i].time - arrivals[i - 1].time) /
                                (arrivals[i].frame - arrivals[i - 1].frame));
        }
        return std::max(0.0, median(std::move(intervals)));
    }

    // When a frame was taken or, as the frames around it have it, would have been.
    double expected(uint32_t frame) const {
        const auto& arrivals = mTimeline.arrivals;
        const auto next = std::lower_bound(
                arrivals.begin(), arrivals.end(), frame,
                [](const Arrival& arrival, uint32_t number) { return arrival.frame < number; });
        if (next == arrivals.end()) {
            return arrivals.back().time + mInterval * (frame - arrivals.back().frame);
        }
        if (next->frame == frame || next == arrivals.begin()) {
            return next->time - mInterval * (next->frame - frame);
        }
        const Arrival& before = *std::prev(next);
        return before.time +
               (next->time - before.time) * (frame - before.frame) / (next->frame - before.frame);
    }

    // Of frames before the first record and behind the last one nothing is known.
    void addMissing(uint32_t zero) {
        auto& arrivals = mTimeline.arrivals;
        std::vector<Arrival> missing;
        const auto addWithoutRecord = [&](uint32_t frame) {
            if (mFrames.count(frame) == 0) {
                missing.push_back({frame, expected(frame), false});
            }
        };
        for (uint32_t frame = arrivals.front().frame; frame < arrivals.back().frame; ++frame) {
            addWithoutRecord(frame);
        }
        if (zero < arrivals.front().frame || zero > arrivals.back().frame) {
            addWithoutRecord(zero);
        }
        arrivals.insert(arrivals.end(), missing.begin(), missing.end());
        std::sort(arrivals.begin(), arrivals.end(),
                  [](const Arrival& a, const Arrival& b) { return a.frame < b.frame; });
    }

    void moveTo(double zero) {
        mZero = zero;
        for (Arrival& arrival : mTimeline.arrivals) {
            arrival.time -= zero;
        }
    }

    void addRows() {
        std::map<NodeIds, size_t> places;  // the last one that a node has in any record
        std::map<NodeIds, Row> rows;
        std::map<NodeIds, Lanes> lanes;
        for (auto at = mFrames.lower_bound(mShown.first);
             at != mFrames.end() && at->first <= mShown.last; ++at) {
            const std::vector<NodeStamps> nodes = nodesOf(at->second->view());
            for (size_t i = 0; i < nodes.size(); ++i) {
                size_t& place = places[nodes[i].ids];
                place = std::max(place, i);
                if (nodes[i].last() != 0) {
                    addBar(at->first, nodes[i], lanes[nodes[i].ids], rows[nodes[i].ids]);
                }
            }
        }
        for (auto& [ids, row] : rows) {
            row.node = ids;
            row.lanes = lanes[ids].count();
            if (!row.bars.empty()) {
                mTimeline.rows.push_back(std::move(row));
            }
        }
        std::stable_sort(mTimeline.rows.begin(), mTimeline.rows.end(),
                         [&places](const Row& a, const Row& b) {
                             return places.at(a.node) < places.at(b.node);
                         });
    }

    void addBar(uint32_t frame, const NodeStamps& node, Lanes& lanes, Row& row) {
        const auto known = [this](uint64_t stamp) {
            return stamp == 0 ? std::nullopt : std::optional<double>(timeOf(stamp));
        };
        Bar bar;
        bar.frame = frame;
        bar.queued = known(node.queued);
        bar.started = known(node.started);
        bar.finished = known(node.finished);
        bar.handedOn = known(node.handedOn);
        if (mInterval > 0 && std::fabs(bar.first() - expected(frame)) > kFar * mInterval) {
            ++mTimeline.leftOut;
            return;
        }
        bar.lane = lanes.take(node.first(), node.last());
        row.bars.push_back(bar);
    }

    void showAll() {
        double from = mTimeline.arrivals.front().time;
        double to = mTimeline.arrivals.back().time;
        const double latest = to + kFar * mInterval;
        for (const Row& row : mTimeline.rows) {
            for (const Bar& bar : row.bars) {
                from = std::min(from, bar.first());
                to = std::max(to, std::min(latest, bar.last()));
            }
        }
        const double room = std::max((to - from) / 100, mInterval / 4);
        mTimeline.from = from - room;
        mTimeline.to = to + (room > 0 ? room : 1);
    }

    const FrameMap& mFrames;
    const FrameRange mShown;
    StampClocks mClocks;
    Timeline mTimeline;
    uint64_t mBase = 0;    // the stamp from which times are taken
    double mZero = 0;      // the time from there to what is to be 0
    double mInterval = 0;  // from one frame to the next; 0 not known
};

}  // namespace

double Timeline::Bar::first() const {
    return queued ? *queued : started ? *started : finished ? *finished : handedOn.value_or(0);
}

double Timeline::Bar::last() const {
    double latest = first();
    for (const auto& time : {started, finished, handedOn}) {
        latest = time ? std::max(latest, *time) : latest;
    }
    return latest;
}

Timeline timelineOf(const FrameMap& frames, const FrameRange& shown, uint32_t zero,
                    const StampClocks& clocks) {
    return TimelineMaker(frames, shown, clocks).make(zero);
}

}  // namespace vdrdump
