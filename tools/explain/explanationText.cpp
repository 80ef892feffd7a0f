#include "tools/explain/explanationText.h"

#include <cmath>
#include <cstdio>

#include "tools/explain/Phrases.h"

namespace vdrdump {
namespace {

constexpr size_t kMostListed = 32;   // losses with a line
constexpr size_t kMostInFull = 8;    // and with all lines
constexpr size_t kMostStandingOut = 4;
constexpr size_t kMostChanges = 4;

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
    std::snprintf(text, sizeof(text), value == std::floor(value) ? "%.0f" : "%.2f", value);
    return text;
}

const char* unitName(const std::optional<double>& ticksPerSecond) {
    return !ticksPerSecond          ? "ticks of an unknown unit"
           : *ticksPerSecond == 1e3 ? "milliseconds"
           : *ticksPerSecond == 1e6 ? "microseconds"
                                    : "nanoseconds";
}

class LossText {
public:
    LossText(const Explanation& explanation, const NodeNames& names)
          : mLoss(explanation.loss),
            mFindings(explanation.findings),
            mPhrases(mFindings, names) {}

    std::string text() {
        mText = headline() + "\n";
        line("known by", listed(mLoss.evidence, 3, evidence));
        if (!mLoss.history->paths.empty()) {
            line("records", records());
            evidenceLines();
            line("changed", changes());
            line("interval", comparison(mFindings.interval));
            line("latency", comparison(mFindings.latency));
            line("slowest node", slowest(mFindings.slowestNode));
            line("slowest algo", slowest(mFindings.slowestAlgorithm));
            line("allocations", allocations());
            line("device", device());
            standingOutLines();
            line("not known", listedNotKnown());
            line("clocks", clocks());
        }
        return mText;
    }

    std::string headline() const {
        return capital(mPhrases.lost()) + session() + ": " + mPhrases.cause() + ".";
    }

private:
    void line(const char* name, const std::string& text) {
        char start[64];
        std::snprintf(start, sizeof(start), "  %-14s", name);
        mText += start + text + "\n";
    }

    std::string session() const {
        return mLoss.history->session > 1 ? " of session " + std::to_string(mLoss.history->session)
                                          : "";
    }

    static std::string evidence(const LossEvidence& evidence) {
        const std::string at = evidence.time.empty() ? "" : ", " + evidence.time;
        switch (evidence.from) {
            case LossEvidence::From::FileName:
                return "the name of " + evidence.path + at;
            case LossEvidence::From::Log:
                return "the log" + at;
            case LossEvidence::From::User:
                return "--lost";
            case LossEvidence::From::Gap:
                return "a gap in " + evidence.path;
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

    void evidenceLines() {
        if (mFindings.stuck) {
            const size_t behind = mFindings.stuck->nodesBehind;
            line("stuck at", mPhrases.stuck(*mFindings.stuck) +
                                     (behind == 0 ? ""
                                      : behind == 1
                                              ? "; the node behind never got it"
                                              : "; the " + std::to_string(behind) +
                                                        " nodes behind never got it"));
        } else if (mFindings.hasRecord && mFindings.slowestNode) {
            line("stuck at", "no node: all have their end stamps");
        }
        if (mFindings.span) {
            line("around it", mPhrases.span(*mFindings.span));
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
        return comparison ? mPhrases.subject(comparison->subject) + ": " +
                                    this->comparison(comparison)
                          : "not known";
    }

    std::string allocations() const {
        return mFindings.allocations.empty()
                       ? "none slow"
                       : listed(mFindings.allocations, 3, [this](const SlowAllocation& each) {
                             return mPhrases.allocation(each) + ", in frame " +
                                    std::to_string(each.frame);
                         });
    }

    std::string device() const {
        if (mFindings.deviceMoves.empty()) {
            return "load, memory and temperatures did not move";
        }
        return listed(mFindings.deviceMoves, mFindings.deviceMoves.size(),
                      [](const DeviceMove& move) {
                          const std::string name = move.column->name;
                          const size_t field = name.find('_');
                          const std::string unit = move.column->unit;
                          return name.substr(field + 1) + " " + number(move.from) + " to " +
                                 number(move.to) + (unit.empty() ? "" : " " + unit) + " in frame " +
                                 std::to_string(move.toFrame);
                      });
    }

    void standingOutLines() {
        if (mFindings.standsOut.empty()) {
            line("stands out", "nothing");
        }
        for (size_t i = 0; i < mFindings.standsOut.size() && i < kMostStandingOut; ++i) {
            const Comparison& each = mFindings.standsOut[i];
            line(i == 0 ? "stands out" : "",
                 "frame " + std::to_string(each.frame) + ", " + mPhrases.subject(each.subject) +
                         ": " + mPhrases.value(each, each.value) + " (" + mPhrases.beside(each) +
                         ")");
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
        return text.empty() ? "nothing is 0 in every record" : text + ": 0 in every record";
    }

    std::string clocks() const {
        const StampClocks& clocks = mFindings.clocks;
        if (!clocks.hasFrameStamps && !clocks.hasNodeStamps) {
            return "there are no stamps";
        }
        std::string one = clocks.hasFrameStamps ? "cslInfo" : "node";
        std::string others;
        const auto add = [&](const char* name, bool isThere, bool isShared) {
            std::string& list = isShared ? one : others;
            list += !isThere ? "" : (list.empty() ? "" : ", ") + std::string(name);
        };
        add("node", clocks.hasFrameStamps && clocks.hasNodeStamps, clocks.nodesShareIt);
        add("feature", clocks.hasFeatureStamps, clocks.featuresShareIt);
        add("motion", clocks.hasMotionStamps, clocks.motionSharesIt);
        std::string text = one + " stamps taken for one clock, in " + unitName(clocks.ticksPerSecond);
        if (clocks.ticksPerSecond) {
            text += ", as frames are " + number(clocks.frameInterval) + " ms apart then";
        }
        return text + (others.empty() ? "" : "; not of this clock: " + others);
    }

    const LossCase& mLoss;
    const Findings& mFindings;
    const Phrases mPhrases;
    std::string mText;
};

}  // namespace

std::string explanationText(const Explanations& explanations, const NodeNames& names) {
    const auto& losses = explanations.losses;
    const size_t count = losses.size() + explanations.unexplained;
    if (count == 0) {
        return "No loss is known: no file is named after one, and no binary dump has a gap.\n"
               "--lost N explains frame N; --log LOGCAT takes the losses that a log announces.\n";
    }
    std::string text;
    if (count > 1) {
        text = std::to_string(count) + " losses\n";
        for (size_t i = 0; i < losses.size() && i < kMostListed; ++i) {
            text += "  " + LossText(losses[i], names).headline() + "\n";
        }
        if (count > kMostListed) {
            text += "  " + std::to_string(count - kMostListed) + " more\n";
        }
    }
    for (size_t i = 0; i < losses.size() && i < kMostInFull; ++i) {
        text += (text.empty() ? "" : "\n") + LossText(losses[i], names).text();
    }
    if (count > kMostInFull) {
        text += "\nThe first " + std::to_string(kMostInFull) +
                " in full; --lost N explains another, --json lists all.\n";
    }
    if (explanations.unlisted != 0) {
        text += std::to_string(explanations.unlisted) +
                " more frames have no record, in gaps behind those listed.\n";
    }
    return text;
}

}  // namespace vdrdump
