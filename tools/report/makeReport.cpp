#include "tools/report/makeReport.h"

#include <algorithm>
#include <stdexcept>

#include "tools/explain/Answer.h"
#include "tools/explain/Phrases.h"
#include "tools/explain/analyseLoss.h"
#include "tools/explain/clocksOf.h"
#include "tools/explain/explainLosses.h"
#include "tools/output/Output.h"
#include "tools/output/printablePath.h"
#include "tools/report/htmlText.h"
#include "tools/report/originHtml.h"
#include "tools/report/pageStyle.h"
#include "tools/report/panelsHtml.h"
#include "tools/report/recordsHtml.h"
#include "tools/report/timelineSvg.h"

namespace vdrdump {
namespace {

constexpr uint32_t kCloseUp = 10;          // frames on either side, those that are compared
constexpr uint32_t kMostInTimeline = 200;  // of more frames no bar can be told from the next

using History = std::shared_ptr<const SessionHistory>;

class Report {
public:
    Report(const ReportRequest& request, const GatheredLosses& gathered, const NodeNames& names)
          : mRequest(request),
            mGathered(gathered),
            mNames(names),
            mExplanations(explainLosses(gathered, names.ticksPerSecond())),
            mAnswer(answerOf(mExplanations, names)) {}

    bool write() {
        Output output(mRequest.output);
        output.append(head());
        output.append(opening());
        for (size_t i = 0; i < mAnswer.inFull(); ++i) {
            output.append(lossSection(i));
        }
        if (mAnswer.losses.empty()) {
            for (const History& history : mGathered.found.histories) {
                output.append(framesSection(history));
            }
        }
        output.append(records());
        output.append(originHtml(mRequest, mGathered.files, mDrawnBy, firstLost()));
        output.append("</main>\n</body>\n</html>\n");
        return output.finish();
    }

private:
    std::string title() const {
        return !mAnswer.count.empty()   ? mAnswer.count
               : mAnswer.losses.empty() ? "Frames " + framesText(*mRequest.which.frames)
                                        : mAnswer.losses.front().headline;
    }
    std::optional<uint32_t> firstLost() const {
        return mExplanations.losses.empty()
                       ? std::nullopt
                       : std::optional<uint32_t>(mExplanations.losses.front().loss.lost.first);
    }

    // Even what slipped through all escaping would be no script and load nothing.
    std::string head() const {
        return "<!DOCTYPE html>\n"
               "<html lang=\"en\" xmlns=\"http://www.w3.org/1999/xhtml\">\n<head>\n"
               "<meta charset=\"utf-8\"/>\n"
               "<meta http-equiv=\"Content-Security-Policy\" "
               "content=\"default-src 'none'; style-src 'unsafe-inline'\"/>\n"
               "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\"/>\n"
               "<title>" +
               htmlText(title()) + "</title>\n<style>" + kPageStyle +
               "</style>\n</head>\n<body>\n<main>\n";
    }

    // Of several losses a line each; of frames without any, that nothing is known of one.
    std::string opening() const {
        std::string html;
        if (!mAnswer.count.empty() || mAnswer.losses.empty()) {
            html += "<h1>" + htmlText(title()) + "</h1>\n";
        }
        if (!mAnswer.count.empty()) {
            html += "<ol>\n";
            for (size_t i = 0; i < mAnswer.losses.size(); ++i) {
                const std::string text = htmlText(mAnswer.losses[i].headline);
                html += "<li>" +
                        (i < mAnswer.inFull()
                                 ? "<a href=\"#" + lossAnchor(i) + "\">" + text + "</a>"
                                 : text) +
                        "</li>\n";
            }
            html += "</ol>\n";
        }
        if (mAnswer.more != 0) {
            html += "<p>" + std::to_string(mAnswer.more) + " more</p>\n";
        }
        for (const std::string& remark : mAnswer.remarks) {
            html += "<p class=\"note\">" + htmlText(remark) + "</p>\n";
        }
        return html;
    }

