#include "tools/plot/SessionCurves.h"

#include "tools/explain/clocksOf.h"
#include "tools/explain/nodesOf.h"
#include "tools/record/ColumnText.h"

namespace vdrdump {

void SessionCurves::passBy(const Record& record) {
    if (record.isNumbered() && record.known > offsetof(Layout, videoAction)) {
        mVideos.add(record.frame(), record.bytes[offsetof(Layout, videoAction)]);
    }
}

// Of a frame that comes twice the first whole record stays.
void SessionCurves::add(const Record& record) {
    if (!record.isNumbered()) {
        return;
    }
    passBy(record);
    auto& place = mHeld[record.frame()];
    if (place == nullptr || (!place->view().isWhole() && record.isWhole())) {
        place = std::make_shared<StoredRecord>(record);
    }
    if (mHeld.size() > kHeld) {
        handOnFirst();
    }
}

void SessionCurves::finish() {
    while (!mHeld.empty()) {
        handOnFirst();
    }
}

void SessionCurves::begin() {
    mClocks = clocksOf(mHeld, mTicksPerSecond);
    mMeasurer.emplace(mClocks);
    for (const Panel& panel : mColumnPanels) {
        for (const Axis* axis : {&panel.left, &panel.right}) {
            mFirstMeasured += axis->curves.size();
        }
    }
}

void SessionCurves::handOnFirst() {
    if (!mMeasurer) {
        begin();
    }
    const auto first = mHeld.begin();
    const Record& record = first->second->view();
    mValues.clear();
    for (const Panel& panel : mColumnPanels) {
        for (const Axis* axis : {&panel.left, &panel.right}) {
            for (const Curve& curve : axis->curves) {
                if (const uint8_t* const at = curve.source.in(record); at != nullptr) {
                    const double number = numberAt(*curve.source.column, at);
                    mValues.push_back({curve.number, number * curve.factor});
                }
            }
        }
    }
    if (mMeasures) {
        const auto take = [this](const Subject& subject, double value) {
            addTo(mMeasured, subject, value);
        };
        mMeasurer->measureTimes(first->first, record, take);
        for (const NodeStamps& node : nodesOf(record)) {
            if (node.last() != 0 && node.finished == 0 && node.handedOn == 0) {
                addTo(mUnended, node.ids, 0);
            }
        }
    }
    mCurves.add(first->first, mValues);
    mHeld.erase(first);
}

// Names in a damaged dump may be any number.
template <typename Key>
void SessionCurves::addTo(std::map<Key, size_t>& curves, const Key& key, double value) {
    auto at = curves.find(key);
    if (at == curves.end()) {
        const size_t number = mFirstMeasured + mMeasured.size() + mUnended.size();
        if (number >= PlotCurves::kMostCurves) {
            return;
        }
        at = curves.emplace(key, number).first;
    }
    mValues.push_back({at->second, value});
}

}  // namespace vdrdump
