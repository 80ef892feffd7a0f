#include "tools/explain/clocksOf.h"

#include <algorithm>
#include <cmath>

#include "tools/explain/median.h"
#include "tools/explain/nodesOf.h"
#include "tools/session/FrameClock.h"

namespace vdrdump {
namespace {

// Stamps of one clock lie this near to that of their frame, in frame intervals: two seconds at 30
// frames a second. Another clock is off by hours, as a rule.
constexpr double kNear = 60;

using Stamps = std::map<uint32_t, uint64_t>;  // by frame

double ticksBetween(uint64_t from, uint64_t to) {
    return from <= to ? static_cast<double>(to - from) : -static_cast<double>(from - to);
}

double inTime(double ticks, const std::optional<double>& ticksPerSecond) {
    return ticksPerSecond ? ticks * 1e3 / *ticksPerSecond : ticks;
}

uint64_t ownStamp(const Record& record) {
    return record.read<uint64_t>(offsetof(Layout, cslInfo) + offsetof(vdr2::CslInfo, stamp));
}

uint64_t firstNodeStamp(const Record& record) {
    uint64_t first = 0;
    for (const NodeStamps& node : nodesOf(record)) {
        if (node.first() != 0 && (first == 0 || node.first() < first)) {
            first = node.first();
        }
    }
    return first;
}

Stamps stampsOf(const FrameMap& frames, uint64_t (*stampOf)(const Record&)) {
    Stamps stamps;
    for (const auto& [frame, record] : frames) {
        if (const uint64_t stamp = stampOf(record->view()); stamp != 0) {
            stamps[frame] = stamp;
        }
    }
    return stamps;
}

// From one stamp to the next, which may be several frames on.
struct Step {
    double ticks;
    uint32_t frames;

    double interval() const { return ticks / frames; }
};

// Without the longest step, which may be a pause.
double meanInterval(std::vector<Step> steps) {
    steps.erase(std::max_element(steps.begin(), steps.end(), [](const Step& a, const Step& b) {
        return a.interval() < b.interval();
    }));
    double ticks = 0;
    double frames = 0;
    for (const Step& step : steps) {
        ticks += step.ticks;
        frames += step.frames;
    }
    return frames == 0 ? 0 : ticks / frames;
}

// Ticks from one frame to the next, whether those between have records or not; 0 where that cannot
// be told. Frames that come in bursts come as often as on average.
double intervalOf(const Stamps& stamps) {
    constexpr double kInBursts = 1.5;  // the mean as a multiple of the median
    std::vector<Step> steps;
    std::vector<double> intervals;
    for (auto at = stamps.begin(); at != stamps.end() && std::next(at) != stamps.end(); ++at) {
        const auto next = std::next(at);
        if (next->second > at->second) {
            steps.push_back({ticksBetween(at->second, next->second), next->first - at->first});
            intervals.push_back(steps.back().interval());
        }
    }
    if (steps.empty()) {
        return 0;
    }
    const double middle = median(std::move(intervals));
    const double mean = meanInterval(std::move(steps));
    return mean > kInBursts * middle ? mean : middle;
}

bool isNear(const std::vector<double>& distances, double interval) {
    const double middle = median(distances);
    return !distances.empty() && interval > 0 && std::fabs(middle) <= kNear * interval;
}

void addStamp(const Record& record, size_t offset, std::vector<double>& distances) {
    const auto stamp = record.read<uint64_t>(offset);
    if (const uint64_t own = ownStamp(record); own != 0 && stamp != 0) {
        distances.push_back(ticksBetween(own, stamp));
    }
}

std::vector<double> featureDistances(const FrameMap& frames) {
    std::vector<double> distances;
    for (const auto& [frame, record] : frames) {
        for (const ArrayField* array : {&kRequests, &kMessages}) {
            for (size_t i = 0; i < record->view().elements(*array); ++i) {
                addStamp(
                        record->view(),
                        array->offset + i * array->elementSize + offsetof(vdr2::FeatureInfo, stamp),
                        distances);
            }
        }
    }
    return distances;
}

std::vector<double> motionDistances(const FrameMap& frames) {
    std::vector<double> distances;
    for (const auto& [frame, record] : frames) {
        for (size_t at = offsetof(Layout, setGmeNcsDep); at < offsetof(Layout, ae_af_awb_info);
             at += sizeof(uint64_t)) {
            addStamp(record->view(), at, distances);
        }
    }
    return distances;
}

bool shareClock(const Stamps& frames, const Stamps& nodes, double interval, double nodeInterval) {
    std::vector<double> distances;
    for (const auto& [frame, stamp] : nodes) {
        if (const auto own = frames.find(frame); own != frames.end()) {
            distances.push_back(ticksBetween(own->second, stamp));
        }
    }
    return ticksPerSecondOf(interval) == ticksPerSecondOf(nodeInterval) &&
           isNear(distances, interval);
}

}  // namespace

StampClocks clocksOf(const FrameMap& frames, std::optional<double> stated) {
    const Stamps own = stampsOf(frames, ownStamp);
    const Stamps nodes = stampsOf(frames, firstNodeStamp);
    const double nodeInterval = intervalOf(nodes);
    StampClocks clocks;
    clocks.hasFrameStamps = !own.empty();
    clocks.hasNodeStamps = !nodes.empty();
    const double interval = clocks.hasFrameStamps ? intervalOf(own) : nodeInterval;
    clocks.isStated = stated.has_value();
    clocks.ticksPerSecond = stated ? stated : ticksPerSecondOf(interval);
    clocks.nodeTicksPerSecond = stated ? stated : ticksPerSecondOf(nodeInterval);
    clocks.frameInterval = inTime(interval, clocks.ticksPerSecond);
    clocks.nodesShareIt = clocks.hasNodeStamps && (stated || !clocks.hasFrameStamps ||
                                                   shareClock(own, nodes, interval, nodeInterval));
    const std::vector<double> features = featureDistances(frames);
    const std::vector<double> motion = motionDistances(frames);
    clocks.hasFeatureStamps = !features.empty();
    clocks.hasMotionStamps = !motion.empty();
    clocks.featuresShareIt = stated ? !features.empty() : isNear(features, interval);
    clocks.motionSharesIt = stated ? !motion.empty() : isNear(motion, interval);
    return clocks;
}

uint64_t frameStamp(const Record& record, const StampClocks& clocks) {
    return clocks.hasFrameStamps ? ownStamp(record) : firstNodeStamp(record);
}

double frameTime(uint64_t from, uint64_t to, const StampClocks& clocks) {
    return inTime(ticksBetween(from, to), clocks.ticksPerSecond);
}

double nodeTime(uint64_t from, uint64_t to, const StampClocks& clocks) {
    return inTime(ticksBetween(from, to), clocks.nodeTicksPerSecond);
}

}  // namespace vdrdump
