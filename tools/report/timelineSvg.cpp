#include "tools/report/timelineSvg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "tools/explain/Phrases.h"
#include "tools/report/htmlText.h"

namespace vdrdump {
namespace {

// In units of the picture, which is as wide as the page.
constexpr double kWidth = 1000;
constexpr double kRight = 992;      // of the time that is shown
constexpr double kCharacter = 6.6;  // as wide as one is at most, as a rule
constexpr size_t kLongestLabel = 32;
constexpr double kLine = 17;  // of text
constexpr double kRowGap = 5;
constexpr double kThinnest = 0.8;  // of a bar

constexpr uint32_t kTints = 4;  // in the page's style, so that neighbours differ

std::string decimal(double value) {
    char text[64];
    std::snprintf(text, sizeof(text), "%.1f", value);
    return text;
}

std::string attribute(const char* name, double value) {
    return std::string(" ") + name + "=\"" + decimal(value) + "\"";
}

std::string rectangle(const std::string& kind, double from, double to, double top, double height) {
    return "<rect class=\"" + kind + "\"" + attribute("x", from) + attribute("y", top) +
           attribute("width", std::max(kThinnest, to - from)) + attribute("height", height) + "/>";
}

std::string line(const char* kind, double fromX, double fromY, double toX, double toY) {
    return std::string("<line class=\"") + kind + "\"" + attribute("x1", fromX) +
           attribute("y1", fromY) + attribute("x2", toX) + attribute("y2", toY) + "/>\n";
}

std::string words(const char* kind, double x, double y, const std::string& text) {
    return std::string("<text class=\"") + kind + "\"" + attribute("x", x) + attribute("y", y) +
           ">" + htmlText(text) + "</text>\n";
}

// No UTF-8 character is cut in two.
std::string shortened(const std::string& text, size_t characters) {
    size_t count = 0;
    for (size_t at = 0; at < text.size(); ++at) {
        const bool isFirst = (static_cast<unsigned char>(text[at]) & 0xc0U) != 0x80;
        if (isFirst && ++count > characters) {
            return text.substr(0, at) + "…";
        }
    }
    return text;
}

// 1, 2 or 5 times a power of ten, so that some ten of them make the whole.
double stepOf(double whole) {
    const double power = std::pow(10, std::floor(std::log10(whole / 10)));
    const double part = whole / 10 / power;
    return power * (part <= 1 ? 1 : part <= 2 ? 2 : part <= 5 ? 5 : 10);
}

class Drawing {
public:
    Drawing(const Timeline& timeline, const Findings* findings, const NodeNames& names,
            const std::string& anchor)
          : mTimeline(timeline), mFindings(findings), mNames(names), mAnchor(anchor) {
        for (const Timeline::Row& row : timeline.rows) {
            mLabels.push_back(names.nameOf(row.node));
            const size_t length = std::min(mLabels.back().size(), kLongestLabel);
            mLeft = std::max(mLeft, static_cast<double>(length + 2) * kCharacter);
        }
    }

    std::string draw() {
        addEvents();
        const double top = mY;
        addArrivals();
        for (size_t i = 0; i < mTimeline.rows.size(); ++i) {
            addRow(mTimeline.rows[i], mLabels[i]);
        }
        addAxis(top);
        addLossLines(top);
        addWay();
        return "<svg class=\"timeline\" xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1000 " +
               decimal(mY) +
               "\" role=\"img\" aria-label=\"What nodes did with each frame, over "
               "time\">\n" +
               mBehind + mFront + "</svg>\n";
    }

private:
    using Bar = Timeline::Bar;
    using Row = Timeline::Row;

    double x(double time) const {
        const double part = (time - mTimeline.from) / (mTimeline.to - mTimeline.from);
        return mLeft + (kRight - mLeft) * std::clamp(part, 0.0, 1.0);
    }
    const char* unit() const { return mTimeline.isUnitKnown ? " ms" : " ticks"; }
    std::string timeText(double time) const {
        return mTimeline.isUnitKnown ? decimal(time) + " ms"
                                     : decimal(time).substr(0, decimal(time).size() - 2) + " ticks";
    }
    bool isLost(uint32_t frame) const {
        return mFindings != nullptr && frame >= mFindings->lost.first &&
               frame <= mFindings->lost.last;
    }

