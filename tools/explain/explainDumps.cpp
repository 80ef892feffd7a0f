#include "tools/explain/explainDumps.h"

#include <algorithm>
#include <cstdio>

#include "tools/explain/SegmentCollector.h"
#include "tools/explain/analyseLoss.h"
#include "tools/explain/explanationJson.h"
#include "tools/explain/explanationText.h"
#include "tools/output/Output.h"
#include "tools/read/DumpName.h"
#include "tools/sink/DumpPass.h"

namespace vdrdump {
namespace {

// Before anything is read; those that dumps are named after come first.
std::vector<uint32_t> knownLosses(const ExplainRequest& request,
                                  const std::vector<Announcement>& announcements) {
    if (request.lost) {
        return {*request.lost};
    }
    std::vector<uint32_t> lost;
    const auto add = [&lost](uint32_t frame) {
        if (std::find(lost.begin(), lost.end(), frame) == lost.end()) {
            lost.push_back(frame);
        }
    };
    for (const std::string& file : request.files) {
        if (const auto announced = DumpName::of(file).lostFrame) {
            add(*announced);
        }
    }
    for (const Announcement& each : announcements) {
        add(each.frame);
    }
    return lost;
}

Explanations explain(const SegmentCollector& collector,
                     const std::vector<Announcement>& announcements,
                     const std::optional<uint32_t>& lost) {
    Explanations explanations;
    LossCases found = makeLossCases(collector.segments(), announcements, lost);
    explanations.unlisted = found.unlisted;
    explanations.wasFull = collector.isFull();
    for (LossCase& each : found.cases) {
        if (explanations.losses.size() == SegmentCollector::kMostLosses) {
            ++explanations.unexplained;
            continue;
        }
        Findings findings = analyseLoss(each.lost, each.history->frames);
        explanations.losses.push_back({std::move(each), std::move(findings)});
    }
    return explanations;
}

}  // namespace

bool explainDumps(const ExplainRequest& request) {
    const NodeNames names =
            request.names.empty() ? NodeNames() : NodeNames::fromFile(request.names);
    const std::vector<Announcement> announcements =
            request.log.empty() ? std::vector<Announcement>() : readAnnouncements(request.log);
    SegmentCollector collector(knownLosses(request, announcements), !request.lost);
    Progress progress(request.files, true);
    DumpPass pass(collector, progress, stderr);
    if (request.lost) {
        Selection selection;
        selection.frames = SegmentCollector::around({*request.lost, *request.lost});
        pass.choose(selection);
    }
    bool isWhole = true;
    for (const std::string& file : request.files) {
        isWhole &= pass.readFile(file);
    }
    progress.clear();
    const bool isNothingRead = !isWhole && collector.records() == 0;
    const Explanations explanations = explain(collector, announcements, request.lost);
    if (explanations.losses.empty() && isNothingRead && !request.isJson) {
        return false;  // what is wrong has been said, and of losses nothing is known
    }
    Output output("-");
    output.append(request.isJson ? explanationJson(explanations, names)
                                 : explanationText(explanations, names));
    return output.finish() && isWhole;
}

}  // namespace vdrdump