    static std::string lossAnchor(size_t loss) { return "loss-" + std::to_string(loss + 1); }

    std::string lossSection(size_t number) {
        const LossLines& lines = mAnswer.losses[number];
        const Explanation& explanation = mExplanations.losses[number];
        const char* const heading = mAnswer.count.empty() ? "h1" : "h2";
        std::string html = "<section class=\"loss\" id=\"" + lossAnchor(number) + "\">\n<" +
                           heading + ">" + htmlText(lines.headline) + "</" + heading +
                           ">\n<table class=\"answer\">\n";
        for (size_t i = 0; i < lines.lines.size(); ++i) {
            const bool goesOn = i + 1 < lines.lines.size() && lines.lines[i + 1].name.empty();
            html += lines.lines[i].name.empty()
                            ? "<br/>"
                            : "<tr><th scope=\"row\">" + htmlText(lines.lines[i].name) +
                                      "</th><td>";
            html += htmlText(lines.lines[i].text) + (goesOn ? "" : "</td></tr>\n");
        }
        html += "</table>\n";
        const History& history = explanation.loss.history;
        if (!history->frames.empty()) {
            html += pictures(history, rangeOf(explanation.loss.lost), &explanation.findings);
        }
        return html + "</section>\n";
    }

    std::string framesSection(const History& history) {
        const FrameRange& wanted = *mRequest.which.frames;
        const auto first = history->frames.lower_bound(wanted.first);
        if (first == history->frames.end() || first->first > wanted.last) {
            return "";
        }
        return "<section class=\"loss\">\n<h2>" + htmlText(history->paths.front()) + "</h2>\n" +
               pictures(history, wanted, nullptr) + "</section>\n";
    }

    // The frames that are shown of one loss. Of one loss those asked for, however far they go.
    FrameRange rangeOf(const FrameRange& lost) const {
        const FrameRange around = SegmentCollector::around(lost);
        const auto& frames = mRequest.which.frames;
        return !frames                 ? around
               : mAnswer.count.empty() ? *frames
                                       : FrameRange{std::max(around.first, frames->first),
                                                    std::min(around.last, frames->last)};
    }

    // Its records, as far as there are any: how wide a picture is depends on that.
    static FrameRange withRecords(const FrameMap& frames, const FrameRange& range) {
        const auto first = frames.lower_bound(range.first);
        const auto end = frames.upper_bound(range.last);
        return first == end ? range : FrameRange{first->first, std::prev(end)->first};
    }

    std::string pictures(const History& history, const FrameRange& range,
                         const Findings* findings) {
        const FrameRange all = withRecords(history->frames, range);
        FrameRange near =
                findings == nullptr ? all : framesAround(findings->lost, kCloseUp, kCloseUp);
        near = {std::max(near.first, all.first), std::min(near.last, all.last)};
        std::string html = "<h3>Nodes, frames " + framesText(near) + "</h3>\n" +
                           timeline(history, near, findings, true);
        if (near.first != all.first || near.last != all.last) {
            html += "<details class=\"more\"><summary>Nodes, frames " + framesText(all) +
                    "</summary>\n" + timeline(history, all, findings, false) + "</details>\n";
        }
        // What failed once fails again, and has been said.
        const bool isHopeless = mPictures != 0 && mDrawnBy.empty();
        const std::string prefix = "p" + std::to_string(++mPictures);
        const PanelsHtml panels = isHopeless ? withoutPanels()
                                             : panelsHtml(*history, all, findings, mNames, prefix,
                                                          printablePath(mRequest.output));
        mDrawnBy = panels.drawnBy.empty() ? mDrawnBy : panels.drawnBy;
        addRecords(history, all, findings);
        return html + panels.html;
    }