    void addEvents() {
        if (mFindings == nullptr) {
            return;
        }
        const Phrases phrases(*mFindings, mNames);
        for (const Change& change : mFindings->changes) {
            addEvent(change.frame, phrases.change(change));
        }
        for (const SlowAllocation& each : mFindings->allocations) {
            addEvent(each.frame, "slow allocation of " + phrases.allocation(each));
        }
    }

    void addEvent(uint32_t frame, const std::string& text) {
        for (const Timeline::Arrival& arrival : mTimeline.arrivals) {
            if (arrival.frame != frame) {
                continue;
            }
            const double at = x(arrival.time);
            const bool isLeft = at > (mLeft + kRight) / 2;
            mFront += "<path class=\"event\" d=\"M" + decimal(at - 4) + " " + decimal(mY + 4) +
                      "h8l-4 8z\"/>\n" +
                      words(isLeft ? "event end" : "event", at + (isLeft ? -8 : 8), mY + 12, text);
            mY += kLine;
            return;
        }
    }

    // Labels that would run into each other or into that of the lost frame are left out.
    void addArrivals() {
        mFront += words("label", 0, mY + 12, "taken");
        double lost = -kWidth;
        for (const Timeline::Arrival& arrival : mTimeline.arrivals) {
            lost = isLost(arrival.frame) ? x(arrival.time) : lost;
        }
        double last = -kWidth;
        for (const Timeline::Arrival& arrival : mTimeline.arrivals) {
            const double at = x(arrival.time);
            const std::string number = std::to_string(arrival.frame);
            const double width = static_cast<double>(number.size() + 1) * kCharacter;
            const bool isHere = isLost(arrival.frame);
            const char* const kind = isHere               ? "frame lost"
                                     : !arrival.hasRecord ? "frame missing"
                                                          : "frame";
            mFront += line(kind, at, mY + kLine - 2, at, mY + kLine + 4);
            if (at - last >= width && (isHere || std::fabs(at - lost) >= width)) {
                mFront += words(kind, at, mY + 12, number);
                last = at;
            }
        }
        mArrivals = mY + kLine + 1;
        mY += kLine + 6;
    }

    void addRow(const Row& row, const std::string& label) {
        const double lane = row.lanes <= 1 ? 16 : row.lanes <= 3 ? 13 : 9;
        const double height = static_cast<double>(row.lanes) * lane;
        mBehind += "<g class=\"node\"><title>node " + htmlText(label) + "</title>\n" +
                   rectangle("row", mLeft, kRight, mY, height) + "\n" +
                   words("label", 0, mY + lane / 2 + 4, shortened(label, kLongestLabel)) + "</g>\n";
        for (const Bar& bar : row.bars) {
            addBar(row, bar, label, mY + static_cast<double>(bar.lane) * lane, lane - 1);
        }
        mY += height + kRowGap;
    }

    void addBar(const Row& row, const Bar& bar, const std::string& label, double top,
                double height) {
        const double middle = top + height / 2;
        const auto part = [&](const char* kind, Quantity quantity, double from, double to,
                              double thickness) {
            const bool isOut = standsOut(quantity, row.node, bar.frame);
            if (isOut) {
                thickness = std::max(thickness, 7.0);  // some is to be seen within the outline
            }
            mFront += rectangle(isOut ? std::string(kind) + " out" : kind, from, to,
                                middle - thickness / 2, thickness);
        };
        const bool isWorkedOn = bar.started || bar.finished || bar.handedOn;
        const double end = x(bar.last());
        const double from = x(bar.started ? *bar.started : bar.first());
        const double to = bar.finished ? x(*bar.finished) : end;
        mFront += "<a href=\"#" + mAnchor + std::to_string(bar.frame) + "\"><g class=\"bar " +
                  (isLost(bar.frame) ? "lost" : "f" + std::to_string(bar.frame % kTints)) +
                  "\"><title>" + htmlText(hover(bar, label)) + "</title>";
        if (bar.queued && (bar.started || !isWorkedOn)) {
            part("wait", Quantity::NodeWait, x(*bar.queued), from, 3);
        }
        if (isWorkedOn) {
            part("work", Quantity::NodeWork, from, to, height);
        }
        if (bar.finished && bar.handedOn) {
            part("hand", Quantity::NodeHandOn, to, end, height / 2);
        }
        const std::string number = std::to_string(bar.frame);
        if (height >= 12 && to - from > static_cast<double>(number.size()) * kCharacter + 3) {
            mFront += words("number", (from + to) / 2, middle + 4, number);
        }
        if (isStuckAt(row.node, bar.frame)) {
            mFront += "<path class=\"stuck\" d=\"M" + decimal(end + 3) + " " + decimal(middle - 4) +
                      "l8 8m0-8l-8 8\"/>";
        }
        mFront += "</g></a>\n";
        if (isLost(bar.frame)) {
            mWay.push_back({x(bar.first()), end, middle});
        }
    }

