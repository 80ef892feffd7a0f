#include "tools/explain/likeliestCause.h"

namespace vdrdump {
namespace {

constexpr double kSlow = 1.5;         // nodes that take half as long again
constexpr double kPauseShare = 0.75;  // of an interval
constexpr size_t kFewestRecords = 6;

// How closely a value names what took the time: an algorithm runs in a node, and a node's time is
// part of the frame's latency.
int rankOf(Quantity quantity) {
    switch (quantity) {
        case Quantity::PluginCost:
        case Quantity::SemanticCost:
            return 2;
        case Quantity::Latency:
            return 0;
        default:
            return 1;
    }
}

// What comes behind the lost frame did not lose it.
bool isBehind(const Comparison& value, const Findings& findings) {
    return value.frame > uint64_t{findings.lost.last} + (findings.hasRecord ? 0 : 1);
}

std::optional<Comparison> strongest(const Findings& findings, bool isBehindLoss) {
    std::optional<Comparison> best;
    for (const Comparison& each : findings.standsOut) {
        const bool isMoreSpecific = best && each.frame == best->frame &&
                                    each.excess() >= best->excess() / 2 &&
                                    rankOf(each.subject.quantity) > rankOf(best->subject.quantity);
        if (isBehind(each, findings) == isBehindLoss && (!best || isMoreSpecific)) {
            best = each;
        }
    }
    return best;
}

bool isCause(const Change& change) {
    return change.what != Change::What::ZoomDirection &&
           !(change.what == Change::What::ThermalLevel && change.to < change.from);
}

// A camera that changes, and heat, take a while to show; all else shows at once.
const Change* changeBefore(const Findings& findings, uint32_t frame) {
    constexpr uint32_t kAtOnce = 3;
    const Change* nearest = nullptr;
    for (const Change& change : findings.changes) {
        const bool isSlow =
                change.what == Change::What::Camera || change.what == Change::What::ThermalLevel;
        if (isCause(change) && change.frame <= frame &&
            (isSlow || frame - change.frame <= kAtOnce)) {
            nearest = &change;
        }
    }
    return nearest;
}

const Change* strongestChange(const Findings& findings) {
    const Change* best = nullptr;
    for (const Change& change : findings.changes) {
        const bool isBetter = best == nullptr || best->what != Change::What::Camera ||
                              change.what == Change::What::Camera;
        if (isCause(change) && isBetter) {
            best = &change;
        }
    }
    return best;
}

bool isPause(const Findings& findings) {
    return findings.span &&
           findings.span->time - findings.span->usual > kPauseShare * findings.clocks.frameInterval;
}

// Recorded with the lost frame, or with the one whose value stands out.
const SlowAllocation* ownAllocation(const Findings& findings,
                                    const std::optional<Comparison>& value) {
    for (const SlowAllocation& allocation : findings.allocations) {
        if ((findings.hasRecord && allocation.frame == findings.lost.first) ||
            (value && allocation.frame == value->frame)) {
            return &allocation;
        }
    }
    return nullptr;
}

Cause ofAllocation(const SlowAllocation& allocation, const std::optional<Comparison>& value) {
    Cause cause;
    cause.kind = Cause::Kind::SlowAllocation;
    cause.frame = allocation.frame;
    cause.allocation = allocation;
    cause.value = value;
    return cause;
}

Cause ofValue(const Comparison& value, const Findings& findings) {
    Cause cause;
    cause.kind = Cause::Kind::StandsOut;
    cause.frame = value.frame;
    cause.value = value;
    if (const Change* change = changeBefore(findings, value.frame)) {
        cause.change = *change;
    }
    return cause;
}

// Where no single value tells.
Cause ofCircumstances(const Findings& findings, bool isMeasured) {
    Cause cause;
    cause.frame = findings.lost.first;
    const bool isSlow = findings.slowness >= kSlow;
    const Change* change = strongestChange(findings);
    const bool isSwitch = change != nullptr && change->what == Change::What::Camera;
    if (isPause(findings)) {
        cause.kind = Cause::Kind::SensorPause;
        if (change != nullptr) {
            cause.change = *change;
        }
    } else if (findings.thermalRise && !isSwitch) {
        cause.kind = Cause::Kind::Heat;
        cause.frame = findings.thermalRise->frame;
        cause.change = findings.thermalRise;
        cause.slowness = isSlow ? findings.slowness : 0;
    } else if (change != nullptr) {
        cause.kind = Cause::Kind::Change;
        cause.frame = change->frame;
        cause.change = *change;
    } else if (isSlow) {
        cause.kind = Cause::Kind::SlowNodes;
        cause.slowness = findings.slowness;
    } else if (findings.bottleneck) {
        cause.kind = Cause::Kind::Bottleneck;
    } else if (!isMeasured || findings.recordsBefore + findings.recordsBehind < kFewestRecords) {
        cause.kind = Cause::Kind::Unknown;
    } else {
        cause.kind = findings.hasRecord ? Cause::Kind::None : Cause::Kind::NoRecord;
    }
    return cause;
}

}  // namespace

Cause likeliestCause(const Findings& findings, bool isMeasured) {
    if (findings.stuck) {
        Cause cause;
        cause.kind = Cause::Kind::StuckNode;
        cause.frame = findings.stuck->frame;
        cause.value = findings.stuck->work;
        return cause;
    }
    const auto value = strongest(findings, false);
    if (const SlowAllocation* own = ownAllocation(findings, value)) {
        return ofAllocation(*own, value);
    }
    if (value) {
        return ofValue(*value, findings);
    }
    if (!findings.allocations.empty()) {
        return ofAllocation(findings.allocations.front(), std::nullopt);
    }
    const Cause circumstances = ofCircumstances(findings, isMeasured);
    const bool tellsNothing =
            circumstances.kind == Cause::Kind::None || circumstances.kind == Cause::Kind::NoRecord;
    const auto behind = strongest(findings, true);
    return tellsNothing && behind ? ofValue(*behind, findings) : circumstances;
}

}  // namespace vdrdump
