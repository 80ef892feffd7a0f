#include "tools/explain/explainLosses.h"

#include "tools/explain/SegmentCollector.h"
#include "tools/explain/analyseLoss.h"

namespace vdrdump {

Explanations explainLosses(const GatheredLosses& gathered, std::optional<double> ticksPerSecond) {
    Explanations explanations;
    explanations.unlisted = gathered.found.unlisted;
    explanations.wasFull = gathered.wasFull;
    for (const LossCase& each : gathered.found.cases) {
        if (explanations.losses.size() == SegmentCollector::kMostLosses) {
            ++explanations.unexplained;
            continue;
        }
        explanations.losses.push_back(
                {each, analyseLoss(each.lost, each.history->frames, ticksPerSecond)});
    }
    return explanations;
}

}  // namespace vdrdump
