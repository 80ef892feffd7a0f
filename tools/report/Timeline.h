#pragma once

#include <optional>
#include <vector>

#include "tools/explain/Findings.h"
#include "tools/explain/FrameMap.h"

namespace vdrdump {

// What nodes did with a stretch of frames, over time. Times count from where `zero` was taken: in
// milliseconds, or in ticks where the unit is not known.
struct Timeline {
    // A frame in a node. A time that is none never happened.
    struct Bar {
        uint32_t frame = 0;
        size_t lane = 0;  // of the row: a node may have several frames at once
        std::optional<double> queued;
        std::optional<double> started;
        std::optional<double> finished;
        std::optional<double> handedOn;

        double first() const;
        double last() const;
    };
    struct Row {
        NodeIds node{};
        size_t lanes = 0;
        std::vector<Bar> bars;
    };
    // When a frame was taken, or would have been, had it a record.
    struct Arrival {
        uint32_t frame = 0;
        double time = 0;
        bool hasRecord = true;
    };

    uint32_t zero = 0;  // a frame
    double from = 0;    // the time that is shown
    double to = 0;
    bool isUnitKnown = false;
    std::vector<Row> rows;  // in the order in which frames come through
    std::vector<Arrival> arrivals;
    size_t leftOut = 0;  // bars whose stamps are nowhere near those of other frames

    bool isEmpty() const { return rows.empty() && arrivals.empty(); }
};

// Of the frames of `shown`, with time 0 at frame `zero`.
Timeline timelineOf(const FrameMap& frames, const FrameRange& shown, uint32_t zero,
                    const StampClocks& clocks);

}  // namespace vdrdump
