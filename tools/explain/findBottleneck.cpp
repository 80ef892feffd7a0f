#include "tools/explain/findBottleneck.h"

#include <algorithm>

#include "tools/explain/clocksOf.h"
#include "tools/explain/median.h"
#include "tools/explain/nodesOf.h"

namespace vdrdump {
namespace {

// As a slow node gets few of the frames, those it works on are counted. So few, that it is noticed
// soon after it became slow.
constexpr size_t kMostBefore = 5;
constexpr size_t kMostBehind = 5;
constexpr size_t kFewest = 3;
// A node that waits for a clock, as a display does, is busy for as long as frames are apart.
constexpr double kLonger = 1.05;

struct Work {
    uint32_t frame;
    uint64_t from;
    uint64_t to;
};
using Works = std::vector<Work>;  // by frame

std::map<NodeIds, Works> worksOf(const FrameMap& frames) {
    std::map<NodeIds, Works> works;
    for (const auto& [frame, stored] : frames) {
        for (const NodeStamps& node : nodesOf(stored->view())) {
            if (node.started != 0 && node.workEnd() >= node.started) {
                works[node.ids].push_back({frame, node.started, node.workEnd()});
            }
        }
    }
    return works;
}

// In the order in which they were begun.
Works around(const FrameRange& lost, const Works& works) {
    const auto behind = std::find_if(works.begin(), works.end(),
                                     [&lost](const Work& work) { return work.frame > lost.last; });
    const auto before = static_cast<size_t>(behind - works.begin());
    const auto left = static_cast<size_t>(works.end() - behind);
    Works near(behind - static_cast<std::ptrdiff_t>(std::min(before, kMostBefore)),
               behind + static_cast<std::ptrdiff_t>(std::min(left, kMostBehind)));
    std::sort(near.begin(), near.end(),
              [](const Work& a, const Work& b) { return a.from < b.from; });
    return near;
}

bool isOneAtATime(const Works& works) {
    return std::adjacent_find(works.begin(), works.end(), [](const Work& a, const Work& b) {
               return b.from < a.to;
           }) == works.end();
}

double medianWork(const Works& works, const StampClocks& clocks) {
    std::vector<double> times;
    for (const Work& work : works) {
        times.push_back(nodeTime(work.from, work.to, clocks));
    }
    return median(std::move(times));
}

double medianRest(const Works& works, const StampClocks& clocks) {
    std::vector<double> times;
    for (size_t i = 1; i < works.size(); ++i) {
        times.push_back(nodeTime(works[i - 1].to, works[i].from, clocks));
    }
    return median(std::move(times));
}

}  // namespace

std::optional<Bottleneck> findBottleneck(const FrameMap& frames, const FrameRange& lost,
                                         const StampClocks& clocks) {
    const double interval = clocks.frameInterval;
    if (interval == 0 || !clocks.comparesNodes()) {
        return std::nullopt;
    }
    std::optional<Bottleneck> slowest;
    for (const auto& [ids, all] : worksOf(frames)) {
        const Works works = around(lost, all);
        if (works.size() < kFewest || !isOneAtATime(works)) {
            continue;
        }
        const double work = medianWork(works, clocks);
        // In between it may wait for the next frame, or for another node of its thread. A node that
        // rests for longer than it works is meant to get few frames, such as captures.
        const bool isBusy = medianRest(works, clocks) < work;
        if (work > kLonger * interval && isBusy && (!slowest || work > slowest->work)) {
            slowest = Bottleneck{ids, work, interval, works.size()};
        }
    }
    return slowest;
}

}  // namespace vdrdump
