#include "tools/explain/FrameMeasurer.h"

#include <algorithm>

#include "tools/explain/clocksOf.h"
#include "tools/explain/nodesOf.h"
#include "tools/record/ColumnText.h"

namespace vdrdump {

void FrameMeasurer::measureTimes(uint32_t frame, const Record& record, const Take& take) {
    measureInterval(frame, record, take);
    measureNodes(record, take);
    measureCosts(record, take);
}

void FrameMeasurer::measureDelays(const Record& record, const Take& take) const {
    measureFeatures(record, take);
    measureMotion(record, take);
}

void FrameMeasurer::measureInterval(uint32_t frame, const Record& record, const Take& take) {
    const uint64_t stamp = frameStamp(record, mClocks);
    if (mLastStamp != 0 && stamp > mLastStamp && frame == mLastFrame + 1) {
        take({Quantity::Interval, {}, ""}, frameTime(mLastStamp, stamp, mClocks));
    }
    mLastFrame = frame;
    mLastStamp = stamp;
}

void FrameMeasurer::measureNodes(const Record& record, const Take& take) {
    const auto takeTime = [&](Quantity quantity, const NodeIds& ids, uint64_t from, uint64_t to) {
        if (from != 0 && to >= from) {
            take({quantity, ids, ""}, nodeTime(from, to, mClocks));
        }
    };
    uint64_t first = mClocks.nodesShareIt ? frameStamp(record, mClocks) : 0;
    uint64_t last = 0;
    for (const NodeStamps& node : nodesOf(record)) {
        uint64_t& freeAt = mFreeAt[node.ids];
        // A node that starts before it is through works on two frames at once.
        const bool wasBusy = freeAt > node.queued && freeAt <= node.started;
        takeTime(Quantity::NodeWait, node.ids, wasBusy && node.queued != 0 ? freeAt : node.queued,
                 node.started);
        takeTime(Quantity::NodeWork, node.ids, node.started != 0 ? node.started : node.queued,
                 node.workEnd());
        takeTime(Quantity::NodeHandOn, node.ids, node.finished, node.handedOn);
        freeAt = std::max(freeAt, node.last());
        last = std::max(last, node.last());
        if (!mClocks.nodesShareIt && first == 0) {
            first = node.first();
        }
    }
    takeTime(Quantity::Latency, {}, first, last);
}

void FrameMeasurer::measureCosts(const Record& record, const Take& take) {
    for (const ArrayField* array : {&kPluginCosts, &kSemantCosts}) {
        const Quantity quantity =
                array == &kPluginCosts ? Quantity::PluginCost : Quantity::SemanticCost;
        for (size_t i = 0; i < record.elements(*array); ++i) {
            const uint8_t* const element = record.bytes + array->offset + i * array->elementSize;
            take({quantity, {}, nameAt(array->columns[0], element)},
                 element[offsetof(vdr2::AlgoCostTime, cost)]);
        }
    }
}

void FrameMeasurer::measureFeatures(const Record& record, const Take& take) const {
    const uint64_t own = frameStamp(record, mClocks);
    if (!mClocks.featuresShareIt || own == 0) {
        return;
    }
    for (const ArrayField* array : {&kRequests, &kMessages}) {
        const Quantity quantity =
                array == &kRequests ? Quantity::RequestDelay : Quantity::MessageDelay;
        for (size_t i = 0; i < record.elements(*array); ++i) {
            const size_t at = array->offset + i * array->elementSize;
            const auto feature = record.read<vdr2::FeatureInfo>(at);
            if (feature.stamp != 0) {
                take({quantity, {}, shownValue(array->columns[0], record.bytes + at)},
                     frameTime(own, feature.stamp, mClocks));
            }
        }
    }
}

void FrameMeasurer::measureMotion(const Record& record, const Take& take) const {
    const uint64_t own = frameStamp(record, mClocks);
    if (!mClocks.motionSharesIt || own == 0) {
        return;
    }
    for (const Item& item : kItems) {
        const bool isMotion = item.array == nullptr &&
                              item.column.offset >= offsetof(Layout, setGmeNcsDep) &&
                              item.column.offset < offsetof(Layout, ae_af_awb_info);
        if (const uint64_t stamp = isMotion ? record.read<uint64_t>(item.column.offset) : 0;
            stamp != 0) {
            take({Quantity::MotionDelay, {}, item.column.name}, frameTime(own, stamp, mClocks));
        }
    }
}

}  // namespace vdrdump
