#include "tools/plot/choosePanels.h"

#include <algorithm>
#include <cstdio>

namespace vdrdump {
namespace {

// Of nodes and of algorithms those with the highest values, as they bound the frame rate, and of
// the others those that rise farthest above their median, as they are off.
constexpr size_t kSlowest = 3;
constexpr size_t kFarthestRisen = 3;
constexpr size_t kMostAtNodes = 8;  // with the marks of frames that did not come to an end there

struct Candidate {
    Curve curve;
    double highest = 0;
    double rise = 0;
};

// Names of what gets no curve.
struct LeftOut {
    std::vector<std::string> zero;
    std::vector<std::string> constant;
    std::vector<std::string> unknown;
};

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

std::string shown(double value) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.6g", value);
    return text;
}

std::string titleOf(const Subject& subject, const NodeNames& names) {
    switch (subject.quantity) {
        case Quantity::NodeWait:
            return "wait before " + names.nameOf(subject.node);
        case Quantity::NodeWork:
            return "work " + names.nameOf(subject.node);
        case Quantity::NodeHandOn:
            return "hand-on " + names.nameOf(subject.node);
        case Quantity::SemanticCost:
            return subject.name + ", semantic";
        default:
            return subject.name;
    }
}

class Chooser {
public:
    Chooser(const SessionCurves& session, const NodeNames& names)
          : mSession(session), mNames(names) {}

    PanelChoice choose() {
        if (mSession.measures()) {
            addMeasured();
        }
        for (const Panel& panel : mSession.panelsOfColumns()) {
            Panel chosen{panel.kind, withoutTheEmpty(panel, panel.left),
                         withoutTheEmpty(panel, panel.right)};
            addPanel(std::move(chosen));
        }
        sayWhy("0 in every frame: ", mLeftOut.zero);
        sayWhy("the same in every frame: ", mLeftOut.constant);
        sayWhy("not known: ", mLeftOut.unknown);
        return std::move(mChoice);
    }

private:
    void addMeasured() {
        const std::string frameUnit = mSession.clocks().ticksPerSecond ? "ms" : "ticks";
        const std::string nodeUnit = mSession.clocks().nodeTicksPerSecond ? "ms" : "ticks";
        addOne(Quantity::Interval, "frame interval", frameUnit);
        addOne(Quantity::Latency, "latency", nodeUnit);
        addSlowest("time at nodes", ", " + nodeUnit,
                   {Quantity::NodeWait, Quantity::NodeWork, Quantity::NodeHandOn});
        addSlowest("algorithms", ", as stated", {Quantity::PluginCost, Quantity::SemanticCost});
    }

    void addOne(Quantity quantity, const char* name, const std::string& unit) {
        const auto found = mSession.measured().find({quantity, {}, ""});
        if (found == mSession.measured().end()) {
            mLeftOut.unknown.emplace_back(name);
        } else if (rangeOf(found->second).high() == 0) {
            mLeftOut.zero.emplace_back(name);
        } else {
            addPanel({Panel::Kind::EveryFrame,
                      {name + (", " + unit), {{name, found->second, {}, 1, false}}},
                      {}});
        }
    }

    void addSlowest(const std::string& name, const std::string& unit,
                    const std::vector<Quantity>& quantities) {
        std::vector<Candidate> candidates;
        bool isKnown = false;
        for (const auto& [subject, number] : mSession.measured()) {
            const bool isMeant = std::find(quantities.begin(), quantities.end(),
                                           subject.quantity) != quantities.end();
            isKnown |= isMeant;
            if (isMeant && rangeOf(number).high() > 0) {
                candidates.push_back(candidate(titleOf(subject, mNames), number));
            }
        }
        if (candidates.empty()) {
            (isKnown ? mLeftOut.zero : mLeftOut.unknown).push_back(name);
            return;
        }
        Panel panel;
        panel.left.label = name + unit;
        take(candidates, kSlowest, &Candidate::highest, panel.left.curves);
        take(candidates, kFarthestRisen, &Candidate::rise, panel.left.curves);
        if (quantities.front() == Quantity::NodeWait) {
            addUnended(panel.left.curves);
        }
        addPanel(std::move(panel));
    }

    Candidate candidate(std::string title, size_t number) const {
        Candidate result;
        result.curve.title = std::move(title);
        result.curve.number = number;
        result.highest = rangeOf(number).high();
        result.rise = result.highest - mSession.curves().medianOf(number);
        return result;
    }

    // Of nodes that end frames as a rule.
    void addUnended(std::vector<Curve>& curves) const {
        for (const auto& [ids, number] : mSession.unended()) {
            const auto work = mSession.measured().find({Quantity::NodeWork, ids, ""});
            const size_t ended = work == mSession.measured().end()
                                         ? 0
                                         : mSession.curves().pointsOf(work->second);
            const size_t unended = mSession.curves().pointsOf(number);
            if (unended < ended && curves.size() < kMostAtNodes) {
                Curve curve;
                curve.title = "no end at " + mNames.nameOf(ids);
                curve.number = number;
                curve.isMark = true;
                curves.push_back(std::move(curve));
            }
        }
    }

    static void take(std::vector<Candidate>& candidates, size_t most, double Candidate::*key,
                     std::vector<Curve>& to) {
        std::stable_sort(candidates.begin(), candidates.end(),
                         [key](const Candidate& a, const Candidate& b) { return a.*key > b.*key; });
        const auto end =
                candidates.begin() + static_cast<std::ptrdiff_t>(std::min(most, candidates.size()));
        std::for_each(candidates.begin(), end,
                      [&to](const Candidate& each) { to.push_back(each.curve); });
        candidates.erase(candidates.begin(), end);
    }

    Axis withoutTheEmpty(const Panel& panel, const Axis& axis) {
        Axis result{axis.label, {}};
        for (const Curve& curve : axis.curves) {
            const Range<double> range = rangeOf(curve.number);
            const bool isConstant = !range.isEmpty() && range.low() == range.high();
            if (range.isEmpty()) {
                mLeftOut.unknown.push_back(curve.title);
            } else if (isConstant && range.high() == 0 && mSession.measures()) {
                mLeftOut.zero.push_back(curve.title);
            } else if (isConstant && panel.kind == Panel::Kind::Mode) {
                mLeftOut.constant.push_back(curve.title + " " + shown(range.high()));
            } else {
                result.curves.push_back(curve);
            }
        }
        return result;
    }

    // What is left on the right only goes to the left.
    void addPanel(Panel panel) {
        if (panel.left.curves.empty()) {
            std::swap(panel.left, panel.right);
        }
        if (!panel.left.curves.empty()) {
            mChoice.panels.push_back(std::move(panel));
        }
    }

    void sayWhy(const char* why, const std::vector<std::string>& names) {
        if (!names.empty()) {
            mChoice.leftOut.push_back("left out, " + (why + joined(names)));
        }
    }

    Range<double> rangeOf(size_t curve) const { return mSession.curves().rangeOf(curve); }

    const SessionCurves& mSession;
    const NodeNames& mNames;
    LeftOut mLeftOut;
    PanelChoice mChoice;
};

}  // namespace

PanelChoice choosePanels(const SessionCurves& session, const NodeNames& names) {
    return Chooser(session, names).choose();
}

}  // namespace vdrdump
