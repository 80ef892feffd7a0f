#include "tools/plot/PlotCurves.h"

#include <algorithm>

#include "tools/explain/median.h"

namespace vdrdump {

void PlotCurves::add(uint32_t frame, const std::vector<Value>& values) {
    Point point;
    point.frame = point.lastFrame = frame;
    for (const Value& each : values) {
        if (each.curve >= kMostCurves || !std::isfinite(each.value)) {
            continue;
        }
        if (each.curve >= point.values.size()) {
            point.values.resize(each.curve + 1);
        }
        Extremes& extremes = point.values[each.curve];
        extremes.low = extremes.high = std::fmax(extremes.high, each.value);
    }
    ++mRecords;
    place(std::move(point));
}

void PlotCurves::place(Point point) {
    const bool isLate = !mPoints.empty() && point.frame <= mPoints.back().frame;
    if (!mPoints.empty() && !isLate && mPoints.back().records < mRecordsPerPoint) {
        merge(mPoints.back(), point);
        return;
    }
    if (mPoints.size() == kMostPoints) {
        halve();
    }
    const auto behind =
            std::upper_bound(mPoints.begin(), mPoints.end(), point.frame,
                             [](uint32_t frame, const Point& each) { return frame < each.frame; });
    const bool isInside = isLate && behind != mPoints.begin() &&
                          (isMerged() || std::prev(behind)->lastFrame >= point.frame);
    if (isInside) {
        merge(*std::prev(behind), point);
    } else {
        mPoints.insert(behind, std::move(point));
    }
}

void PlotCurves::merge(Point& into, const Point& next) {
    into.frame = std::min(into.frame, next.frame);
    into.lastFrame = std::max(into.lastFrame, next.lastFrame);
    into.records += next.records;
    into.values.resize(std::max(into.values.size(), next.values.size()));
    for (size_t i = 0; i < next.values.size(); ++i) {
        // These prefer a number to a NaN.
        into.values[i].low = std::fmin(into.values[i].low, next.values[i].low);
        into.values[i].high = std::fmax(into.values[i].high, next.values[i].high);
    }
}

void PlotCurves::halve() {
    for (size_t i = 0; i < mPoints.size() / 2; ++i) {
        if (i != 0) {
            mPoints[i] = std::move(mPoints[2 * i]);
        }
        merge(mPoints[i], mPoints[2 * i + 1]);
    }
    mPoints.resize(mPoints.size() / 2);
    mRecordsPerPoint *= 2;
}

std::vector<FrameRange> PlotCurves::missing(const FrameRange& frames) const {
    std::vector<FrameRange> ranges;
    uint64_t next = frames.first;
    for (const Point& point : mPoints) {
        if (point.frame > next) {
            ranges.push_back({static_cast<uint32_t>(next), point.frame - 1});
        }
        if (!point.isWhole()) {
            ranges.push_back({point.frame, point.lastFrame});
        }
        next = std::max(next, uint64_t{point.lastFrame} + 1);
    }
    if (next <= frames.last) {
        ranges.push_back({static_cast<uint32_t>(next), frames.last});
    }
    return ranges;
}

Range<double> PlotCurves::rangeOf(size_t curve) const {
    Range<double> range;
    for (const Point& point : mPoints) {
        range.add(valueOf(point, curve).low);
        range.add(valueOf(point, curve).high);
    }
    return range;
}

double PlotCurves::medianOf(size_t curve) const {
    std::vector<double> values;
    for (const Point& point : mPoints) {
        const Extremes extremes = valueOf(point, curve);
        if (!std::isnan(extremes.low)) {
            values.push_back((extremes.low + extremes.high) / 2);
        }
    }
    return median(std::move(values));
}

size_t PlotCurves::pointsOf(size_t curve) const {
    return static_cast<size_t>(std::count_if(
            mPoints.begin(), mPoints.end(),
            [curve](const Point& point) { return !std::isnan(valueOf(point, curve).low); }));
}

// Of points that stand for many frames a gap that is shorter than they are breaks nothing.
std::vector<PlotCurves::Run> PlotCurves::runsOf(size_t curve) const {
    std::vector<Run> runs;
    uint64_t reach = 0;  // the last frame that is near enough to the point before
    for (const Point& point : mPoints) {
        const Extremes extremes = valueOf(point, curve);
        if (std::isnan(extremes.low)) {
            continue;
        }
        const uint64_t width = uint64_t{point.lastFrame} - point.frame + 1;
        if (runs.empty() || point.frame > reach) {
            runs.emplace_back();
        }
        runs.back().push_back({point.frame, point.lastFrame, extremes.low, extremes.high});
        reach = point.lastFrame + width;
    }
    return runs;
}

}  // namespace vdrdump
