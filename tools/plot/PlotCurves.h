#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/plot/Panel.h"
#include "tools/record/Record.h"
#include "tools/session/Range.h"

namespace vdrdump {

// The curves of a plot over the frames of one session, in bounded memory: while they are few, one
// point per frame; when kMost points are full, neighbours are merged two by two and each keeps the
// lowest and the highest of what it stands for, so that no peak gets lost.
class PlotCurves {
public:
    static constexpr size_t kMost = 4096;

    // The curves are those of the panels, in their order, left ones first.
    explicit PlotCurves(const std::vector<Panel>& panels);

    void add(const Record& record);
    bool isEmpty() const { return mPoints.empty(); }

    Range<float> rangeOf(size_t curve) const;
    // The points as lines of numbers: the frame, then the lowest and the highest of every curve. A
    // blank line, at which curves break, wherever frames are missing.
    std::string table() const;

private:
    struct Extremes {
        float low;
        float high;
    };
    struct Point {
        uint32_t frame;
        uint32_t lastFrame;
        std::vector<Extremes> values;
    };

    Point pointOf(const Record& record) const;
    static void merge(Point& into, const Point& next);
    void halve();

    std::vector<Trace> mTraces;
    std::vector<Point> mPoints;
    uint64_t mRecordsPerPoint = 1;
    uint64_t mInLastPoint = 0;
};

}  // namespace vdrdump
