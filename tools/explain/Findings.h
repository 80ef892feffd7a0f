#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/names/NodeNames.h"
#include "tools/record/Column.h"
#include "tools/session/SessionTracker.h"

// What is found out about one lost frame: plain data, which text, JSON and pictures present alike.
namespace vdrdump {

enum class Quantity : uint8_t {
    Interval,    // from the frame before to this one, by their stamps
    Latency,     // from the frame's stamp to the last stamp of a node
    NodeWait,    // queued before a node that was free; waiting behind another frame is not counted
    NodeWork,    // from started to finished
    NodeHandOn,  // from finished to handed on
    PluginCost,  // of an algorithm, as it states it
    SemanticCost,
    RequestDelay,  // from the frame's stamp to that of a feature request
    MessageDelay,
    MotionDelay,  // from the frame's stamp to one of the motion sensors' data
};

// Whose value it is: of a node, an algorithm, a feature or a column, or of the frame itself.
struct Subject {
    Quantity quantity = Quantity::Interval;
    NodeIds node{};
    std::string name;

    bool operator<(const Subject& other) const {
        return quantity != other.quantity ? quantity < other.quantity
               : node != other.node       ? node < other.node
                                          : name < other.name;
    }
};

// A value beside those of the frames around. Times are in milliseconds where their unit is known
// and in ticks where it is not; costs are as they are stated.
struct Comparison {
    struct Peak {
        uint32_t frame;
        double value;
    };
    Subject subject;
    uint32_t frame = 0;  // whose value it is
    double value = 0;
    double median = 0;
    double deviation = 0;  // median absolute deviation, scaled to a standard deviation
    size_t values = 0;     // of the window, this one included
    std::optional<Peak> highestOther;

    double excess() const { return value - median; }
};

// How the stamps were taken. Units, unless the user states one, are taken from how far frames are
// apart.
struct StampClocks {
    bool isStated = false;
    std::optional<double> ticksPerSecond;      // of frame stamps
    std::optional<double> nodeTicksPerSecond;  // of node stamps
    double frameInterval = 0;                  // usual, in milliseconds or ticks; 0 not known
    bool hasFrameStamps = false;
    bool hasNodeStamps = false;
    bool hasFeatureStamps = false;
    bool hasMotionStamps = false;
    // Whether they were taken for the clock of the frame stamps.
    bool nodesShareIt = false;
    bool featuresShareIt = false;
    bool motionSharesIt = false;

    // Whether times of nodes can be compared with those of frames.
    bool comparesNodes() const { return nodesShareIt || (ticksPerSecond && nodeTicksPerSecond); }
};

struct Change {
    enum class What : uint8_t {
        Camera,
        SensorMode,
        CaptureType,
        ZoomDirection,  // -1 out, 0 none, 1 in
        ThermalLevel,
        Scene,
        VideoMark,  // 1 starts, 2 has ended
    };
    What what = What::Camera;
    uint32_t frame = 0;  // the first with the new value
    int from = 0;
    int to = 0;
};

struct SlowAllocation {
    uint32_t frame = 0;  // whose record tells of it
    std::string name;
    uint32_t kilobytes = 0;
    uint32_t seconds = 0;
};

// A value of the device's state that is not what it was.
struct DeviceMove {
    const Column* column = nullptr;
    uint32_t fromFrame = 0;
    uint32_t toFrame = 0;
    double from = 0;
    double to = 0;
};

// How far a frame came that did not come through: the first node without an end stamp.
struct StuckAt {
    enum class Reached : uint8_t { NotQueued, Queued, Started, Finished };
    uint32_t frame = 0;
    NodeIds node{};
    Reached reached = Reached::NotQueued;
    std::optional<Comparison> work;  // where it finished
    size_t nodesBehind = 0;          // that handle other frames and did not get this one
};

// A node that takes longer for each frame than frames are apart.
struct Bottleneck {
    NodeIds node{};
    double work = 0;      // median
    double interval = 0;  // between frames
    size_t works = 0;     // of which `work` is the median
};

// The stamps on either side of frames without a record.
struct GapSpan {
    uint32_t before = 0;
    uint32_t behind = 0;
    double time = 0;
    double usual = 0;  // of as many frames
};

struct Cause {
    enum class Kind : uint8_t {
        Unknown,         // there are too few records or values to tell
        None,            // nothing stands out
        StuckNode,       // `stuck`
        SlowAllocation,  // `allocation`
        StandsOut,       // `value`, and `change` where one came right before it
        SensorPause,     // `span`: the frame without a record was taken late
        Heat,            // `change`; `slowness` where nodes slowed down with it
        SlowNodes,       // all of them; `slowness`
        Change,          // `change`
        Bottleneck,      // `bottleneck`, and nothing stands out
        NoRecord,        // nothing stands out in the frames around the missing one
    };
    Kind kind = Kind::Unknown;
    uint32_t frame = 0;
    std::optional<Comparison> value;
    std::optional<Change> change;
    std::optional<SlowAllocation> allocation;
    double slowness = 0;  // node times as multiples of what they were; 0 not known
};

struct Findings {
    FrameRange lost{};  // one frame, or all around it that have no record
    bool hasRecord = false;

    // Evidence, over N-30 to N+30.
    size_t recordsBefore = 0;
    size_t recordsBehind = 0;
    size_t damagedRecords = 0;
    std::vector<FrameRange> otherGaps;
    std::optional<StuckAt> stuck;
    std::optional<GapSpan> span;
    std::optional<Bottleneck> bottleneck;

    std::vector<Change> changes;              // in N-10 to N
    std::vector<SlowAllocation> allocations;  // in N-10 to N+10
    std::vector<DeviceMove> deviceMoves;      // over all records
    std::optional<Change> thermalRise;        // over all records up to N
    double slowness = 0;                      // as in Cause

    // Of the lost frame, or where it has none the highest of the window.
    std::optional<Comparison> interval;
    std::optional<Comparison> latency;  // of a frame that did not come through: as far as it came
    std::optional<Comparison> slowestNode;
    std::optional<Comparison> slowestAlgorithm;

    std::vector<Comparison> standsOut;  // highest excess first
    Cause cause;
    std::vector<std::string> notKnown;  // columns and arrays that are 0 in every record
    StampClocks clocks;
};

}  // namespace vdrdump
