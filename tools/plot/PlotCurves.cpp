#include "tools/plot/PlotCurves.h"

#include <algorithm>
#include <cmath>

#include "tools/record/ColumnText.h"

namespace vdrdump {
namespace {

constexpr size_t kStatus = offsetof(Layout, sysStatusInfo);
using Status = vdr2::SysStatusInfo;

// In the order of `Curve`; the factor makes of the dump's unit that of the picture.
struct Source {
    size_t offset;
    float factor;
    Kind kind;
};
constexpr float kGHz = 1e-6F;
constexpr float kMiB = 1.0F / 1024;
constexpr Source kSources[] = {
        {kStatus + offsetof(Status, cpu0Freq), kGHz, Kind::I32},
        {kStatus + offsetof(Status, cpu4Freq), kGHz, Kind::I32},
        {kStatus + offsetof(Status, cpu7Freq), kGHz, Kind::I32},
        {kStatus + offsetof(Status, cpuUsage), 1, Kind::U16},
        {kStatus + offsetof(Status, loadAvg1), 1, Kind::F32},
        {kStatus + offsetof(Status, loadAvg5), 1, Kind::F32},
        {kStatus + offsetof(Status, loadAvg15), 1, Kind::F32},
        {kStatus + offsetof(Status, memFree), kMiB, Kind::U32},
        {kStatus + offsetof(Status, memAvailable), kMiB, Kind::U32},
        {kStatus + offsetof(Status, usedMem), 1, Kind::U32},
        {kStatus + offsetof(Status, shellFrontTemp), 1, Kind::I32},
        {kStatus + offsetof(Status, shellBackTemp), 1, Kind::I32},
        {kStatus + offsetof(Status, shellFrameTemp), 1, Kind::I32},
        {offsetof(Layout, zoomRatio), 1, Kind::F32},
        {offsetof(Layout, nodeInfoCount), 1, Kind::U8},
};
static_assert(sizeof(kSources) / sizeof(kSources[0]) == static_cast<size_t>(Curve::Count));

// NaN where the record does not reach.
float valueOf(const Source& source, const Record& record) {
    if (source.offset >= record.known) {
        return NAN;
    }
    const uint8_t* at = record.bytes + source.offset;
    const float value = source.kind == Kind::F32 ? valueAt<float>(at)
                                                 : static_cast<float>(integerAt(source.kind, at));
    return std::isfinite(value) ? value * source.factor : NAN;
}

void appendNumber(std::string& text, float value) {
    char number[kLongestNumber];
    text += ' ';
    text.append(number, appendFloat(number, reinterpret_cast<const uint8_t*>(&value)));
}

}  // namespace

PlotCurves::Point PlotCurves::pointOf(const Record& record) {
    const auto frame = record.read<uint32_t>(offsetof(Layout, frameNumber));
    Point point{frame, frame, {}};
    for (size_t i = 0; i < kCurves; ++i) {
        const float value = valueOf(kSources[i], record);
        point.values[i] = {value, value};
    }
    return point;
}

void PlotCurves::merge(Point& into, const Point& next) {
    into.frame = std::min(into.frame, next.frame);
    into.lastFrame = std::max(into.lastFrame, next.lastFrame);
    for (size_t i = 0; i < kCurves; ++i) {
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

Range<float> PlotCurves::rangeOf(Curve curve) const {
    Range<float> range;
    for (const Point& point : mPoints) {
        range.add(point.values[static_cast<size_t>(curve)].low);
        range.add(point.values[static_cast<size_t>(curve)].high);
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
