#include "tools/explain/lossLines.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>

#include "tools/explain/Phrases.h"

namespace vdrdump {
namespace {

constexpr size_t kMostStandingOut = 4;
constexpr size_t kMostChanges = 4;
constexpr size_t kFewestForHabits = 4;  // records that show whether a node ever has no end stamp

std::string capital(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return text;
}

// The first few, and how many more there are.
template <typename Items, typename Words>
std::string listed(const Items& items, size_t most, Words words) {
    std::string text;
    for (size_t i = 0; i < items.size() && i < most; ++i) {
        text += (i == 0 ? "" : "; ") + words(items[i]);
    }
    return items.size() > most ? text + "; " + std::to_string(items.size() - most) + " more" : text;
}

std::string number(double value) {
    char text[64];
    std::snprintf(text, sizeof(text),
                  value == std::floor(value) ? "%.0f"
                  : std::fabs(value) < 1     ? "%.2g"
                                             : "%.2f",
                  value);
    return text;
}

const char* unitName(const std::optional<double>& ticksPerSecond) {
    return !ticksPerSecond          ? "ticks of an unknown unit"
           : *ticksPerSecond == 1e3 ? "milliseconds"
           : *ticksPerSecond == 1e6 ? "microseconds"
                                    : "nanoseconds";
}

std::string enumerated(const std::vector<std::string>& words) {
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == words.size() ? " and " : ", ") + words[i];
    }
    return text;
}

class LineMaker {
public:
    // `namesSession`: there are losses of several.
    LineMaker(const Explanation& explanation, const NodeNames& names, bool namesSession)
          : mLoss(explanation.loss),
            mFindings(explanation.findings),
            mPhrases(mFindings, names),
            mNamesSession(namesSession) {}

    LossLines lines() {
        mLines.headline = capital(mPhrases.lost()) + session() + ": " + mPhrases.cause() + ".";
        line("known by", listed(mLoss.evidence, 3, evidence));
        if (mLoss.history->paths.empty()) {
            return std::move(mLines);
        }
        line("records", records());
        evidenceLines();
        if (mFindings.recordsBefore != 0 &&
            isKnown({"camera", "sensor mode", "capture type", "zoom", "scene", "thermal level"})) {
            line("changed", changes());
        }
        valueLines();
        line("not known", listedNotKnown());
        line("clocks", clocks());
        return std::move(mLines);
    }

private:
    void line(const char* name, std::string text) {
        mLines.lines.push_back({name, std::move(text)});
    }

    std::string session() const {
        return mNamesSession && mLoss.history->session != 0
                       ? " of session " + std::to_string(mLoss.history->session)
                       : "";
    }

    // Whether any of these is not 0 in every record.
    bool isKnown(std::initializer_list<const char*> names) const {
        return std::any_of(names.begin(), names.end(), [this](const char* name) {
            const auto& unknown = mFindings.notKnown;
            return std::find(unknown.begin(), unknown.end(), name) == unknown.end();
        });
    }

    // What is 0 in every record has no line of its own.
    void valueLines() {
        if (mFindings.clocks.hasFrameStamps || mFindings.clocks.hasNodeStamps) {
            line("interval", comparison(mFindings.interval));
        }
        if (mFindings.clocks.hasNodeStamps) {
            line("latency", comparison(mFindings.latency));
            line("slowest node", slowest(mFindings.slowestNode));
        }
        if (isKnown({"plug-in costs", "semantic costs"})) {
            line("highest cost", slowest(mFindings.slowestAlgorithm));
        }
        line("allocations", allocations());
        if (mFindings.recordsBefore != 0 &&
            isKnown({"load average", "camera load", "free memory", "available memory",
                     "front temperature", "back temperature", "frame temperature",
                     "thermal level"})) {
            line("device", device());
        }
        standingOutLines();
    }

