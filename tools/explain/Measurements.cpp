#include "tools/explain/Measurements.h"

#include <algorithm>

#include "tools/explain/clocksOf.h"
#include "tools/explain/median.h"
#include "tools/explain/nodesOf.h"
#include "tools/record/ColumnText.h"

namespace vdrdump {

Measurements::Measurements(const FrameMap& frames, const StampClocks& clocks) {
    uint32_t lastFrame = 0;
    uint64_t lastStamp = 0;
    for (const auto& [frame, stored] : frames) {
        const Record& record = stored->view();
        const uint64_t stamp = frameStamp(record, clocks);
        if (lastStamp != 0 && stamp > lastStamp && frame == lastFrame + 1) {
            add({Quantity::Interval, {}, ""}, frame, frameTime(lastStamp, stamp, clocks));
        }
        lastFrame = frame;
        lastStamp = stamp;
        addNodes(frame, record, clocks);
        addCosts(frame, record);
        addFeatures(frame, record, clocks);
        addMotion(frame, record, clocks);
    }
}

// Of what comes twice in a frame, the higher value counts.
void Measurements::add(const Subject& subject, uint32_t frame, double value) {
    const auto [place, isNew] = mSeries[subject].emplace(frame, value);
    if (!isNew) {
        place->second = std::max(place->second, value);
    }
}

void Measurements::addNodes(uint32_t frame, const Record& record, const StampClocks& clocks) {
    const auto addTime = [&](Quantity quantity, const NodeIds& ids, uint64_t from, uint64_t to) {
        if (from != 0 && to >= from) {
            add({quantity, ids, ""}, frame, nodeTime(from, to, clocks));
        }
    };
    uint64_t first = clocks.nodesShareIt ? frameStamp(record, clocks) : 0;
    uint64_t last = 0;
    for (const NodeStamps& node : nodesOf(record)) {
        uint64_t& freeAt = mFreeAt[node.ids];
        // A node that starts before it is through works on two frames at once.
        const bool wasBusy = freeAt > node.queued && freeAt <= node.started;
        addTime(Quantity::NodeWait, node.ids, wasBusy && node.queued != 0 ? freeAt : node.queued,
                node.started);
        addTime(Quantity::NodeWork, node.ids, node.started != 0 ? node.started : node.queued,
                node.finished != 0 ? node.finished : node.handedOn);
        addTime(Quantity::NodeHandOn, node.ids, node.finished, node.handedOn);
        freeAt = std::max(freeAt, node.last());
        last = std::max(last, node.last());
        if (!clocks.nodesShareIt && first == 0) {
            first = node.first();
        }
    }
    addTime(Quantity::Latency, {}, first, last);
}

void Measurements::addCosts(uint32_t frame, const Record& record) {
    for (const ArrayField* array : {&kPluginCosts, &kSemantCosts}) {
        const Quantity quantity =
                array == &kPluginCosts ? Quantity::PluginCost : Quantity::SemanticCost;
        for (size_t i = 0; i < record.elements(*array); ++i) {
            const uint8_t* const element = record.bytes + array->offset + i * array->elementSize;
            add({quantity, {}, nameAt(array->columns[0], element)}, frame,
                element[offsetof(vdr2::AlgoCostTime, cost)]);
        }
    }
}

void Measurements::addFeatures(uint32_t frame, const Record& record, const StampClocks& clocks) {
    const uint64_t own = frameStamp(record, clocks);
    if (!clocks.featuresShareIt || own == 0) {
        return;
    }
    for (const ArrayField* array : {&kRequests, &kMessages}) {
        const Quantity quantity =
                array == &kRequests ? Quantity::RequestDelay : Quantity::MessageDelay;
        for (size_t i = 0; i < record.elements(*array); ++i) {
            const size_t at = array->offset + i * array->elementSize;
            const auto feature = record.read<vdr2::FeatureInfo>(at);
            if (feature.stamp != 0) {
                add({quantity, {}, shownValue(array->columns[0], record.bytes + at)}, frame,
                    frameTime(own, feature.stamp, clocks));
            }
        }
    }
}

void Measurements::addMotion(uint32_t frame, const Record& record, const StampClocks& clocks) {
    const uint64_t own = frameStamp(record, clocks);
    if (!clocks.motionSharesIt || own == 0) {
        return;
    }
    for (const Item& item : kItems) {
        const bool isMotion = item.array == nullptr &&
                              item.column.offset >= offsetof(Layout, setGmeNcsDep) &&
                              item.column.offset < offsetof(Layout, ae_af_awb_info);
        if (const uint64_t stamp = isMotion ? record.read<uint64_t>(item.column.offset) : 0;
            stamp != 0) {
            add({Quantity::MotionDelay, {}, item.column.name}, frame,
                frameTime(own, stamp, clocks));
        }
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
