#include "tools/explain/slownessOf.h"

#include <algorithm>

#include "tools/explain/analyseLoss.h"
#include "tools/explain/median.h"

namespace vdrdump {
namespace {

constexpr size_t kFewestBefore = 3;
constexpr uint32_t kNow = 3;  // frames

double medianOf(const Measurements::Series& series, uint32_t first, uint32_t behind,
                size_t fewest) {
    std::vector<double> values;
    for (auto at = series.lower_bound(first); at != series.end() && at->first < behind; ++at) {
        values.push_back(at->second);
    }
    return values.size() < fewest ? 0 : median(std::move(values));
}

}  // namespace

double slownessOf(const FrameMap& frames, const Measurements& measurements, const FrameRange& lost,
                  const std::optional<Change>& thermalRise) {
    // A frame that got stuck shows how slow that node was, and nothing of the others.
    const auto last = frames.lower_bound(lost.first);
    if (last == frames.begin() || last == frames.end()) {
        return 0;
    }
    const uint32_t now = lost.first - std::min(lost.first, kNow);
    const uint32_t before =
            thermalRise ? thermalRise->frame : lost.first - std::min(lost.first, 10U);
    const uint32_t first = before - std::min(before, 20U);
    std::vector<double> ratios;
    for (const auto& [subject, series] : measurements.all()) {
        if (subject.quantity != Quantity::NodeWork) {
            continue;
        }
        const double then = medianOf(series, first, before, kFewestBefore);
        const double recently = medianOf(series, now, lost.first + 1, 1);
        if (then > 0 && recently > 0) {
            ratios.push_back(recently / then);
        }
    }
    return median(std::move(ratios));
}

}  // namespace vdrdump
