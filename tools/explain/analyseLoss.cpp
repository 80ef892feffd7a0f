#include "tools/explain/analyseLoss.h"

#include <algorithm>

#include "tools/explain/Measurements.h"
#include "tools/explain/clocksOf.h"
#include "tools/explain/deviceState.h"
#include "tools/explain/findBottleneck.h"
#include "tools/explain/findChanges.h"
#include "tools/explain/findStuck.h"
#include "tools/explain/likeliestCause.h"
#include "tools/explain/slownessOf.h"
#include "tools/explain/standingOut.h"

namespace vdrdump {
namespace {

constexpr uint32_t kEvidence = 30;
constexpr uint32_t kWindow = 10;
constexpr uint32_t kHistory = 60;

// Records and gaps, as far as the records reach.
void weighRecords(const FrameMap& frames, Findings& findings) {
    const FrameRange near = framesAround(findings.lost, kEvidence, kEvidence);
    uint32_t last = 0;
    bool hasLast = false;
    for (auto at = frames.lower_bound(near.first); at != frames.end() && at->first <= near.last;
         ++at) {
        const uint32_t frame = at->first;
        findings.recordsBefore += frame < findings.lost.first ? 1 : 0;
        findings.recordsBehind += frame > findings.lost.last ? 1 : 0;
        findings.damagedRecords += at->second->view().isWhole() ? 0 : 1;
        if (hasLast && frame > last + 1 &&
            (findings.hasRecord || last + 1 != findings.lost.first)) {
            findings.otherGaps.push_back({last + 1, frame - 1});
        }
        last = frame;
        hasLast = true;
    }
}

std::optional<GapSpan> spanOf(const Findings& findings, const FrameMap& frames) {
    const auto behind = frames.upper_bound(findings.lost.last);
    const auto lost = frames.lower_bound(findings.lost.first);
    if (findings.hasRecord || behind == frames.end() || lost == frames.begin() ||
        findings.clocks.frameInterval == 0) {
        return std::nullopt;
    }
    const auto before = std::prev(lost);
    const uint64_t from = frameStamp(before->second->view(), findings.clocks);
    const uint64_t to = frameStamp(behind->second->view(), findings.clocks);
    if (from == 0 || to < from) {
        return std::nullopt;
    }
    return GapSpan{before->first, behind->first, frameTime(from, to, findings.clocks),
                   findings.clocks.frameInterval * (behind->first - before->first)};
}

std::optional<Comparison> compareOne(const Measurements& measurements, Quantity quantity,
                                     const Findings& findings, const FrameRange& window) {
    const Subject subject{quantity, {}, ""};
    const Measurements::Series* series = measurements.find(subject);
    return series == nullptr ? std::nullopt
           : findings.hasRecord
                   ? Measurements::compare(subject, *series, findings.lost.first, window)
                   : Measurements::compareHighest(subject, *series, window);
}

// Of these quantities the highest value of the lost frame or, where it has no record, of all.
std::optional<Comparison> compareSlowest(const Measurements& measurements, Quantity first,
                                         Quantity second, const Findings& findings,
                                         const FrameRange& window) {
    std::optional<Comparison> slowest;
    for (const auto& [subject, series] : measurements.all()) {
        if (subject.quantity != first && subject.quantity != second) {
            continue;
        }
        const auto comparison =
                findings.hasRecord
                        ? Measurements::compare(subject, series, findings.lost.first, window)
                        : Measurements::compareHighest(subject, series, window);
        if (comparison && (!slowest || comparison->value > slowest->value)) {
            slowest = comparison;
        }
    }
    return slowest;
}

}  // namespace

FrameRange framesAround(const FrameRange& lost, uint32_t before, uint32_t behind) {
    return {lost.first - std::min(lost.first, before),
            lost.last + std::min(UINT32_MAX - lost.last, behind)};
}

Findings analyseLoss(const FrameRange& lost, const FrameMap& session,
                     std::optional<double> ticksPerSecond) {
    const FrameRange near = framesAround(lost, kHistory, kEvidence);
    const FrameMap frames(session.lower_bound(near.first), session.upper_bound(near.last));
    Findings findings;
    findings.lost = lost;
    findings.hasRecord = frames.count(lost.first) != 0;
    findings.clocks = clocksOf(frames, ticksPerSecond);
    weighRecords(frames, findings);
    findings.span = spanOf(findings, frames);
    findings.bottleneck = findBottleneck(frames, lost, findings.clocks);

    const FrameRange window = framesAround(lost, kWindow, kWindow);
    const Measurements measurements(frames, findings.clocks);
    findings.stuck = findStuck(frames, measurements, lost, window);
    // What changed in the place of a frame without a record shows in the one behind it.
    const uint32_t upTo = findings.hasRecord ? lost.last : framesAround(lost, 0, 1).last;
    findings.changes = findChanges(frames, {window.first, upTo});
    findings.thermalRise = findThermalRise(frames, upTo);
    findings.allocations = findAllocations(frames, window);
    findings.deviceMoves = findDeviceMoves(frames, upTo);
    findings.slowness = slownessOf(frames, measurements, lost, findings.thermalRise);

    findings.interval = compareOne(measurements, Quantity::Interval, findings, window);
    findings.latency = compareOne(measurements, Quantity::Latency, findings, window);
    findings.slowestNode =
            compareSlowest(measurements, Quantity::NodeWork, Quantity::NodeWork, findings, window);
    findings.slowestAlgorithm = compareSlowest(measurements, Quantity::PluginCost,
                                               Quantity::SemanticCost, findings, window);
    findings.standsOut = standingOut(measurements, window, findings.clocks);
    findings.notKnown = notKnown(frames);
    findings.cause = likeliestCause(findings, !measurements.all().empty());
    return findings;
}

}  // namespace vdrdump