    static std::string evidence(const LossEvidence& evidence) {
        const std::string at = evidence.time.empty() ? "" : ", " + evidence.time;
        const std::string file = evidence.path.substr(evidence.path.rfind('/') + 1);
        switch (evidence.from) {
            case LossEvidence::From::FileName:
                return "the name of " + file;  // which has the time
            case LossEvidence::From::Log:
                return "the log" + at;
            case LossEvidence::From::User:
                return "--lost";
            case LossEvidence::From::Gap:
                return "a gap in " + file;
        }
        return "";
    }

    std::string records() const {
        const auto& damaged = mLoss.history->damaged;
        std::string text = std::to_string(mFindings.recordsBefore) + " of 30 frames before, " +
                           std::to_string(mFindings.recordsBehind) + " of 30 behind, " +
                           (mFindings.hasRecord ? "and the lost one's" : "none of the lost one") +
                           "; ";
        text += mFindings.otherGaps.empty()
                        ? "no other gap; "
                        : "without a record also " +
                                  listed(mFindings.otherGaps, kMostChanges, framesText) + "; ";
        if (mFindings.damagedRecords != 0) {
            return text + std::to_string(mFindings.damagedRecords) + " damaged";
        }
        return text + (damaged.empty() ? "no damage" : "damage elsewhere in " + damaged.front());
    }

    std::string stuckAt(const StuckAt& stuck) const {
        static constexpr const char* kReached[] = {"not queued", "queued, not started",
                                                   "queued, started, not finished",
                                                   "queued, started, finished, not handed on"};
        return mPhrases.node(stuck.node) + " in frame " + std::to_string(stuck.frame) + ": " +
               kReached[static_cast<size_t>(stuck.reached)] +
               (stuck.nodesBehind == 0   ? ""
                : stuck.nodesBehind == 1 ? "; the node behind it has no stamp"
                                         : "; the " + std::to_string(stuck.nodesBehind) +
                                                   " nodes behind it have no stamps");
    }

    void evidenceLines() {
        if (mFindings.stuck) {
            line("stuck at", stuckAt(*mFindings.stuck));
        } else if (mFindings.hasRecord && mFindings.slowestNode &&
                   mFindings.recordsBefore + mFindings.recordsBehind >= kFewestForHabits) {
            line("stuck at", "nowhere: no node lacks an end stamp that it has in other frames");
        }
        if (mFindings.span) {
            line("around it", mPhrases.span(*mFindings.span));
        }
        if (mFindings.bottleneck) {
            line("bottleneck", mPhrases.bottleneck(*mFindings.bottleneck) + " (median of the " +
                                       std::to_string(mFindings.bottleneck->works) +
                                       " nearest that it worked on, one at a time)");
        }
    }

    std::string changes() const {
        return mFindings.changes.empty()
                       ? "nothing in the ten frames before (camera, modes, zoom, heat, video)"
                       : listed(mFindings.changes, kMostChanges,
                                [this](const Change& each) { return mPhrases.change(each); });
    }

    std::string comparison(const std::optional<Comparison>& comparison) const {
        if (!comparison) {
            return "not known";
        }
        const std::string value = mPhrases.value(*comparison, comparison->value);
        return mFindings.hasRecord
                       ? value + " (" + mPhrases.beside(*comparison) + ")"
                       : "at most " + value + ", in frame " + std::to_string(comparison->frame) +
                                 " (" + mPhrases.beside(*comparison) + ")";
    }

    std::string slowest(const std::optional<Comparison>& comparison) const {
        if (!comparison) {
            return "not known";
        }
        const Subject& subject = comparison->subject;
        return (subject.name.empty() ? mPhrases.node(subject.node) : subject.name) + ": " +
               this->comparison(comparison);
    }

    std::string allocations() const {
        return mFindings.allocations.empty()
                       ? "none is recorded as slow"
                       : listed(mFindings.allocations, 3, [this](const SlowAllocation& each) {
                             return mPhrases.allocation(each) + ", in frame " +
                                    std::to_string(each.frame);
                         });
    }

