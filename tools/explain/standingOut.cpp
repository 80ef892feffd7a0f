#include "tools/explain/standingOut.h"

#include <algorithm>
#include <cmath>

namespace vdrdump {
namespace {

constexpr size_t kFewest = 6;  // values that can be compared: of fewer a median tells little
constexpr double kDeviations = 3.5;

// A frame has dozens of values, and in a window of some twenty frames one of them is always far
// from the others by chance. Only what takes a good part of a frame's time delays a frame: half of
// it, or a quarter where that doubles what is usual; of the latency, in which all chances add up, a
// whole one.
constexpr double kPart = 0.5;
constexpr double kPartOfDoubled = 0.25;
// Chance spreads the highest values; a cause leaves a distance to the next.
constexpr double kBeyondNext = 1.5;

bool isNodeQuantity(Quantity quantity) {
    return quantity == Quantity::NodeWait || quantity == Quantity::NodeWork ||
           quantity == Quantity::NodeHandOn || quantity == Quantity::Latency;
}

// Costs are taken for milliseconds, as nothing tells their unit. Where times cannot be compared
// with the frame interval, what doubles the median counts.
bool isMuch(const Comparison& comparison, const StampClocks& clocks) {
    const bool isKnown = !isNodeQuantity(comparison.subject.quantity) || clocks.comparesNodes();
    const double interval = isKnown ? clocks.frameInterval : 0;
    const double excess = comparison.excess();
    const bool isDoubled = excess >= std::fabs(comparison.median);
    const double part = comparison.subject.quantity == Quantity::Latency ? 1
                        : isDoubled                                      ? kPartOfDoubled
                                                                         : kPart;
    return interval == 0 ? isDoubled : excess >= part * interval;
}

bool standsOut(const Comparison& comparison, const StampClocks& clocks) {
    if (comparison.values < kFewest) {
        return false;
    }
    const double excess = comparison.excess();
    const double next = comparison.highestOther->value - comparison.median;
    return excess > next * kBeyondNext && comparison.value > comparison.highestOther->value &&
           excess > kDeviations * comparison.deviation && isMuch(comparison, clocks);
}

}  // namespace

std::vector<Comparison> standingOut(const Measurements& measurements, const FrameRange& window,
                                    const StampClocks& clocks) {
    std::vector<Comparison> result;
    for (const auto& [subject, series] : measurements.all()) {
        const auto highest = Measurements::compareHighest(subject, series, window);
        if (highest && standsOut(*highest, clocks)) {
            result.push_back(*highest);
        }
    }
    std::stable_sort(result.begin(), result.end(), [](const Comparison& a, const Comparison& b) {
        return a.excess() > b.excess();
    });
    return result;
}

}  // namespace vdrdump