    std::string timeline(const History& history, FrameRange range, const Findings* findings,
                         bool withLegend) {
        range.last = range.first + std::min(range.last - range.first, kMostInTimeline - 1);
        const StampClocks clocks = findings == nullptr
                                           ? clocksOf(history->frames, mNames.ticksPerSecond())
                                           : findings->clocks;
        const Timeline drawn =
                timelineOf(history->frames, range,
                           findings == nullptr ? range.first : findings->lost.first, clocks);
        const std::string svg = timelineSvg(drawn, findings, mNames, anchorOf(history));
        if (svg.empty()) {
            return "<p class=\"note\">The records have no stamps from which to draw what nodes "
                   "did.</p>\n";
        }
        return "<figure class=\"wide\">\n" + svg + "</figure>\n" +
               (withLegend ? legend(drawn, findings != nullptr) : "");
    }

    static std::string legend(const Timeline& timeline, bool hasLoss) {
        const bool hasRecord = std::all_of(
                timeline.arrivals.begin(), timeline.arrivals.end(), [&](const auto& arrival) {
                    return arrival.frame != timeline.zero || arrival.hasRecord;
                });
        std::string text =
                "A row for each node, a bar for each frame: thin while the frame waits before the "
                "node, full while the node works on it, half as high until it is handed on. ";
        if (hasLoss) {
            text += "Red is what was lost, an outline marks what stands out, a cross where the "
                    "frame got stuck. ";
        }
        text += "Time 0 is when frame " + std::to_string(timeline.zero) +
                (hasRecord ? " was taken. "
                           : " would have been taken, going by the frames around it. ") +
                "Bars show their numbers under the pointer and lead to the record.";
        if (timeline.leftOut != 0) {
            text += " " + std::to_string(timeline.leftOut) +
                    " bars are left out: their stamps are far from their frames.";
        }
        return "<p class=\"note\">" + htmlText(text) + "</p>\n";
    }

    std::string anchorOf(const History& history) const {
        const auto& all = mGathered.found.histories;
        const auto at = std::find(all.begin(), all.end(), history);
        return "s" + std::to_string(at - all.begin() + 1) + "-frame-";
    }

    void addRecords(const History& history, const FrameRange& range, const Findings* findings) {
        RecordList& list = mLists[history.get()];
        list.history = history.get();
        list.anchor = anchorOf(history);
        list.ranges.push_back(range);
        if (findings != nullptr) {
            list.lost.push_back(findings->lost);
        }
    }

    std::string records() const {
        std::string html;
        for (const History& history : mGathered.found.histories) {
            if (const auto list = mLists.find(history.get()); list != mLists.end()) {
                html += (mLists.size() == 1
                                 ? ""
                                 : "<h3>" + htmlText(history->paths.front()) + "</h3>\n") +
                        recordsHtml(list->second, mNames);
            }
        }
        return html.empty() ? "" : "<section>\n<h2>Records</h2>\n" + html + "</section>\n";
    }

    const ReportRequest& mRequest;
    const GatheredLosses& mGathered;
    const NodeNames& mNames;
    const Explanations mExplanations;
    const Answer mAnswer;
    size_t mPictures = 0;
    std::string mDrawnBy;
    std::map<const SessionHistory*, RecordList> mLists;
};

}  // namespace

bool makeReport(const ReportRequest& request) {
    const NodeNames names =
            request.names.empty() ? NodeNames() : NodeNames::fromFile(request.names);
    const GatheredLosses gathered = gatherLosses(request.which);
    const auto& histories = gathered.found.histories;
    const bool hasFrames = request.which.frames &&
                           std::any_of(histories.begin(), histories.end(),
                                       [](const auto& each) { return !each->frames.empty(); });
    if (gathered.found.cases.empty() && !hasFrames) {
        throw std::runtime_error(request.which.frames
                                         ? "no record of the frames that were asked for"
                                         : "no loss is known: choose frames with --frames, or the "
                                           "lost one with --lost");
    }
    return Report(request, gathered, names).write() && gathered.isWhole;
}

}  // namespace vdrdump
