#include "tools/explain/explainDumps.h"

#include "tools/explain/SegmentCollector.h"
#include "tools/explain/analyseLoss.h"
#include "tools/explain/explanationJson.h"
#include "tools/explain/explanationText.h"
#include "tools/output/Output.h"

namespace vdrdump {
namespace {

Explanations explain(GatheredLosses gathered) {
    Explanations explanations;
    explanations.unlisted = gathered.found.unlisted;
    explanations.wasFull = gathered.wasFull;
    for (LossCase& each : gathered.found.cases) {
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
    GatheredLosses gathered = gatherLosses(request.which);
    const bool isWhole = gathered.isWhole;
    const bool isNothingRead = !isWhole && gathered.records == 0;
    const Explanations explanations = explain(std::move(gathered));
    if (explanations.losses.empty() && isNothingRead && !request.isJson) {
        return false;  // what is wrong has been said, and of losses nothing is known
    }
    Output output("-");
    output.append(request.isJson ? explanationJson(explanations, names)
                                 : explanationText(explanations, names));
    return output.finish() && isWhole;
}

}  // namespace vdrdump