    bool isStuckAt(const NodeIds& node, uint32_t frame) const {
        return mFindings != nullptr && mFindings->stuck && mFindings->stuck->frame == frame &&
               mFindings->stuck->node == node;
    }

    bool standsOut(Quantity quantity, const NodeIds& node, uint32_t frame) const {
        return mFindings != nullptr &&
               std::any_of(mFindings->standsOut.begin(), mFindings->standsOut.end(),
                           [&](const Comparison& each) {
                               return each.subject.quantity == quantity &&
                                      each.subject.node == node && each.frame == frame;
                           });
    }

    std::string hover(const Bar& bar, const std::string& label) const {
        std::string text = "frame " + std::to_string(bar.frame) + " in node " + label + ", from " +
                           timeText(bar.first()) + " on";
        const auto add = [&](const char* what, const auto& from, const auto& to) {
            if (from && to) {
                text += std::string(", ") + what + " " + timeText(*to - *from);
            }
        };
        add("waited", bar.queued, bar.started);
        add("worked", bar.started, bar.finished);
        add("handed on within", bar.finished, bar.handedOn);
        return text + (!bar.started    ? "; no start"
                       : !bar.finished ? "; no end"
                       : !bar.handedOn ? "; not handed on"
                                       : "");
    }

    void addAxis(double top) {
        const double step = stepOf(mTimeline.to - mTimeline.from);
        for (double time = std::ceil(mTimeline.from / step) * step; time <= mTimeline.to;
             time += step) {
            const double at = x(time);
            mBehind += line("grid", at, top + kLine, at, mY);
            char text[64];
            std::snprintf(text, sizeof(text), "%.*f", step < 1 ? 1 : 0, time + 0.0);
            mFront += words("tick", at, mY + 12, text + std::string(unit()));
        }
        mY += kLine;
    }

    void addLossLines(double top) {
        for (const Timeline::Arrival& arrival : mTimeline.arrivals) {
            if (isLost(arrival.frame) || !arrival.hasRecord) {
                const double at = x(arrival.time);
                mBehind += line(isLost(arrival.frame) ? "lost" : "missing", at, top + kLine, at,
                                mY - kLine);
            }
        }
    }

    // How the lost frame came from one node to the next.
    void addWay() {
        if (mWay.empty() || mFindings->lost.first != mFindings->lost.last) {
            return;
        }
        std::string path;
        for (const Timeline::Arrival& arrival : mTimeline.arrivals) {
            if (isLost(arrival.frame) && arrival.hasRecord) {
                path = "M" + decimal(x(arrival.time)) + " " + decimal(mArrivals);
            }
        }
        for (const Passage& each : mWay) {
            path += (path.empty() ? "M" : "L") + decimal(each.from) + " " + decimal(each.y) + "H" +
                    decimal(each.to);
        }
        mFront += "<path class=\"way\" d=\"" + path + "\"/>\n";
    }

    struct Passage {
        double from;
        double to;
        double y;
    };

    const Timeline& mTimeline;
    const Findings* const mFindings;
    const NodeNames& mNames;
    const std::string& mAnchor;
    std::vector<std::string> mLabels;
    double mLeft = 60;
    double mY = 2;
    double mArrivals = 0;
    std::string mBehind;
    std::string mFront;
    std::vector<Passage> mWay;
};

}  // namespace

std::string timelineSvg(const Timeline& timeline, const Findings* findings, const NodeNames& names,
                        const std::string& anchor) {
    return timeline.isEmpty() ? "" : Drawing(timeline, findings, names, anchor).draw();
}

}  // namespace vdrdump
