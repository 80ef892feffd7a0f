#include "tools/explain/explanationJson.h"

#include <json/json.h>

#include <iterator>

#include "tools/explain/Phrases.h"

namespace vdrdump {
namespace {

template <typename Enum, size_t kCount>
const char* nameIn(const char* const (&names)[kCount], Enum value) {
    return names[static_cast<size_t>(value)];
}

const char* nameOf(Quantity quantity) {
    static constexpr const char* kNames[] = {
            "interval",   "latency",      "nodeWait",     "nodeWork",     "nodeHandOn",
            "pluginCost", "semanticCost", "requestDelay", "messageDelay", "motionDelay"};
    static_assert(std::size(kNames) == static_cast<size_t>(Quantity::MotionDelay) + 1);
    return nameIn(kNames, quantity);
}

const char* nameOf(Change::What what) {
    static constexpr const char* kNames[] = {"camera",        "sensorMode",   "captureType",
                                             "zoomDirection", "thermalLevel", "scene",
                                             "videoMark"};
    static_assert(std::size(kNames) == static_cast<size_t>(Change::What::VideoMark) + 1);
    return nameIn(kNames, what);
}

const char* nameOf(Cause::Kind kind) {
    static constexpr const char* kNames[] = {
            "unknown", "none",      "stuckNode", "slowAllocation", "standsOut", "sensorPause",
            "heat",    "slowNodes", "change",    "bottleneck",     "noRecord"};
    static_assert(std::size(kNames) == static_cast<size_t>(Cause::Kind::NoRecord) + 1);
    return nameIn(kNames, kind);
}

const char* nameOf(StuckAt::Reached reached) {
    static constexpr const char* kNames[] = {"notQueued", "queued", "started", "finished"};
    static_assert(std::size(kNames) == static_cast<size_t>(StuckAt::Reached::Finished) + 1);
    return nameIn(kNames, reached);
}

const char* nameOf(LossEvidence::From from) {
    static constexpr const char* kNames[] = {"fileName", "log", "user", "gap"};
    static_assert(std::size(kNames) == static_cast<size_t>(LossEvidence::From::Gap) + 1);
    return nameIn(kNames, from);
}

Json::Value orNull(const std::string& text) {
    return text.empty() ? Json::Value() : Json::Value(text);
}

Json::Value orNull(const std::optional<double>& number) {
    return number ? Json::Value(*number) : Json::Value();
}

template <typename Items, typename ToJson>
Json::Value listOf(const Items& items, ToJson toJson) {
    Json::Value list(Json::arrayValue);
    for (const auto& item : items) {
        list.append(toJson(item));
    }
    return list;
}

template <typename T, typename ToJson>
Json::Value orNull(const std::optional<T>& value, ToJson toJson) {
    return value ? toJson(*value) : Json::Value();
}

Json::Value rangeOf(const FrameRange& range) {
    Json::Value value(Json::arrayValue);
    value.append(range.first);
    value.append(range.last);
    return value;
}

Json::Value changeOf(const Change& change) {
    Json::Value value;
    value["what"] = nameOf(change.what);
    value["frame"] = change.frame;
    value["from"] = change.from;
    value["to"] = change.to;
    return value;
}

Json::Value allocationOf(const SlowAllocation& allocation) {
    Json::Value value;
    value["frame"] = allocation.frame;
    value["name"] = allocation.name;
    value["kilobytes"] = allocation.kilobytes;
    value["seconds"] = allocation.seconds;
    return value;
}

Json::Value moveOf(const DeviceMove& move) {
    Json::Value value;
    value["column"] = move.column->name;
    value["from"] = move.from;
    value["fromFrame"] = move.fromFrame;
    value["to"] = move.to;
    value["toFrame"] = move.toFrame;
    return value;
}

Json::Value evidenceOf(const LossEvidence& evidence) {
    Json::Value value;
    value["from"] = nameOf(evidence.from);
    value["path"] = orNull(evidence.path);
    value["time"] = orNull(evidence.time);
    return value;
}

Json::Value spanOf(const GapSpan& span) {
    Json::Value value;
    value["before"] = span.before;
    value["behind"] = span.behind;
    value["time"] = span.time;
    value["usual"] = span.usual;
    return value;
}

Json::Value clocksOf(const StampClocks& clocks) {
    Json::Value value;
    value["ticksPerSecond"] = orNull(clocks.ticksPerSecond);
    value["nodeTicksPerSecond"] = orNull(clocks.nodeTicksPerSecond);
    value["isStated"] = clocks.isStated;
    value["frameInterval"] = clocks.frameInterval;
    const auto add = [&value](const char* name, bool isThere, bool isShared) {
        value["oneClock"][name] = isThere ? Json::Value(isShared) : Json::Value();
    };
    add("cslInfo", clocks.hasFrameStamps, true);
    add("node", clocks.hasNodeStamps, clocks.nodesShareIt);
    add("feature", clocks.hasFeatureStamps, clocks.featuresShareIt);
    add("motion", clocks.hasMotionStamps, clocks.motionSharesIt);
    return value;
}

class LossJson {
public:
    LossJson(const Explanation& explanation, const NodeNames& names)
          : mLoss(explanation.loss),
            mFindings(explanation.findings),
            mNames(names),
            mPhrases(mFindings, names) {}

