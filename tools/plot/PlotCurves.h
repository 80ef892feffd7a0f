#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tools/session/Range.h"
#include "tools/session/SessionTracker.h"

namespace vdrdump {

// Curves over the frames of one session, in bounded memory: while they are few, one point per
// frame; when kMostPoints are full, neighbours are merged two by two and each keeps the lowest and
// the highest of what it stands for, so that no peak gets lost.
class PlotCurves {
public:
    static constexpr size_t kMostPoints = 4096;
    static constexpr size_t kMostCurves = 512;  // values of further ones are dropped

    struct Value {
        size_t curve;
        double value;
    };
    // What a curve shows from one frame to another, as a rule the same.
    struct Span {
        uint32_t frame;
        uint32_t lastFrame;
        double low;
        double high;
    };
    using Run = std::vector<Span>;  // of neighbours, none of which is missing

    // Of what is named twice the higher value counts; what is no number is not known. A late frame
    // finds its place.
    void add(uint32_t frame, const std::vector<Value>& values);

    bool isEmpty() const { return mPoints.empty(); }
    // Whether points stand for several frames.
    bool isMerged() const { return mRecordsPerPoint > 1; }
    uint64_t records() const { return mRecords; }
    // Where frames have no record, from the first to the last of `frames`. Points that stand for
    // several frames are missing as a whole where one of these is.
    std::vector<FrameRange> missing(const FrameRange& frames) const;

    Range<double> rangeOf(size_t curve) const;
    double medianOf(size_t curve) const;
    size_t pointsOf(size_t curve) const;  // at which it is known
    std::vector<Run> runsOf(size_t curve) const;

private:
    struct Extremes {
        double low = NAN;
        double high = NAN;
    };
    struct Point {
        uint32_t frame = 0;
        uint32_t lastFrame = 0;
        uint64_t records = 1;
        std::vector<Extremes> values;

        bool isWhole() const { return uint64_t{lastFrame} - frame < records; }
    };

    static Extremes valueOf(const Point& point, size_t curve) {
        return curve < point.values.size() ? point.values[curve] : Extremes{};
    }
    static void merge(Point& into, const Point& next);
    void place(Point point);
    void halve();

    std::vector<Point> mPoints;  // in order
    uint64_t mRecordsPerPoint = 1;
    uint64_t mRecords = 0;
};

}  // namespace vdrdump
