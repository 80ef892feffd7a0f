#include "tools/plot/PlotCurves.h"

#include <algorithm>
#include <cmath>

#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

// NaN where the record does not reach.
float valueOf(const Trace& trace, const Record& record) {
    const Column& column = *trace.column;
    if (!record.knows(column)) {
        return NAN;
    }
    const uint8_t* at = record.bytes + column.offset;
    const float value = column.kind == Kind::F32   ? valueAt<float>(at)
                        : column.kind == Kind::U64 ? static_cast<float>(valueAt<uint64_t>(at))
                                                   : static_cast<float>(integerAt(column.kind, at));
    return std::isfinite(value) ? value * trace.factor : NAN;
}

void appendNumber(std::string& text, float value) {
    char number[kLongestNumber];
    text += ' ';
    text.append(number, appendFloat(number, reinterpret_cast<const uint8_t*>(&value)));
}

}  // namespace

PlotCurves::PlotCurves(const std::vector<Panel>& panels) {
    for (const Panel& panel : panels) {
        mTraces.insert(mTraces.end(), panel.traces.begin(), panel.traces.end());
        mTraces.insert(mTraces.end(), panel.rightTraces.begin(), panel.rightTraces.end());
    }
}

PlotCurves::Point PlotCurves::pointOf(const Record& record) const {
    Point point{record.frame(), record.frame(), {}};
    for (const Trace& trace : mTraces) {
        const float value = valueOf(trace, record);
        point.values.push_back({value, value});
    }
    return point;
}

void PlotCurves::merge(Point& into, const Point& next) {
    into.frame = std::min(into.frame, next.frame);
    into.lastFrame = std::max(into.lastFrame, next.lastFrame);
    for (size_t i = 0; i < into.values.size(); ++i) {
        // These prefer a number to a NaN.
        into.values[i].low = std::fmin(into.values[i].low, next.values[i].low);
        into.values[i].high = std::fmax(into.values[i].high, next.values[i].high);
    }
}

void PlotCurves::add(const Record& record) {
    const Point point = pointOf(record);
    if (!mPoints.empty() && mInLastPoint < mRecordsPerPoint) {
        merge(mPoints.back(), point);
        ++mInLastPoint;
        return;
    }
    if (mPoints.size() == kMost) {
        halve();
    }
    mPoints.push_back(point);
    mInLastPoint = 1;
}

void PlotCurves::halve() {
    for (size_t i = 0; i < mPoints.size() / 2; ++i) {
        mPoints[i] = mPoints[2 * i];
        merge(mPoints[i], mPoints[2 * i + 1]);
    }
    mPoints.resize(mPoints.size() / 2);
    mRecordsPerPoint *= 2;
}

Range<float> PlotCurves::rangeOf(size_t curve) const {
    Range<float> range;
    for (const Point& point : mPoints) {
        range.add(point.values[curve].low);
        range.add(point.values[curve].high);
    }
    return range;
}

std::string PlotCurves::table() const {
    std::vector<Point> points = mPoints;  // a late frame goes to its place
    std::stable_sort(points.begin(), points.end(),
                     [](const Point& a, const Point& b) { return a.frame < b.frame; });
    std::string text;
    const Point* before = nullptr;
    for (const Point& point : points) {
        if (before != nullptr && point.frame > before->lastFrame + 1) {
            text += '\n';
        }
        text += std::to_string(point.frame);
        for (const Extremes& extremes : point.values) {
            appendNumber(text, extremes.low);
            appendNumber(text, extremes.high);
        }
        text += '\n';
        before = &point;
    }
    return text;
}

}  // namespace vdrdump
