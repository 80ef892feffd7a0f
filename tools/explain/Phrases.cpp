#include "tools/explain/Phrases.h"

#include <cmath>
#include <cstdio>

namespace vdrdump {
namespace {

std::string decimal(double value) {
    char text[64];
    const double size = std::fabs(value);
    std::snprintf(text, sizeof(text), size < 1 && size > 0 ? "%.2f" : "%.1f", value);
    return text;
}

std::string whole(double value) {
    char text[64];
    std::snprintf(text, sizeof(text), value == std::floor(value) ? "%.0f" : "%.1f", value);
    return text;
}

bool isCost(Quantity quantity) {
    return quantity == Quantity::PluginCost || quantity == Quantity::SemanticCost;
}

bool isOfNodes(Quantity quantity) {
    return quantity == Quantity::Latency || quantity == Quantity::NodeWait ||
           quantity == Quantity::NodeWork || quantity == Quantity::NodeHandOn;
}

std::string fromTo(const char* what, const Change& change) {
    return std::string(what) + " changed from " + std::to_string(change.from) + " to " +
           std::to_string(change.to);
}

std::string zoomWords(const Change& change) {
    static constexpr const char* kDirections[] = {"out", "none", "in"};
    return change.to == 0 ? "zooming stopped"
                          : std::string(change.from == 0 ? "zooming began, " : "zoom turned, ") +
                                    kDirections[change.to + 1];
}

}  // namespace

std::string framesText(const FrameRange& frames) {
    const std::string first = std::to_string(frames.first);
    return frames.first == frames.last ? first : first + "-" + std::to_string(frames.last);
}

std::string Phrases::lost() const {
    const bool isOne = mFindings.lost.first == mFindings.lost.last;
    return (isOne ? "frame " : "frames ") + framesText(mFindings.lost);
}

// The lost frame has been named before.
std::string Phrases::frame(uint32_t frame) const {
    return mFindings.hasRecord && frame == mFindings.lost.first ? "it"
                                                                : "frame " + std::to_string(frame);
}

std::string Phrases::time(double value, bool isKnown) const {
    return isKnown ? decimal(value) + " ms" : whole(value) + " ticks";
}

std::string Phrases::value(const Comparison& comparison, double value) const {
    const Quantity quantity = comparison.subject.quantity;
    return isCost(quantity) ? whole(value)
                            : time(value, (isOfNodes(quantity) ? mFindings.clocks.nodeTicksPerSecond
                                                               : mFindings.clocks.ticksPerSecond)
                                                  .has_value());
}

std::string Phrases::beside(const Comparison& comparison) const {
    if (!comparison.highestOther) {
        return "no other frame has one";
    }
    return "median " + value(comparison, comparison.median) + ", highest other " +
           value(comparison, comparison.highestOther->value) + " in frame " +
           std::to_string(comparison.highestOther->frame);
}

std::string Phrases::subject(const Subject& subject) const {
    switch (subject.quantity) {
        case Quantity::Interval:
            return "interval";
        case Quantity::Latency:
            return "latency";
        case Quantity::NodeWait:
            return "wait before " + node(subject.node);
        case Quantity::NodeWork:
            return "work of " + node(subject.node);
        case Quantity::NodeHandOn:
            return "handing on by " + node(subject.node);
        case Quantity::PluginCost:
            return "cost of plug-in algorithm " + subject.name;
        case Quantity::SemanticCost:
            return "cost of semantic algorithm " + subject.name;
        case Quantity::RequestDelay:
            return "delay of feature request " + subject.name;
        case Quantity::MessageDelay:
            return "delay of feature message " + subject.name;
        case Quantity::MotionDelay:
            return "delay of " + subject.name;
    }
    return "";
}

std::string Phrases::change(const Change& change) const {
    std::string text;
    switch (change.what) {
        case Change::What::Camera:
            text = fromTo("the camera", change);
            break;
        case Change::What::SensorMode:
            text = fromTo("the sensor mode", change);
            break;
        case Change::What::CaptureType:
            text = fromTo("the capture type", change);
            break;
        case Change::What::ZoomDirection:
            text = zoomWords(change);
            break;
        case Change::What::ThermalLevel:
            text = std::string("the thermal level ") + (change.to > change.from ? "rose" : "fell") +
                   " from " + std::to_string(change.from) + " to " + std::to_string(change.to);
            break;
        case Change::What::Scene:
            text = fromTo("the scene", change);
            break;
        case Change::What::VideoMark:
            text = change.to == 1   ? "a video recording started"
                   : change.to == 2 ? "a video recording had ended"
                                    : "video mark " + std::to_string(change.to);
            break;
    }
    return text + " in frame " + std::to_string(change.frame);
}

std::string Phrases::allocation(const SlowAllocation& allocation) const {
    return (allocation.name.empty() ? "one without a name" : allocation.name) + ", " +
           std::to_string(allocation.kilobytes) + " KiB in " + std::to_string(allocation.seconds) +
           " s";
}

std::string Phrases::stuck(const StuckAt& stuck) const {
    const std::string at = node(stuck.node);
    const std::string which = frame(stuck.frame);
    switch (stuck.reached) {
        case StuckAt::Reached::NotQueued:
            return which + " never reached " + at;
        case StuckAt::Reached::Queued:
            return at + " never started on " + which + ", which waited before it";
        case StuckAt::Reached::Started:
            return at + " started on " + which + " and never finished";
        case StuckAt::Reached::Finished:
            break;
    }
    const std::string took =
            stuck.work ? " worked on " + which + " for " + value(*stuck.work, stuck.work->value) +
                                 " (median " + value(*stuck.work, stuck.work->median) + ") and"
                       : " finished " + which + " and";
    return at + took + " never handed it on";
}

std::string Phrases::span(const GapSpan& span) const {
    const bool isKnown = mFindings.clocks.ticksPerSecond.has_value();
    return "frames " + std::to_string(span.before) + " and " + std::to_string(span.behind) +
           " are " + time(span.time, isKnown) + " apart, where " + time(span.usual, isKnown) +
           " is usual";
}

std::string Phrases::bottleneck(const Bottleneck& bottleneck) const {
    const StampClocks& clocks = mFindings.clocks;
    return node(bottleneck.node) + " works " +
           time(bottleneck.work, clocks.nodeTicksPerSecond.has_value()) +
           " on each frame, and frames come every " +
           time(bottleneck.interval, clocks.ticksPerSecond.has_value());
}

std::string Phrases::happened(const Comparison& comparison) const {
    const std::string which = frame(comparison.frame);
    const std::string amount = value(comparison, comparison.value);
    const std::string median = " (median " + value(comparison, comparison.median) + ")";
    const Subject& subject = comparison.subject;
    switch (subject.quantity) {
        case Quantity::Interval:
            return "the sensor was late: " + which + " came " + amount +
                   " after the frame before it" + median;
        case Quantity::Latency:
            return which + " was under way for " + amount + median;
        case Quantity::NodeWait:
            return which + " waited " + amount + " before " + node(subject.node) +
                   ", which was free" + median;
        case Quantity::NodeWork:
            return node(subject.node) + " worked on " + which + " for " + amount + median;
        case Quantity::NodeHandOn:
            return node(subject.node) + " took " + amount + " to hand " + which + " on" + median;
        case Quantity::PluginCost:
            return "plug-in algorithm " + subject.name + " cost " + amount + " in " + which +
                   median;
        case Quantity::SemanticCost:
            return "semantic algorithm " + subject.name + " cost " + amount + " in " + which +
                   median;
        case Quantity::RequestDelay:
            return "feature request " + subject.name + " came " + amount + " after the stamp of " +
                   which + median;
        case Quantity::MessageDelay:
            return "feature message " + subject.name + " came " + amount + " after the stamp of " +
                   which + median;
        case Quantity::MotionDelay:
            return "motion data was late: " + subject.name + " is " + amount +
                   " behind the stamp of " + which + median;
    }
    return "";
}

std::string Phrases::standsOut() const {
    const Cause& cause = mFindings.cause;
    const bool isLater = cause.value->frame > mFindings.lost.last + (mFindings.hasRecord ? 0 : 1);
    return (cause.change ? change(*cause.change) + "; " : "") +
           (isLater ? "nothing stands out up to there; later " : "") + happened(*cause.value) +
           alsoBottleneck();
}

std::string Phrases::slowAllocation() const {
    const Cause& cause = mFindings.cause;
    return "slow allocation of " + allocation(*cause.allocation) + ", recorded with frame " +
           std::to_string(cause.allocation->frame) +
           (cause.value ? "; " + happened(*cause.value) : "");
}

std::string Phrases::heat() const {
    const Cause& cause = mFindings.cause;
    return change(*cause.change) +
           (cause.slowness > 0 ? "; since then nodes have become " + decimal(cause.slowness) +
                                         " times as slow" + alsoBottleneck()
            : mFindings.bottleneck ? alsoBottleneck()
                                   : "; no value stands out");
}

std::string Phrases::alsoBottleneck() const {
    return mFindings.bottleneck ? "; " + bottleneck(*mFindings.bottleneck) : "";
}

// A frame that nothing takes up waits because of what is too slow behind it.
std::string Phrases::stuckNode() const {
    const bool isWaiting = mFindings.stuck->reached == StuckAt::Reached::NotQueued ||
                           mFindings.stuck->reached == StuckAt::Reached::Queued;
    return stuck(*mFindings.stuck) + (isWaiting ? alsoBottleneck() : "");
}

std::string Phrases::noValueStandsOut() const {
    return (mFindings.hasRecord ? "nothing stands out, but "
                                : "no record, and nothing stands out around it, but ") +
           bottleneck(*mFindings.bottleneck);
}

std::string Phrases::noRecord() const {
    constexpr char kStart[] = "no record, and nothing stands out around it";
    if (!mFindings.span) {
        return kStart;
    }
    const bool isSkipped =
            mFindings.span->usual - mFindings.span->time > mFindings.clocks.frameInterval / 2;
    return std::string(kStart) +
           (isSkipped ? "; the stamps leave no time for it: " : "; the sensor kept its pace: ") +
           span(*mFindings.span);
}

std::string Phrases::unknown() const {
    const size_t records =
            mFindings.recordsBefore + mFindings.recordsBehind + (mFindings.hasRecord ? 1 : 0);
    return "nothing can be said: " +
           (records == 0   ? "no record is near"
            : records <= 6 ? "too few records are near (" + std::to_string(records) + ")"
                           : "the records hold no values to compare");
}

std::string Phrases::cause() const {
    const Cause& cause = mFindings.cause;
    switch (cause.kind) {
        case Cause::Kind::Unknown:
            return unknown();
        case Cause::Kind::None:
            return "nothing stands out in the frames around it";
        case Cause::Kind::StuckNode:
            return stuckNode();
        case Cause::Kind::SlowAllocation:
            return slowAllocation();
        case Cause::Kind::StandsOut:
            return standsOut();
        case Cause::Kind::SensorPause:
            return (cause.change ? change(*cause.change) + "; " : "") +
                   "the sensor was late: " + span(*mFindings.span);
        case Cause::Kind::Heat:
            return heat();
        case Cause::Kind::SlowNodes:
            return "all nodes have become slow: they take " + decimal(cause.slowness) +
                   " times as long as 10 to 30 frames before" + alsoBottleneck();
        case Cause::Kind::Change:
            return change(*cause.change) +
                   (mFindings.bottleneck ? alsoBottleneck() : "; no value stands out");
        case Cause::Kind::Bottleneck:
            return noValueStandsOut();
        case Cause::Kind::NoRecord:
            return noRecord();
    }
    return "";
}

}  // namespace vdrdump