    std::string device() const {
        const std::string heat =
                mFindings.thermalRise ? mPhrases.change(*mFindings.thermalRise) + "; " : "";
        if (mFindings.deviceMoves.empty()) {
            return heat + unmoved();
        }
        return heat + listed(mFindings.deviceMoves, mFindings.deviceMoves.size(),
                             [](const DeviceMove& move) { return moveWords(move); });
    }

    std::string unmoved() const {
        std::vector<std::string> known;
        const auto add = [&](const char* name, std::initializer_list<const char*> sources) {
            if (isKnown(sources)) {
                known.emplace_back(name);
            }
        };
        add("load", {"load average", "camera load"});
        add("memory", {"free memory", "available memory", "capture memory"});
        add("temperatures", {"front temperature", "back temperature", "frame temperature"});
        return known.empty() ? "nothing else is known" : enumerated(known) + " did not move";
    }

    static std::string moveWords(const DeviceMove& move) {
        const std::string name = move.column->name;
        const std::string unit = move.column->unit;
        return name.substr(name.find('_') + 1) + " " + number(move.from) + " to " +
               number(move.to) + (unit.empty() ? "" : " " + unit) + " in frame " +
               std::to_string(move.toFrame);
    }

    void standingOutLines() {
        if (mFindings.standsOut.empty()) {
            line("stands out", "nothing");
        }
        for (size_t i = 0; i < mFindings.standsOut.size() && i < kMostStandingOut; ++i) {
            const Comparison& each = mFindings.standsOut[i];
            line(i == 0 ? "stands out" : "", "frame " + std::to_string(each.frame) + ", " +
                                                     mPhrases.subject(each.subject) + ": " +
                                                     mPhrases.value(each, each.value) + " (" +
                                                     mPhrases.beside(each) + ")");
        }
        if (mFindings.standsOut.size() > kMostStandingOut) {
            line("", std::to_string(mFindings.standsOut.size() - kMostStandingOut) +
                             " more, less far from their medians");
        }
    }

    std::string listedNotKnown() const {
        std::string text;
        for (const std::string& name : mFindings.notKnown) {
            text += (text.empty() ? "" : ", ") + name;
        }
        return text.empty() ? "nothing: no field is 0 in every record"
                            : text + " (0 in every record)";
    }

    std::string clocks() const {
        const StampClocks& clocks = mFindings.clocks;
        if (!clocks.hasFrameStamps && !clocks.hasNodeStamps) {
            return "there are no stamps";
        }
        if (clocks.frameInterval == 0) {
            return "not known: no two records have stamps from which to tell them";
        }
        std::vector<std::string> same = {clocks.hasFrameStamps ? "cslInfo" : "node"};
        std::vector<std::string> others;
        const auto add = [&](const char* name, bool isThere, bool isShared) {
            if (isThere) {
                (isShared ? same : others).emplace_back(name);
            }
        };
        add("node", clocks.hasFrameStamps && clocks.hasNodeStamps, clocks.nodesShareIt);
        add("feature", clocks.hasFeatureStamps, clocks.featuresShareIt);
        add("motion", clocks.hasMotionStamps, clocks.motionSharesIt);
        const std::string which = same.size() == 1 ? "to be in " : "for one clock in ";
        std::string text =
                enumerated(same) + " stamps " +
                (clocks.isStated ? "are stated to be of one clock in " : "taken " + which) +
                unitName(clocks.ticksPerSecond);
        if (clocks.ticksPerSecond) {
            text += ": frames are then " + number(clocks.frameInterval) + " ms apart";
        }
        return others.empty()
                       ? text
                       : text + "; " + enumerated(others) +
                                 " stamps for another clock's, compared with each other only";
    }

    const LossCase& mLoss;
    const Findings& mFindings;
    const Phrases mPhrases;
    const bool mNamesSession;
    LossLines mLines;
};

}  // namespace

LossLines lossLines(const Explanation& explanation, const NodeNames& names, bool namesSession) {
    return LineMaker(explanation, names, namesSession).lines();
}

}  // namespace vdrdump