    Json::Value value() const {
        Json::Value value;
        value["frame"] = mFindings.lost.first;
        value["frames"] = rangeOf(mFindings.lost);
        value["session"] =
                mLoss.history->session == 0 ? Json::Value() : Json::Value(mLoss.history->session);
        value["hasRecord"] = mFindings.hasRecord;
        value["knownBy"] = listOf(mLoss.evidence, evidenceOf);
        value["files"] = listOf(mLoss.history->paths, [](const auto& path) { return path; });
        value["damagedFiles"] =
                listOf(mLoss.history->damaged, [](const auto& path) { return path; });
        value["recordsBefore"] = Json::UInt64{mFindings.recordsBefore};
        value["recordsBehind"] = Json::UInt64{mFindings.recordsBehind};
        value["damagedRecords"] = Json::UInt64{mFindings.damagedRecords};
        value["otherGaps"] = listOf(mFindings.otherGaps, rangeOf);
        value["cause"] = cause();
        const auto comparison = [this](const Comparison& each) { return comparisonOf(each); };
        value["stuckAt"] =
                orNull(mFindings.stuck, [this](const auto& each) { return stuck(each); });
        value["span"] = orNull(mFindings.span, spanOf);
        value["bottleneck"] = orNull(mFindings.bottleneck,
                                     [this](const auto& each) { return bottleneckOf(each); });
        value["changes"] = listOf(mFindings.changes, changeOf);
        value["slowAllocations"] = listOf(mFindings.allocations, allocationOf);
        value["deviceMoves"] = listOf(mFindings.deviceMoves, moveOf);
        value["thermalRise"] = orNull(mFindings.thermalRise, changeOf);
        value["interval"] = orNull(mFindings.interval, comparison);
        value["latency"] = orNull(mFindings.latency, comparison);
        value["slowestNode"] = orNull(mFindings.slowestNode, comparison);
        value["slowestAlgorithm"] = orNull(mFindings.slowestAlgorithm, comparison);
        value["standsOut"] = listOf(mFindings.standsOut, comparison);
        value["notKnown"] = listOf(mFindings.notKnown, [](const auto& name) { return name; });
        value["clocks"] = clocksOf(mFindings.clocks);
        return value;
    }

private:
    Json::Value cause() const {
        const Cause& cause = mFindings.cause;
        Json::Value value;
        value["kind"] = nameOf(cause.kind);
        value["frame"] = cause.frame;
        value["text"] = mPhrases.cause();
        value["value"] =
                orNull(cause.value, [this](const auto& each) { return comparisonOf(each); });
        value["change"] = orNull(cause.change, changeOf);
        value["slowAllocation"] = orNull(cause.allocation, allocationOf);
        value["slowness"] = cause.slowness > 0 ? Json::Value(cause.slowness) : Json::Value();
        return value;
    }

    Json::Value nodeOf(const NodeIds& ids) const {
        Json::Value value;
        value["ids"] = listOf(ids, [](uint32_t id) { return id; });
        value["name"] = mNames.nameOf(ids);
        return value;
    }

    Json::Value comparisonOf(const Comparison& comparison) const {
        const Quantity quantity = comparison.subject.quantity;
        const bool isOfNode = quantity == Quantity::NodeWait || quantity == Quantity::NodeWork ||
                              quantity == Quantity::NodeHandOn;
        Json::Value value;
        value["quantity"] = nameOf(quantity);
        value["node"] = isOfNode ? nodeOf(comparison.subject.node) : Json::Value();
        value["name"] = orNull(comparison.subject.name);
        value["frame"] = comparison.frame;
        value["value"] = comparison.value;
        value["median"] = comparison.median;
        value["scaledDeviation"] = comparison.deviation;
        value["values"] = Json::UInt64{comparison.values};
        value["highestOther"] = comparison.highestOther
                                        ? Json::Value(comparison.highestOther->value)
                                        : Json::Value();
        value["highestOtherFrame"] = comparison.highestOther
                                             ? Json::Value(comparison.highestOther->frame)
                                             : Json::Value();
        return value;
    }

    Json::Value stuck(const StuckAt& stuck) const {
        Json::Value value;
        value["frame"] = stuck.frame;
        value["node"] = nodeOf(stuck.node);
        value["reached"] = nameOf(stuck.reached);
        value["work"] = orNull(stuck.work, [this](const auto& each) { return comparisonOf(each); });
        value["nodesBehind"] = Json::UInt64{stuck.nodesBehind};
        return value;
    }

    Json::Value bottleneckOf(const Bottleneck& bottleneck) const {
        Json::Value value;
        value["node"] = nodeOf(bottleneck.node);
        value["work"] = bottleneck.work;
        value["works"] = Json::UInt64{bottleneck.works};
        value["frameInterval"] = bottleneck.interval;
        return value;
    }

    const LossCase& mLoss;
    const Findings& mFindings;
    const NodeNames& mNames;
    const Phrases mPhrases;
};

}  // namespace

std::string explanationJson(const Explanations& explanations, const NodeNames& names) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    std::string text = "{\"losses\":[";
    for (size_t i = 0; i < explanations.losses.size(); ++i) {
        text += i == 0 ? "\n" : ",\n";
        text += Json::writeString(builder, LossJson(explanations.losses[i], names).value());
    }
    return text + "],\n\"unexplained\":" + std::to_string(explanations.unexplained) +
           ",\n\"unlistedMissing\":" + std::to_string(explanations.unlisted) + "}\n";
}

}  // namespace vdrdump
