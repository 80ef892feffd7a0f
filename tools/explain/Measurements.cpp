#include "tools/explain/Measurements.h"

#include <algorithm>

#include "tools/explain/FrameMeasurer.h"
#include "tools/explain/median.h"

namespace vdrdump {

Measurements::Measurements(const FrameMap& frames, const StampClocks& clocks) {
    FrameMeasurer measurer(clocks);
    for (const auto& [frame, stored] : frames) {
        const auto take = [this, frame = frame](const Subject& subject, double value) {
            add(subject, frame, value);
        };
        measurer.measureTimes(frame, stored->view(), take);
        measurer.measureDelays(stored->view(), take);
    }
}

// Of what comes twice in a frame, the higher value counts.
void Measurements::add(const Subject& subject, uint32_t frame, double value) {
    const auto [place, isNew] = mSeries[subject].emplace(frame, value);
    if (!isNew) {
        place->second = std::max(place->second, value);
    }
}

const Measurements::Series* Measurements::find(const Subject& subject) const {
    const auto found = mSeries.find(subject);
    return found == mSeries.end() ? nullptr : &found->second;
}

std::optional<Comparison> Measurements::compare(const Subject& subject, const Series& series,
                                                uint32_t frame, const FrameRange& window) {
    const auto own = series.find(frame);
    if (own == series.end()) {
        return std::nullopt;
    }
    Comparison comparison;
    comparison.subject = subject;
    comparison.frame = frame;
    comparison.value = own->second;
    std::vector<double> values;
    for (auto at = series.lower_bound(window.first); at != series.end() && at->first <= window.last;
         ++at) {
        values.push_back(at->second);
        auto& other = comparison.highestOther;
        if (at != own && (!other || at->second > other->value)) {
            other = {at->first, at->second};
        }
    }
    comparison.median = median(values);
    comparison.deviation = scaledDeviation(values, comparison.median);
    comparison.values = values.size();
    return comparison;
}

std::optional<Comparison> Measurements::compareHighest(const Subject& subject, const Series& series,
                                                       const FrameRange& window) {
    auto highest = series.end();
    for (auto at = series.lower_bound(window.first); at != series.end() && at->first <= window.last;
         ++at) {
        if (highest == series.end() || at->second > highest->second) {
            highest = at;
        }
    }
    return highest == series.end() ? std::nullopt
                                   : compare(subject, series, highest->first, window);
}

}  // namespace vdrdump
